#include "tests/platform/hvaudio/dsp/sound.h"

#include <QtTest>

using namespace sound;

static void addCorners(std::initializer_list<double> hz)
{
    QTest::addColumn<double>("hz");
    QTest::addColumn<int>("order");
    QTest::addColumn<double>("rate");
    for (double at : hz)
        for (double rate : {44100.0, 48000.0, 96000.0})
            for (int order = 1; order <= 4; ++order)
                QTest::addRow("%g Hz, %d dB/octave, %g", at, 6 * order, rate) << at << order << rate;
}

/// Corner, slope, level and polarity of each speaker's filters, measured from an impulse through the whole
/// chain.
class TestCrossover : public QObject
{
    Q_OBJECT

private slots:
    void highPassIsAsFarDownAtItsCornerAsItsOrderSays_data();
    void highPassIsAsFarDownAtItsCornerAsItsOrderSays();
    void subwooferIsAsFarDownAtItsCornerAsItsOrderSays_data();
    void subwooferIsAsFarDownAtItsCornerAsItsOrderSays();
    void lowPassIsAsFarDownAtItsCornerAsItsOrderSays_data() { addCorners({2000, 8000, 10000, 16000, 20000}); }
    void lowPassIsAsFarDownAtItsCornerAsItsOrderSays();
    void highPassFallsByItsSlopeEachOctave_data();
    void highPassFallsByItsSlopeEachOctave();
    void subwooferFallsByItsSlopeEachOctave_data() { highPassFallsByItsSlopeEachOctave_data(); }
    void subwooferFallsByItsSlopeEachOctave();
    void eachFilterTouchesOnlyItsSpeaker();
    void offIsFlat();
    void silentSubwooferIsSilentAndOneThatIsOffIsUnfiltered();
    void attenuationIsInDecibels();
    void polarityTurnsTheSignAndNothingElse();
    void lowPassThatComesBackHasForgotten();
    void runningCoefficientsTellTheMeasuredResponse_data();
    void runningCoefficientsTellTheMeasuredResponse();
};

/// Butterworth, or the Butterworth of half the order twice.
static double cornerDb(int order)
{
    return order % 2 ? -3.0103 : -6.0206;
}

void TestCrossover::highPassIsAsFarDownAtItsCornerAsItsOrderSays_data()
{
    addCorners({20, 30, 40, 60, 80, 100, 120, 160, 250});
}

void TestCrossover::highPassIsAsFarDownAtItsCornerAsItsOrderSays()
{
    QFETCH(double, hz);
    QFETCH(int, order);
    QFETCH(double, rate);
    Settings s = flat();
    for (auto& speaker : s.cabin)
        speaker.highPass = {hz, order};
    Rig rig(s, rate);
    const Speakers out = rig.play(impulse(int(rate)));
    for (int i = 0; i < cabinSpeakerCount; ++i) {
        const double got = responseDb(out[i], hz, rate);
        QVERIFY2(std::abs(got - cornerDb(order)) < 0.1,
                 qPrintable(QString("speaker %1: %2 dB").arg(i).arg(got)));
        const double passed = responseDb(out[i], 2000, rate);
        QVERIFY2(std::abs(passed) < 0.15,
                 qPrintable(QString("speaker %1 at 2 kHz: %2 dB").arg(i).arg(passed)));
    }
}

void TestCrossover::subwooferIsAsFarDownAtItsCornerAsItsOrderSays_data()
{
    addCorners({30, 40, 50, 60, 80, 100, 120, 160, 250});
}

void TestCrossover::subwooferIsAsFarDownAtItsCornerAsItsOrderSays()
{
    QFETCH(double, hz);
    QFETCH(int, order);
    QFETCH(double, rate);
    Settings s = flat();
    s.subwoofer.lowPass = {hz, order};
    Rig rig(s, rate);
    const Speakers out = rig.play(impulse(int(rate)));
    const double got = responseDb(out[Subwoofer], hz, rate);
    QVERIFY2(std::abs(got - cornerDb(order)) < 0.1, qPrintable(QString::number(got)));
    const double passed = responseDb(out[Subwoofer], 2, rate);
    QVERIFY2(std::abs(passed) < 0.1, qPrintable(QString::number(passed)));
    QVERIFY(std::abs(responseDb(out[FrontLeft], hz, rate)) < 0.01);
}

void TestCrossover::lowPassIsAsFarDownAtItsCornerAsItsOrderSays()
{
    QFETCH(double, hz);
    QFETCH(int, order);
    QFETCH(double, rate);
    Settings s = flat();
    for (auto& speaker : s.cabin)
        speaker.lowPass = {hz, order};
    Rig rig(s, rate);
    const Speakers out = rig.play(impulse(8192));
    for (int i = 0; i < cabinSpeakerCount; ++i) {
        const double got = responseDb(out[i], hz, rate);
        QVERIFY2(std::abs(got - cornerDb(order)) < 0.1,
                 qPrintable(QString("speaker %1: %2 dB").arg(i).arg(got)));
        QVERIFY(std::abs(responseDb(out[i], 50, rate)) < 0.1);
    }
}

void TestCrossover::highPassFallsByItsSlopeEachOctave_data()
{
    QTest::addColumn<int>("order");
    for (int order = 1; order <= 4; ++order)
        QTest::addRow("%d dB/octave", 6 * order) << order;
}

void TestCrossover::highPassFallsByItsSlopeEachOctave()
{
    QFETCH(int, order);
    Settings s = flat();
    for (auto& speaker : s.cabin)
        speaker.highPass = {250, order};
    Rig rig(s);
    const Speakers out = rig.play(impulse(48000));
    for (int i = 0; i < cabinSpeakerCount; ++i) {
        const double fall = responseDb(out[i], 40) - responseDb(out[i], 20);
        QVERIFY2(std::abs(fall - 6.02 * order) < 0.25, qPrintable(QString::number(fall)));
    }
}

void TestCrossover::subwooferFallsByItsSlopeEachOctave()
{
    QFETCH(int, order);
    Settings s = flat();
    s.subwoofer.lowPass = {30, order};
    Rig rig(s);
    const Speakers out = rig.play(impulse(48000));
    const double fall = responseDb(out[Subwoofer], 300) - responseDb(out[Subwoofer], 600);
    QVERIFY2(std::abs(fall - 6.02 * order) < 0.25, qPrintable(QString::number(fall)));
}

void TestCrossover::eachFilterTouchesOnlyItsSpeaker()
{
    for (int filtered = 0; filtered < cabinSpeakerCount; ++filtered) {
        Settings s = flat();
        s.cabin[filtered].highPass = {250, 4};
        Rig rig(s);
        const Speakers out = rig.play(impulse(16384));
        for (int i = 0; i < speakerCount; ++i)
            QCOMPARE(responseDb(out[i], 60) < -40, i == filtered);
    }
}

void TestCrossover::offIsFlat()
{
    Settings s = flat();
    for (auto& speaker : s.cabin) {
        speaker.highPass = {0, 4};
        speaker.lowPass = {0, 4};
    }
    Rig rig(s);
    const Speakers out = rig.play(impulse(16384));
    for (const Signal& speaker : out)
        for (double hz : {20.0, 80.0, 1000.0, 20000.0})
            QVERIFY(std::abs(responseDb(speaker, hz)) < 0.01);
}

void TestCrossover::silentSubwooferIsSilentAndOneThatIsOffIsUnfiltered()
{
    Settings s = flat();
    setSubwoofer(s, 0);
    Rig rig(s);
    QCOMPARE(peak(rig.play(whiteNoise(0.5, 8192, 1))[Subwoofer]), 0.0f);
    setSubwoofer(s, 1);
    rig.set(s);
    QVERIFY(std::abs(responseDb(rig.play(impulse(8192))[Subwoofer], 5000)) < 0.01);
}

void TestCrossover::attenuationIsInDecibels()
{
    Settings s = flat();
    for (int i = 0; i < cabinSpeakerCount; ++i)
        s.cabin[i].attenuation = 3 * (i + 1);
    s.subwoofer.attenuation = 11;
    Rig rig(s);
    const Speakers out = rig.play(impulse(8192));
    for (int i = 0; i < cabinSpeakerCount; ++i)
        QVERIFY(std::abs(responseDb(out[i], 1000) + 3 * (i + 1)) < 0.01);
    QVERIFY(std::abs(responseDb(out[Subwoofer], 1000) + 11) < 0.01);
}

void TestCrossover::polarityTurnsTheSignAndNothingElse()
{
    Settings s = flat();
    s.subwoofer.lowPass.hz = 80;
    Rig rig(s);
    const Signal in = pinkNoise(0.5, 8192, 5);
    const Speakers before = rig.play(in);
    s.subwoofer.inverted = true;
    s.cabin[RearLeft].inverted = true;
    rig.set(s);
    const Speakers after = rig.play(in);
    for (int i = 0; i < speakerCount; ++i) {
        const float sign = i == Subwoofer || i == RearLeft ? -1 : 1;
        for (size_t n = 0; n < in.size(); ++n)
            QCOMPARE(after[i][n], sign * before[i][n]);
    }
    QVERIFY(peak(before[Subwoofer]) > 0.01f);
}

void TestCrossover::lowPassThatComesBackHasForgotten()
{
    Settings with = flat(), without = flat();
    for (auto& speaker : with.cabin)
        speaker.lowPass = {50, 4};
    Rig rig(with);
    const Signal loud(48000, 0.5f), tone = sine(1000, 0.1, 48000);
    rig.play(loud);
    rig.engine.set(without);
    rig.play(loud);
    // The left side falls silent while they are off; the right keeps the processor awake.
    rig.play(silence(48000), tone);
    rig.engine.set(with);
    const Speakers out = rig.play(silence(48000), tone);
    QVERIFY(peak(out[FrontRight]) > 0.01f);
    QVERIFY2(peak(out[FrontLeft]) < 1e-9f, qPrintable(QString::number(peak(out[FrontLeft]))));
}

void TestCrossover::runningCoefficientsTellTheMeasuredResponse_data()
{
    QTest::addColumn<double>("rate");
    QTest::newRow("44.1 kHz") << 44100.0;
    QTest::newRow("48 kHz") << 48000.0;
    QTest::newRow("96 kHz") << 96000.0;
}

void TestCrossover::runningCoefficientsTellTheMeasuredResponse()
{
    QFETCH(double, rate);
    Settings s = flat();
    s.mainDb = -24;
    s.sourceDb = 3;
    s.loudness = true;
    s.equalizer = {6, 4, 2, -1, -3, -2, 1, 3, 5, -4, 2, -6, 4};
    s.balance = 4 / 15.0;
    s.fader = -3 / 15.0;
    for (int i = 0; i < cabinSpeakerCount; ++i) {
        constexpr double high[] = {20, 60, 80, 160}, low[] = {20000, 16000, 10000, 8000};
        s.cabin[i].highPass = {high[i], 1 + i};
        s.cabin[i].lowPass = {low[i], 4 - i};
        s.cabin[i].delayMs = 0.37 * i;
        s.cabin[i].attenuation = i;
    }
    s.subwoofer = {false, {120, 3}, 5, true, 1.23};
    Rig rig(s, rate);
    // Loud enough that what is left at -140 dBFS, where the chain counts as rung out, is nothing beside it.
    Signal in = impulse(int(rate));
    in[0] *= 100;
    const Speakers out = rig.play(in);
    for (int i = 0; i < speakerCount; ++i)
        for (double hz = 25; hz < 18000; hz *= 1.3) {
            const std::complex<double> latency = std::polar(1.0, -2 * pi * hz / rate * rig.latency());
            const std::complex<double> told = rig.engine.response(Speaker(i), hz) * latency;
            const std::complex<double> measured = spectrum(out[i], hz, rate) / double(in[0]);
            if (std::abs(told) < 1e-4)
                continue; // deep in the stop band
            QVERIFY2(std::abs(told - measured) < 1e-3 * std::abs(told),
                     qPrintable(QString("speaker %1, %2 Hz: %3 dB, %4 rad")
                                    .arg(i)
                                    .arg(hz)
                                    .arg(db(std::abs(told / measured)))
                                    .arg(std::arg(told / measured))));
        }
}

QTEST_GUILESS_MAIN(TestCrossover)
#include "tst_crossover.moc"
