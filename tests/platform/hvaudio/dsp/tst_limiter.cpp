#include "tests/platform/hvaudio/dsp/sound.h"

#include "platform/hvaudio/dsp/limiter.h"

#include <QtTest>

#include <limits>

using namespace sound;

/// No sample leaves above -0.1 dBFS, whatever comes in and whatever is set.
class TestLimiter : public QObject
{
    Q_OBJECT

private slots:
    void ceilingHolds_data();
    void ceilingHolds();
    void ceilingHoldsWhileEverythingChanges();
    void soundComesBackAfterNotANumber_data();
    void soundComesBackAfterNotANumber();
    void belowTheCeilingNothingIsTouched();
    void gainIsDownBeforeThePeakAndComesBack();
    void everyPeakIsLoweredInTimeAndNeverCut_data();
    void everyPeakIsLoweredInTimeAndNeverCut();
    void gainEndsAtExactlyOne();
    void limitedSoundDoesNotDependOnTheBlockSize_data();
    void limitedSoundDoesNotDependOnTheBlockSize();
    void oneLoudSpeakerLowersAllAlike();
    void steadyToneStaysClean();
    void metersTellPeakAndReduction();
};

static const double ceilingFactor = std::pow(10.0, -0.1 / 20);

static void checkCeiling(const Speakers& out)
{
    for (const Signal& speaker : out)
        for (float x : speaker)
            if (!(std::abs(x) <= ceilingFactor)) // not a number fails too
                QFAIL(qPrintable(QString::number(x, 'g', 10)));
}

static Signal badSignal(int kind, int frames)
{
    std::mt19937 random(unsigned(kind) + 1);
    Signal s = sine(200, 0.5, frames);
    const float values[] = {
        std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
        -std::numeric_limits<float>::infinity(), std::numeric_limits<float>::max(),
        -std::numeric_limits<float>::max(),      std::numeric_limits<float>::denorm_min()};
    for (int n = 0; n < frames; ++n)
        switch (kind) {
        case 0:
            s[n] *= 2.5f;
            break;
        case 1:
            s[n] = float(20 * (int32_t(random()) / 2147483648.0));
            break;
        case 2:
            s[n] = n / 37 % 2 ? 1e3f : -1e3f;
            break;
        case 3:
            s[n] = n % 1000 == 0 ? 50 : 0;
            break;
        case 4:
            if (random() % 50 == 0)
                s[n] = values[random() % 6];
            break;
        case 5:
            s[n] = values[n % 6];
            break;
        case 6: {
            // Any pattern of bits.
            const uint32_t bits = random();
            memcpy(&s[n], &bits, sizeof bits);
            break;
        }
        case 7:
            s[n] = n < frames / 2 ? 0 : 1.0f;
            break;
        }
    return s;
}

void TestLimiter::ceilingHolds_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("path");
    const char* const names[] = {
        "sine over full scale",   "loud noise",  "loud square", "single peaks", "sine with NaN and infinity",
        "nothing but bad values", "random bits", "a step"};
    for (int kind = 0; kind < 8; ++kind)
        for (Path path : {Path::Scalar, Path::Vector4, Path::Vector8})
            if (kernelOf(path))
                QTest::addRow("%s, path %d", names[kind], int(path)) << kind << int(path);
}

void TestLimiter::ceilingHolds()
{
    QFETCH(int, kind);
    QFETCH(int, path);
    const Signal in = badSignal(kind, 48000);
    std::mt19937 random(3);
    for (double rate : {44100.0, 96000.0})
        for (int set = 0; set < 6; ++set) {
            Settings s = flat();
            s.sourceDb = 10;
            for (int& band : s.equalizer)
                band = set == 0 ? 10 : int(random() % 21) - 10;
            s.loudness = set & 1;
            s.mainDb = set & 1 ? -24 : 0;
            s.cabin[set % 4].highPass = {corners[set], 4};
            s.cabin[set % 4].delayMs = 1.7;
            Rig rig(s, rate, Path(path));
            checkCeiling(rig.play(in));
        }
}

void TestLimiter::ceilingHoldsWhileEverythingChanges()
{
    std::mt19937 random(5);
    Rig rig;
    const Signal in = whiteNoise(4, 480, 6);
    for (int step = 0; step < 400; ++step) {
        Settings s = flat();
        for (int& band : s.equalizer)
            band = int(random() % 21) - 10;
        s.mainDb = volumeDb(int(random() % 51));
        s.balance = int(random() % 31) / 15.0 - 1;
        s.loudness = random() & 1;
        for (auto& speaker : s.cabin) {
            speaker.highPass = {corners[random() % 9], 1 + int(random() % 4)};
            speaker.delayMs = 0.1 * (random() % 101);
            speaker.inverted = random() & 1;
        }
        setSubwoofer(s, int(random() % 10));
        rig.engine.set(s);
        checkCeiling(rig.play(in));
    }
}

void TestLimiter::soundComesBackAfterNotANumber_data()
{
    QTest::addColumn<int>("path");
    for (Path path : {Path::Scalar, Path::Vector4, Path::Vector8})
        if (kernelOf(path))
            QTest::addRow("path %d", int(path)) << int(path);
}

void TestLimiter::soundComesBackAfterNotANumber()
{
    QFETCH(int, path);
    Settings s = flat();
    s.equalizer[0] = 6;
    s.cabin[0].highPass = {60, 4};
    Rig rig(s, 48000, Path(path));
    rig.play(badSignal(5, 4800));
    rig.play(silence(4 * 48000));
    const Signal in = sine(1000, 0.1, 48000);
    Rig fresh(s, 48000, Path(path));
    const Speakers got = rig.play(in), wanted = fresh.play(in);
    for (int i = 0; i < speakerCount; ++i)
        for (size_t n = 0; n < in.size(); ++n)
            QVERIFY(std::abs(got[i][n] - wanted[i][n]) < 1e-6f);
}

void TestLimiter::belowTheCeilingNothingIsTouched()
{
    Rig rig;
    const Signal in = sine(1000, 0.98, 9600);
    const Signal out = rig.play(in)[FrontLeft];
    const size_t late = size_t(rig.latency());
    for (size_t n = late; n < in.size(); ++n)
        QVERIFY(std::abs(out[n] - in[n - late]) < 2e-6f);
    QCOMPARE(rig.engine.takeMeters().gain, 1.0f);
}

void TestLimiter::gainIsDownBeforeThePeakAndComesBack()
{
    Rig rig;
    Signal in = sine(1000, 0.5, 96000);
    for (int n = 30000; n < 30048; ++n)
        in[n] *= 8;
    const Signal out = rig.play(in)[FrontLeft];
    checkCeiling({out, out, out, out, out});
    // No flat top: the peak keeps its shape, so it was lowered, not cut.
    const float top = peak(out);
    QVERIFY(std::count_if(out.begin(), out.end(), [&](float x) { return std::abs(x) >= top * 0.9999f; }) <=
            4);
    const Signal tail(out.end() - 4800, out.end());
    QVERIFY(std::abs(peak(tail) - 0.5f) < 0.001f);
}

/// Runs a limiter on its own: `loud` on one speaker, and on another a level that tells the gain of each
/// frame.
static Signal gainsOf(Limiter& limiter, const Signal& loud, int pieceOf = pieceFrames)
{
    constexpr float level = 0.25f;
    Signal gains(loud.size());
    for (size_t done = 0; done < loud.size();) {
        const int frames = int(std::min(size_t(pieceOf), loud.size() - done));
        float frame[pieceFrames], top = 0;
        float* const* const room = limiter.room();
        for (int i = 0; i < speakerCount; ++i)
            std::fill(room[i], room[i] + frames, level);
        for (int n = 0; n < frames; ++n) {
            room[RearLeft][n] = loud[done + size_t(n)];
            frame[n] = std::max(std::abs(loud[done + size_t(n)]), level);
            top = std::max(top, frame[n]);
        }
        float peak[speakerCount] = {level, level, top, level, level};
        float* const out[speakerCount] = {nullptr, &gains[done], nullptr, nullptr, nullptr};
        const float smallest = limiter.process(out, frames, int(done % gridFrames), frame, peak);
        float seen = 1;
        for (size_t n = done; n < done + size_t(frames); ++n) {
            gains[n] /= level;
            if (n >= size_t(limiter.latencyFrames()))
                seen = std::min(seen, gains[n]);
        }
        if (smallest != seen && done >= size_t(limiter.latencyFrames()))
            qFatal("the smallest gain is %g, not %g", double(seen), double(smallest));
        done += size_t(frames);
    }
    return gains;
}

void TestLimiter::everyPeakIsLoweredInTimeAndNeverCut_data()
{
    QTest::addColumn<double>("rate");
    for (double rate : {8000.0, 44100.0, 48000.0, 96000.0})
        QTest::addRow("%g", rate) << rate;
}

void TestLimiter::everyPeakIsLoweredInTimeAndNeverCut()
{
    QFETCH(double, rate);
    Limiter limiter;
    limiter.prepare(rate);
    const size_t late = size_t(limiter.latencyFrames());
    std::mt19937 random(11);
    for (int round = 0; round < 50; ++round) {
        limiter.clear();
        // Single frames of any height at any place, alone and close together.
        Signal loud = silence(6000);
        for (size_t n = 0; n < loud.size(); n += 1 + random() % (round % 2 ? 1500 : 40))
            loud[n] = float(std::exp(6.0 * random() / 4294967296.0 - 1)) * (random() & 1 ? 1 : -1);
        const Signal gains = gainsOf(limiter, loud, 1 + int(random() % pieceFrames));
        for (size_t n = 0; n + late < loud.size(); ++n) {
            const float x = loud[n] * gains[n + late];
            QVERIFY2(std::abs(x) <= Limiter::ceiling * 1.000001f,
                     qPrintable(QString("frame %1: %2 becomes %3").arg(n).arg(loud[n]).arg(x)));
        }
        // No jumps: the way down takes most of the look-ahead, two means and a line long.
        for (size_t n = late + 1; n < gains.size(); ++n)
            QVERIFY(std::abs(gains[n] - gains[n - 1]) <= 4.1 / double(late));
    }
}

void TestLimiter::gainEndsAtExactlyOne()
{
    Limiter limiter;
    limiter.prepare(48000);
    Signal loud = silence(4 * 48000);
    loud[1000] = 5;
    const Signal gains = gainsOf(limiter, loud);
    const size_t late = size_t(limiter.latencyFrames());
    QVERIFY(!limiter.working());
    QCOMPARE(gains[1000], 1.0f); // on its way down from the next cell on
    QVERIFY(gains[late + 1000] < 0.2f);
    QVERIFY(gains[late + 1400] < 0.2f); // held
    QCOMPARE(gains.back(), 1.0f);
    for (size_t n = late + 1001; n < gains.size(); ++n)
        QVERIFY(gains[n] >= gains[n - 1]);
}

void TestLimiter::limitedSoundDoesNotDependOnTheBlockSize_data()
{
    QTest::addColumn<int>("frames");
    for (int frames : {1, 7, 16, 100, 255, 1024, 8192})
        QTest::addRow("%d", frames) << frames;
}

void TestLimiter::limitedSoundDoesNotDependOnTheBlockSize()
{
    QFETCH(int, frames);
    // Silence in which the gain still recovers and all else has rung out.
    Signal gap = sine(440, 4, 24000);
    gap.resize(24000 + 8400);
    const Signal after = sine(440, 0.9, 48000);
    gap.insert(gap.end(), after.begin(), after.end());
    Rig small, large;
    const Speakers first = small.play(gap, 1), second = large.play(gap, frames);
    QVERIFY(first == second);
    QVERIFY(peak(Signal(first[0].begin() + 33000, first[0].begin() + 36000)) < 0.8f); // not back at once

    // Loud parts and single peaks, then long enough below the ceiling for the gain to end at 1: it begins and
    // ends to work in the middle of blocks.
    Signal in = pinkNoise(0.3, 260000, 4);
    for (size_t n = 0; n < in.size(); ++n)
        if (n % 130000 < 30000 && (n % 10007 < 3000 || n % 1999 == 0))
            in[n] *= 12;
    Settings s = flat();
    s.cabin[FrontRight].delayMs = 1.23;
    Rig one(s), other(s);
    const Speakers wanted = one.play(in, 480), got = other.play(in, frames);
    QVERIFY(one.engine.takeMeters().gain < 0.5f);
    for (int i = 0; i < speakerCount; ++i)
        QVERIFY(std::memcmp(got[i].data(), wanted[i].data(), in.size() * sizeof(float)) == 0);
}

void TestLimiter::oneLoudSpeakerLowersAllAlike()
{
    Settings s = flat();
    s.cabin[FrontRight].attenuation = 6;
    Rig rig(s);
    const Signal in = sine(500, 1.8, 48000);
    const Speakers out = rig.play(in);
    for (size_t n = 24000; n < in.size(); ++n)
        QVERIFY(std::abs(out[FrontRight][n] - out[FrontLeft][n] * 0.501187f) < 1e-5f);
}

void TestLimiter::steadyToneStaysClean()
{
    Rig rig;
    const Signal out = rig.play(sine(200, 2, 96000))[FrontLeft];
    const Signal tail(out.begin() + 48000, out.end());
    const double tone = std::abs(spectrum(tail, 200));
    for (double hz = 400; hz < 20000; hz += 200)
        QVERIFY2(db(std::abs(spectrum(tail, hz)) / tone) < -60, qPrintable(QString::number(hz)));
}

void TestLimiter::metersTellPeakAndReduction()
{
    Settings s = flat();
    s.balance = 1;
    Rig rig(s);
    rig.play(sine(500, 0.25, 9600));
    Meters m = rig.engine.takeMeters();
    QVERIFY(std::abs(m.peak[FrontRight] - 0.25f) < 0.001f);
    QCOMPARE(m.peak[FrontLeft], 0.0f);
    QCOMPARE(m.gain, 1.0f);
    QCOMPARE(rig.engine.takeMeters().peak[FrontRight], 0.0f);
    rig.play(sine(500, 2, 9600));
    m = rig.engine.takeMeters();
    QVERIFY(std::abs(m.gain - 0.494f) < 0.01f);
    QVERIFY(m.peak[FrontRight] <= float(ceilingFactor) && m.peak[FrontRight] > 0.9f);
}

QTEST_GUILESS_MAIN(TestLimiter)
#include "tst_limiter.moc"
