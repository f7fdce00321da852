#include "tests/platform/hvaudio/dsp/sound.h"
#include "tests/support/audiothreadtrap.h"

#include "platform/hvaudio/dsp/fold.h"

#include <QtTest>

#include <atomic>
#include <condition_variable>
#include <iostream>
#include <mutex>
#include <shared_mutex>
#include <thread>

#include <syslog.h>

using namespace sound;

/// The audio thread never allocates, locks, logs or waits while every setting changes from another thread.
class TestRealtime : public QObject
{
    Q_OBJECT

private slots:
    void trapsSpring_data();
    void trapsSpring();
    void computingSpringsNoTrap();
    void trappedThreadWorksBetweenItsBlocks();
    void audioThreadOnlyComputes_data();
    void audioThreadOnlyComputes();
};

using Action = void (*)();
Q_DECLARE_METATYPE(Action)

/// Runs `action` on a thread of its own as the audio thread runs a block.
template <typename F>
static bool runAsAudio(F action)
{
    forgetTrapped();
    bool filtered = false;
    std::thread thread([&] {
        filtered = trapSystemCalls();
        onAudioThread = true;
        action();
        onAudioThread = false;
    });
    thread.join();
    return filtered;
}

/// Keeps an object that nobody uses.
static void keep(void* p)
{
    asm volatile("" : : "r"(p) : "memory");
}

static void row(const char* name, const char* as, Action action)
{
    QTest::newRow(name) << action << QString(as);
}

static void addAllocatingRows()
{
    // Where the sanitizer's own allocator stays, all ways to it have one name.
    const auto allocator = [](const char* name) { return systemCallsAreTrapped ? name : "malloc"; };

    row("new and delete", "malloc", [] { delete new volatile int(1); });
    row("delete", "free", [] {
        onAudioThread = false;
        auto* const p = new volatile int(1);
        onAudioThread = true;
        delete p;
    });
    row("vector", "malloc", [] { keep(std::vector<float>(100).data()); });
    row("calloc", allocator("calloc"), [] {
        void* const p = std::calloc(3, 5);
        keep(p);
        std::free(p);
    });
    row("aligned new", allocator("aligned_alloc"), [] {
        struct alignas(64) Wide
        {
            char bytes[64];
        };
        auto* const p = new Wide;
        keep(p);
        delete p;
    });
#if defined(__SANITIZE_THREAD__)
    const char* const aligned = "free"; // this sanitizer doesn't tell of the allocation
#else
    const char* const aligned = allocator("posix_memalign");
#endif
    row("posix_memalign", aligned, [] {
        void* p = nullptr;
        if (posix_memalign(&p, 64, 64) == 0)
            keep(p);
        std::free(p);
    });
}

static void addLockingRows()
{
    row("mutex", "pthread_mutex_lock", [] {
        static std::mutex m;
        const std::lock_guard<std::mutex> lock(m);
    });
    row("mutex that is only tried", "pthread_mutex_trylock", [] {
        static std::mutex m;
        const std::unique_lock<std::mutex> lock(m, std::try_to_lock);
    });
    row("shared mutex for writing", "pthread_rwlock_wrlock", [] {
        static std::shared_mutex m;
        const std::lock_guard<std::shared_mutex> lock(m);
    });
    row("shared mutex for reading", "pthread_rwlock_rdlock", [] {
        static std::shared_mutex m;
        const std::shared_lock<std::shared_mutex> lock(m);
    });
    row("spin lock", "pthread_spin_lock", [] {
        pthread_spinlock_t lock;
        pthread_spin_init(&lock, 0);
        pthread_spin_lock(&lock);
        pthread_spin_unlock(&lock);
    });
    row("waking another thread", "pthread_cond_signal", [] {
        static std::condition_variable c;
        c.notify_one();
    });
    row("waking all threads", "pthread_cond_broadcast", [] {
        static std::condition_variable c;
        c.notify_all();
    });
    row("semaphore", "sem_wait", [] {
        sem_t s;
        sem_init(&s, 0, 1);
        sem_wait(&s);
    });
    row("raising a semaphore", "sem_post", [] {
        sem_t s;
        sem_init(&s, 0, 0);
        sem_post(&s);
    });
}

static void addWaitingRows()
{
    row("yield", "sched_yield", [] { std::this_thread::yield(); });
    row("nanosleep", "nanosleep", [] {
        const timespec t{0, 1000};
        nanosleep(&t, nullptr);
    });
    row("sleep_for", "nanosleep", [] { std::this_thread::sleep_for(std::chrono::microseconds(5)); });
    row("usleep", "usleep", [] { usleep(1); });
    row("poll", "poll", [] { poll(nullptr, 0, 0); });
}

static void addWritingRows()
{
    row("write", "write", [] {
        if (::write(2, "", 0))
            return;
    });
    row("writev", "writev", [] {
        iovec part{nullptr, 0};
        if (::writev(2, &part, 1))
            return;
    });
    row("fprintf", "vfprintf", [] { std::fprintf(stderr, "%s", ""); });
    row("printf", "vfprintf", [] { std::printf("%s", ""); });
    row("fputs into a buffer", "fputs", [] { std::fputs("", stdout); });
    row("flushing", "fflush", [] { std::fflush(stdout); });
    row("std::cerr", "", [] { std::cerr << ""; });
    row("qDebug", "", [] { qDebug("a line that is wanted"); });
}

/// No function stands in their way.
static void addSystemCallRows()
{
    const auto call = [](long number) { return "system call " + std::to_string(number); };
    row("any system call", call(SYS_getppid).c_str(), [] { syscall(SYS_getppid); });
    row("futex", call(SYS_futex).c_str(), [] {
        static int word = 0;
        syscall(SYS_futex, &word, 1 /* wake */, 1, nullptr, nullptr, 0);
    });
    row("waiting for input", call(SYS_pselect6).c_str(), [] {
        const timespec t{0, 1000};
        pselect(0, nullptr, nullptr, nullptr, &t, nullptr);
    });
    row("changing the signal mask", call(SYS_rt_sigprocmask).c_str(), [] {
        sigset_t set;
        sigemptyset(&set);
        pthread_sigmask(SIG_BLOCK, &set, nullptr);
    });
    row("syslog", "", [] { syslog(LOG_DEBUG, "-"); });
    row("starting a thread", "", [] {
        try {
            std::thread([] {}).join();
        } catch (const std::system_error&) {
        }
    });
    row("opening a file", "", [] {
        if (FILE* file = std::fopen("/dev/null", "r"))
            std::fclose(file);
    });
}

void TestRealtime::trapsSpring_data()
{
    QTest::addColumn<Action>("action");
    QTest::addColumn<QString>("as");
    addAllocatingRows();
    addLockingRows();
    addWaitingRows();
    addWritingRows();
    row("settings of the control side", "", [] {
        Engine engine;
        engine.set(flat());
    });
    if (systemCallsAreTrapped)
        addSystemCallRows();
}

void TestRealtime::trapsSpring()
{
    QFETCH(Action, action);
    QFETCH(QString, as);
    QVERIFY(runAsAudio(action));
    QVERIFY(trapped > 0);
    if (!as.isEmpty())
        QCOMPARE(QString::fromStdString(whatWasTrapped()), as);
}

void TestRealtime::computingSpringsNoTrap()
{
    double sum = 0;
    QVERIFY(runAsAudio([&] {
        std::array<float, 4096> samples;
        for (std::size_t n = 0; n < samples.size(); ++n)
            samples[n] = std::sin(0.1f * float(n));
        std::atomic<float> shared{0};
        for (float x : samples)
            shared.store(x * x, std::memory_order_release);
        sum = shared.exchange(1);
    }));
    QVERIFY2(trapped == 0, whatWasTrapped().c_str());
    QVERIFY(sum >= 0);
}

/// What such a thread does outside of its blocks happens and isn't told, and it ends like any other.
void TestRealtime::trappedThreadWorksBetweenItsBlocks()
{
    std::vector<char> memory;
    QByteArray read;
    bool slept = false, blocked = false;
    QVERIFY(runAsAudio([&] {
        onAudioThread = false;
        memory.assign(64 << 20, 'x'); // from the kernel
        if (FILE* file = std::fopen("/proc/self/cmdline", "r")) {
            char text[200] = "";
            read = QByteArray(text, int(std::fread(text, 1, sizeof text, file)));
            std::fclose(file);
        }
        QElapsedTimer clock;
        clock.start();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        slept = clock.elapsed() >= 20;
        sigset_t set, before, after;
        sigfillset(&set);
        pthread_sigmask(SIG_BLOCK, &set, &before);
        pthread_sigmask(SIG_SETMASK, &before, &after);
        blocked = sigismember(&after, SIGUSR1) == 1 && sigismember(&before, SIGUSR1) == 0;
    }));
    QVERIFY2(trapped == 0, whatWasTrapped().c_str());
    QCOMPARE(memory.size(), std::size_t(64 << 20));
    QVERIFY2(read.contains("tst_realtime"), read.constData());
    QVERIFY(slept && blocked);
}

static Settings randomSettings(std::mt19937& random)
{
    const auto upTo = [&](int n) { return int(random() % unsigned(n + 1)); };
    Settings s;
    s.power = upTo(20) > 0;
    s.mute = upTo(10) == 0;
    s.source = upTo(19);
    s.sourceDb = upTo(15) - 5;
    s.mainDb = volumeDb(upTo(50));
    for (double& level : s.promptDb)
        level = volumeDb(upTo(50));
    for (int& band : s.equalizer)
        band = upTo(20) - 10;
    s.loudness = upTo(1);
    s.balance = upTo(30) / 15.0 - 1;
    s.fader = upTo(30) / 15.0 - 1;
    constexpr double lowPasses[] = {0, 2000, 8000, 10000, 16000, 20000};
    for (auto& c : s.cabin)
        c = {{corners[upTo(8)], 1 + upTo(3)},
             {lowPasses[upTo(5)], 1 + upTo(3)},
             upTo(12),
             upTo(1) == 1,
             0.1 * upTo(100)};
    s.subwoofer = {false, {0, 1 + upTo(3)}, upTo(12), upTo(1) == 1, 0.1 * upTo(100)};
    setSubwoofer(s, upTo(9));
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
    forgetTrapped();
    bool filtered = false;
    int blocks = 0;
    float loudest = 0;
    std::thread audio([&] {
        filtered = trapSystemCalls();
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
    QVERIFY(filtered);
    QVERIFY2(trapped == 0, whatWasTrapped().c_str());
    QVERIFY2(changes > 100, qPrintable(QString::number(changes)));
    QVERIFY(loudest > 0.01f && loudest <= 0.98855309f);
}

QTEST_GUILESS_MAIN(TestRealtime)
#include "tst_realtime.moc"
