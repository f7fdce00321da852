#include "headunit/shell/fontconfiguration.h"

#include <QtTest>

#include <memory>

#include <fontconfig/fontconfig.h>

using namespace headunit;

namespace {

using Pattern = std::unique_ptr<FcPattern, decltype(&FcPatternDestroy)>;

/// What fontconfig answers to a name in its own notation.
Pattern found(const char* name)
{
    const Pattern wanted(FcNameParse(reinterpret_cast<const FcChar8*>(name)), &FcPatternDestroy);
    FcConfigSubstitute(nullptr, wanted.get(), FcMatchPattern);
    FcDefaultSubstitute(wanted.get());
    FcResult result = FcResultMatch;
    return Pattern(FcFontMatch(nullptr, wanted.get(), &result), &FcPatternDestroy);
}

QString textOf(const Pattern& font, const char* object)
{
    FcChar8* text = nullptr;
    FcPatternGetString(font.get(), object, 0, &text);
    return QString::fromUtf8(reinterpret_cast<const char*>(text));
}

/// Files that the rules in force were read from.
QStringList rulesFiles()
{
    const std::unique_ptr<FcStrList, decltype(&FcStrListDone)> files(FcConfigGetConfigFiles(nullptr),
                                                                     &FcStrListDone);
    QStringList names;
    while (const FcChar8* name = FcStrListNext(files.get()))
        names << QString::fromUtf8(reinterpret_cast<const char*>(name));
    return names;
}

} // namespace

class TestFontConfiguration : public QObject
{
    Q_OBJECT
private slots:
    void cleanup();
    void rulesOfTheMachineAreNotRead();
    void unitsFamiliesAreFound_data();
    void unitsFamiliesAreFound();
    void textIsDrawnGreyAndSlightlyHinted();
    void scriptThatTheUnitDoesNotSpeakIsDrawn();
    void rulesThatAreNamedAreLeftToFontconfig_data();
    void rulesThatAreNamedAreLeftToFontconfig();
};

void TestFontConfiguration::cleanup()
{
    FcFini();
    qunsetenv("FONTCONFIG_FILE");
    qunsetenv("FONTCONFIG_PATH");
}

void TestFontConfiguration::rulesOfTheMachineAreNotRead()
{
    readFontConfiguration();
    QCOMPARE(rulesFiles(), QStringList());
}

void TestFontConfiguration::unitsFamiliesAreFound_data()
{
    QTest::addColumn<QString>("family");
    for (const char* family :
         {"Noto Sans", "Noto Sans Arabic UI", "Noto Sans CJK SC", "Noto Sans CJK JP", "Noto Sans:bold"})
        QTest::newRow(family) << QString(family);
}

void TestFontConfiguration::unitsFamiliesAreFound()
{
    readFontConfiguration();
    QFETCH(QString, family);
    QCOMPARE(textOf(found(qPrintable(family)), FC_FAMILY), family.section(':', 0, 0));
}

void TestFontConfiguration::textIsDrawnGreyAndSlightlyHinted()
{
    readFontConfiguration();
    const Pattern font = found("Noto Sans");
    FcBool grey = FcFalse;
    int hinting = 0, rgba = FC_RGBA_NONE;
    QCOMPARE(FcPatternGetBool(font.get(), FC_ANTIALIAS, 0, &grey), FcResultMatch);
    QCOMPARE(FcPatternGetInteger(font.get(), FC_HINT_STYLE, 0, &hinting), FcResultMatch);
    FcPatternGetInteger(font.get(), FC_RGBA, 0, &rgba);
    QVERIFY(grey);
    QCOMPARE(hinting, FC_HINT_SLIGHT);
    QVERIFY(rgba == FC_RGBA_NONE || rgba == FC_RGBA_UNKNOWN);
}

void TestFontConfiguration::scriptThatTheUnitDoesNotSpeakIsDrawn()
{
    readFontConfiguration();
    const Pattern font = found("Noto Sans:charset=5d0"); // a Hebrew letter
    FcCharSet* letters = nullptr;
    QCOMPARE(FcPatternGetCharSet(font.get(), FC_CHARSET, 0, &letters), FcResultMatch);
    QVERIFY2(FcCharSetHasChar(letters, 0x5d0), qPrintable(textOf(font, FC_FAMILY)));
}

void TestFontConfiguration::rulesThatAreNamedAreLeftToFontconfig_data()
{
    QTest::addColumn<QByteArray>("variable");
    QTest::newRow("file") << QByteArray("FONTCONFIG_FILE");
    QTest::newRow("folder") << QByteArray("FONTCONFIG_PATH");
}

void TestFontConfiguration::rulesThatAreNamedAreLeftToFontconfig()
{
    QFETCH(QByteArray, variable);
    QTemporaryDir folder;
    QFile file(folder.filePath("fonts.conf"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("<fontconfig><dir>/usr/share/fonts</dir><cachedir prefix=\"xdg\">fontconfig</cachedir>"
               "<selectfont><rejectfont><glob>*</glob></rejectfont></selectfont></fontconfig>");
    file.close();
    qputenv(variable, QFile::encodeName(variable == "FONTCONFIG_FILE" ? file.fileName() : folder.path()));
    readFontConfiguration();
    QVERIFY2(rulesFiles().contains(file.fileName()), qPrintable(rulesFiles().join(' ')));
}

QTEST_GUILESS_MAIN(TestFontConfiguration)
#include "tst_fontconfiguration.moc"
