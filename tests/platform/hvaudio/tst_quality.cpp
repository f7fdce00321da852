#include "reference.h"

#include <QtTest>

using namespace sound;

/// How far the processor is from the same chain in double precision, on every speaker and every path.
class TestQuality : public QObject
{
    Q_OBJECT

private slots:
    void errorIsHundredDecibelsBelowTheSignal_data();
    void errorIsHundredDecibelsBelowTheSignal();
};

static Settings busy()
{
    Settings s = flat();
    s.mainVolume = 40;
    s.loudness = true;
    s.equalizer = {6, 4, 2, -1, -3, -2, 1, 3, 5, -4, 2, -6, 4};
    for (auto& speaker : s.cabin)
        speaker.highPass = {4, 3};
    s.cabin[FrontLeft].delayMs = 2.1;
    s.cabin[FrontRight].delayMs = 3.4;
    s.cabin[RearLeft].delayMs = 10;
    s.cabin[RearRight].delayMs = 5.6;
    s.subwoofer = {5, 3, 3, false, 7.8};
    return s;
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
            speaker.highPass = {1, 3};
        s.subwoofer.filter = 2;
    }
    const int frames = int(rate);
    const Signal left = hz > 0 ? sine(hz, 0.1, frames, rate) : pinkNoise(0.1, frames, 7);
    const Signal right = hz > 0 ? left : pinkNoise(0.1, frames, 8);
    Rig rig(s, rate, Path(path));
    const Speakers out = rig.play(left, right);
    const auto reference = playReference(s, rate, left, right);
    for (int i = 0; i < speakerCount; ++i) {
        double error = 0, signal = 0, input = 0;
        for (size_t n = 0; n + size_t(rig.latency()) < out[i].size(); ++n) {
            const double wanted = reference[i][n];
            const double got = out[i][n + size_t(rig.latency())];
            error += (got - wanted) * (got - wanted);
            signal += wanted * wanted;
            input += double(left[n]) * left[n];
        }
        const double clean = 10 * std::log10(signal / std::max(error, 1e-300));
        if (qEnvironmentVariableIsSet("SOUND_FIGURES"))
            qInfo("speaker %d: %.1f dB", i, clean);
        // Where a crossover leaves less than a thirtieth of a tone, its error is counted from the tone that
        // went in: no float that carries both can do better.
        const double fromInput = 10 * std::log10(input / std::max(error, 1e-300));
        const bool stopBand = signal < 1e-3 * input;
        QVERIFY2(
            clean >= 100 || (stopBand && fromInput >= 125),
            qPrintable(QString("speaker %1: %2 dB, %3 dB below the input").arg(i).arg(clean).arg(fromInput)));
    }
}

QTEST_GUILESS_MAIN(TestQuality)
#include "tst_quality.moc"
