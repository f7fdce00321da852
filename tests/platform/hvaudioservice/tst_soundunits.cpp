#include "platform/hvaudio/dsp/engine.h"
#include "platform/hvaudio/dsp/response.h"
#include "tests/platform/hvaudioservice/servicefixture.h"

#include <cmath>

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
    void subwooferIsTurnedToAddUp_data();
    void subwooferIsTurnedToAddUp();
    void nothingIsTurnedWithoutACrossover();
    void firstHighPassSpeaksForTheCabin();
    void equalSlopesSumFlat_data();
    void equalSlopesSumFlat();
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

static void setCrossover(int index, int cabinSlope, int subwooferSlope)
{
    // Slope 0 is what the page has stored.
    SettingsStore::instance()->setValue(QStringLiteral("subwooferslope"), subwooferSlope, true);
    for (const int speaker : {1, 2, 4, 8})
        AudioService::instance()->setHPFFilter(index, 0, speaker, cabinSlope);
    AudioService::instance()->setSubFilter(index + 1, 0, 0);
}

/// Size of the sum of cabin and subwoofer, whose sounds are alike but for the filters, at a frequency.
static double sumDb(const Settings& settings, double hz)
{
    hvaudio::dsp::Engine engine;
    Settings loud = settings;
    loud.mainDb = 0;
    engine.prepare(48000);
    engine.set(loud);
    return 20 * std::log10(std::abs(hvaudio::dsp::sumAtSeat(engine.snapshot(), hz, 48000)));
}

void TestSoundUnits::subwooferIsTurnedToAddUp_data()
{
    QTest::addColumn<int>("cabinSlope");
    QTest::addColumn<int>("subwooferSlope");
    QTest::addColumn<bool>("turned");
    // clang-format off
    QTest::newRow("6 and 6")   << 0 << 0 << false;
    QTest::newRow("6 and 12")  << 0 << 1 << true;
    QTest::newRow("6 and 18")  << 0 << 2 << true;
    QTest::newRow("6 and 24")  << 0 << 3 << true;
    QTest::newRow("12 and 6")  << 1 << 0 << true;
    QTest::newRow("12 and 12") << 1 << 1 << true;
    QTest::newRow("12 and 18") << 1 << 2 << true;
    QTest::newRow("12 and 24") << 1 << 3 << false;
    QTest::newRow("18 and 6")  << 2 << 0 << true;
    QTest::newRow("18 and 12") << 2 << 1 << true;
    QTest::newRow("18 and 18") << 2 << 2 << false;
    QTest::newRow("18 and 24") << 2 << 3 << false;
    QTest::newRow("24 and 6")  << 3 << 0 << true;
    QTest::newRow("24 and 12") << 3 << 1 << false;
    QTest::newRow("24 and 18") << 3 << 2 << false;
    QTest::newRow("24 and 24") << 3 << 3 << false;
    // clang-format on
}

void TestSoundUnits::subwooferIsTurnedToAddUp()
{
    QFETCH(int, cabinSlope);
    QFETCH(int, subwooferSlope);
    QFETCH(bool, turned);
    setCrossover(4, cabinSlope, subwooferSlope);
    QCOMPARE(m_heard.subwoofer.inverted, turned);
    const double chosen = sumDb(m_heard, 80);
    // The listener's switch turns it round.
    setStored("Audio_Phase_Troggle", true);
    QCOMPARE(m_heard.subwoofer.inverted, !turned);
    QVERIFY2(chosen > sumDb(m_heard, 80) - 0.01, qPrintable(QString::number(chosen)));
}

void TestSoundUnits::nothingIsTurnedWithoutACrossover()
{
    setCrossover(0, 1, 1); // no filter at all
    QVERIFY(!m_heard.subwoofer.inverted);
    service()->setSubFilter(5, 0, 1); // the cabin's speakers play everything
    QVERIFY(!m_heard.subwoofer.inverted);
    setCrossover(4, 1, 1);
    QVERIFY(m_heard.subwoofer.inverted);
    service()->setSubFilter(1, 0, 1); // the subwoofer does
    QVERIFY(!m_heard.subwoofer.inverted);
}

void TestSoundUnits::firstHighPassSpeaksForTheCabin()
{
    setCrossover(4, 1, 1);
    QVERIFY(m_heard.subwoofer.inverted);
    for (const int front : {1, 2})
        service()->setHPFFilter(4, 0, front, 3);
    QVERIFY(!m_heard.subwoofer.inverted); // 24 and 12
    for (const int front : {1, 2})
        service()->setHPFFilter(0, 0, front, 3);
    QVERIFY(m_heard.subwoofer.inverted); // the rear pair's 12 and 12
}

void TestSoundUnits::equalSlopesSumFlat_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("slope");
    for (int index = 1; index <= 8; ++index)
        for (int slope = 0; slope <= 3; ++slope)
            QTest::addRow("index %d, %d dB/octave", index, 6 * (slope + 1)) << index << slope;
}

void TestSoundUnits::equalSlopesSumFlat()
{
    QFETCH(int, index);
    QFETCH(int, slope);
    setCrossover(index, slope, slope);
    for (double hz = 20; hz <= 20000; hz *= 1.15)
        QVERIFY2(std::abs(sumDb(m_heard, hz)) < 0.1,
                 qPrintable(QStringLiteral("%1 Hz: %2 dB").arg(hz).arg(sumDb(m_heard, hz))));
}

QTEST_GUILESS_MAIN(TestSoundUnits)
#include "tst_soundunits.moc"
