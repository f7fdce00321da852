#include "tests/platform/hvaudio/files/files.h"

#include "platform/hvaudio/outputs/pipewire/inputbridge.h"
#include "platform/hvaudio/sources/chimes.h"
#include "platform/hvaudio/sources/sources.h"

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
        : level_(level)
        , alive_(alive)
    {
        if (alive_)
            ++*alive_;
    }
    ~Constant() override
    {
        level_ = NAN; // whoever still plays it is found out
        if (alive_)
            --*alive_;
    }
    bool render(const float* const*, float* left, float* right, int frames) noexcept override
    {
        std::fill(left, left + frames, level_);
        std::fill(right, right + frames, level_);
        return true;
    }

private:
    volatile float level_;
    std::atomic<int>* alive_;
};

} // namespace

class TestSources : public QObject
{
    Q_OBJECT

private slots:
    void pinkNoiseFallsByThreeDecibelsAnOctave_data();
    void pinkNoiseFallsByThreeDecibelsAnOctave();
    void sweepRisesThroughAllFrequencies();
    void fileIsRepeatedWithoutAGap();
    void fileThatCantBeReadIsRefused();
    void exchangeFadesOutAndIn();
    void otherIdIsTakenAtOnce();
    void idWithoutSourceIsSilent();
    void sourcesAreExchangedWhileTheyPlayAndNoneIsLost();
    void chimeIsPlayedOnceAndEnds_data();
    void chimeIsPlayedOnceAndEnds();
    void chimeIsRepeatedUntilItIsEnded();
    void chimeHasNoSoundAboveItsBand();
    void bridgeIsOneBlockLateWhateverTheOrder();
    void bridgeFadesWhenItRunsShortAndComesBack();
    void bridgeThatNobodyPulledGivesNewSound();
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

void TestSources::fileIsRepeatedWithoutAGap()
{
    QTemporaryDir folder;
    // Lengths that fit no block, one of them shorter than any.
    for (int length : {7, 1000, 100003}) {
        std::vector<float> samples;
        for (int n = 0; n < length; ++n)
            samples.push_back(float(n + 1) / float(length));
        const std::string path = files::write(folder.filePath("loop.wav").toStdString(),
                                              SF_FORMAT_WAV | SF_FORMAT_FLOAT, 48000, 1, samples);
        std::string error;
        const auto source = makeFileSource(path, 48000, error);
        QVERIFY2(source, error.c_str());
        for (int n = 0; n < 3 * length + 20000;) {
            const auto out = play(*source, 4096)[0];
            for (float x : out) {
                QCOMPARE(x, samples[std::size_t(n % length)]);
                ++n;
            }
            QVERIFY(source->readAhead());
        }
    }
}

void TestSources::fileThatCantBeReadIsRefused()
{
    std::string error;
    QVERIFY(!makeFileSource("/nowhere/at-all.flac", 48000, error));
    QVERIFY2(error.find("/nowhere/at-all.flac") != std::string::npos, error.c_str());
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

void TestSources::chimeIsPlayedOnceAndEnds_data()
{
    QTest::addColumn<int>("prompt");
    QTest::newRow("ring") << int(dsp::Ring);
    QTest::newRow("call") << int(dsp::Call);
    QTest::newRow("voice") << int(dsp::Voice);
    QTest::newRow("navigation") << int(dsp::Navi);
}

void TestSources::chimeIsPlayedOnceAndEnds()
{
    QFETCH(int, prompt);
    const auto which = dsp::Prompt(prompt);
    Chimes chimes;
    chimes.prepare(rate);
    std::vector<float> out(1000);
    QVERIFY(!chimes.render(which, out.data(), 1000));
    QVERIFY(!chimes.sounds(which));
    chimes.start(which, false);
    QVERIFY(chimes.sounds(which));
    float largest = 0, before = 0, step = 0;
    int frames = 0;
    while (chimes.render(which, out.data(), 1000)) {
        for (float x : out) {
            largest = std::max(largest, std::abs(x));
            step = std::max(step, std::abs(x - before));
            before = x;
        }
        frames += 1000;
        QVERIFY(frames < 5 * rate);
    }
    QVERIFY(!chimes.sounds(which));
    QVERIFY(std::abs(frames - chimes.seconds(which) * rate) <= 1000);
    QVERIFY2(std::abs(largest - 0.25f) < 0.01f, qPrintable(QString::number(largest)));
    QVERIFY2(step < 0.15f, qPrintable(QString::number(step)));
    QCOMPARE(before, 0.0f);
}

void TestSources::chimeIsRepeatedUntilItIsEnded()
{
    Chimes chimes;
    chimes.prepare(rate);
    std::vector<float> out(480);
    chimes.start(dsp::Ring, true);
    for (int n = 0; n < 1000; ++n)
        QVERIFY(chimes.render(dsp::Ring, out.data(), 480));
    chimes.end(dsp::Ring);
    int rest = 0;
    while (chimes.render(dsp::Ring, out.data(), 480))
        rest += 480;
    QVERIFY2(rest > 480 && rest <= 1440, qPrintable(QString::number(rest))); // the fade of 20 ms
    QVERIFY(!chimes.sounds(dsp::Ring));
    chimes.end(dsp::Ring);
    QVERIFY(!chimes.sounds(dsp::Ring));
}

void TestSources::chimeHasNoSoundAboveItsBand()
{
    Chimes chimes;
    chimes.prepare(rate);
    for (int prompt = 0; prompt < dsp::promptCount; ++prompt) {
        std::vector<float> out(48000);
        chimes.start(dsp::Prompt(prompt), false);
        chimes.render(dsp::Prompt(prompt), out.data(), 48000);
        // Twice differentiated by a difference of high order, only what lies high is left.
        for (int times = 0; times < 8; ++times)
            for (std::size_t n = out.size() - 1; n > 0; --n)
                out[n] = (out[n] - out[n - 1]) / 2;
        double sum = 0;
        for (std::size_t n = 10; n < out.size(); ++n)
            sum += double(out[n]) * double(out[n]);
        // (sin(pi f / rate))^8 is -47 dB at 8 kHz and 0 dB at 24 kHz.
        QVERIFY2(10 * std::log10(sum / double(out.size())) < -65,
                 qPrintable(QString::number(10 * std::log10(sum / double(out.size())))));
    }
}

void TestSources::bridgeIsOneBlockLateWhateverTheOrder()
{
    InputBridge bridge;
    bridge.reset(rate);
    constexpr int block = 256;
    std::vector<float> in(block), left(block), right(block);
    std::uint64_t cycle = 1000;
    float next = 1;
    for (int n = 0; n < 400; ++n, ++cycle) {
        const bool inFirst = n / 7 % 2;
        const float first = next;
        for (float& x : in)
            x = next++;
        if (inFirst)
            bridge.push(cycle, in.data(), in.data(), block);
        bridge.begin(cycle, block);
        const bool any = bridge.pull(left.data(), right.data(), 100) &&
                         bridge.pull(left.data() + 100, right.data() + 100, block - 100);
        if (!inFirst)
            bridge.push(cycle, in.data(), in.data(), block);
        if (n < 2)
            continue; // the fade at the start
        QVERIFY(any);
        QCOMPARE(left[0], first - block);
        QCOMPARE(right[block - 1], first - 1);
    }
}

void TestSources::bridgeFadesWhenItRunsShortAndComesBack()
{
    InputBridge bridge;
    bridge.reset(rate);
    constexpr int block = 256;
    std::vector<float> in(block, 0.5f), left(block), right(block);
    float before = 0;
    bool silent = false, back = false;
    for (int n = 0; n < 200; ++n) {
        bridge.begin(std::uint64_t(n + 1), block);
        const bool any = bridge.pull(left.data(), right.data(), block);
        silent |= n > 105 && !any;
        back |= silent && any && left[block - 1] == 0.5f;
        for (int i = 0; i < block; ++i) {
            const float x = any ? left[std::size_t(i)] : 0;
            QVERIFY2(std::abs(x - before) < 0.01f, qPrintable(QString::number(n)));
            before = x;
        }
        if (n < 100 || n > 110)
            bridge.push(std::uint64_t(n + 1), in.data(), in.data(), block);
    }
    QVERIFY(silent);
    QVERIFY(back);
}

void TestSources::bridgeThatNobodyPulledGivesNewSound()
{
    InputBridge bridge;
    bridge.reset(rate);
    std::vector<float> in(512), left(512), right(512);
    for (int n = 0; n < 1000; ++n) {
        std::fill(in.begin(), in.end(), n < 999 ? 0.1f : 0.9f);
        bridge.push(std::uint64_t(n + 1), in.data(), in.data(), 512);
    }
    bridge.begin(1001, 512);
    QVERIFY(!bridge.pull(left.data(), right.data(), 512)); // all of it was old
    std::fill(in.begin(), in.end(), 0.9f);
    bridge.push(1001, in.data(), in.data(), 512);
    bridge.begin(1002, 512);
    QVERIFY(bridge.pull(left.data(), right.data(), 512));
    QCOMPARE(left[511], 0.9f);
}

QTEST_GUILESS_MAIN(TestSources)
#include "tst_sources.moc"
