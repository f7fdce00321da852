#include "common/mcumanager.h"
#include "common/settings.h"
#include "tests/platform/hvaudioservice/servicefixture.h"

/// What the host does with the service: power, tables, sources, sound, its end.
class TestAudioServiceHost : public ServiceFixture
{
    Q_OBJECT
private slots:
    void powerOnSetsTheStartUpVolumes();
    void powerOffFallsSilentAndKeeps();
    void eqTypeIsToldWhenThePowerCycleChangesIt();
    void theTwoTableSetsKeepTheirOwnFilters();
    void aStandAloneLevelIsALevel();
    void theGainOfThePlayingSourceSounds();
    void bothBeepsReachTheBeeper();
    void worksWithoutSink();
    void soundDoesNotWaitForTheDisk_data();
    void soundDoesNotWaitForTheDisk();
    void shutdownMakesRoomForANewService();
};

void TestAudioServiceHost::powerOnSetsTheStartUpVolumes()
{
    for (int channel : {0, 1, 2, 4, 5})
        service()->setVolumeLevel(50, channel);
    setStored("Setup_Main_Volume", 11);
    setStored("Setup_Volume_Type_BT_Ringer", 12);
    setStored("Setup_Volume_Type_BT_Talking", 13);
    setStored("Setup_Volume_Type_Navi", 15);
    setStored("Setup_Volume_Type_Voice", 14);
    AudioServiceHost::powerOff();
    QVERIFY(!m_heard.power);
    // Power never comes with the level of before.
    bool loud = false;
    AudioServiceHost::setSink([this, &loud](const Settings& settings) {
        m_heard = settings;
        loud = loud || (settings.power && settings.mainDb != dbOf(11));
    });
    QSignalSpy volumes(service(), &AudioService::audioVolumeChanged);
    AudioServiceHost::powerOn();
    QVERIFY(!loud);
    QVERIFY(m_heard.power);
    QCOMPARE(m_heard.mainDb, dbOf(11));
    QCOMPARE(m_heard.promptDb, (std::array<double, 4>{dbOf(12), dbOf(13), dbOf(14), dbOf(15)}));
    QCOMPARE(volumes.size(), 5);
    QCOMPARE(stored("volume0"), QVariant(11));
    QCOMPARE(stored("volume4"), QVariant(14));
    QCOMPARE(stored("volume5"), QVariant(15));
}

void TestAudioServiceHost::powerOffFallsSilentAndKeeps()
{
    service()->setHPFFilter(3, 0, 1, 0);
    AudioServiceHost::powerOff();
    QVERIFY(!m_heard.power);
    store()->close();
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    QCOMPARE(stored("AudioService_HPF_0"), QVariant(QStringLiteral("3;0;0")));
}

void TestAudioServiceHost::eqTypeIsToldWhenThePowerCycleChangesIt()
{
    service()->setEQType(EQ_Type_Pop, true);
    service()->setEQType(EQ_Type_Rock, false);
    QSignalSpy types(mem::SettingsUtil::instance(), &mem::SettingsUtil::EQType);
    AudioServiceHost::powerOff();
    AudioServiceHost::powerOn();
    QCOMPARE(types.size(), 1);
    QCOMPARE(types.first().first().toInt(), 3);
    AudioServiceHost::powerOff();
    AudioServiceHost::powerOn();
    QCOMPARE(types.size(), 1);
}

void TestAudioServiceHost::theTwoTableSetsKeepTheirOwnFilters()
{
    service()->setHPFFilter(8, 2, 1, 1);
    AudioServiceHost::setFilterTables(AudioServiceHost::FilterTables::MainAudio);
    QCOMPARE(m_heard.cabin[0].highPass.hz, 0.0);
    // The page sends the index in both places; it is no attenuation there.
    service()->setHPFFilter(4, 4, 1, 1);
    service()->setLPFFilter(5, 5, 1, 3);
    QCOMPARE(m_heard.cabin[0].highPass.hz, 160.0);
    QCOMPARE(m_heard.cabin[0].lowPass.hz, 20000.0);
    QCOMPARE(m_heard.cabin[0].attenuation, 0);
    {
        const MessageLog log;
        service()->setHPFFilter(4, 13, 1, 1); // so it can't be too large a one
        QCOMPARE(log.lines(), QStringList());
        QCOMPARE(m_heard.cabin[0].attenuation, 0);
        service()->setHPFFilter(6, 6, 1, 1);
        QCOMPARE(log.lines().size(), 1);
        QCOMPARE(m_heard.cabin[0].highPass.hz, 160.0);
    }
    AudioServiceHost::setFilterTables(AudioServiceHost::FilterTables::SpeakerGroups);
    QCOMPARE(m_heard.cabin[0].highPass.hz, 250.0);
    QCOMPARE(m_heard.cabin[0].attenuation, 2);
    AudioServiceHost::setFilterTables(AudioServiceHost::FilterTables::MainAudio);
    QCOMPARE(m_heard.cabin[0].highPass.hz, 160.0);
}

void TestAudioServiceHost::aStandAloneLevelIsALevel()
{
    AudioServiceHost::setFilterTables(AudioServiceHost::FilterTables::MainAudio);
    service()->setSubFilter(3, 14, 0);
    QCOMPARE(m_heard.subwoofer.attenuation, 0);
    service()->setSubFilter(3, 1, 0);
    QCOMPARE(m_heard.subwoofer.attenuation, 13);
    QVERIFY(hears(m_heard, 80));
    // Indexes of the speaker groups' list sound as the nearest of its own.
    const double nearest[] = {120, 120, 160, 160};
    for (int index = 6; index <= 9; ++index) {
        service()->setSubFilter(index, 5, 0);
        QVERIFY(hears(m_heard, nearest[index - 6]));
    }
    service()->setSubFilter(3, 127, 0);
    QCOMPARE(m_heard.subwoofer.attenuation, 0);
}

void TestAudioServiceHost::theGainOfThePlayingSourceSounds()
{
    const HVAudio_source_id_e sources[] = {
        HVAudio_source_Radio,   HVAudio_source_Usb,         HVAudio_source_BtAudio, HVAudio_source_AvIn,
        HVAudio_source_Carplay, HVAudio_source_AndroidAuto, HVAudio_source_Dab};
    const char* const keys[] = {
        "Setup_Input_Gain_Type_Radio", "Setup_Input_Gain_Type_USB",     "Setup_Input_Gain_Type_BT_Audio",
        "Setup_Input_Gain_Type_AUX",   "Setup_Input_Gain_Type_Carplay", "Setup_Input_Gain_Type_Android_Auto",
        "Setup_Input_Gain_Type_DAB",
    };
    for (int i = 0; i < 7; ++i)
        setStored(keys[i], i);
    restart();
    for (int i = 0; i < 7; ++i) {
        AudioServiceHost::setActiveSource(sources[i]);
        QCOMPARE(m_heard.source, static_cast<int>(sources[i]));
        QCOMPARE(m_heard.sourceDb, i - 5.0);
        service()->setSourceOffsetGain(sources[i], i + 8);
        QCOMPARE(m_heard.sourceDb, i + 8 - 5.0);
    }
    // The pages keep these keys, not the service.
    QCOMPARE(stored("Setup_Input_Gain_Type_Radio"), QVariant(0));
}

void TestAudioServiceHost::bothBeepsReachTheBeeper()
{
    int beeps = 0;
    AudioServiceHost::setBeeper([&beeps] { ++beeps; });
    service()->doBeep(0);
    QCOMPARE(beeps, 1);
    McuManager::instance()->triggerBeep(0);
    QCOMPARE(beeps, 2);
    const MessageLog log;
    service()->doBeep(3);
    QCOMPARE(beeps, 3);
    QCOMPARE(log.lines().size(), 1);
}

void TestAudioServiceHost::soundDoesNotWaitForTheDisk_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QString>("key");
    const auto row = [](const char* name, const char* key, Call call) {
        QTest::newRow(name) << call << QString::fromLatin1(key);
    };
    // clang-format off
    row("equalizer type", "AudioService_EQType",     [](AudioService* s) { s->setEQType(AudioEQType(3), true); });
    row("user curve 1",   "eq12",                    [](AudioService* s) { s->setEQType(AudioEQType(6), false); s->setCustomEq1(5, 2, true); });
    row("loudness",       "customloudnes",           [](AudioService* s) { s->setCustomLoudness(true, true); });
    row("fader",          "AudioService_Fader",      [](AudioService* s) { s->setBalanceFader(3, -4, true); });
    row("high-pass",      "AudioService_HPF_0",      [](AudioService* s) { s->setHPFFilter(4, 0, 1, 3); });
    row("delay",          "AudioService_DelayUs_0",  [](AudioService* s) { s->setSurroundDelay(1, 2.5f); });
    // clang-format on
}

void TestAudioServiceHost::soundDoesNotWaitForTheDisk()
{
    QFETCH(Call, call);
    QFETCH(QString, key);
    const QVariant before = store()->value(key);
    QVariant whenHeard = QStringLiteral("never heard");
    AudioServiceHost::setSink([&](const Settings&) { whenHeard = store()->value(key); });
    call(service());
    QCOMPARE(whenHeard, before);
    QVERIFY(store()->value(key) != before);
}

void TestAudioServiceHost::worksWithoutSink()
{
    AudioServiceHost::setSink(nullptr);
    service()->setVolumeLevel(10, 0);
    service()->doBeep(0);
    QCOMPARE(stored("volume0"), QVariant(10));
    // A sink that comes later is told where things stand.
    double level = 0;
    AudioServiceHost::setSink([&level](const Settings& settings) { level = settings.mainDb; });
    QCOMPARE(level, dbOf(10));
    AudioServiceHost::setSink(nullptr);
}

void TestAudioServiceHost::shutdownMakesRoomForANewService()
{
    const QPointer<AudioService> first(service());
    service()->setBalanceFader(3, 4, true);
    AudioServiceHost::shutdown();
    QVERIFY(!first);
    AudioServiceHost::shutdown();
    // Installing a sink makes no service; the next one to be made is told by what happens to it.
    const int heardBefore = m_heardCount;
    AudioServiceHost::setSink([this](const Settings&) { ++m_heardCount; });
    QCOMPARE(m_heardCount, heardBefore);
    int balance = 0;
    int fader = 0;
    AudioService::instance()->getBalanceFader(balance, fader);
    QCOMPARE(balance, 3);
    QCOMPARE(fader, 4);
}

QTEST_GUILESS_MAIN(TestAudioServiceHost)
#include "tst_audioservicehost.moc"
