#include "headunit/sound/mastervolume.h"

#include "hvaudio/audioservice.h"
#include "platform/common/settings/settingsstore.h"
#include "platform/hvaudioservice/audioservicehost.h"

#include <QtTest>

#include <climits>

using namespace headunit;

/// What the platform says of the volume, which may be anything.
class TestMasterVolume : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void levelOutOfRangeIsTheNearestEnd_data();
    void levelOutOfRangeIsTheNearestEnd();
    void levelOfAnotherChannelIsNotShown_data();
    void levelOfAnotherChannelIsNotShown();
    void storedLevelOutOfRangeIsTheNearestEnd();
    void anyNumberOfStepsEndsAtAnEnd_data();
    void anyNumberOfStepsEndsAtAnEnd();

private:
    static void say(bool muted, int level, int channel)
    {
        emit hvaudio::AudioService::instance()->audioVolumeChanged(muted, level, channel);
    }

    QScopedPointer<MasterVolume> m_volume;
};

void TestMasterVolume::init()
{
    m_volume.reset(new MasterVolume); // on a store that works from memory
    say(false, 20, 0);
    QCOMPARE(m_volume->level(), 20);
}

void TestMasterVolume::cleanup()
{
    m_volume.reset();
    hvaudio::AudioServiceHost::shutdown();
    mem::SettingsStore::instance()->clear();
}

void TestMasterVolume::levelOutOfRangeIsTheNearestEnd_data()
{
    QTest::addColumn<int>("said");
    QTest::addColumn<int>("shown");
    QTest::newRow("one too much") << 51 << 50;
    QTest::newRow("far too much") << 2000000000 << 50;
    QTest::newRow("largest") << INT_MAX << 50;
    QTest::newRow("one too little") << -1 << 0;
    QTest::newRow("smallest") << INT_MIN << 0;
}

void TestMasterVolume::levelOutOfRangeIsTheNearestEnd()
{
    QFETCH(int, said);
    QFETCH(int, shown);
    for (const bool muted : {false, true}) {
        say(false, said, 0);
        QCOMPARE(m_volume->level(), shown);
        say(muted, said, 0);
        QCOMPARE(m_volume->level(), shown);
        QCOMPARE(m_volume->isMuted(), muted);
    }
}

void TestMasterVolume::levelOfAnotherChannelIsNotShown_data()
{
    QTest::addColumn<int>("channel");
    for (const int channel : {1, 5, 6, -1, INT_MAX, INT_MIN})
        QTest::newRow(qPrintable(QString::number(channel))) << channel;
}

void TestMasterVolume::levelOfAnotherChannelIsNotShown()
{
    QFETCH(int, channel);
    say(true, 33, channel);
    QCOMPARE(m_volume->level(), 20);
    QVERIFY(!m_volume->isMuted());
}

void TestMasterVolume::storedLevelOutOfRangeIsTheNearestEnd()
{
    mem::SettingsStore::instance()->setValue("volume0", INT_MAX, true);
    m_volume->reload();
    QCOMPARE(m_volume->level(), 50);
}

void TestMasterVolume::anyNumberOfStepsEndsAtAnEnd_data()
{
    QTest::addColumn<int>("steps");
    QTest::addColumn<int>("level");
    QTest::newRow("one") << 1 << 21;
    QTest::newRow("up") << INT_MAX << 50;
    QTest::newRow("down") << INT_MIN << 0;
}

void TestMasterVolume::anyNumberOfStepsEndsAtAnEnd()
{
    QFETCH(int, steps);
    QFETCH(int, level);
    m_volume->step(steps);
    QCOMPARE(m_volume->level(), level);
}

QTEST_MAIN(TestMasterVolume)
#include "tst_mastervolume.moc"
