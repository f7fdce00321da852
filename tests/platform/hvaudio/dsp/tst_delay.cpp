#include "tests/platform/hvaudio/dsp/sound.h"

#include <QtTest>

using namespace sound;

/// The speakers' delays, by cross-correlation of what goes in and what comes out.
class TestDelay : public QObject
{
    Q_OBJECT

private slots:
    void delayIsRightToAHundredthOfAMillisecond_data();
    void delayIsRightToAHundredthOfAMillisecond();
    void everyToneIsDelayedRightlyUpToTheTopBand_data();
    void everyToneIsDelayedRightlyUpToTheTopBand();
    void wholeFramesAreExact_data();
    void wholeFramesAreExact();
    void fractionsKeepTheMagnitude();
    void subwooferWithoutFilterArrivesWithTheOthers();
    void latencyIsWhereTheImpulseIs();
    void manyChangesInARowEndAtTheLast();
};

/// Lag in frames of `late` behind `early`, to a small fraction: the phase of their cross spectrum grows with
/// frequency by the lag; its slope is fitted over the band, after the correlation's peak has told the whole
/// frames.
static double lagOf(const Signal& early, const Signal& late, double rate)
{
    int whole = 0;
    double best = -1;
    const int longest = int(0.012 * rate) + 400;
    for (int lag = 0; lag < longest; ++lag) {
        double sum = 0;
        for (size_t n = 0; n + size_t(longest) < early.size(); ++n)
            sum += double(early[n]) * late[n + size_t(lag)];
        if (sum > best) {
            best = sum;
            whole = lag;
        }
    }
    double weight = 0, sum = 0;
    for (double hz = 200; hz < 12000; hz += 100) {
        const std::complex<double> cross = spectrum(late, hz, rate) * std::conj(spectrum(early, hz, rate)) *
                                           std::polar(1.0, 2 * pi * hz / rate * whole);
        const double w = 2 * pi * hz / rate;
        sum += std::arg(cross) * -w;
        weight += w * w;
    }
    return whole + sum / weight;
}

void TestDelay::delayIsRightToAHundredthOfAMillisecond_data()
{
    QTest::addColumn<double>("rate");
    QTest::addColumn<double>("firstMs");
    for (double rate : {44100.0, 48000.0, 96000.0})
        for (double ms : {0.0, 0.1, 0.3, 1.5, 4.7, 9.5})
            QTest::addRow("%g, from %g ms", rate, ms) << rate << ms;
}

void TestDelay::delayIsRightToAHundredthOfAMillisecond()
{
    QFETCH(double, rate);
    QFETCH(double, firstMs);
    Settings s = flat();
    double ms[speakerCount];
    for (int i = 0; i < speakerCount; ++i) {
        ms[i] = firstMs + 0.1 * i;
        (i == Subwoofer ? s.subwoofer.delayMs : s.cabin[i].delayMs) = ms[i];
    }
    Rig rig(s, rate);
    Signal in = whiteNoise(0.2, int(0.06 * rate), 11);
    in.resize(in.size() + size_t(0.03 * rate)); // what is late is heard to its end
    const Speakers out = rig.play(in);
    for (int i = 0; i < speakerCount; ++i) {
        const double got = (lagOf(in, out[i], rate) - rig.latency()) / rate * 1000;
        QVERIFY2(std::abs(got - ms[i]) < 0.01, qPrintable(QString("speaker %1: %2 ms").arg(i).arg(got)));
    }
}

void TestDelay::everyToneIsDelayedRightlyUpToTheTopBand_data()
{
    QTest::addColumn<double>("rate");
    for (double rate : {44100.0, 48000.0, 96000.0})
        QTest::addRow("%g", rate) << rate;
}

void TestDelay::everyToneIsDelayedRightlyUpToTheTopBand()
{
    QFETCH(double, rate);
    Settings s = flat();
    Rig rig(s, rate);
    const Signal in = impulse(2048);
    const Signal direct = rig.play(in)[FrontLeft];
    for (int tenths = 1; tenths <= 100; ++tenths) {
        s.cabin[FrontLeft].delayMs = 0.1 * tenths;
        rig.set(s);
        const Signal late = rig.play(in)[FrontLeft];
        for (double hz : {100.0, 1000.0, 5000.0, 10000.0, 16000.0}) {
            // What is left of the phase when the wished delay is taken out.
            const double rest = std::arg(spectrum(late, hz, rate) * std::conj(spectrum(direct, hz, rate)) *
                                         std::polar(1.0, 2 * pi * hz * 0.1e-3 * tenths));
            const double errorMs = rest / (2 * pi * hz) * 1000;
            QVERIFY2(std::abs(errorMs) < 0.01,
                     qPrintable(QString("%1 tenths, %2 Hz: %3 ms").arg(tenths).arg(hz).arg(errorMs)));
        }
    }
}

void TestDelay::wholeFramesAreExact_data()
{
    QTest::addColumn<double>("ms");
    QTest::newRow("none") << 0.0;
    QTest::newRow("0.5 ms = 24 frames") << 0.5;
    QTest::newRow("10 ms = 480 frames") << 10.0;
}

void TestDelay::wholeFramesAreExact()
{
    QFETCH(double, ms);
    Settings s = flat();
    Rig rig(s);
    const Signal in = whiteNoise(0.2, 4096, 12);
    const Signal direct = rig.play(in)[RearRight];
    s.cabin[RearRight].delayMs = ms;
    rig.set(s);
    const Signal late = rig.play(in)[RearRight];
    const size_t frames = size_t(std::lround(ms * 48));
    for (size_t n = frames; n < in.size(); ++n)
        QCOMPARE(late[n], direct[n - frames]);
}

void TestDelay::fractionsKeepTheMagnitude()
{
    for (double ms : {0.1, 0.2, 0.3, 0.4, 0.51, 0.77}) {
        Settings s = flat();
        s.cabin[FrontLeft].delayMs = ms;
        Rig rig(s, 44100);
        const Speakers out = rig.play(impulse(4096));
        for (double hz : {20.0, 1000.0, 10000.0, 20000.0}) {
            const double got = responseDb(out[FrontLeft], hz, 44100);
            QVERIFY2(std::abs(got) < 0.001,
                     qPrintable(QString("%1 ms, %2 Hz: %3 dB").arg(ms).arg(hz).arg(got)));
        }
    }
}

void TestDelay::subwooferWithoutFilterArrivesWithTheOthers()
{
    Rig rig;
    const Speakers out = rig.play(impulse(1024));
    QVERIFY(std::max_element(out[Subwoofer].begin(), out[Subwoofer].end()) - out[Subwoofer].begin() ==
            rig.latency());
}

void TestDelay::latencyIsWhereTheImpulseIs()
{
    for (double rate : {22050.0, 44100.0, 48000.0, 96000.0, 192000.0})
        for (Path path : allPaths) {
            if (!kernelOf(path))
                continue;
            Rig rig(flat(), rate, path);
            const Signal out = rig.play(impulse(2048))[FrontLeft];
            QCOMPARE(int(std::max_element(out.begin(), out.end()) - out.begin()), rig.latency());
        }
}

void TestDelay::manyChangesInARowEndAtTheLast()
{
    Settings s = flat();
    Rig rig(s);
    const Signal block = whiteNoise(0.2, 100, 13);
    for (int step = 0; step <= 100; ++step) {
        s.cabin[FrontLeft].delayMs = 0.1 * (step * 37 % 101);
        rig.engine.set(s);
        rig.play(block);
    }
    s.cabin[FrontLeft].delayMs = 5;
    rig.engine.set(s);
    rig.play(silence(48000));
    const Signal out = rig.play(impulse(1024))[FrontLeft];
    QCOMPARE(int(std::max_element(out.begin(), out.end()) - out.begin()), rig.latency() + 240);
}

QTEST_GUILESS_MAIN(TestDelay)
#include "tst_delay.moc"
