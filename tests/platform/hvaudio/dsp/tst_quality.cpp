#include "tests/platform/hvaudio/dsp/reference.h"

#include <QtTest>

using namespace sound;

/// How far the processor is from the same chain in double precision, on every speaker and every path.
class TestQuality : public QObject
{
    Q_OBJECT

private slots:
    void errorIsHundredDecibelsBelowTheSignal_data();
    void errorIsHundredDecibelsBelowTheSignal();
    void errorStaysLowDeepInEveryStopBand_data();
    void errorStaysLowDeepInEveryStopBand();
    void toneAfterMusicIsCleanOnceThePrecisionHasChanged();
    void changeOfPrecisionIsNotHeard();
};

static Settings busy()
{
    Settings s = flat();
    s.mainDb = -12;
    s.loudness = true;
    s.equalizer = {6, 4, 2, -1, -3, -2, 1, 3, 5, -4, 2, -6, 4};
    for (auto& speaker : s.cabin)
        speaker.highPass = {80, 4};
    s.cabin[FrontLeft].delayMs = 2.1;
    s.cabin[FrontRight].delayMs = 3.4;
    s.cabin[RearLeft].delayMs = 10;
    s.cabin[RearRight].delayMs = 5.6;
    s.subwoofer = {false, {80, 4}, 3, false, 7.8};
    return s;
}

/// Signal to error from a frame on, in dB.
static double cleanDb(const Signal& out, const std::vector<double>& reference, int latency, size_t from = 0)
{
    double error = 0, signal = 0;
    for (size_t n = from; n + size_t(latency) < out.size(); ++n) {
        const double wanted = reference[n], got = out[n + size_t(latency)];
        error += (got - wanted) * (got - wanted);
        signal += wanted * wanted;
    }
    return 10 * std::log10(signal / std::max(error, 1e-300));
}

static void verifyClean(const Settings& s, double rate, Path path, const Signal& left, const Signal& right,
                        size_t from = 0)
{
    Rig rig(s, rate, path);
    const Speakers out = rig.play(left, right);
    const auto reference = playReference(s, rate, left, right);
    for (int i = 0; i < speakerCount; ++i) {
        const double clean = cleanDb(out[i], reference[i], rig.latency(), from);
        if (qEnvironmentVariableIsSet("SOUND_FIGURES"))
            qInfo("speaker %d: %.1f dB", i, clean);
        // What lies 120 dB below the input is measured from there: the reference has no more to give.
        double signal = 0, input = 0;
        for (size_t n = from; n < left.size(); ++n) {
            signal += reference[i][n] * reference[i][n];
            input += double(left[n]) * left[n];
        }
        const double below = std::max(0.0, 10 * std::log10(input / std::max(signal, 1e-300)) - 120);
        QVERIFY2(clean >= 100 - below, qPrintable(QString("speaker %1: %2 dB").arg(i).arg(clean)));
    }
}

void TestQuality::errorIsHundredDecibelsBelowTheSignal_data()
{
    QTest::addColumn<int>("path");
    QTest::addColumn<double>("rate");
    QTest::addColumn<int>("kind");
    QTest::addColumn<double>("hz");
    struct Named
    {
        Path path;
        const char* name;
    };
    for (const Named& p : {Named{Path::Scalar, "scalar"}, Named{Path::Vector4, "four lanes"},
                           Named{Path::Vector8, "eight lanes"}}) {
        if (!kernelOf(p.path))
            continue;
        for (double rate : {44100.0, 48000.0, 96000.0}) {
            QTest::addRow("%s, %g, pink noise", p.name, rate) << int(p.path) << rate << 0 << 0.0;
            for (double hz : {20.0, 32.0, 50.0, 80.0, 120.0, 1000.0})
                QTest::addRow("%s, %g, sine %g Hz", p.name, rate, hz) << int(p.path) << rate << 1 << hz;
        }
        QTest::addRow("%s, 48000, pink noise through the steepest curve", p.name)
            << int(p.path) << 48000.0 << 2 << 0.0;
        QTest::addRow("%s, 48000, lowest crossovers", p.name) << int(p.path) << 48000.0 << 3 << 32.0;
        // Where loudness does most.
        for (double hz : {0.0, 32.0, 200.0, 1000.0, 8000.0})
            QTest::addRow("%s, 48000, lowest volume, %s %g Hz", p.name, hz > 0 ? "sine" : "pink noise", hz)
                << int(p.path) << 48000.0 << 4 << hz;
    }
}

void TestQuality::errorIsHundredDecibelsBelowTheSignal()
{
    QFETCH(int, path);
    QFETCH(double, rate);
    QFETCH(int, kind);
    QFETCH(double, hz);
    Settings s = busy();
    if (kind == 2)
        for (int i = 0; i < bandCount; ++i)
            s.equalizer[i] = i & 1 ? 10 : -10;
    if (kind == 3) {
        for (auto& speaker : s.cabin)
            speaker.highPass = {30, 4};
        s.subwoofer.lowPass.hz = 30;
    }
    if (kind == 4)
        s.mainDb = -58.8;
    const int frames = int(rate);
    const Signal left = hz > 0 ? sine(hz, 0.1, frames, rate) : pinkNoise(0.1, frames, 7);
    const Signal right = hz > 0 ? left : pinkNoise(0.1, frames, 8);
    verifyClean(s, rate, Path(path), left, right);
}

void TestQuality::errorStaysLowDeepInEveryStopBand_data()
{
    QTest::addColumn<double>("rate");
    QTest::addColumn<double>("hz");
    QTest::addColumn<int>("slope");
    for (double rate : {44100.0, 48000.0, 96000.0})
        for (double hz : {20.0, 63.0, 1000.0, 16000.0})
            for (int slope = 0; slope < 4; ++slope)
                QTest::addRow("%g, sine %g Hz, %d dB/octave", rate, hz, 6 * (slope + 1))
                    << rate << hz << slope;
}

/// Everywhere at once: each cabin speaker behind another high-pass, in one round behind a
/// low-pass far above it too, and the subwoofer's low-pass at both ends of its list.
void TestQuality::errorStaysLowDeepInEveryStopBand()
{
    QFETCH(double, rate);
    QFETCH(double, hz);
    QFETCH(int, slope);
    const Signal tone = sine(hz, 0.1, int(1.5 * rate), rate);
    for (int round = 0; round < 3; ++round) {
        Settings s = busy();
        for (int i = 0; i < bandCount; ++i) // the hardest curve
            s.equalizer[i] = i & 1 ? -10 : 10;
        constexpr double bass[] = {80, 250, 250, 20}, treble[] = {2000, 8000, 10000, 16000};
        for (int i = 0; i < cabinSpeakerCount; ++i) {
            s.cabin[i].highPass = {round == 2 ? bass[i] : corners[1 + (2 * i + round) % 8], slope + 1};
            s.cabin[i].lowPass = {round == 2 ? treble[i] : corners[1 + i], slope + 1};
        }
        s.subwoofer.lowPass = {round == 0 ? 30.0 : round == 1 ? 250.0 : 160.0, slope + 1};
        verifyClean(s, rate, bestPath(), tone, tone, size_t(0.5 * rate)); // without the tone's beginning
        if (QTest::currentTestFailed())
            return;
    }
}

void TestQuality::toneAfterMusicIsCleanOnceThePrecisionHasChanged()
{
    Signal in = pinkNoise(0.1, 48000, 7);
    const Signal tone = sine(20, 0.1, 2 * 48000);
    in.insert(in.end(), tone.begin(), tone.end());
    const Settings s = busy();
    Rig rig(s);
    const Signal music(in.begin(), in.begin() + 48000);
    rig.play(music);
    QVERIFY(!rig.engine.isDouble());
    rig.play(Signal(in.begin() + 48000, in.begin() + 72000));
    QVERIFY(rig.engine.isDouble());

    Rig whole(s);
    const Speakers out = whole.play(in);
    const auto reference = playReference(s, 48000, in, in);
    for (int i = 0; i < speakerCount; ++i)
        QVERIFY2(cleanDb(out[i], reference[i], whole.latency(), 72000) >= 100,
                 qPrintable(QString::number(i)));
}

void TestQuality::changeOfPrecisionIsNotHeard()
{
    // Music, a tone that the high-passes take away, music: there and back.
    Signal in;
    for (int part = 0; part < 3; ++part) {
        const Signal next = part == 1 ? sine(20, 0.1, 24000) : pinkNoise(0.1, 36000, 7);
        in.insert(in.end(), next.begin(), next.end());
    }
    for (Path path : {Path::Scalar, Path::Vector4, Path::Vector8}) {
        if (!kernelOf(path))
            continue;
        const Settings s = busy();
        Rig rig(s, 48000, path);
        const Speakers out = rig.play(in);
        QVERIFY(!rig.engine.isDouble());
        const auto reference = playReference(s, 48000, in, in);
        for (int i = 0; i < speakerCount; ++i)
            for (size_t n = 0; n + size_t(rig.latency()) < in.size(); ++n)
                QVERIFY2(std::abs(out[i][n + size_t(rig.latency())] - reference[i][n]) < 1e-6,
                         qPrintable(QString("path %1, speaker %2, frame %3").arg(int(path)).arg(i).arg(n)));
    }
}

QTEST_GUILESS_MAIN(TestQuality)
#include "tst_quality.moc"
