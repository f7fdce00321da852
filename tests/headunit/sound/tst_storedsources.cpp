#include "headunit/sound/storedsources.h"

#include "tests/headunit/sound/fakesound.h"
#include "tests/support/messagelog.h"

#include "headunit/sound/soundnames.h"
#include "platform/common/settings/settingsstore.h"

#include <QtTest>

using namespace headunit;
using hvaudio::SourceKind;

using Values = QMap<QString, QVariant>;

class TestStoredSources : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void freshStoreLeavesTheSoundAlone();
    void whatIsKeptComesBack_data();
    void whatIsKeptComesBack();
    void everySourceHasAKeyOfItsOwn();
    void badValueIsLoggedAndCountsAsNone_data();
    void badValueIsLoggedAndCountsAsNone();
    void fileThatHasGoneIsSaidAndSilentAndStaysKept();
    void onlyTheKeyThatIsAskedForIsRestored();
    void emptyStoreTakesChoicesBack();

private:
    QScopedPointer<FakeSound> m_sound;
};

static mem::SettingsStore* store()
{
    return mem::SettingsStore::instance();
}

void TestStoredSources::init()
{
    store()->clear(); // never opened: it works from memory
    m_sound.reset(new FakeSound);
    m_sound->wanted.source = HVAudio_source_Radio;
}

void TestStoredSources::freshStoreLeavesTheSoundAlone()
{
    restoreSources(m_sound.data());
    QCOMPARE(m_sound->takeCalls(), QStringList());
    QCOMPARE(store()->values(), Values());
}

void TestStoredSources::whatIsKeptComesBack_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("path");
    for (const SourceKindName& kind : sourceKinds) {
        if (kind.kind != SourceKind::File && kind.kind != SourceKind::Input)
            QTest::newRow(kind.text) << int(kind.kind) << QString();
    }
    QTest::newRow("a file") << int(SourceKind::File) << "/music/one.flac";
    QTest::newRow("a file with colons") << int(SourceKind::File) << "/music/a:b: file:c.wav";
    QTest::newRow("a file of other letters")
        << int(SourceKind::File) << QStringLiteral("/music/L\u00fccke \u97f3.wav");
}

void TestStoredSources::whatIsKeptComesBack()
{
    QFETCH(int, kind);
    QFETCH(QString, path);
    keepSource(HVAudio_source_BtAudio, {SourceKind(kind), path});
    keepPlayingSource(HVAudio_source_BtAudio);
    const MessageLog messages;
    restoreSources(m_sound.data());
    QCOMPARE(m_sound->takeCalls(), QStringList({QStringLiteral("setSource 5 %1 \"%2\"").arg(kind).arg(path),
                                                QStringLiteral("play 5")}));
    QCOMPARE(MessageLog::lines(), QStringList());
    QCOMPARE(sourceComplaints(*m_sound), QStringList());
    // Once is enough.
    restoreSources(m_sound.data());
    QCOMPARE(m_sound->takeCalls(), QStringList());
}

void TestStoredSources::everySourceHasAKeyOfItsOwn()
{
    for (const UnitSource& source : unitSources)
        keepSource(source.id, {SourceKind::Sweep, {}});
    QCOMPARE(store()->values().size(), unitSourceCount);
    restoreSources(m_sound.data());
    for (const UnitSource& source : unitSources) {
        QCOMPARE(m_sound->source(source.id).kind, SourceKind::Sweep);
        keepPlayingSource(source.id);
        restoreSources(m_sound.data());
        QCOMPARE(m_sound->playing(), source.id);
    }
}

void TestStoredSources::badValueIsLoggedAndCountsAsNone_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::newRow("no kind") << "Headunit_Source_USB" << QVariant("cassette");
    QTest::newRow("a kind and more") << "Headunit_Source_USB" << QVariant("pink:");
    QTest::newRow("a file without a name") << "Headunit_Source_USB" << QVariant("file:");
    QTest::newRow("a file's kind alone") << "Headunit_Source_USB" << QVariant("file");
    QTest::newRow("another type") << "Headunit_Source_USB" << QVariant(2);
    QTest::newRow("a mebibyte") << "Headunit_Source_USB" << QVariant(QString(1 << 20, QLatin1Char('x')));
    QTest::newRow("no source") << "Headunit_Playing" << QVariant("Gramophone");
    QTest::newRow("a source of another type") << "Headunit_Playing" << QVariant(true);
}

void TestStoredSources::badValueIsLoggedAndCountsAsNone()
{
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    store()->setValue(key, value, true);
    const MessageLog messages;
    restoreSources(m_sound.data());
    QCOMPARE(m_sound->takeCalls(), QStringList());
    QCOMPARE(MessageLog::count(key), 1);
    QVERIFY(MessageLog::lines().first().size() < 300);
    QCOMPARE(store()->value(key), value);
    QCOMPARE(sourceComplaints(*m_sound), QStringList());
}

void TestStoredSources::fileThatHasGoneIsSaidAndSilentAndStaysKept()
{
    keepSource(HVAudio_source_Usb, {SourceKind::File, "/stick/gone.wav"});
    keepSource(HVAudio_source_AvIn, {SourceKind::Sweep, {}});
    m_sound->refusal = "/stick/gone.wav: no such file";
    m_sound->refuses = SourceKind::File;
    const MessageLog messages;
    restoreSources(m_sound.data());
    QCOMPARE(m_sound->source(HVAudio_source_Usb).kind, SourceKind::Silence);
    QCOMPARE(m_sound->source(HVAudio_source_AvIn).kind, SourceKind::Sweep);
    QCOMPARE(MessageLog::count("USB"), 1);
    QCOMPARE(MessageLog::count("'/stick/gone.wav' stays kept"), 1);
    QCOMPARE(sourceComplaints(*m_sound).filter("/stick/gone.wav").size(), 1);
    QCOMPARE(store()->value("Headunit_Source_USB"), QVariant("file:/stick/gone.wav"));
    // The stick is back at the next start.
    m_sound->refusal.clear();
    restoreSources(m_sound.data());
    QCOMPARE(m_sound->source(HVAudio_source_Usb).path, QStringLiteral("/stick/gone.wav"));
    QCOMPARE(sourceComplaints(*m_sound), QStringList());
}

void TestStoredSources::onlyTheKeyThatIsAskedForIsRestored()
{
    keepSource(HVAudio_source_Usb, {SourceKind::Sweep, {}});
    keepSource(HVAudio_source_Dab, {SourceKind::Sweep, {}});
    keepPlayingSource(HVAudio_source_Dab);
    restoreSources(m_sound.data(), "eq10");
    QCOMPARE(m_sound->takeCalls(), QStringList());
    restoreSources(m_sound.data(), "Headunit_Source_DAB");
    QCOMPARE(m_sound->takeCalls(),
             QStringList{QStringLiteral("setSource 19 %1 \"\"").arg(int(SourceKind::Sweep))});
    restoreSources(m_sound.data(), "Headunit_Playing");
    QCOMPARE(m_sound->takeCalls(), QStringList{"play 19"});
}

void TestStoredSources::emptyStoreTakesChoicesBack()
{
    keepSource(HVAudio_source_Usb, {SourceKind::Sweep, {}});
    keepPlayingSource(HVAudio_source_Usb);
    restoreSources(m_sound.data());
    store()->clear();
    restoreSources(m_sound.data());
    QCOMPARE(m_sound->source(HVAudio_source_Usb).kind, SourceKind::Input);
    QCOMPARE(m_sound->playing(), HVAudio_source_Radio);
}

QTEST_GUILESS_MAIN(TestStoredSources)
#include "tst_storedsources.moc"
