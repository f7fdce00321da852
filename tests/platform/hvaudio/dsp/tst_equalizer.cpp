#include "tests/platform/hvaudio/dsp/sound.h"

#include "platform/hvaudio/dsp/equalizer.h"

#include <QtTest>

#include <map>

using namespace sound;

/// The thirteen bands, solved so that the whole cascade gives what each asks for.
class TestEqualizer : public QObject
{
    Q_OBJECT

private slots:
    void everyCornerIsMetByTheSolver_data();
    void everyCornerIsMetByTheSolver();
    void randomSettingsAreMetByTheSolver_data() { everyCornerIsMetByTheSolver_data(); }
    void randomSettingsAreMetByTheSolver();
    void everyCornerIsMetThroughTheChain();
    void tenThousandRandomSettingsAreMetThroughTheChain();
    void cornersAreMetThroughTheChainAtOtherRates_data();
    void cornersAreMetThroughTheChainAtOtherRates();
    void oneStepIsOneDecibelInEveryBand();
    void flatIsExactlyTransparent();
    void bothChannelsGetTheSame();
    void liftedTogetherTheBandsLeaveNoDeepDents();
    void solvingTakesAFewSteps();

private:
    /// Plays an impulse with these bands; the largest distance from the wish at the centres.
    double worstThroughTheChain(Rig& rig, const std::array<int, bandCount>& bands, double rate)
    {
        Settings s = flat();
        s.equalizer = bands;
        rig.set(s);
        const Signal in = impulse(int(16384 * rate / 44100));
        const Speakers out = rig.play(in);
        double worst = 0;
        for (int i = 0; i < bandCount; ++i)
            worst = std::max(
                worst, std::abs(centres(rate, in.size())[size_t(i)].responseDb(out[FrontLeft]) - bands[i]));
        return worst;
    }

    /// A Fourier sum whose sines are kept, because it is wanted eighteen thousand times.
    class Centre
    {
    public:
        Centre(double hz, double rate, size_t frames)
        {
            for (size_t n = 0; n < frames; ++n) {
                m_cosine.push_back(float(std::cos(2 * pi * hz * double(n) / rate)));
                m_sine.push_back(float(std::sin(2 * pi * hz * double(n) / rate)));
            }
        }
        OPTIMIZED("O3", "associative-math", "no-signed-zeros", "no-trapping-math")
        double responseDb(const Signal& s) const
        {
            float re = 0, im = 0;
            for (size_t n = 0; n < s.size(); ++n) {
                re += s[n] * m_cosine[n];
                im += s[n] * m_sine[n];
            }
            return db(std::hypot(double(re), double(im)) / impulseLevel);
        }

    private:
        std::vector<float> m_cosine, m_sine;
    };
    static const std::vector<Centre>& centres(double rate, size_t frames)
    {
        static std::map<double, std::vector<Centre>> known;
        std::vector<Centre>& found = known[rate];
        if (found.empty())
            for (double hz : bandHz)
                found.emplace_back(hz, rate, frames);
        return found;
    }
};

static std::array<int, bandCount> corner(int bits)
{
    std::array<int, bandCount> bands;
    for (int i = 0; i < bandCount; ++i)
        bands[i] = bits >> i & 1 ? 10 : -10;
    return bands;
}

static std::array<int, bandCount> randomBands(std::mt19937& random)
{
    std::array<int, bandCount> bands;
    for (int& band : bands)
        band = int(random() % 21) - 10;
    return bands;
}

static double worstOfSolver(const EqualizerDesign& design, const std::array<int, bandCount>& bands,
                            double rate)
{
    std::array<double, bandCount> wanted;
    std::copy(bands.begin(), bands.end(), wanted.begin());
    const auto sections = design.solve(wanted);
    double worst = 0;
    for (int j = 0; j < design.usedBands(); ++j) {
        double sum = 0;
        for (const Section& section : sections)
            sum += db(std::abs(responseOf(section, bandHz[j], rate)));
        worst = std::max(worst, std::abs(sum - wanted[j]));
    }
    return worst;
}

void TestEqualizer::everyCornerIsMetByTheSolver_data()
{
    QTest::addColumn<double>("rate");
    QTest::addColumn<int>("used");
    QTest::newRow("44.1 kHz: 16 kHz is close to the end") << 44100.0 << 13;
    QTest::newRow("48 kHz") << 48000.0 << 13;
    QTest::newRow("96 kHz") << 96000.0 << 13;
    QTest::newRow("32 kHz carries twelve bands") << 32000.0 << 12;
}

void TestEqualizer::everyCornerIsMetByTheSolver()
{
    QFETCH(double, rate);
    const EqualizerDesign design(rate);
    QTEST(design.usedBands(), "used");
    double worst = 0;
    for (int bits = 0; bits < 1 << bandCount; ++bits)
        worst = std::max(worst, worstOfSolver(design, corner(bits), rate));
    QVERIFY2(worst < 0.05, qPrintable(QString::number(worst)));
}

void TestEqualizer::randomSettingsAreMetByTheSolver()
{
    QFETCH(double, rate);
    const EqualizerDesign design(rate);
    std::mt19937 random(1);
    double worst = 0;
    for (int i = 0; i < 10000; ++i)
        worst = std::max(worst, worstOfSolver(design, randomBands(random), rate));
    QVERIFY2(worst < 0.05, qPrintable(QString::number(worst)));
}

void TestEqualizer::everyCornerIsMetThroughTheChain()
{
    Rig rig;
    double worst = 0;
    for (int bits = 0; bits < 1 << bandCount; ++bits)
        worst = std::max(worst, worstThroughTheChain(rig, corner(bits), 48000));
    qInfo("worst of 8192 corners: %.4f dB", worst);
    QVERIFY2(worst < 0.5, qPrintable(QString::number(worst)));
}

void TestEqualizer::tenThousandRandomSettingsAreMetThroughTheChain()
{
    Rig rig;
    std::mt19937 random(2);
    double worst = 0;
    for (int i = 0; i < 10000; ++i)
        worst = std::max(worst, worstThroughTheChain(rig, randomBands(random), 48000));
    qInfo("worst of 10,000 settings: %.4f dB", worst);
    QVERIFY2(worst < 0.5, qPrintable(QString::number(worst)));
}

void TestEqualizer::cornersAreMetThroughTheChainAtOtherRates_data()
{
    QTest::addColumn<double>("rate");
    QTest::newRow("44.1 kHz") << 44100.0;
    QTest::newRow("96 kHz") << 96000.0;
}

void TestEqualizer::cornersAreMetThroughTheChainAtOtherRates()
{
    QFETCH(double, rate);
    Rig rig(flat(), rate);
    double worst = 0;
    for (int bits = 0; bits < 1 << bandCount; bits += 21)
        worst = std::max(worst, worstThroughTheChain(rig, corner(bits), rate));
    QVERIFY2(worst < 0.5, qPrintable(QString::number(worst)));
}

void TestEqualizer::oneStepIsOneDecibelInEveryBand()
{
    Rig rig;
    for (int i = 0; i < bandCount; ++i) {
        Settings s = flat();
        s.equalizer[i] = 1;
        rig.set(s);
        const Speakers out = rig.play(impulse(16384));
        for (int j = 0; j < bandCount; ++j) {
            const double got = responseDb(out[RearRight], bandHz[j]);
            QVERIFY2(std::abs(got - (i == j)) < 0.02, qPrintable(QString("%1 %2 %3").arg(i).arg(j).arg(got)));
        }
    }
}

void TestEqualizer::flatIsExactlyTransparent()
{
    Rig rig;
    const Signal in = whiteNoise(0.5, 4096, 3);
    const Speakers out = rig.play(in);
    double worst = 0;
    for (size_t n = size_t(rig.latency()); n < in.size(); ++n)
        worst = std::max(worst, std::abs(double(out[FrontLeft][n]) - in[n - size_t(rig.latency())]));
    QVERIFY2(db(worst) < -115, qPrintable(QString::number(db(worst))));
}

void TestEqualizer::bothChannelsGetTheSame()
{
    Settings s = flat();
    s.equalizer = {6, 4, 2, -1, -3, -2, 1, 3, 5, -4, 2, -6, 4};
    Rig rig(s);
    const Speakers out = rig.play(whiteNoise(0.1, 4096, 4));
    QVERIFY(peak(out[FrontLeft]) > 0.01f);
    QVERIFY(out[FrontLeft] == out[FrontRight]);
}

void TestEqualizer::liftedTogetherTheBandsLeaveNoDeepDents()
{
    Settings s = flat();
    s.equalizer.fill(10);
    Rig rig(s);
    const Speakers out = rig.play(impulse(16384));
    double lowest = 99, highest = -99;
    for (double hz = 32; hz < 16000; hz *= 1.05) {
        const double got = responseDb(out[FrontLeft], hz);
        lowest = std::min(lowest, got);
        highest = std::max(highest, got);
    }
    QVERIFY2(lowest > 7.5 && highest < 10.5, qPrintable(QString("%1 .. %2").arg(lowest).arg(highest)));
}

void TestEqualizer::solvingTakesAFewSteps()
{
    const EqualizerDesign design(48000);
    for (int bits = 0; bits < 1 << bandCount; ++bits) {
        std::array<double, bandCount> wanted;
        const auto bands = corner(bits);
        std::copy(bands.begin(), bands.end(), wanted.begin());
        int steps = 0;
        design.solveGains(wanted, &steps);
        QVERIFY2(steps <= 6, qPrintable(QString::number(steps)));
    }
}

QTEST_GUILESS_MAIN(TestEqualizer)
#include "tst_equalizer.moc"
