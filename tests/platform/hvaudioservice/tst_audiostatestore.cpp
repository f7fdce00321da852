#include "common/settings.h"
#include "common/settingstable.h"
#include "hvaudio/eqcurves.h"
#include "tests/platform/hvaudioservice/servicefixture.h"

#include <algorithm>
#include <limits>

/// What is kept, under which key, and what comes back.
class TestAudioStateStore : public ServiceFixture
{
    Q_OBJECT
private slots:
    void everythingIsRestoredAfterARestart();
    void everyKeptKeyStandsInTheTable();
    void storedValuesOutOfRangeAreLoggedAndBrought_data();
    void storedValuesOutOfRangeAreLoggedAndBrought();
    void restoringWritesNothingButVolumes();
    void withoutTheFlagNothingIsKept();
    void loudnessIsKeptWhateverTheFlag();
    void aBurstOfFiltersIsDurableWhenTheLoopTurns();
    void subwooferSlopeFollowsTheStore();
    void subwooferPolarityFollowsTheStore();
    void untouchedSubwooferIsWhatThePagesShow();
    void anEditFromOutsideIsHeardAtOnce_data();
    void anEditFromOutsideIsHeardAtOnce();
    void anEditedTypeIsToldToThePages();
    void anEditedVolumeIsToldToThePages();
    void aVolumeTakenAwayIsTheOneOfPowerOn_data();
    void aVolumeTakenAwayIsTheOneOfPowerOn();
    void aVolumeOfAWrongTypeChangesNothing();
    void anEditLeavesWhatWasNotKeptAlone();
    void anEditOutOfRangeIsLoggedOnceAndBrought();
    void anEditedStartVolumeWaitsForPowerOn();
    void onlyEditsAreTakenOver();
};

void TestAudioStateStore::everythingIsRestoredAfterARestart()
{
    AudioService* const s = service();
    s->setEQType(EQ_Type_User2, true);
    for (int band = 0; band < 13; ++band) {
        s->setCustomEq1(band - 6, band, true);
        s->setCustomEq2(6 - band, band, true);
    }
    s->setCustomLoudness(true, false);
    s->setBalanceFader(-7, 9, true);
    for (int speaker = 0; speaker < 4; ++speaker) {
        s->setHPFFilter(speaker + 1, speaker, 1 << speaker, speaker);
        s->setLPFFilter(speaker + 2, 0, 1 << speaker, 3 - speaker);
        s->setSurroundDelay(1 << speaker, static_cast<float>(speaker) * 0.1F);
    }
    s->setSubFilter(5, 3, 2);
    s->setSurroundDelay(32, 7.7F);
    s->setVolumeLevel(33, 0);
    setStored("Setup_Main_Volume", 33);
    setStored("Setup_Input_Gain_Type_Radio", 7);
    s->setSourceOffsetGain(HVAudio_source_Radio, 7);
    const Settings before = m_heard;
    restart();
    const Settings after = m_heard;
    QCOMPARE(static_cast<int>(service()->getCurrEQType()), 7);
    for (int band = 0; band < 13; ++band)
        QCOMPARE(service()->getCustomEq(band), 6 - band);
    QCOMPARE(after.equalizer, before.equalizer);
    QCOMPARE(after.loudness, before.loudness);
    QCOMPARE(after.balance, before.balance);
    QCOMPARE(after.fader, before.fader);
    QCOMPARE(after.mainDb, dbOf(33));
    QCOMPARE(after.sourceDb, 2.0);
    for (std::size_t i = 0; i < 4; ++i) {
        QCOMPARE(after.cabin[i].highPass.hz, before.cabin[i].highPass.hz);
        QCOMPARE(after.cabin[i].highPass.order, before.cabin[i].highPass.order);
        QCOMPARE(after.cabin[i].lowPass.hz, before.cabin[i].lowPass.hz);
        QCOMPARE(after.cabin[i].lowPass.order, before.cabin[i].lowPass.order);
        QCOMPARE(after.cabin[i].attenuation, before.cabin[i].attenuation);
        QCOMPARE(after.cabin[i].delayMs, before.cabin[i].delayMs);
    }
    QVERIFY(hears(after, 80));
    QCOMPARE(after.subwoofer.attenuation, 3);
    QCOMPARE(after.subwoofer.lowPass.order, 3);
    QCOMPARE(after.subwoofer.delayMs, 7.7);
    service()->setEQType(EQ_Type_User1, false);
    for (int band = 0; band < 13; ++band)
        QCOMPARE(service()->getCustomEq(band), band - 6);
}

void TestAudioStateStore::everyKeptKeyStandsInTheTable()
{
    QMap<QString, QVariant::Type> table;
    for (const mem::Setting& row : mem::settings) {
        constexpr QVariant::Type types[] = {QVariant::Bool, QVariant::Int, QVariant::String};
        for (int i = 0; i < row.count && row.owner == mem::SettingOwner::AudioService; ++i)
            table.insert(row.count > 1 ? QString(row.key).arg(i) : row.key, types[int(row.type)]);
    }
    AudioService* const s = service();
    for (const auto tables :
         {AudioServiceHost::FilterTables::SpeakerGroups, AudioServiceHost::FilterTables::MainAudio}) {
        AudioServiceHost::setFilterTables(tables);
        for (int speaker = 0; speaker < 4; ++speaker) {
            s->setHPFFilter(1, 1, 1 << speaker, 1);
            s->setLPFFilter(1, 1, 1 << speaker, 1);
            s->setSurroundDelay(1 << speaker, 1);
        }
        s->setSubFilter(1, 1, 1);
    }
    s->setSurroundDelay(32, 1);
    s->setEQType(EQ_Type_Rock, true);
    for (int band = 0; band < 13; ++band) {
        s->setCustomEq1(1, band, true);
        s->setCustomEq2(1, band, true);
    }
    s->setCustomLoudness(true, true);
    s->setBalanceFader(1, 1, true);
    const QMap<QString, QVariant> kept = store()->values();
    for (auto it = kept.cbegin(); it != kept.cend(); ++it)
        QVERIFY2(table.value(it.key()) == it.value().type(), qPrintable(it.key()));
    // All but the channel that is none.
    QCOMPARE(kept.size(), table.size() - 1);
}

void TestAudioStateStore::storedValuesOutOfRangeAreLoggedAndBrought_data()
{
    constexpr int huge = std::numeric_limits<int>::max();
    using S = const Settings&;
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<Check>("check");
    const auto row = [](const char* key, const char* what, const QVariant& value, const Check& check) {
        QTest::addRow("%s %s", key, what) << QString::fromLatin1(key) << value << check;
    };
    // clang-format off
    row("AudioService_EQType",  "9",       9,                        [](S h) { return h.equalizer == std::array<int, 13>{}; });
    row("eq10",                 "99",      99,                       [](S h) { return h.equalizer[0] == 10; });
    row("eq112",                "-huge",   -huge,                    [](S h) { return h.equalizer[12] == -10; });
    row("eq13",                 "text",    QStringLiteral("loud"),   [](S h) { return h.equalizer[3] == 0; });
    row("customloudnes",        "int",     1,                        [](S h) { return !h.loudness; });
    row("AudioService_Balance", "16",      16,                       [](S h) { return h.balance == 1; });
    row("AudioService_Fader",   "text",    QStringLiteral(""),       [](S h) { return h.fader == 0; });
    row("AudioService_HPF_0",   "malformed", QStringLiteral("1;2"),  [](S h) { return h.cabin[0].highPass.hz == 0; });
    row("AudioService_HPF_1",   "beyond",  QStringLiteral("9;0;0"),  [](S h) { return h.cabin[1].highPass.hz == 0; });
    row("AudioService_LPF_2",   "letters", QStringLiteral("a;b;c"),  [](S h) { return h.cabin[2].lowPass.hz == 0; });
    row("AudioService_Sub",     "a mebibyte", QString(1 << 20, QLatin1Char(';')), [](S h) { return hears(h, 120); });
    row("AudioService_Sub",     "int",     5,                        [](S h) { return hears(h, 120); });
    row("AudioService_DelayUs_0", "huge",  huge,                     [](S h) { return h.cabin[0].delayMs == 10.0; });
    row("Setup_Main_Volume",    "huge",    huge,                     [](S h) { return h.mainDb == dbOf(25); });
    row("Setup_Main_Volume",    "-1",      -1,                       [](S h) { return h.mainDb == dbOf(25); });
    row("Setup_Volume_Type_Navi", "text",  QStringLiteral("x"),      [](S h) { return h.promptDb[3] == dbOf(40); });
    row("Setup_Input_Gain_Type_Radio", "16", 16,                     [](S h) { return h.sourceDb == 10; });
    row("subwooferslope",       "99",      99,                       [](S h) { return h.subwoofer.lowPass.order == 4; });
    row("subwooferFreq",        "-5",      -5,                       [](S h) { return h.subwoofer.silent; });
    row("Audio_Phase_Troggle",  "text",    QStringLiteral("yes"),    [](S h) { return !h.subwoofer.inverted; });
    // clang-format on
}

void TestAudioStateStore::storedValuesOutOfRangeAreLoggedAndBrought()
{
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    QFETCH(Check, check);
    setStored("AudioService_EQType", 6);
    AudioServiceHost::shutdown();
    QVERIFY(store()->setValue(key, value, true));
    const MessageLog log;
    restart();
    QVERIFY(check(m_heard));
    QVERIFY(log.count(key) >= 1);
    // What nobody touched stays as it is.
    QCOMPARE(store()->value(key), value);
}

void TestAudioStateStore::restoringWritesNothingButVolumes()
{
    AudioServiceHost::shutdown();
    store()->clear();
    AudioServiceHost::powerOn();
    QCOMPARE(store()->values().keys(),
             QStringList({QStringLiteral("volume0"), QStringLiteral("volume1"), QStringLiteral("volume2"),
                          QStringLiteral("volume4"), QStringLiteral("volume5")}));
}

void TestAudioStateStore::withoutTheFlagNothingIsKept()
{
    service()->setEQType(EQ_Type_User1, false);
    service()->setCustomEq1(4, 2, false);
    service()->setBalanceFader(5, 6, false);
    QCOMPARE(m_heard.equalizer[2], 4);
    QCOMPARE(m_heard.balance, 5 / 15.0);
    for (const char* key : {"AudioService_EQType", "eq12", "AudioService_Balance", "AudioService_Fader"})
        QVERIFY2(!stored(key).isValid(), key);
    restart();
    QCOMPARE(m_heard.balance, 0.0);
    QCOMPARE(static_cast<int>(service()->getCurrEQType()), 0);
}

void TestAudioStateStore::loudnessIsKeptWhateverTheFlag()
{
    service()->setCustomLoudness(true, false);
    QCOMPARE(stored("customloudnes"), QVariant(true));
    service()->setCustomLoudness(false, true);
    QCOMPARE(stored("customloudnes"), QVariant(false));
    service()->setCustomLoudness(true, false);
    restart();
    QVERIFY(m_heard.loudness);
}

void TestAudioStateStore::aBurstOfFiltersIsDurableWhenTheLoopTurns()
{
    const QString log = m_path + QStringLiteral("-wal");
    const qint64 before = QFileInfo(log).size();
    for (int speaker = 0; speaker < 4; ++speaker)
        service()->setHPFFilter(5, 1, 1 << speaker, 1);
    QCOMPARE(QFileInfo(log).size(), before);
    QCoreApplication::processEvents();
    QVERIFY(QFileInfo(log).size() > before);
}

void TestAudioStateStore::subwooferSlopeFollowsTheStore()
{
    setStored("subwooferslope", 2);
    QCOMPARE(m_heard.subwoofer.lowPass.order, 3);
    // The audio levels page sends slope 0 with each level.
    service()->setSubFilter(7, 4, 0);
    QCOMPARE(m_heard.subwoofer.lowPass.order, 3);
    service()->setSubFilter(7, 4, 1);
    QCOMPARE(m_heard.subwoofer.lowPass.order, 2);
    // The crossover page stores the slope right after sending it; 0 is 6 dB/octave then.
    service()->setSubFilter(7, 4, 0);
    setStored("subwooferslope", 0);
    QCOMPARE(m_heard.subwoofer.lowPass.order, 1);
    service()->setSubFilter(7, 4, 3);
    setStored("subwooferslope", 3);
    restart();
    QCOMPARE(m_heard.subwoofer.lowPass.order, 4);
    setStored("subwooferslope", 1);
    QCOMPARE(m_heard.subwoofer.lowPass.order, 2);
    restart();
    QCOMPARE(m_heard.subwoofer.lowPass.order, 2);
    store()->remove(QStringLiteral("subwooferslope"));
    QCOMPARE(m_heard.subwoofer.lowPass.order, 1);
}

void TestAudioStateStore::subwooferPolarityFollowsTheStore()
{
    QVERIFY(!m_heard.subwoofer.inverted);
    setStored("Audio_Phase_Troggle", true);
    QVERIFY(m_heard.subwoofer.inverted);
    restart();
    QVERIFY(m_heard.subwoofer.inverted);
    setStored("Audio_Phase_Troggle", false);
    QVERIFY(!m_heard.subwoofer.inverted);
    for (const hvaudio::dsp::CabinSpeakerSettings& cabin : m_heard.cabin)
        QVERIFY(!cabin.inverted);
}

void TestAudioStateStore::untouchedSubwooferIsWhatThePagesShow()
{
    QVERIFY(hears(m_heard, 120));
    QCOMPARE(m_heard.subwoofer.attenuation, 11);
    setStored("subwooferFreq", 4);
    setStored("subwooferLevel", 3 | 128);
    setStored("subwooferslope", 2);
    restart();
    QVERIFY(hears(m_heard, 60));
    QCOMPARE(m_heard.subwoofer.attenuation, 3);
    QCOMPARE(m_heard.subwoofer.lowPass.order, 3);
    setStored("subwooferOnOff", false);
    restart();
    QVERIFY(m_heard.subwoofer.silent);
    // From the first call on, what was applied counts.
    service()->setSubFilter(2, 1, 0);
    restart();
    QVERIFY(hears(m_heard, 30));
    QCOMPARE(m_heard.subwoofer.attenuation, 1);
}

void TestAudioStateStore::anEditFromOutsideIsHeardAtOnce_data()
{
    using S = const Settings&;
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<Check>("edited");
    QTest::addColumn<Check>("unset");
    const auto row = [](const char* key, const QVariant& value, const Check& edited, const Check& unset) {
        QTest::newRow(key) << QString::fromLatin1(key) << value << edited << unset;
    };
    const auto filter = [](const char* text) { return QVariant(QString::fromLatin1(text)); };
    // clang-format off
    row("eq10",                  7,               [](S h) { return h.equalizer[0] == 7; },              [](S h) { return h.equalizer[0] == 0; });
    row("eq112",                 -3,              [](S h) { return h.equalizer[12] == -3; },            [](S h) { return h.equalizer[12] == 0; });
    row("AudioService_EQType",   2,               [](S h) { return std::equal(h.equalizer.begin(), h.equalizer.end(), hvaudio::eqCurveOf(2).value); }, [](S h) { return h.equalizer == std::array<int, 13>{}; });
    row("customloudnes",         true,            [](S h) { return h.loudness; },                       [](S h) { return !h.loudness; });
    row("AudioService_Balance",  -4,              [](S h) { return h.balance == -4 / 15.0; },                  [](S h) { return h.balance == 0; });
    row("AudioService_Fader",    11,              [](S h) { return h.fader == 11 / 15.0; },                    [](S h) { return h.fader == 0; });
    row("AudioService_HPF_2",    filter("3;4;1"), [](S h) { return h.cabin[2].highPass.hz == 60 && h.cabin[2].attenuation == 4; }, [](S h) { return h.cabin[2].highPass.hz == 0; });
    row("AudioService_LPF_0",    filter("8;0;3"), [](S h) { return h.cabin[0].lowPass.hz == 250 && h.cabin[0].lowPass.order == 4; }, [](S h) { return h.cabin[0].lowPass.hz == 0; });
    row("AudioService_Sub",      filter("2;5;1"), [](S h) { return hears(h, 30) && h.subwoofer.attenuation == 5; }, [](S h) { return hears(h, 120); });
    row("AudioService_DelayUs_4", 2500,           [](S h) { return h.subwoofer.delayMs == 2.5; },       [](S h) { return h.subwoofer.delayMs == 0; });
    row("Setup_Input_Gain_Type_Radio", 9,         [](S h) { return h.sourceDb == 4; },                [](S h) { return h.sourceDb == 0; });
    row("subwooferOnOff",        false,           [](S h) { return h.subwoofer.silent; },          [](S h) { return hears(h, 120); });
    row("subwooferFreq",         4,               [](S h) { return hears(h, 60); },          [](S h) { return hears(h, 120); });
    row("subwooferLevel",        2,               [](S h) { return h.subwoofer.attenuation == 2; },     [](S h) { return h.subwoofer.attenuation == 11; });
    row("subwooferslope",        2,               [](S h) { return h.subwoofer.lowPass.order == 3; },           [](S h) { return h.subwoofer.lowPass.order == 1; });
    row("Audio_Phase_Troggle",   true,            [](S h) { return h.subwoofer.inverted; },             [](S h) { return !h.subwoofer.inverted; });
    // clang-format on
}

void TestAudioStateStore::anEditFromOutsideIsHeardAtOnce()
{
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    QFETCH(Check, edited);
    QFETCH(Check, unset);
    service()->setEQType(EQ_Type_User1, true);
    m_heardCount = 0;
    QVERIFY(!edited(m_heard));
    QVERIFY(store()->edit(key, value));
    QVERIFY(edited(m_heard));
    QCOMPARE(m_heardCount, 1);
    QCOMPARE(store()->value(key), value);
    QVERIFY(store()->edit(key, QVariant()));
    QVERIFY(unset(m_heard));
    QCOMPARE(m_heardCount, 2);
    QVERIFY(!store()->value(key).isValid());
}

void TestAudioStateStore::anEditedTypeIsToldToThePages()
{
    QSignalSpy types(mem::SettingsUtil::instance(), &mem::SettingsUtil::EQType);
    store()->edit(QStringLiteral("AudioService_EQType"), 5);
    QCOMPARE(types.size(), 1);
    QCOMPARE(types.last().at(0).toInt(), 5);
    store()->edit(QStringLiteral("AudioService_EQType"), 5);
    QCOMPARE(types.size(), 1);
}

void TestAudioStateStore::anEditedVolumeIsToldToThePages()
{
    QSignalSpy volumes(service(), &AudioService::audioVolumeChanged);
    store()->edit(QStringLiteral("volume4"), 8);
    QCOMPARE(volumes.size(), 1);
    QCOMPARE(volumes.last(), QVariantList({false, 8, 4}));
    store()->edit(QStringLiteral("volume4"), 8);
    QCOMPARE(volumes.size(), 1);
    const MessageLog log;
    store()->edit(QStringLiteral("volume4"), 51);
    QCOMPARE(log.count(QStringLiteral("volume4")), 1);
    QCOMPARE(volumes.size(), 1);
    QCOMPARE(m_heard.promptDb[2], dbOf(8));
}

void TestAudioStateStore::aVolumeTakenAwayIsTheOneOfPowerOn_data()
{
    QTest::addColumn<int>("channel");
    QTest::addColumn<QString>("startKey");
    QTest::addColumn<int>("unsetLevel");
    QTest::newRow("main") << 0 << "Setup_Main_Volume" << 25;
    QTest::newRow("ringer") << 1 << "Setup_Volume_Type_BT_Ringer" << 40;
    QTest::newRow("talking") << 2 << "Setup_Volume_Type_BT_Talking" << 40;
    QTest::newRow("voice") << 4 << "Setup_Volume_Type_Voice" << 40;
    QTest::newRow("navi") << 5 << "Setup_Volume_Type_Navi" << 40;
}

void TestAudioStateStore::aVolumeTakenAwayIsTheOneOfPowerOn()
{
    QFETCH(int, channel);
    QFETCH(QString, startKey);
    QFETCH(int, unsetLevel);
    const QString key = QStringLiteral("volume%1").arg(channel);
    service()->setVolumeLevel(9, channel);
    QSignalSpy volumes(service(), &AudioService::audioVolumeChanged);
    const auto heardDb = [&] {
        const int prompts[] = {-1, 0, 1, -1, 2, 3}; // by channel
        return channel == 0 ? m_heard.mainDb : m_heard.promptDb[prompts[channel]];
    };
    store()->edit(key, 31);
    QCOMPARE(heardDb(), dbOf(31));
    QCOMPARE(volumes.size(), 1);
    store()->edit(key, QVariant());
    QCOMPARE(heardDb(), dbOf(unsetLevel));
    QCOMPARE(volumes.size(), 2);
    QCOMPARE(volumes.last(), QVariantList({false, unsetLevel, channel}));
    // The pages read it there, with 0 for none.
    QCOMPARE(store()->value(key), QVariant(unsetLevel));
    store()->edit(startKey, 12);
    QCOMPARE(volumes.size(), 2);
    store()->edit(key, QVariant());
    QCOMPARE(heardDb(), dbOf(12));
    QCOMPARE(store()->value(key), QVariant(12));
    QCOMPARE(volumes.last(), QVariantList({false, 12, channel}));
}

void TestAudioStateStore::aVolumeOfAWrongTypeChangesNothing()
{
    service()->setVolumeLevel(9, 0);
    const MessageLog log;
    store()->edit(QStringLiteral("volume0"), QStringLiteral("loud"));
    QCOMPARE(m_heard.mainDb, dbOf(9));
    QCOMPARE(log.count(QStringLiteral("volume0")), 1);
}

void TestAudioStateStore::anEditLeavesWhatWasNotKeptAlone()
{
    service()->setEQType(EQ_Type_Pop, false);
    service()->setBalanceFader(5, 6, false);
    const Settings before = m_heard;
    store()->edit(QStringLiteral("customloudnes"), true);
    QVERIFY(m_heard.loudness);
    QCOMPARE(m_heard.equalizer, before.equalizer);
    QCOMPARE(m_heard.balance, 5 / 15.0);
    store()->edit(QStringLiteral("AudioService_Balance"), 1);
    QCOMPARE(m_heard.balance, 1 / 15.0);
    QCOMPARE(m_heard.fader, 6 / 15.0);
}

void TestAudioStateStore::anEditOutOfRangeIsLoggedOnceAndBrought()
{
    store()->setValue(QStringLiteral("AudioService_Fader"), 99, true);
    store()->setValue(QStringLiteral("subwooferFreq"), 99, true);
    const MessageLog log;
    store()->edit(QStringLiteral("AudioService_Balance"), -99);
    QCOMPARE(m_heard.balance, -1.0);
    QCOMPARE(log.count(QStringLiteral("AudioService_Balance")), 1);
    QCOMPARE(log.lines().size(), 1);
}

void TestAudioStateStore::anEditedStartVolumeWaitsForPowerOn()
{
    m_heardCount = 0;
    store()->edit(QStringLiteral("Setup_Main_Volume"), 7);
    QCOMPARE(m_heardCount, 0);
    AudioServiceHost::powerOff();
    AudioServiceHost::powerOn();
    QCOMPARE(m_heard.mainDb, dbOf(7));
}

void TestAudioStateStore::onlyEditsAreTakenOver()
{
    // What a page writes it also sends; the store's news alone is no news to the service.
    m_heardCount = 0;
    mem::SettingsFunc::instance()->setValue(QStringLiteral("Setup_Input_Gain_Type_Radio"), 5, 9, true);
    mem::SettingsFunc::instance()->setValue(QStringLiteral("subwooferLevel"), 11, 3, true);
    store()->setValue(QStringLiteral("volume0"), 9, true);
    QCOMPARE(m_heardCount, 0);
    service()->setSourceOffsetGain(HVAudio_source_Radio, 9);
    QCOMPARE(m_heardCount, 1);
    service()->setCustomEq1(4, 2, true);
    service()->setCustomLoudness(true, true);
    QCOMPARE(m_heardCount, 2);
}

QTEST_GUILESS_MAIN(TestAudioStateStore)
#include "tst_audiostatestore.moc"
