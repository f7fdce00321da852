#include "audiothreadtrap.h"
#include "sound.h"

#include "hvaudio/fold.h"

#include <QtTest>

#include <atomic>
#include <mutex>
#include <thread>

using namespace sound;

/// The audio thread never allocates, locks, logs or waits while every setting changes from another thread.
class TestRealtime : public QObject
{
    Q_OBJECT

private slots:
    void trapsSpring_data();
    void trapsSpring();
    void audioThreadOnlyComputes_data();
    void audioThreadOnlyComputes();
};

using Action = void (*)();
Q_DECLARE_METATYPE(Action)

void TestRealtime::trapsSpring_data()
{
    QTest::addColumn<Action>("action");
    QTest::newRow("new and delete") << Action([] { delete new volatile int(1); });
    QTest::newRow("vector") << Action([] {
        std::vector<float> v(100);
        v[3] = 1;
        asm volatile("" : : "r"(v.data()) : "memory");
    });
    QTest::newRow("mutex") << Action([] {
        static std::mutex m;
        const std::lock_guard<std::mutex> lock(m);
    });
    QTest::newRow("yield") << Action([] { std::this_thread::yield(); });
    QTest::newRow("write") << Action([] {
        if (::write(2, "", 0))
            return;
    });
    QTest::newRow("settings of the control side") << Action([] {
        Engine engine;
        engine.set(flat());
    });
}

void TestRealtime::trapsSpring()
{
    QFETCH(Action, action);
    trapped = 0;
    onAudioThread = true;
    action();
    onAudioThread = false;
    QVERIFY(trapped > 0);
}

static Settings randomSettings(std::mt19937& random)
{
    const auto upTo = [&](int n) { return int(random() % unsigned(n + 1)); };
    Settings s;
    s.power = upTo(20) > 0;
    s.mute = upTo(10) == 0;
    s.source = upTo(19);
    s.sourceGain = upTo(15);
    s.mainVolume = upTo(50);
    for (int& volume : s.promptVolume)
        volume = upTo(50);
    for (int& band : s.equalizer)
        band = upTo(20) - 10;
    s.loudness = upTo(1);
    s.balance = upTo(30) - 15;
    s.fader = upTo(30) - 15;
    s.tables = CrossoverTables(upTo(1));
    for (auto& c : s.cabin)
        c = {{upTo(8), upTo(3)}, {upTo(5), upTo(3)}, upTo(12), upTo(1) == 1, 0.1 * upTo(100)};
    s.subwoofer = {upTo(9), upTo(12), upTo(3), upTo(1) == 1, 0.1 * upTo(100)};
    return s;
}

void TestRealtime::audioThreadOnlyComputes_data()
{
    QTest::addColumn<int>("frames");
    QTest::newRow("blocks of 64") << 64;
    QTest::newRow("blocks of 480") << 480;
    QTest::newRow("blocks of 8192") << 8192;
}

void TestRealtime::audioThreadOnlyComputes()
{
    QFETCH(int, frames);
    Rig rig;
    Engine& engine = rig.engine;
    std::atomic<bool> stop{false};
    std::atomic<int> changes{0};
    std::thread changing([&] {
        std::mt19937 random(1);
        while (!stop) {
            engine.set(randomSettings(random));
            if (random() % 8 == 0)
                engine.beep();
            engine.takeMeters();
            engine.response(FrontLeft, 1000);
            ++changes;
        }
    });
    const Signal in = pinkNoise(1, frames, 2), prompt = sine(700, 0.3, frames);
    Speakers out;
    Block block;
    block.frames = frames;
    for (int i = 0; i < speakerCount; ++i) {
        out[i].resize(size_t(frames));
        block.out[i] = out[i].data();
    }
    trapped = 0;
    int blocks = 0;
    float loudest = 0;
    std::thread audio([&] {
        onAudioThread = true;
        while (blocks < 48000 * 20 / frames || (changes < 2000 && blocks < 100000)) {
            block.programme[0] = block.programme[1] = blocks % 50 == 0 ? nullptr : in.data();
            block.prompt[Navi][0] = blocks % 30 < 5 ? prompt.data() : nullptr;
            block.prompt[Call][0] = block.prompt[Call][1] = blocks % 70 < 3 ? prompt.data() : nullptr;
            engine.process(block);
            for (int i = 0; i < speakerCount; ++i)
                loudest = std::max(loudest, peak(out[i]));
            float* const stereo[2] = {block.out[0], block.out[1]};
            foldToStereo(block.out, stereo, frames);
            engine.idle();
            engine.audibleSource();
            ++blocks;
        }
        onAudioThread = false;
    });
    audio.join();
    stop = true;
    changing.join();
    QVERIFY2(trapped == 0, trappedName.load());
    QVERIFY2(changes > 100, qPrintable(QString::number(changes)));
    QVERIFY(loudest > 0.01f && loudest <= 0.98855309f);
}

QTEST_GUILESS_MAIN(TestRealtime)
#include "tst_realtime.moc"
