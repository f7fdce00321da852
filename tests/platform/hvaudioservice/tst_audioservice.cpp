#include "common/settings.h"
#include "hvaudio/eqcurves.h"
#include "platform/common/framework/journal.h"
#include "tests/platform/hvaudioservice/servicefixture.h"

#include <limits>

/// The calls: what they change, what they refuse, what they tell.
class TestAudioService : public ServiceFixture
{
    Q_OBJECT
private slots:
    void aFreshUnit();
    void acceptedCallsReachTheSound_data();
    void acceptedCallsReachTheSound();
    void callsOutOfRangeChangeNothing_data();
    void callsOutOfRangeChangeNothing();
    void eqTypeIsToldOnlyOnRealChange();
    void builtInCurvesAreTheTable();
    void editingNeedsAUserCurve();
    void anEditOfTheOtherCurveIsSilent();
    void volumesAreKeptAndTold();
    void largeLevelsSoundAsTheLargestCut_data();
    void largeLevelsSoundAsTheLargestCut();
    void callsAreReported();
};

void TestAudioService::aFreshUnit()
{
    QCOMPARE(static_cast<int>(service()->getCurrEQType()), 0);
    int balance = 99;
    int fader = 99;
    service()->getBalanceFader(balance, fader);
    QCOMPARE(balance, 0);
    QCOMPARE(fader, 0);
    QVERIFY(m_heard.power);
    QVERIFY(!m_heard.loudness);
    QCOMPARE(m_heard.mainDb, dbOf(25));
    QCOMPARE(m_heard.promptDb, (std::array<double, 4>{dbOf(40), dbOf(40), dbOf(40), dbOf(40)}));
    QCOMPARE(m_heard.sourceDb, 0.0);
    QCOMPARE(m_heard.equalizer, (std::array<int, 13>{}));
    for (const hvaudio::dsp::CabinSpeakerSettings& cabin : m_heard.cabin) {
        QCOMPARE(cabin.highPass.hz, 0.0);
        QCOMPARE(cabin.lowPass.hz, 0.0);
        QCOMPARE(cabin.attenuation, 0);
        QCOMPARE(cabin.delayMs, 0.0);
    }
}

void TestAudioService::acceptedCallsReachTheSound_data()
{
    using S = const Settings&;
    QTest::addColumn<Call>("call");
    QTest::addColumn<Check>("check");
    const auto row = [](const char* name, const Call& call, const Check& check) {
        QTest::newRow(name) << call << check;
    };
    // clang-format off
    row("a built-in curve",      [](AudioService* s) { s->setEQType(EQ_Type_Rock, true); },       [](S h) { return h.equalizer[8] == 6 && h.equalizer[0] == 0; });
    row("type 8 is flat",        [](AudioService* s) { s->setEQType(EQ_Type_Custom, true); },     [](S h) { return h.equalizer == std::array<int, 13>{}; });
    row("user curve 1",          [](AudioService* s) { s->setEQType(EQ_Type_User1, true); s->setCustomEq1(-10, 0, true); },  [](S h) { return h.equalizer[0] == -10; });
    row("user curve 2",          [](AudioService* s) { s->setCustomEq2(10, 12, true); s->setEQType(EQ_Type_User2, true); },  [](S h) { return h.equalizer[12] == 10; });
    row("the current user curve",[](AudioService* s) { s->setEQType(EQ_Type_User2, true); s->setCustomEq(3, 6, true); },     [](S h) { return h.equalizer[6] == 3; });
    row("loudness",              [](AudioService* s) { s->setCustomLoudness(true, false); },      [](S h) { return h.loudness; });
    row("balance and fader",     [](AudioService* s) { s->setBalanceFader(-15, 15, true); },      [](S h) { return h.balance == -1 && h.fader == 1; });
    row("front left high-pass",  [](AudioService* s) { s->setHPFFilter(4, 6, 1, 2); },            [](S h) { return h.cabin[0].highPass.hz == 80 && h.cabin[0].highPass.order == 3 && h.cabin[0].attenuation == 6; });
    row("rear right with the rear mark", [](AudioService* s) { s->setHPFFilter(8 | 0x80, 12, 8, 3); }, [](S h) { return h.cabin[3].highPass.hz == 250 && h.cabin[3].highPass.order == 4 && h.cabin[3].attenuation == 12; });
    row("front left with the rear mark", [](AudioService* s) { s->setHPFFilter(3 | 0x80, 1, 1, 0); }, [](S h) { return h.cabin[0].highPass.hz == 60 && h.cabin[0].attenuation == 1; });
    row("a high-pass that is off cuts nothing", [](AudioService* s) { s->setHPFFilter(0, 12, 2, 0); }, [](S h) { return h.cabin[1].highPass.hz == 0 && h.cabin[1].attenuation == 0; });
    row("rear left low-pass",    [](AudioService* s) { s->setLPFFilter(2, 3, 4, 1); },            [](S h) { return h.cabin[2].lowPass.hz == 40 && h.cabin[2].lowPass.order == 2 && h.cabin[2].attenuation == 3; });
    row("subwoofer",             [](AudioService* s) { s->setSubFilter(9, 12, 3); },              [](S h) { return hears(h, 250) && h.subwoofer.attenuation == 12 && h.subwoofer.lowPass.order == 4; });
    row("subwoofer silent",      [](AudioService* s) { s->setSubFilter(0, 4, 0); },               [](S h) { return h.subwoofer.silent; });
    row("delay of a speaker",    [](AudioService* s) { s->setSurroundDelay(2, 1.5F); },           [](S h) { return h.cabin[1].delayMs == 1.5; });
    row("a tenth stays a tenth", [](AudioService* s) { s->setSurroundDelay(32, 1 * 0.1F); },      [](S h) { return h.subwoofer.delayMs == 0.1; });
    row("a delay is whole microseconds", [](AudioService* s) { s->setSurroundDelay(1, 1.23456F); }, [](S h) { return h.cabin[0].delayMs == 1.235; });
    row("largest delay",         [](AudioService* s) { s->setSurroundDelay(8, 100 * 0.1F); },     [](S h) { return h.cabin[3].delayMs == 10.0; });
    row("main volume",           [](AudioService* s) { s->setVolumeLevel(50, 0); },               [](S h) { return h.mainDb == dbOf(50); });
    row("ring volume",           [](AudioService* s) { s->setVolumeLevel(1, 1); },                [](S h) { return h.promptDb[hvaudio::dsp::Ring] == dbOf(1); });
    row("call volume",           [](AudioService* s) { s->setVolumeLevel(2, 2); },                [](S h) { return h.promptDb[hvaudio::dsp::Call] == dbOf(2); });
    row("voice volume",          [](AudioService* s) { s->setVolumeLevel(4, 4); },                [](S h) { return h.promptDb[hvaudio::dsp::Voice] == dbOf(4); });
    row("navigation volume",     [](AudioService* s) { s->setVolumeLevel(5, 5); },                [](S h) { return h.promptDb[hvaudio::dsp::Navi] == dbOf(5); });
    row("gain of the radio",     [](AudioService* s) { s->setSourceOffsetGain(HVAudio_source_Radio, 15); }, [](S h) { return h.source == 18 && h.sourceDb == 10; });
    // clang-format on
}

void TestAudioService::acceptedCallsReachTheSound()
{
    QFETCH(Call, call);
    QFETCH(Check, check);
    const MessageLog log;
    call(service());
    QVERIFY(check(m_heard));
    Settings inRange = m_heard;
    QCOMPARE(hvaudio::dsp::clampToRange(inRange), std::string());
    QCOMPARE(log.lines(), QStringList());
}

void TestAudioService::callsOutOfRangeChangeNothing_data()
{
    constexpr int huge = std::numeric_limits<int>::max();
    QTest::addColumn<Call>("call");
    const auto row = [](const char* name, const Call& call) { QTest::newRow(name) << call; };
    // clang-format off
    row("EQ type 9",               [](AudioService* s) { s->setEQType(static_cast<AudioEQType>(9), true); });
    row("EQ type -1",              [](AudioService* s) { s->setEQType(static_cast<AudioEQType>(-1), true); });
    row("band 13",                 [](AudioService* s) { s->setCustomEq1(0, 13, true); });
    row("band -1",                 [](AudioService* s) { s->setCustomEq2(0, -1, true); });
    row("value 11",                [](AudioService* s) { s->setCustomEq1(11, 0, true); });
    row("value -11",               [](AudioService* s) { s->setCustomEq2(-11, 0, true); });
    row("a built-in curve edited", [](AudioService* s) { s->setCustomEq(1, 0, true); });
    row("band 13 read",            [](AudioService* s) { QCOMPARE(s->getCustomEq(13), 0); });
    row("band -1 read",            [](AudioService* s) { QCOMPARE(s->getCustomEq(-1), 0); });
    row("balance 16",              [](AudioService* s) { s->setBalanceFader(16, 0, true); });
    row("fader -16",               [](AudioService* s) { s->setBalanceFader(3, -16, true); });
    row("high-pass index 9",       [](AudioService* s) { s->setHPFFilter(9, 0, 1, 0); });
    row("high-pass index with a bit that is no mark", [](AudioService* s) { s->setHPFFilter(0x104, 0, 1, 0); });
    row("high-pass index -1",      [](AudioService* s) { s->setHPFFilter(-1, 0, 1, 0); });
    row("high-pass of two speakers", [](AudioService* s) { s->setHPFFilter(1, 0, 3, 0); });
    row("high-pass of the subwoofer", [](AudioService* s) { s->setHPFFilter(1, 0, 32, 0); });
    row("high-pass of nobody",     [](AudioService* s) { s->setHPFFilter(1, 0, 0, 0); });
    row("high-pass slope 4",       [](AudioService* s) { s->setHPFFilter(1, 0, 1, 4); });
    row("high-pass slope -1",      [](AudioService* s) { s->setHPFFilter(1, 0, 1, -1); });
    row("attenuation 128",         [](AudioService* s) { s->setHPFFilter(1, 128, 1, 0); });
    row("attenuation -1",          [](AudioService* s) { s->setLPFFilter(1, -1, 1, 0); });
    row("low-pass index 9",        [](AudioService* s) { s->setLPFFilter(9, 0, 1, 0); });
    row("low-pass speaker 16",     [](AudioService* s) { s->setLPFFilter(1, 0, 16, 0); });
    row("subwoofer index 10",      [](AudioService* s) { s->setSubFilter(10, 0, 0); });
    row("subwoofer index -1",      [](AudioService* s) { s->setSubFilter(-1, 0, 0); });
    row("subwoofer level 128",     [](AudioService* s) { s->setSubFilter(7, 128, 0); });
    row("subwoofer slope 4",       [](AudioService* s) { s->setSubFilter(7, 0, 4); });
    row("delay of mask 3",         [](AudioService* s) { s->setSurroundDelay(3, 1.0F); });
    row("delay of mask 16",        [](AudioService* s) { s->setSurroundDelay(16, 1.0F); });
    row("delay 10.1 ms",           [](AudioService* s) { s->setSurroundDelay(1, 10.1F); });
    row("delay -0.1 ms",           [](AudioService* s) { s->setSurroundDelay(1, -0.1F); });
    row("delay that is no number", [](AudioService* s) { s->setSurroundDelay(1, std::numeric_limits<float>::quiet_NaN()); });
    row("endless delay",           [](AudioService* s) { s->setSurroundDelay(1, std::numeric_limits<float>::infinity()); });
    row("level 51",                [](AudioService* s) { s->setVolumeLevel(51, 0); });
    row("level -1",                [](AudioService* s) { s->setVolumeLevel(-1, 0); });
    row("channel 3",               [](AudioService* s) { s->setVolumeLevel(1, 3); });
    row("channel 6",               [](AudioService* s) { s->setVolumeLevel(1, 6); });
    row("channel -1",              [](AudioService* s) { s->setVolumeLevel(1, -1); });
    row("gain 16",                 [](AudioService* s) { s->setSourceOffsetGain(HVAudio_source_Radio, 16); });
    row("gain -1",                 [](AudioService* s) { s->setSourceOffsetGain(HVAudio_source_Radio, -1); });
    row("source 2",                [](AudioService* s) { s->setSourceOffsetGain(static_cast<HVAudio_source_id_e>(2), 5); });
    row("no source to play",       [](AudioService*)   { AudioServiceHost::setActiveSource(static_cast<HVAudio_source_id_e>(-3)); });
    row("huge numbers",            [](AudioService* s) { s->setSubFilter(huge, huge, huge); });
    row("huge negative numbers",   [](AudioService* s) { s->setHPFFilter(-huge, -huge, -huge, -huge); });
    // clang-format on
}

void TestAudioService::callsOutOfRangeChangeNothing()
{
    QFETCH(Call, call);
    const QMap<QString, QVariant> before = store()->values();
    const int heardBefore = m_heardCount;
    QSignalSpy types(mem::SettingsUtil::instance(), &mem::SettingsUtil::EQType);
    QSignalSpy volumes(service(), &AudioService::audioVolumeChanged);
    const MessageLog log;
    call(service());
    QCOMPARE(log.lines().size(), 1);
    QVERIFY2(log.lines().first().startsWith(QLatin1String("AudioService: ")),
             qPrintable(log.lines().first()));
    QCOMPARE(m_heardCount, heardBefore);
    QCOMPARE(store()->values(), before);
    QCOMPARE(types.size() + volumes.size(), 0);
}

void TestAudioService::eqTypeIsToldOnlyOnRealChange()
{
    QSignalSpy types(mem::SettingsUtil::instance(), SIGNAL(EQType(int)));
    service()->setEQType(EQ_Type_Flat, true);
    QCOMPARE(types.size(), 0);
    service()->setEQType(EQ_Type_Jazz, true);
    service()->setEQType(EQ_Type_Jazz, true);
    QCOMPARE(types.size(), 1);
    QCOMPARE(types.first().first().toInt(), 5);
    // A listener reads the new type already.
    int readInside = -1;
    const QMetaObject::Connection connection =
        connect(mem::SettingsUtil::instance(), &mem::SettingsUtil::EQType, this,
                [this, &readInside] { readInside = service()->getCurrEQType(); });
    service()->setEQType(EQ_Type_User1, false);
    disconnect(connection);
    QCOMPARE(readInside, 6);
    QCOMPARE(types.size(), 2);
}

void TestAudioService::builtInCurvesAreTheTable()
{
    for (int type = 0; type <= 8; ++type) {
        service()->setEQType(static_cast<AudioEQType>(type), false);
        for (int band = 0; band < 13; ++band) {
            const int expected = hvaudio::eqCurveOf(type).value[band];
            QCOMPARE(service()->getCustomEq(band), expected);
            QCOMPARE(m_heard.equalizer[static_cast<std::size_t>(band)], expected);
        }
    }
    // Spot checks against the table on paper; the lookup ends flat.
    QCOMPARE(hvaudio::eqCurveOf(1).value[2], 5);
    QCOMPARE(hvaudio::eqCurveOf(4).value[6], -2);
    QCOMPARE(hvaudio::eqCurveOf(5).nameId, 246);
    for (int none : {8, 9, -1, 1000})
        QCOMPARE(hvaudio::eqCurveOf(none).type, -1);
    QCOMPARE(hvaudio::eqCurveOf(8).nameId, 1226);
}

void TestAudioService::editingNeedsAUserCurve()
{
    service()->setEQType(EQ_Type_User2, true);
    service()->setCustomEq(7, 0, true);
    QCOMPARE(stored("eq20"), QVariant(7));
    QVERIFY(!stored("eq10").isValid());
    service()->setEQType(EQ_Type_User1, true);
    service()->setCustomEq(-7, 12, true);
    QCOMPARE(stored("eq112"), QVariant(-7));
}

void TestAudioService::anEditOfTheOtherCurveIsSilent()
{
    service()->setEQType(EQ_Type_Rock, true);
    const int heardBefore = m_heardCount;
    service()->setCustomEq1(5, 5, true);
    service()->setCustomEq2(5, 5, true);
    QCOMPARE(m_heardCount, heardBefore);
    QCOMPARE(stored("eq15"), QVariant(5));
    QCOMPARE(stored("eq25"), QVariant(5));
}

void TestAudioService::volumesAreKeptAndTold()
{
    QSignalSpy volumes(service(), SIGNAL(audioVolumeChanged(bool, int, int)));
    service()->setVolumeLevel(30, 5);
    QCOMPARE(volumes.size(), 1);
    QCOMPARE(volumes.first(), QList<QVariant>({false, 30, 5}));
    QCOMPARE(stored("volume5"), QVariant(30));
    service()->setVolumeLevel(30, 5);
    QCOMPARE(volumes.size(), 1);
    // The page reads the key inside the signal.
    int readInside = -1;
    const QMetaObject::Connection connection =
        connect(service(), &AudioService::audioVolumeChanged, this, [this, &readInside] {
            readInside = mem::SettingsFunc::instance()->getValue(QStringLiteral("volume4"), 0);
        });
    service()->setVolumeLevel(0, 4);
    disconnect(connection);
    QCOMPARE(readInside, 0);
    QVERIFY(stored("volume4").isValid());
}

void TestAudioService::largeLevelsSoundAsTheLargestCut_data()
{
    QTest::addColumn<int>("level");
    for (int level : {13, 14, 15, 127})
        QTest::addRow("%d", level) << level;
}

void TestAudioService::largeLevelsSoundAsTheLargestCut()
{
    QFETCH(int, level);
    const MessageLog log;
    service()->setSubFilter(7, level, 0);
    QCOMPARE(m_heard.subwoofer.attenuation, 12);
    service()->setHPFFilter(1, level, 1, 0);
    QCOMPARE(m_heard.cabin[0].attenuation, 12);
    service()->setLPFFilter(1, level, 1, 0);
    QCOMPARE(m_heard.cabin[0].attenuation, 12);
    QCOMPARE(log.lines().size(), 3);
    QCOMPARE(stored("AudioService_Sub").toString(), QStringLiteral("7;%1;0").arg(level));
}

void TestAudioService::callsAreReported()
{
    QStringList reported;
    const QMetaObject::Connection connection = connect(
        cm::Journal::instance(), &cm::Journal::recorded, this, [&reported](const cm::Journal::Entry& entry) {
            reported << entry.subsystem + QLatin1Char('.') + entry.operation;
        });
    AudioService* const s = service();
    int balance = 0;
    int fader = 0;
    s->doBeep(0);
    s->getCurrEQType();
    s->setEQType(EQ_Type_User1, true);
    s->getCustomEq(3);
    s->setCustomEq(1, 2, true);
    s->setCustomEq1(-1, 2, true);
    s->setCustomEq2(1, 2, true);
    s->setCustomLoudness(true, false);
    s->getBalanceFader(balance, fader);
    s->setBalanceFader(1, -2, true);
    s->setHPFFilter(131, 0, 4, 0);
    s->setLPFFilter(1, 0, 4, 0);
    s->setSubFilter(7, 11, 0);
    s->setSurroundDelay(32, 0.1F);
    s->setVolumeLevel(26, 0);
    s->setSourceOffsetGain(HVAudio_source_Radio, 6);
    disconnect(connection);
    // The service's own reads and writes of the store are its business and not in the journal.
    QCOMPARE(reported,
             QString::fromLatin1("doBeep(0)\ngetCurrEQType()\nsetEQType(6, true)\ngetCustomEq(3)\n"
                                 "setCustomEq(1, 2, true)\nsetCustomEq1(-1, 2, true)\n"
                                 "setCustomEq2(1, 2, true)\nsetCustomLoudness(true, false)\n"
                                 "getBalanceFader()\nsetBalanceFader(1, -2, true)\n"
                                 "setHPFFilter(131, 0, 4, 0)\nsetLPFFilter(1, 0, 4, 0)\n"
                                 "setSubFilter(7, 11, 0)\nsetSurroundDelay(32, 0.1)\n"
                                 "setVolumeLevel(26, 0)\nsetSourceOffsetGain(18, 6)")
                 .split(QLatin1Char('\n'))
                 .replaceInStrings(QRegularExpression(QStringLiteral("^")), QStringLiteral("AudioService.")));
}

QTEST_GUILESS_MAIN(TestAudioService)
#include "tst_audioservice.moc"
