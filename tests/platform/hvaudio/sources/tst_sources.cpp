#include "platform/hvaudio/sources/sources.h"

#include "platform/hvaudio/sources/pinknoise.h"
#include "platform/hvaudio/sources/sweep.h"

#include <QtTest>

#include <cmath>
#include <thread>

using namespace hvaudio;

namespace {

constexpr double rate = 48000;

using Sides = std::array<std::vector<float>, 2>;

Sides play(Source& source, int frames)
{
    Sides out = {std::vector<float>(std::size_t(frames)), std::vector<float>(std::size_t(frames))};
    const float* const in[2] = {};
    source.render(in, out[0].data(), out[1].data(), frames);
    return out;
}

/// Power in a third of an octave around hz, by sines that are spread over it.
double thirdOctavePower(const std::vector<float>& signal, double hz)
{
    double power = 0;
    const double low = hz / std::pow(2, 1 / 6.0), high = hz * std::pow(2, 1 / 6.0);
    const std::size_t length = 16384;
    const double step = rate / double(length);
    int count = 0;
    for (std::size_t start = 0; start + length <= signal.size(); start += length)
        for (int i = 0; i < 4; ++i) {
            const double f = std::round((low + (high - low) * (i + 0.5) / 4) / step) * step;
            double re = 0, im = 0;
            for (std::size_t n = 0; n < length; ++n) {
                const double window = 1 - std::cos(2 * M_PI * double(n) / double(length));
                re += window * signal[start + n] * std::cos(2 * M_PI * f * double(n) / rate);
                im += window * signal[start + n] * std::sin(2 * M_PI * f * double(n) / rate);
            }
            power += re * re + im * im;
            ++count;
        }
    return power / count * (high - low);
}

/// Says what it is by a constant level.
class Constant final : public Source
{
public:
    explicit Constant(float level, std::atomic<int>* alive = nullptr)
        : m_level(level)
        , m_alive(alive)
    {
        if (m_alive)
            ++*m_alive;
    }
    ~Constant() override
    {
        m_level = NAN; // whoever still plays it is found out
        if (m_alive)
            --*m_alive;
    }
    bool render(const float* const*, float* left, float* right, int frames) noexcept override
    {
        std::fill(left, left + frames, m_level);
        std::fill(right, right + frames, m_level);
        return true;
    }

private:
    volatile float m_level;
    std::atomic<int>* m_alive;
};

} // namespace

class TestSources : public QObject
{
    Q_OBJECT

private slots:
    void pinkNoiseFallsByThreeDecibelsAnOctave_data();
    void pinkNoiseFallsByThreeDecibelsAnOctave();
    void sweepRisesThroughAllFrequencies();
    void exchangeFadesOutAndIn();
    void otherIdIsTakenAtOnce();
    void idWithoutSourceIsSilent();
    void sourcesAreExchangedWhileTheyPlayAndNoneIsLost();
};

void TestSources::pinkNoiseFallsByThreeDecibelsAnOctave_data()
{
    QTest::addColumn<double>("atRate");
    QTest::newRow("44.1 kHz") << 44100.0;
    QTest::newRow("48 kHz") << 48000.0;
    QTest::newRow("96 kHz") << 96000.0;
}

void TestSources::pinkNoiseFallsByThreeDecibelsAnOctave()
{
    QFETCH(double, atRate);
    const auto out = play(*makePinkNoise(atRate, 3), 1 << 20);
    double sum = 0, cross = 0;
    for (std::size_t n = 0; n < out[0].size(); ++n) {
        sum += double(out[0][n]) * double(out[0][n]);
        cross += double(out[0][n]) * double(out[1][n]);
    }
    const double rms = std::sqrt(sum / double(out[0].size()));
    QVERIFY2(std::abs(20 * std::log10(rms / 0.1)) < 0.7, qPrintable(QString::number(rms)));
    QVERIFY(std::abs(cross / sum) < 0.1);
    // Pink: the same power in every third of an octave. The measurement itself scatters.
    const double middle = thirdOctavePower(out[0], 1000);
    for (double hz : {125.0, 250.0, 500.0, 2000.0, 4000.0, 8000.0, 14000.0}) {
        const double db = 10 * std::log10(thirdOctavePower(out[0], hz) / middle);
        QVERIFY2(std::abs(db) < 1.5, qPrintable(QString("%1 Hz: %2 dB").arg(hz).arg(db)));
    }
}

void TestSources::sweepRisesThroughAllFrequencies()
{
    const auto sweep = makeSweep(rate);
    const auto out = play(*sweep, int(10 * rate))[0];
    double before = 0;
    for (int second = 0; second < 10; ++second) {
        // Frequency by counting its zeros.
        int zeros = 0;
        for (int n = int(second * rate) + 1; n < int((second + 1) * rate); ++n)
            zeros += (out[std::size_t(n)] > 0) != (out[std::size_t(n) - 1] > 0);
        QVERIFY2(zeros > 1.9 * before && zeros < 2.1 * std::max(before, 30.0),
                 qPrintable(QString("second %1: %2 after %3").arg(second).arg(zeros).arg(before)));
        before = zeros;
    }
    float largest = 0;
    for (float x : out)
        largest = std::max(largest, std::abs(x));
    QVERIFY(std::abs(largest - 0.1f) < 0.001f);
    QVERIFY(std::abs(out.front()) < 1e-3f && std::abs(out.back()) < 1e-3f);
    // And again from the start.
    const auto again = play(*sweep, 4800)[0];
    for (std::size_t n = 0; n < again.size(); ++n)
        QCOMPARE(again[n], out[n]);
}

void TestSources::exchangeFadesOutAndIn()
{
    Sources sources;
    sources.prepare(rate);
    sources.set(6, std::make_shared<Constant>(0.5f));
    const float* const in[2] = {};
    std::vector<float> left(4800), right(4800);
    QVERIFY(sources.render(6, in, left.data(), right.data(), 1000));
    QCOMPARE(left[0], 0.5f); // the engine fades when it changes to a source
    sources.set(6, std::make_shared<Constant>(-0.5f));
    sources.render(6, in, left.data(), right.data(), 4800);
    QCOMPARE(left[0] > 0.49f, true);
    QCOMPARE(left[4799], -0.5f);
    for (std::size_t n = 1; n < left.size(); ++n)
        QVERIFY(std::abs(left[n] - left[n - 1]) < 0.5f / 240 * 1.6f);
    // To silence and back.
    sources.set(6, nullptr);
    sources.render(6, in, left.data(), right.data(), 4800);
    QVERIFY(!sources.render(6, in, left.data(), right.data(), 4800));
    sources.set(6, std::make_shared<Constant>(0.25f));
    QVERIFY(sources.render(6, in, left.data(), right.data(), 4800));
    QVERIFY(left[0] < 0.01f && left[4799] == 0.25f);
}

void TestSources::otherIdIsTakenAtOnce()
{
    Sources sources;
    sources.prepare(rate);
    sources.set(0, std::make_shared<Constant>(0.5f));
    sources.set(31, std::make_shared<Constant>(0.25f));
    const float* const in[2] = {};
    std::vector<float> left(64), right(64);
    sources.render(0, in, left.data(), right.data(), 64);
    sources.render(31, in, left.data(), right.data(), 64);
    QCOMPARE(left[0], 0.25f);
}

void TestSources::idWithoutSourceIsSilent()
{
    Sources sources;
    sources.prepare(rate);
    const float* const in[2] = {};
    std::vector<float> left(64), right(64);
    for (int id : {-1, 0, 5, 31, 32, 1000})
        QVERIFY(!sources.render(id, in, left.data(), right.data(), 64));
}

void TestSources::sourcesAreExchangedWhileTheyPlayAndNoneIsLost()
{
    std::atomic<int> alive{0};
    std::atomic<bool> ends{false}, wrong{false};
    {
        Sources sources;
        sources.prepare(rate);
        std::thread audio([&] {
            const float* const in[2] = {};
            std::vector<float> left(64), right(64);
            for (int n = 0; !ends; ++n) {
                sources.render(n / 50 % 3, in, left.data(), right.data(), 1 + n % 64);
                for (float x : left)
                    wrong = wrong || !(x >= 0 && x <= 0.5f);
            }
        });
        for (int n = 0; n < 20000; ++n) {
            sources.set(n % 3, n % 7 ? std::make_shared<Constant>(0.5f, &alive) : nullptr);
            QVERIFY(alive < 10); // those that were let go are freed
        }
        ends = true;
        audio.join();
    }
    QVERIFY(!wrong);
    QCOMPARE(alive.load(), 0);
}

QTEST_GUILESS_MAIN(TestSources)
#include "tst_sources.moc"
