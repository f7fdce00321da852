#include "tests/platform/hvaudio/dsp/sound.h"

#include "platform/hvaudio/dsp/fold.h"
#include "platform/hvaudio/dsp/limiter.h"

#include <QtTest>

#include <limits>

using namespace sound;

/// No sample leaves above -0.1 dBFS, and hardly anything between samples, whatever comes in and whatever is
/// set.
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
    void heldGainIsKeptUntilTheCellHasLeft();
    void gainEndsAtExactlyOne();
    void limitedSoundDoesNotDependOnTheBlockSize_data();
    void limitedSoundDoesNotDependOnTheBlockSize();
    void oneLoudSpeakerLowersAllAlike();
    void subwooferAndCabinHaveTheirOwnGains_data();
    void subwooferAndCabinHaveTheirOwnGains();
    void steadyToneStaysClean_data();
    void steadyToneStaysClean();
    void truePeakStaysBelowTheCeiling_data();
    void truePeakStaysBelowTheCeiling();
    void lookAheadIsShort_data();
    void lookAheadIsShort();
    void shortPeakIsForgottenSoonerThanABassTone();
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
        for (Path path : allPaths)
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
    for (Path path : allPaths)
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

/// Runs a limiter on its own: `loud` on one speaker, and on the others of the cabin a level that tells the
/// gain of each frame; the subwoofer, at the same level, stays as it is.
static Signal gainsOf(Limiter& limiter, const Signal& loud, int pieceOf = pieceFrames)
{
    constexpr float level = 0.25f;
    Signal gains(loud.size()), subwoofer(loud.size());
    for (size_t done = 0; done < loud.size();) {
        const int frames = int(std::min(size_t(pieceOf), loud.size() - done));
        float* const* const inputs = limiter.inputs();
        for (int i = 0; i < speakerCount; ++i)
            std::fill(inputs[i], inputs[i] + frames, level);
        std::copy_n(&loud[done], frames, inputs[RearLeft]);
        const float top = peak(Signal(&loud[done], &loud[done] + frames));
        float peaks[speakerCount] = {level, level, top, level, level};
        float* const out[speakerCount] = {nullptr, &gains[done], nullptr, nullptr, &subwoofer[done]};
        const float smallest = limiter.process(out, frames, int(done % cellFrames), peaks);
        float seen = 1;
        for (size_t n = done; n < done + size_t(frames); ++n) {
            gains[n] /= level;
            if (n < size_t(limiter.latencyFrames()))
                continue;
            seen = std::min(seen, gains[n]);
            if (subwoofer[n] != level)
                qFatal("the subwoofer is turned down");
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

/// Whatever needs no more than what is held needn't be looked at.
void TestLimiter::heldGainIsKeptUntilTheCellHasLeft()
{
    constexpr int lookAhead = 8;
    LimiterGain gain;
    gain.prepare(48000, lookAhead);
    std::mt19937 random(17);
    for (int cell = 0; cell < 20000; ++cell) {
        const int odds = 1 + cell / 1000; // from close together to far apart
        gain.nextCell(random() % unsigned(odds) ? 1.0f : 0.1f + 0.9f * float(random()) / 4294967296.0f);
        LimiterGain later = gain;
        for (int i = 0; i < lookAhead; ++i)
            later.nextCell(1);
        float line[cellFrames];
        later.line(line);
        QVERIFY(*std::max_element(line, line + cellFrames) <= gain.held());
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

void TestLimiter::subwooferAndCabinHaveTheirOwnGains_data()
{
    QTest::addColumn<double>("hz");
    QTest::addColumn<bool>("bass");
    QTest::newRow("an overdriven subwoofer") << 50.0 << true;
    QTest::newRow("an overdriven cabin") << 2000.0 << false;
}

void TestLimiter::subwooferAndCabinHaveTheirOwnGains()
{
    QFETCH(double, hz);
    QFETCH(bool, bass);
    Settings s = flat();
    for (auto& speaker : s.cabin)
        speaker.highPass = {250, 4};
    s.subwoofer.lowPass = {250, 4};
    Rig rig(s);
    // A soft tone for the group that isn't overdriven.
    Signal in = sine(hz, 4, 48000);
    const double softHz = bass ? 2000 : 50;
    const Signal soft = sine(softHz, 0.1, 48000);
    std::transform(in.begin(), in.end(), soft.begin(), in.begin(), std::plus<float>());
    const Speakers out = rig.play(in);
    const int softSpeaker = bass ? FrontLeft : Subwoofer, loudSpeaker = bass ? Subwoofer : FrontLeft;
    const Signal tail(out[softSpeaker].begin() + 24000, out[softSpeaker].end());
    QVERIFY(std::abs(db(std::abs(spectrum(tail, softHz)) / (0.1 * 12000))) < 0.1);
    QVERIFY(std::abs(db(peak(out[loudSpeaker], 24000) / Limiter::ceiling)) < 0.1);
}

void TestLimiter::steadyToneStaysClean_data()
{
    QTest::addColumn<double>("hz");
    QTest::addColumn<double>("rate");
    for (double rate : {44100.0, 48000.0, 96000.0})
        for (double hz : {20.0, 23.0, 27.0, 32.0, 40.0, 63.0, 100.0, 200.0, 1000.0, 4000.0})
            QTest::addRow("%g Hz at %g", hz, rate) << hz << rate;
}

/// Harmonics of a tone 12 dB too loud, once it is steady: at most 0.1 % of it together.
void TestLimiter::steadyToneStaysClean()
{
    QFETCH(double, hz);
    QFETCH(double, rate);
    Rig rig(flat(), rate);
    const int frames = int(2 * rate);
    const Speakers out = rig.play(sine(hz, 4 * double(Limiter::ceiling), frames, rate));
    for (int i : {int(FrontLeft), int(Subwoofer)}) {
        // Whole periods, so that the tone itself is in no other bin.
        const Signal tail(out[i].begin() + frames / 2, out[i].begin() + frames / 2 + int(std::lround(rate)));
        const double tone = std::abs(spectrum(tail, hz, rate));
        double harmonics = 0;
        for (int n = 2; n <= 20 && n * hz < rate / 2; ++n)
            harmonics += std::norm(spectrum(tail, n * hz, rate));
        const double thd = std::sqrt(harmonics) / tone;
        QVERIFY2(thd < 0.001, qPrintable(QString("%1 %").arg(100 * thd)));
        QVERIFY(std::abs(db(peak(tail) / Limiter::ceiling)) < 0.1);
    }
}

/// So many times oversampled (4, as the standard says, or 16) by a windowed sinc that is long enough to be
/// right up to 0.47 of the rate.
static double truePeak(const Signal& signal, int phases)
{
    constexpr int half = 48;
    double top = 0;
    for (int phase = 0; phase < phases; ++phase) {
        double filter[2 * half];
        for (int k = 0; k < 2 * half; ++k) {
            const double t = k - half + 1 - double(phase) / phases;
            const double window = 0.5 + 0.5 * std::cos(pi * t / half);
            filter[k] = window * (std::abs(t) < 1e-9 ? 1 : std::sin(pi * t) / (pi * t));
        }
        for (size_t n = half; n + half < signal.size(); ++n) {
            double sum = 0;
            for (int k = 0; k < 2 * half; ++k)
                sum += filter[k] * double(signal[n + size_t(k) - half + 1]);
            top = std::max(top, std::abs(sum));
        }
    }
    return top;
}

void TestLimiter::truePeakStaysBelowTheCeiling_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("oversampling");
    QTest::newRow("a quarter of the rate, sampled beside its crests") << 0 << 16;
    QTest::newRow("pink noise 12 dB too loud") << 1 << 16;
    QTest::newRow("bursts of tones up to 15 kHz") << 2 << 16;
    // Above, crests may lie between what four times oversampling sees.
    QTest::newRow("bursts of tones up to 18 kHz") << 4 << 4;
    QTest::newRow("a tone just below the ceiling with crests above it") << 3 << 16;
}

void TestLimiter::truePeakStaysBelowTheCeiling()
{
    QFETCH(int, kind);
    QFETCH(int, oversampling);
    constexpr int frames = 16000;
    Signal left = silence(frames);
    for (int n = 0; n < frames; ++n)
        if (kind == 0) {
            left[size_t(n)] = float(1.4 * std::sin(pi / 2 * n + pi / 4));
        } else if (kind == 2 || kind == 4) {
            const double hz = 1000 + (kind == 2 ? 800 : 1000) * (n / 900);
            left[size_t(n)] = n % 900 < 600 ? float(2 * std::sin(2 * pi * hz / 48000 * n)) : 0;
        } else if (kind == 3) {
            left[size_t(n)] = float(1.3 * std::sin(pi / 2 * n + pi / 4)); // samples at 0.92
        }
    if (kind == 1)
        left = pinkNoise(1.5, frames, 21);
    Rig rig;
    const Speakers out = rig.play(left);
    checkCeiling(out);
    for (int i : {int(FrontLeft), int(Subwoofer)}) {
        const double got = db(truePeak(out[i], oversampling));
        QVERIFY2(got <= -0.1 + 0.3, qPrintable(QString("%1 dBTP").arg(got)));
    }
    // So is a fold of them.
    Signal fold[2] = {silence(frames), silence(frames)};
    const float* const from[speakerCount] = {&out[0][0], &out[1][0], &out[2][0], &out[3][0], &out[4][0]};
    float* const to[2] = {&fold[0][0], &fold[1][0]};
    foldToStereo(from, to, frames);
    QVERIFY(db(truePeak(fold[0], oversampling)) <= -0.1 + 0.3);
    QVERIFY(rig.engine.takeMeters().gain < 1);
}

void TestLimiter::lookAheadIsShort_data()
{
    QTest::addColumn<double>("rate");
    QTest::addColumn<double>("ms");
    QTest::newRow("12 kHz") << 12000.0 << 4.0;
    QTest::newRow("44.1 kHz") << 44100.0 << 3.1;
    QTest::newRow("48 kHz") << 48000.0 << 3.1;
    QTest::newRow("96 kHz") << 96000.0 << 3.1;
    QTest::newRow("192 kHz") << 192000.0 << 3.1;
}

void TestLimiter::lookAheadIsShort()
{
    QFETCH(double, rate);
    QFETCH(double, ms);
    Limiter limiter;
    limiter.prepare(rate);
    QVERIFY(1000 * limiter.latencyFrames() / rate <= ms);
}

void TestLimiter::shortPeakIsForgottenSoonerThanABassTone()
{
    const auto framesToHalf = [](const Signal& loud, size_t end) {
        Limiter limiter;
        limiter.prepare(48000);
        const Signal gains = gainsOf(limiter, loud);
        const size_t late = size_t(limiter.latencyFrames());
        const float held = gains[end + late];
        size_t n = end + late;
        while (n < gains.size() && gains[n] < 0.5f * (1 + held))
            ++n;
        return n - end - late;
    };
    Signal click = silence(96000), tone = silence(96000);
    click[20000] = 4;
    for (size_t n = 0; n <= 20000; ++n)
        tone[n] = 4 * float(std::sin(2 * pi * 25 * (double(n) - 20000) / 48000 + pi / 2));
    const size_t afterClick = framesToHalf(click, 20000), afterTone = framesToHalf(tone, 20000);
    QVERIFY2(afterClick > 4000 && afterClick < 7000, qPrintable(QString::number(afterClick)));
    QVERIFY2(2 * afterTone > 3 * afterClick && afterTone < 20000, qPrintable(QString::number(afterTone)));
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
