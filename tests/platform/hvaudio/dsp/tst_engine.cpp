#include "tests/platform/hvaudio/dsp/sound.h"

#include <QtTest>

#if defined(__SSE2__)
#include <xmmintrin.h>
#endif

using namespace sound;

/// The engine as a whole: blocks, ramps, sources, prompts, beeps and rest.
class TestEngine : public QObject
{
    Q_OBJECT

private slots:
    void unpreparedIsSilent();
    void badRatesAreRefused();
    void soundDoesNotDependOnTheBlockSize_data();
    void soundDoesNotDependOnTheBlockSize();
    void glidesDoNotDependOnTheBlockSize_data();
    void glidesDoNotDependOnTheBlockSize();
    void newestFiltersSoundInTheEnd();
    void restsDoNotDependOnTheBlockSize();
    void inputMayBeTheOutput();
    void missingInputsAndOutputsAreFine();
    void pathsSoundAlike();
    void powerOnIsARamp();
    void powerOnNeverExceedsTheStartVolume();
    void quickPowerOffAndOnNeverExceedsTheStartVolume_data();
    void quickPowerOffAndOnNeverExceedsTheStartVolume();
    void switchingOffWhileTheUnitComesUpIsObeyed();
    void settingsMayComeBeforePrepare();
    void silenceMakesItIdleAndSoundWakesIt();
    void powerOffMakesItIdleWhateverPlays();
    void settingsAreClampedBeforeUse();
    void callersFloatingPointModeReturns();
    void denormalsAreFlushed();
};

static Settings busy()
{
    Settings s = flat();
    s.mainDb = -18;
    s.loudness = true;
    s.equalizer = {6, 4, 2, -1, -3, -2, 1, 3, 5, -4, 2, -6, 4};
    for (int i = 0; i < cabinSpeakerCount; ++i) {
        s.cabin[i].highPass = {corners[4 + i], 4};
        s.cabin[i].delayMs = 1.3 * i;
    }
    s.subwoofer = {false, {120, 4}, 2, true, 3.7};
    return s;
}

void TestEngine::unpreparedIsSilent()
{
    Engine engine;
    engine.set(busy());
    Signal in = sine(500, 0.5, 64), out = sine(500, 0.5, 64);
    Block block;
    block.programme[0] = in.data();
    block.out[2] = out.data();
    block.frames = 64;
    engine.process(block);
    QCOMPARE(peak(out), 0.0f);
    QCOMPARE(engine.rate(), 0.0);
    QCOMPARE(std::abs(engine.response(FrontLeft, 1000)), 0.0);
}

void TestEngine::badRatesAreRefused()
{
    Engine engine;
    for (double rate : {0.0, -1.0, 100.0, 1e9, std::nan("")})
        QVERIFY(!engine.prepare(rate));
    QVERIFY(engine.prepare(48000));
    QVERIFY(!engine.prepare(1));
    QCOMPARE(engine.rate(), 48000.0);
}

void TestEngine::soundDoesNotDependOnTheBlockSize_data()
{
    QTest::addColumn<int>("frames");
    QTest::addColumn<int>("path");
    for (Path path : allPaths)
        if (kernelOf(path))
            for (int frames : {1, 2, 3, 7, 16, 17, 64, 100, 255, 256, 441, 1000, 1024, 4096, 8192, 20000})
                QTest::addRow("%d frames, path %d", frames, int(path)) << frames << int(path);
}

void TestEngine::soundDoesNotDependOnTheBlockSize()
{
    QFETCH(int, frames);
    QFETCH(int, path);
    const Signal left = pinkNoise(1.5, 20000, 1), right = pinkNoise(1.5, 20000, 2); // the limiter works too
    Rig whole(busy(), 48000, Path(path)), cut(busy(), 48000, Path(path));
    const Speakers a = whole.play(left, right, 8192), b = cut.play(left, right, frames);
    QVERIFY(a == b);
}

void TestEngine::glidesDoNotDependOnTheBlockSize_data()
{
    QTest::addColumn<bool>("filtersOnly");
    QTest::newRow("filters, levels and delays") << false;
    QTest::newRow("filters alone") << true;
}

void TestEngine::glidesDoNotDependOnTheBlockSize()
{
    QFETCH(bool, filtersOnly);
    const Signal in = pinkNoise(0.5, 3000, 3);
    for (int frames : {1, 5, 16, 31, 1000}) {
        Rig whole, cut;
        std::mt19937 random(4);
        for (int step = 0; step < 12; ++step) {
            Settings s = busy();
            s.equalizer[random() % bandCount] = int(random() % 21) - 10;
            if (!filtersOnly) {
                s.balance = int(random() % 31) / 15.0 - 1;
                s.cabin[random() % 4].delayMs = 0.1 * (random() % 101);
                s.subwoofer.inverted = random() & 1;
            }
            whole.engine.set(s);
            cut.engine.set(s);
            if (step == 5) {
                whole.engine.beep();
                cut.engine.beep();
            }
            QVERIFY2(whole.play(in, 4096) == cut.play(in, frames), qPrintable(QString::number(frames)));
        }
    }
}

/// Wishes that come while others fade in wait, and only the newest of them is taken up.
void TestEngine::newestFiltersSoundInTheEnd()
{
    Settings s = busy();
    Rig changed(s);
    const Signal in = sine(300, 0.1, 48000);
    for (int gain : {-10, 4, 7}) {
        s.equalizer[4] = gain;
        s.cabin[FrontLeft].highPass.hz = 100 + 10 * gain;
        changed.engine.set(s);
        changed.play(sine(300, 0.1, 480));
    }
    Rig fresh(s);
    const Speakers got = changed.play(in), wanted = fresh.play(in);
    const auto level = [](const Signal& out) {
        return std::abs(spectrum(Signal(out.end() - 4800, out.end()), 300));
    };
    for (int i = 0; i < speakerCount; ++i)
        QVERIFY(std::abs(level(got[i]) / level(wanted[i]) - 1) < 1e-5);
}

void TestEngine::restsDoNotDependOnTheBlockSize()
{
    // Sound and silence in turns, so that it falls idle and wakes in the middle of blocks.
    std::mt19937 random(12);
    Signal in;
    while (in.size() < 200000) {
        const int frames = 100 + int(random() % 15000);
        const Signal next = random() & 1 ? silence(frames) : pinkNoise(2, frames, random());
        in.insert(in.end(), next.begin(), next.end());
    }
    Rig one(busy());
    const Speakers wanted = one.play(in, 1);
    for (int frames : {37, 512, 8192, 50000}) {
        Rig other(busy());
        QVERIFY2(other.play(in, frames) == wanted, qPrintable(QString::number(frames)));
    }
}

void TestEngine::inputMayBeTheOutput()
{
    const Signal left = pinkNoise(0.5, 5000, 5), right = pinkNoise(0.5, 5000, 6);
    Rig apart(busy()), together(busy());
    const Speakers wanted = apart.play(left, right);
    Signal a = left, b = right, c = silence(5000), d = c, e = c;
    const float* const in[2] = {a.data(), b.data()};
    float* const out[speakerCount] = {a.data(), b.data(), c.data(), d.data(), e.data()};
    together.engine.process(in, out, 5000);
    QVERIFY(a == wanted[0] && b == wanted[1] && c == wanted[2] && d == wanted[3] && e == wanted[4]);
}

void TestEngine::missingInputsAndOutputsAreFine()
{
    Rig rig(busy()), full(busy());
    const Signal left = pinkNoise(0.5, 3000, 7);
    const Speakers wanted = full.play(left, silence(3000));
    Signal sub = silence(3000);
    Block block;
    block.programme[0] = left.data();
    block.out[Subwoofer] = sub.data();
    block.frames = 3000;
    rig.engine.process(block);
    QVERIFY(sub == wanted[Subwoofer]);
    block.frames = 0;
    rig.engine.process(block);
    block.frames = -5;
    rig.engine.process(block);
}

void TestEngine::pathsSoundAlike()
{
    const Signal left = pinkNoise(0.5, 20000, 8), right = pinkNoise(0.5, 20000, 9);
    Settings s = busy();
    s.cabin[0].lowPass = {8000, 3};
    Rig scalar(s, 48000, Path::Scalar);
    const Speakers wanted = scalar.play(left, right);
    for (Path path : allPaths) {
        if (!kernelOf(path))
            continue;
        Rig rig(s, 48000, path);
        QCOMPARE(int(rig.engine.path()), int(path));
        const Speakers got = rig.play(left, right);
        for (int i = 0; i < speakerCount; ++i)
            for (size_t n = 0; n < left.size(); ++n)
                QVERIFY(std::abs(got[i][n] - wanted[i][n]) < 1e-5f);
    }
}

void TestEngine::powerOnIsARamp()
{
    Engine engine;
    engine.prepare(48000);
    engine.set(flat());
    Signal in(9600, 0.5f), out[speakerCount];
    float* to[speakerCount];
    for (int i = 0; i < speakerCount; ++i) {
        out[i] = silence(9600);
        to[i] = out[i].data();
    }
    const float* const from[2] = {in.data(), in.data()};
    engine.process(from, to, 9600);
    for (size_t n = 1; n < in.size(); ++n)
        QVERIFY2(std::abs(out[0][n] - out[0][n - 1]) < 0.002f, qPrintable(QString::number(n)));
    QVERIFY(std::abs(out[0].back() - 0.5f) < 1e-3f);
}

void TestEngine::powerOnNeverExceedsTheStartVolume()
{
    Settings s = flat();
    Rig rig(s);
    const Signal in = sine(1000, 0.5, 24000);
    rig.play(in);
    s.power = false;
    rig.engine.set(s);
    rig.play(in);
    QCOMPARE(peak(rig.play(in)[FrontLeft]), 0.0f);
    s.power = true;
    s.mainDb = -30; // 30 dB down
    rig.engine.set(s);
    const float allowed = 0.5f * float(std::pow(10.0, -30 / 20.0)) * 1.01f;
    QVERIFY(peak(rig.play(in)[FrontLeft]) <= allowed);
    QVERIFY(peak(rig.play(in)[FrontLeft]) > allowed * 0.9f);
}

void TestEngine::quickPowerOffAndOnNeverExceedsTheStartVolume_data()
{
    QTest::addColumn<int>("gapFrames");
    for (int ms : {0, 1, 5, 20, 60, 100, 140, 155, 165, 200})
        QTest::addRow("on again after %d ms", ms) << 48 * ms;
}

void TestEngine::quickPowerOffAndOnNeverExceedsTheStartVolume()
{
    QFETCH(int, gapFrames);
    Settings s = flat();
    Rig rig(s);
    const auto play = [&](int frames) { return rig.play(sine(1000, 0.5, frames), 64)[FrontLeft]; };
    play(24000);
    s.power = false;
    rig.engine.set(s);
    Signal heard = gapFrames > 0 ? play(gapFrames) : Signal();
    s.power = true;
    s.mainDb = -48; // 48 dB down
    rig.engine.set(s);
    const Signal after = play(48000);
    heard.insert(heard.end(), after.begin(), after.end());
    // The old sound only dies away, then the new one comes up to its own level and no further.
    const float start = 0.5f * float(factorOfDb(-48));
    float allowed = 0.51f;
    for (size_t n = 0; n + 480 <= heard.size(); n += 480) {
        const float now = peak(Signal(heard.begin() + long(n), heard.begin() + long(n) + 480));
        QVERIFY2(now <= allowed, qPrintable(QString("%1 at frame %2").arg(now).arg(n)));
        allowed = std::max(now * 1.001f, start * 1.01f);
    }
    QVERIFY(peak(Signal(heard.end() - 4800, heard.end())) > 0.99f * start);
}

void TestEngine::switchingOffWhileTheUnitComesUpIsObeyed()
{
    Settings s = flat();
    Rig rig(s);
    const Signal in = sine(1000, 0.5, 480);
    rig.play(in);
    for (bool power : {false, true, false}) { // all before the first is done
        s.power = power;
        rig.engine.set(s);
        rig.play(in);
    }
    for (int n = 0; n < 40; ++n)
        rig.play(in);
    QCOMPARE(peak(rig.play(in)[FrontLeft]), 0.0f);
}

void TestEngine::settingsMayComeBeforePrepare()
{
    Rig rig;
    Engine engine;
    Settings s = flat();
    s.mainDb = -24;
    s.source = 7;
    engine.set(s);
    QVERIFY(engine.prepare(44100));
    engine.settle();
    QCOMPARE(engine.audibleSource(), 7);
    QVERIFY(std::abs(db(std::abs(engine.response(RearLeft, 500))) + 24) < 0.01);
}

void TestEngine::silenceMakesItIdleAndSoundWakesIt()
{
    Rig rig(busy());
    QVERIFY(rig.engine.idle());
    const Signal in = sine(50, 0.5, 4800);
    rig.play(in);
    QVERIFY(!rig.engine.idle());
    Signal tail;
    int blocks = 0;
    while (!rig.engine.idle() && blocks++ < 1000) {
        const Signal out = rig.play(silence(480))[Subwoofer];
        tail.insert(tail.end(), out.begin(), out.end());
    }
    QVERIFY(rig.engine.idle());
    // It rang out before.
    for (size_t n = tail.size() - 4800; n < tail.size(); ++n)
        QVERIFY(std::abs(tail[n]) < 1e-7f);
    QCOMPARE(peak(rig.play(silence(480))[Subwoofer]), 0.0f);
    // And what comes next sounds as from a fresh start.
    Rig fresh(busy());
    const Speakers again = rig.play(in), wanted = fresh.play(in);
    for (int i = 0; i < speakerCount; ++i)
        for (size_t n = 0; n < in.size(); ++n)
            QVERIFY(std::abs(again[i][n] - wanted[i][n]) < 1e-6f);
}

void TestEngine::powerOffMakesItIdleWhateverPlays()
{
    Settings s = flat();
    Rig rig(s);
    const Signal in = sine(500, 0.5, 48000);
    rig.play(in);
    s.power = false;
    rig.engine.set(s);
    rig.play(in);
    rig.play(in);
    QVERIFY(rig.engine.idle());
    s.power = true;
    rig.engine.set(s);
    QVERIFY(peak(rig.play(in)[0]) > 0.4f);
    QVERIFY(!rig.engine.idle());
}

void TestEngine::settingsAreClampedBeforeUse()
{
    Settings s = flat();
    s.mainDb = 5000;
    s.sourceDb = -45;
    Rig rig(s);
    QCOMPARE(rig.engine.settings().mainDb, 0.0);
    QCOMPARE(rig.engine.settings().sourceDb, -20.0);
    QVERIFY(std::abs(responseDb(rig.play(impulse(4096))[0], 1000) + 20) < 0.01);
}

void TestEngine::callersFloatingPointModeReturns()
{
#if defined(__SSE2__)
    const unsigned before = _mm_getcsr();
    Rig rig;
    rig.play(sine(500, 0.5, 480));
    QCOMPARE(_mm_getcsr() & 0x8040u, before & 0x8040u);
#endif
    volatile float tiny = std::numeric_limits<float>::min();
    tiny = tiny / 4;
    QVERIFY(tiny > 0);
}

void TestEngine::denormalsAreFlushed()
{
    for (Path path : allPaths) {
        if (!kernelOf(path))
            continue;
        Rig rig(busy(), 48000, path);
        for (const Signal& speaker : rig.play(Signal(4800, 1e-40f)))
            QCOMPARE(peak(speaker), 0.0f);
        // A tail that dies away never gets there either.
        rig.play(sine(40, 1e-30, 480));
        for (const Signal& speaker : rig.play(silence(48000)))
            for (float x : speaker)
                QVERIFY(x == 0 || std::abs(x) >= std::numeric_limits<float>::min());
    }
}

QTEST_GUILESS_MAIN(TestEngine)
#include "tst_engine.moc"
