#include "tests/platform/hvaudioservice/servicefixture.h"

/// The pages count in indexes, levels and channels, the sound processor in Hz, orders and dB: what each
/// number means, row by row, from tables on paper.
class TestSoundUnits : public ServiceFixture
{
    Q_OBJECT
private slots:
    void frequencyIndexesAreHertz_data();
    void frequencyIndexesAreHertz();
    void subwooferIndexesAreHertz_data();
    void subwooferIndexesAreHertz();
    void slopeIndexesAreOrders();
    void attenuationsAreDecibels();
    void volumesAreEvenStepsOfDecibels();
    void channelsAreNamedPrompts_data();
    void channelsAreNamedPrompts();
    void gainsAreDecibels();
    void balanceAndFaderAreShares();
};

using Tables = AudioServiceHost::FilterTables;

static void addFrequencies(const char* name, Tables tables, bool high, std::initializer_list<double> hz)
{
    int index = 0;
    for (const double at : hz) {
        QTest::addRow("%s, index %d", name, index) << tables << high << index << at;
        ++index;
    }
}

Q_DECLARE_METATYPE(Tables)

void TestSoundUnits::frequencyIndexesAreHertz_data()
{
    QTest::addColumn<Tables>("tables");
    QTest::addColumn<bool>("high");
    QTest::addColumn<int>("index");
    QTest::addColumn<double>("hz");
    // clang-format off
    addFrequencies("groups' high-pass", Tables::SpeakerGroups, true,  {0, 30, 40, 60, 80, 100, 120, 160, 250});
    addFrequencies("groups' low-pass",  Tables::SpeakerGroups, false, {0, 30, 40, 60, 80, 100, 120, 160, 250});
    addFrequencies("main high-pass",    Tables::MainAudio,     true,  {0, 20, 60, 80, 160, 250});
    addFrequencies("main low-pass",     Tables::MainAudio,     false, {0, 2000, 8000, 10000, 16000, 20000});
    // clang-format on
}

void TestSoundUnits::frequencyIndexesAreHertz()
{
    QFETCH(Tables, tables);
    QFETCH(bool, high);
    QFETCH(int, index);
    QFETCH(double, hz);
    AudioServiceHost::setFilterTables(tables);
    for (std::size_t speaker = 0; speaker < 4; ++speaker) {
        if (high)
            service()->setHPFFilter(index, 0, 1 << speaker, 1);
        else
            service()->setLPFFilter(index, 0, 1 << speaker, 1);
        QCOMPARE(m_heard.cabin[speaker].highPass.hz, high ? hz : 0.0);
        QCOMPARE(m_heard.cabin[speaker].lowPass.hz, high ? 0.0 : hz);
    }
}

static void addSubwoofer(const char* name, Tables tables, std::initializer_list<double> hz)
{
    int index = 0;
    for (const double at : hz) {
        QTest::addRow("%s, index %d", name, index) << tables << index << at;
        ++index;
    }
}

void TestSoundUnits::subwooferIndexesAreHertz_data()
{
    QTest::addColumn<Tables>("tables");
    QTest::addColumn<int>("index");
    QTest::addColumn<double>("hz");
    // A silent one has the lowest filter.
    addSubwoofer("groups", Tables::SpeakerGroups, {30, 0, 30, 40, 60, 80, 100, 120, 160, 250});
    addSubwoofer("main", Tables::MainAudio, {50, 0, 50, 80, 120, 160, 120, 120, 160, 160});
}

void TestSoundUnits::subwooferIndexesAreHertz()
{
    QFETCH(Tables, tables);
    QFETCH(int, index);
    QFETCH(double, hz);
    AudioServiceHost::setFilterTables(tables);
    service()->setSubFilter(index, 5, 1);
    QCOMPARE(m_heard.subwoofer.silent, index == 0);
    QCOMPARE(m_heard.subwoofer.lowPass.hz, hz);
}

void TestSoundUnits::slopeIndexesAreOrders()
{
    for (int slope = 0; slope <= 3; ++slope) {
        service()->setHPFFilter(1, 0, 1, slope);
        service()->setLPFFilter(1, 0, 2, slope);
        service()->setSubFilter(7, 0, slope);
        QCOMPARE(m_heard.cabin[0].highPass.order, slope + 1);
        QCOMPARE(m_heard.cabin[1].lowPass.order, slope + 1);
        QCOMPARE(m_heard.subwoofer.lowPass.order, slope + 1);
    }
}

void TestSoundUnits::attenuationsAreDecibels()
{
    for (int cut = 0; cut <= 12; ++cut) {
        service()->setHPFFilter(1, cut, 1, 0);
        service()->setLPFFilter(1, cut, 2, 0);
        service()->setSubFilter(7, cut, 0);
        QCOMPARE(m_heard.cabin[0].attenuation, cut);
        QCOMPARE(m_heard.cabin[1].attenuation, cut);
        QCOMPARE(m_heard.subwoofer.attenuation, cut);
    }
    // Both filters of a speaker cut, up to 12 dB together.
    service()->setLPFFilter(1, 5, 1, 0);
    service()->setHPFFilter(1, 4, 1, 0);
    QCOMPARE(m_heard.cabin[0].attenuation, 9);
    service()->setHPFFilter(1, 12, 1, 0);
    QCOMPARE(m_heard.cabin[0].attenuation, 12);
}

void TestSoundUnits::volumesAreEvenStepsOfDecibels()
{
    for (int level = 0; level <= 50; ++level) {
        service()->setVolumeLevel(level, 0);
        QCOMPARE(m_heard.mainDb, dbOf(level));
    }
    QCOMPARE(m_heard.mainDb, 0.0);
}

void TestSoundUnits::channelsAreNamedPrompts_data()
{
    QTest::addColumn<int>("channel");
    QTest::addColumn<int>("prompt");
    QTest::newRow("ring") << 1 << int(hvaudio::dsp::Ring);
    QTest::newRow("call") << 2 << int(hvaudio::dsp::Call);
    QTest::newRow("voice") << 4 << int(hvaudio::dsp::Voice);
    QTest::newRow("navigation") << 5 << int(hvaudio::dsp::Navi);
}

void TestSoundUnits::channelsAreNamedPrompts()
{
    QFETCH(int, channel);
    QFETCH(int, prompt);
    for (int level : {0, 1, 49, 50}) {
        service()->setVolumeLevel(level, channel);
        for (int i = 0; i < hvaudio::dsp::promptCount; ++i)
            QCOMPARE(m_heard.promptDb[std::size_t(i)], dbOf(i == prompt ? level : 40));
    }
    QCOMPARE(m_heard.mainDb, dbOf(25));
}

void TestSoundUnits::gainsAreDecibels()
{
    for (int gain = 0; gain <= 15; ++gain) {
        service()->setSourceOffsetGain(HVAudio_source_Radio, gain);
        QCOMPARE(m_heard.sourceDb, gain - 5.0);
    }
}

void TestSoundUnits::balanceAndFaderAreShares()
{
    for (int value = -15; value <= 15; ++value) {
        service()->setBalanceFader(value, -value, true);
        QCOMPARE(m_heard.balance, value / 15.0);
        QCOMPARE(m_heard.fader, -value / 15.0);
    }
}

QTEST_GUILESS_MAIN(TestSoundUnits)
#include "tst_soundunits.moc"
