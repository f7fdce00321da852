#include "common/translator.h"
#include "platform/common/texts/language.h"
#include "platform/common/widgets/unitstyle.h"

#include <QLabel>
#include <QtTest>

#include <set>

namespace {

/// Every id that a page shows.
const std::set<int> shownIds = {17,   18,   141,  195,  224,  236,  237,  238,  239,  240,  246,
                                266,  267,  366,  368,  369,  384,  387,  421,  435,  436,  437,
                                438,  439,  440,  441,  443,  444,  735,  790,  1226, 1227, 1228,
                                1229, 1230, 1231, 1239, 1240, 1241, 1242, 1243, 1244, 1246, 1247,
                                1249, 1250, 1251, 1254, 1255, 1256, 1258, 1259, 1260, 1270, 1271};

QString text(int id)
{
    return Translator::translate(id);
}

QString upper(int id)
{
    return text(id).toUpper();
}

/// A text as a page puts it together, and the room that it has there.
struct Box
{
    const char* name;
    QString (*shown)();
    int width, height, points;
    bool bold;
};

// The title of the stand-alone filter page has 41 px for 28 pt: accents and tails may reach 6 px beyond, its
// letters don't. Captions without a given size are taken at the size that suits their height; tabs have 4 px
// to either edge.
// clang-format off
const Box boxes[] = {
    {"tab balance",          [] { return upper(421) + "\n" + upper(141); },             142,  72, 16, false},
    {"tab equalizer",        [] { return upper(195) + "\n" + upper(387); },             142,  72, 16, false},
    {"tab presets",          [] { return text(1227).replace(' ', '\n'); },              142,  72, 16, false},
    {"tab crossover",        [] { return "CROSSOVER\n" + upper(141); },                 142,  72, 16, false},
    {"tab volume levels",    [] { return text(1246).replace(' ', '\n'); },              142,  72, 16, false},
    {"tab time alignment",   [] { return upper(735) + "\nALIGNMENT"; },                 142,  72, 16, false},
    {"tile flat",            [] { return upper(1226); },                                217,  71, 32, true},
    {"tile R&B",             [] { return upper(237); },                                 217,  71, 32, true},
    {"tile rock",            [] { return upper(239); },                                 217,  71, 32, true},
    {"tile pop",             [] { return upper(238); },                                 217,  71, 32, true},
    {"tile hip-hop",         [] { return upper(240); },                                 217,  71, 32, true},
    {"tile jazz",            [] { return upper(246); },                                 217,  71, 32, true},
    {"tile user 1",          [] { return upper(1258); },                                217,  71, 32, true},
    {"tile user 2",          [] { return upper(1259); },                                217,  71, 32, true},
    {"title presets",        [] { return text(1227); },                                 400,  41, 20, false},
    {"title equalizer",      [] { return text(387); },                                  400,  41, 20, false},
    {"title crossover",      [] { return upper(1229) + upper(1247); },                  400,  41, 20, false},
    {"title filters",        [] { return text(1229) + upper(141); },                    400,  53, 28, false},
    {"column main audio",    [] { return upper(1228); },                                306,  40, 20, false},
    {"column subwoofer",     [] { return upper(236); },                                 306,  40, 20, false},
    {"subwoofer filter",     [] { return text(1230); },                                 161,  20, 11, false},
    {"subwoofer level",      [] { return text(1231); },                                 161,  20, 11, false},
    {"group front",          [] { return upper(266); },                                 161,  70, 16, false},
    {"group rear",           [] { return upper(267); },                                 161,  70, 16, false},
    {"group subwoofer",      [] { return upper(236); },                                 161,  70, 16, false},
    {"row high pass",        [] { return text(1243); },                                 316,  32, 16, false},
    {"row low pass",         [] { return text(1244); },                                 316,  32, 16, false},
    {"value off",            [] { return text(790); },                                  168,  50, 18, false},
    {"loudness",             [] { return upper(444); },                                 355,  64, 20, false},
    {"subwoofer",            [] { return upper(236); },                                 355,  64, 20, false},
    {"row subwoofer level",  [] { return upper(384); },                                 355,  64, 20, false},
    {"key reset",            [] { return upper(224); },                                 130,  70, 16, false},
    {"front left",           [] { return text(1239); },                                 228,  31, 16, false},
    {"front right",          [] { return text(1240); },                                 228,  31, 16, false},
    {"rear left",            [] { return text(1241); },                                 228,  31, 16, false},
    {"rear right",           [] { return text(1242); },                                 228,  31, 16, false},
    {"alignment subwoofer",  [] { return upper(236); },                                 228,  31, 16, false},
    {"default main",         [] { return upper(1249); },                                403,  78, 20, false},
    {"default ring",         [] { return upper(1250); },                                403,  78, 20, false},
    {"default call",         [] { return upper(1251); },                                403,  78, 20, false},
    {"default navigation",   [] { return upper(1254); },                                403,  78, 20, false},
    {"default voice",        [] { return upper(1255); },                                403,  78, 20, false},
    {"live main",            [] { return upper(436); },                                 403,  78, 20, false},
    {"live ring",            [] { return upper(437); },                                 403,  78, 20, false},
    {"live call",            [] { return upper(438); },                                 403,  78, 20, false},
    {"live navigation",      [] { return upper(439); },                                 403,  78, 20, false},
    {"live voice",           [] { return upper(440); },                                 403,  78, 20, false},
    {"source radio",         [] { return upper(366); },                                 403,  78, 20, false},
    {"source USB",           [] { return upper(18); },                                  403,  78, 20, false},
    {"source Bluetooth",     [] { return upper(369); },                                 403,  78, 20, false},
    {"source AUX",           [] { return upper(368); },                                 403,  78, 20, false},
    {"source CarPlay",       [] { return upper(443); },                                 403,  78, 20, false},
    {"source Android Auto",  [] { return upper(17); },                                  403,  78, 20, false},
    {"section defaults",     [] { return " " + upper(1256); },                          994,  44, 20, false},
    {"section live",         [] { return upper(435); },                                 994,  44, 20, false},
    {"section sources",      [] { return " " + upper(441); },                           994,  44, 20, false},
};
// clang-format on

void columnOfLanguages()
{
    QTest::addColumn<QString>("code");
    for (const QString& code : cm::Language::codes())
        QTest::newRow(qPrintable(code)) << code;
}

} // namespace

class tst_Translator : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { cm::UnitStyle::install(*qApp); }

    void init() { QVERIFY(cm::Language::instance()->setCurrent("en")); }

    void eightLanguagesEnglishFirst()
    {
        QCOMPARE(cm::Language::codes(), QStringList({"en", "de", "fr", "es", "ru", "ar", "zh_CN", "ja"}));
        for (const QString& code : cm::Language::codes())
            QVERIFY(!cm::Language::nativeName(code).isEmpty());
        QCOMPARE(cm::Language::nativeName("ru"), QString("Русский"));
        QVERIFY(cm::Language::nativeName("it").isEmpty());
    }

    void theIdsAreThoseThatPagesShow()
    {
        const QVector<int> known = cm::Language::textIds();
        QVERIFY(std::is_sorted(known.begin(), known.end()));
        QCOMPARE(std::set<int>(known.begin(), known.end()), shownIds);
    }

    void everyIdHasATextInEveryLanguage_data() { columnOfLanguages(); }
    void everyIdHasATextInEveryLanguage()
    {
        QFETCH(QString, code);
        // Not by Translator, which helps out with English: each file must have them all.
        QTranslator file;
        QVERIFY(file.load(":/audiosetting_texts/" + code + ".qm"));
        QVERIFY(cm::Language::instance()->setCurrent(code));
        for (int id : shownIds) {
            const QString own = file.translate("", QByteArray("txt_" + QByteArray::number(id)).constData());
            QVERIFY2(!own.trimmed().isEmpty(), qPrintable(QString::number(id)));
            QCOMPARE(text(id), own);
        }
    }

    void blanksThatPagesRelyOn_data() { columnOfLanguages(); }
    void blanksThatPagesRelyOn()
    {
        QFETCH(QString, code);
        QVERIFY(cm::Language::instance()->setCurrent(code));
        for (int id : shownIds) {
            const bool wordFollows = id == 735 || id == 1229;
            QCOMPARE(text(id).endsWith(' '), wordFollows);
            QVERIFY(!text(id).startsWith(' '));
            QVERIFY(!text(id).contains("  ") && !text(id).contains('\n'));
        }
        for (int id : {1227, 1246})
            QCOMPARE(text(id).count(' '), 1); // two lines on a tab
    }

    void theFixedTextsAreWhatPagesExpect()
    {
        QCOMPARE(text(141), QString("Settings"));
        QCOMPARE(text(735), QString("Time "));
        QCOMPARE(text(1229), QString("Crossover "));
        QCOMPARE(text(790), QString("Off"));
        QCOMPARE(text(224), QString("Reset"));
        QCOMPARE(text(236), QString("Subwoofer"));
    }

    void languagesDiffer_data() { columnOfLanguages(); }
    void languagesDiffer()
    {
        QFETCH(QString, code);
        if (code == "en")
            return;
        QVERIFY(cm::Language::instance()->setCurrent(code));
        int same = 0;
        for (int id : shownIds) {
            const QString own = text(id);
            QVERIFY(cm::Language::instance()->setCurrent("en"));
            same += own == text(id);
            QVERIFY(cm::Language::instance()->setCurrent(code));
        }
        QVERIFY2(same < int(shownIds.size()) / 2, qPrintable(QString("%1 texts are English").arg(same)));
    }

    void textsAreInTheirScript_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<int>("script");
        QTest::newRow("ru") << "ru" << int(QChar::Script_Cyrillic);
        QTest::newRow("ar") << "ar" << int(QChar::Script_Arabic);
        QTest::newRow("zh_CN") << "zh_CN" << int(QChar::Script_Han);
        QTest::newRow("ja") << "ja" << int(QChar::Script_Katakana);
    }

    void textsAreInTheirScript()
    {
        QFETCH(QString, code);
        QFETCH(int, script);
        QVERIFY(cm::Language::instance()->setCurrent(code));
        for (int id : {387, 239, 238, 1226}) {
            const QString own = text(id);
            QVERIFY2(std::any_of(own.begin(), own.end(), [script](QChar c) { return c.script() == script; }),
                     qPrintable(own));
        }
    }

    void everyTextFitsItsPlace_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<int>("box");
        for (const QString& code : cm::Language::codes())
            for (int i = 0; i < int(std::size(boxes)); ++i)
                QTest::newRow(qPrintable(code + ' ' + boxes[i].name)) << code << i;
    }

    void everyTextFitsItsPlace()
    {
        QFETCH(QString, code);
        QFETCH(int, box);
        QVERIFY(cm::Language::instance()->setCurrent(code));
        const Box& place = boxes[box];
        QFont font = cm::UnitStyle::font(code);
        font.setPointSize(place.points);
        font.setBold(place.bold);
        // The same label with room around it: no ink may lie outside its place.
        constexpr int around = 100;
        const QString shown = place.shown();
        QLabel label(shown);
        label.setFont(font);
        label.setAlignment(Qt::AlignCenter);
        label.resize(place.width + 2 * around, place.height + 2 * around);
        const QRect ink = inkOf(label).translated(-around, -around);
        QVERIFY(!ink.isEmpty());
        QVERIFY2(QRect(0, 0, place.width, place.height).contains(ink),
                 qPrintable(QString("%1 takes %2 x %3 at %4, %5; has %6 x %7")
                                .arg(shown)
                                .arg(ink.width())
                                .arg(ink.height())
                                .arg(ink.x())
                                .arg(ink.y())
                                .arg(place.width)
                                .arg(place.height)));
    }

    void arabicReadsFromTheRightInAFixedLabel()
    {
        QLabel label;
        label.setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
        label.resize(403, 78);
        QVERIFY(cm::Language::instance()->setCurrent("ar"));
        QCOMPARE(QApplication::layoutDirection(), Qt::LeftToRight);
        label.setText(upper(436));
        QVERIFY(inkOf(label).right() > 390 && inkOf(label).left() > 100);
        QVERIFY(cm::Language::instance()->setCurrent("de"));
        label.setText(upper(436));
        QVERIFY(inkOf(label).left() < 10);
    }

    void anUnknownIdShowsItsNumberAndIsToldOnce()
    {
        QTest::ignoreMessage(QtWarningMsg, "Translator: no text has the id 999; its number is shown");
        QCOMPARE(text(999), QString("999"));
        QTest::ignoreMessage(QtWarningMsg, "Translator: no text has the id -7; its number is shown");
        QCOMPARE(text(-7), QString("-7"));
        messages = 0;
        const QtMessageHandler before =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) { ++messages; });
        QCOMPARE(text(999), QString("999"));
        QVERIFY(cm::Language::instance()->setCurrent("ja"));
        QCOMPARE(text(999), QString("999"));
        qInstallMessageHandler(before);
        QCOMPARE(messages, 0);
    }

    void namesOfTheEqualizerTypes()
    {
        const QStringList expected{"Flat", "R&B",    "Rock",   "Pop", "Hip-Hop",
                                   "Jazz", "User 1", "User 2", "Flat"};
        QCOMPARE(int(std::size(cm::eqNameStrId)), 9);
        for (int type = 0; type < 9; ++type)
            QCOMPARE(text(cm::eqNameStrId[type]), expected.at(type));
    }

    void theLanguageSwitchesWhileRunning()
    {
        QSignalSpy changed(cm::Language::instance(), SIGNAL(changed(QString)));
        struct Page : QWidget
        {
            int told = 0;
            void changeEvent(QEvent* event) override { told += event->type() == QEvent::LanguageChange; }
        } page;
        page.show();
        QVERIFY(cm::Language::instance()->setCurrent("de"));
        QCOMPARE(text(435), QString("Lautstärke"));
        QCOMPARE(changed, QList<QVariantList>({{"de"}}));
        QTRY_COMPARE(page.told, 1);
        QVERIFY(cm::Language::instance()->setCurrent("de")); // nothing new
        QCOMPARE(changed.count(), 1);
        QApplication::sendPostedEvents();
        QCOMPARE(page.told, 1);
        QVERIFY(cm::Language::instance()->setCurrent("en"));
        QCOMPARE(text(435), QString("Volume"));
    }

    void namesOfLocalesFindTheirLanguage_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("code");
        QTest::newRow("code") << "fr"
                              << "fr";
        QTest::newRow("locale") << "de_DE.UTF-8"
                                << "de";
        QTest::newRow("locale with modifier") << "de_DE@euro"
                                              << "de";
        QTest::newRow("other country") << "es_MX"
                                       << "es";
        QTest::newRow("language of the one Chinese") << "zh"
                                                     << "zh_CN";
        QTest::newRow("other Chinese") << "zh_TW.UTF-8"
                                       << "zh_CN";
        QTest::newRow("with a hyphen, small") << "zh-cn"
                                              << "zh_CN";
    }

    void namesOfLocalesFindTheirLanguage()
    {
        QFETCH(QString, name);
        QFETCH(QString, code);
        QVERIFY(cm::Language::instance()->setCurrent(name));
        QCOMPARE(cm::Language::instance()->current(), code);
    }

    void anUnknownLanguageIsSaidAndChangesNothing()
    {
        QVERIFY(cm::Language::instance()->setCurrent("ja"));
        for (const char* name : {"it", "", "x", "_", "english"}) {
            QTest::ignoreMessage(
                QtWarningMsg,
                qPrintable(QString("Language: there are no texts for \"%1\"; it stays \"ja\"").arg(name)));
            QVERIFY(!cm::Language::instance()->setCurrent(name));
        }
        QCOMPARE(cm::Language::instance()->current(), QString("ja"));
    }

    void theEnvironmentGivesTheFirstLanguage_data()
    {
        QTest::addColumn<QStringList>("environment");
        QTest::addColumn<QString>("said");
        QTest::newRow("nothing") << QStringList() << "en Volume";
        QTest::newRow("LANG") << QStringList{"LANG=fr_FR.UTF-8"} << "fr Volume";
        QTest::newRow("LC_ALL first")
            << QStringList{"LANG=fr_FR.UTF-8", "LC_ALL=es_ES.UTF-8"} << "es Volumen";
        QTest::newRow("C") << QStringList{"LANG=C.UTF-8"} << "en Volume";
        QTest::newRow("without texts") << QStringList{"LANG=it_IT.UTF-8"} << "en Volume";
    }

    void theEnvironmentGivesTheFirstLanguage()
    {
        QFETCH(QStringList, environment);
        QFETCH(QString, said);
        QProcess second;
        QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"})
            variables.remove(name);
        for (const QString& pair : environment)
            variables.insert(pair.section('=', 0, 0), pair.section('=', 1));
        second.setProcessEnvironment(variables);
        second.start(QCoreApplication::applicationFilePath(), {"--say"});
        QVERIFY(second.waitForFinished());
        QCOMPARE(second.exitCode(), 0);
        QCOMPARE(QString::fromUtf8(second.readAllStandardOutput()).trimmed(), said);
        QCOMPARE(second.readAllStandardError().contains("no texts for the locale"),
                 QByteArray(QTest::currentDataTag()) == "without texts");
    }

private:
    /// What the text covers of the label, anti-aliased edges left out.
    static QRect inkOf(QLabel& label)
    {
        const QImage image = label.grab().toImage();
        QRect ink;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (qGray(image.pixel(x, y)) > 100)
                    ink |= QRect(x, y, 1, 1);
        return ink;
    }

    static int messages;
};

int tst_Translator::messages = 0;

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    // A second run of this program, which shows the language that it starts with.
    if (application.arguments().contains("--say")) {
        printf("%s %s\n", qPrintable(cm::Language::instance()->current()),
               qPrintable(Translator::translate(435)));
        return 0;
    }
    tst_Translator test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_translator.moc"
