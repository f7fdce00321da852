#include "sound.h"

#include "hvaudio/fold.h"

#include <QtTest>

#include <atomic>
#include <cstdlib>
#include <dlfcn.h>
#include <mutex>
#include <pthread.h>
#include <thread>
#include <unistd.h>

// What the audio thread must not do is trapped in this process: the allocator, locks, waits and writes count
// when the calling thread says that it is the audio thread.

namespace {

thread_local bool onAudioThread = false;
std::atomic<int> trapped{0};
std::atomic<const char*> trappedName{nullptr};

void note(const char* name)
{
    if (onAudioThread) {
        trapped.fetch_add(1);
        trappedName.store(name);
    }
}

template <typename F>
F next(const char* name)
{
    return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

} // namespace

#define EXPORTED extern "C" __attribute__((visibility("default")))

#if defined(__SANITIZE_ADDRESS__)
// The sanitizer's own allocator stays; it tells of each use.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*)(const volatile void*, size_t),
                                                         void (*)(const volatile void*));
static void allocated(const volatile void*, size_t)
{
    note("malloc");
}
static void freed(const volatile void*)
{
    note("free");
}
[[maybe_unused]] static const int hooked = __sanitizer_install_malloc_and_free_hooks(allocated, freed);
#else
extern "C" void* __libc_malloc(size_t);
extern "C" void* __libc_calloc(size_t, size_t);
extern "C" void* __libc_realloc(void*, size_t);
extern "C" void* __libc_memalign(size_t, size_t);
extern "C" void __libc_free(void*);
EXPORTED void* malloc(size_t size)
{
    note("malloc");
    return __libc_malloc(size);
}
EXPORTED void* calloc(size_t n, size_t size)
{
    note("calloc");
    return __libc_calloc(n, size);
}
EXPORTED void* realloc(void* p, size_t size)
{
    note("realloc");
    return __libc_realloc(p, size);
}
EXPORTED void* aligned_alloc(size_t alignment, size_t size)
{
    note("aligned_alloc");
    return __libc_memalign(alignment, size);
}
EXPORTED void free(void* p)
{
    note("free");
    __libc_free(p);
}
#endif

EXPORTED int pthread_mutex_lock(pthread_mutex_t* mutex)
{
    note("pthread_mutex_lock");
    static const auto real = next<int (*)(pthread_mutex_t*)>("pthread_mutex_lock");
    return real(mutex);
}
EXPORTED int pthread_mutex_trylock(pthread_mutex_t* mutex)
{
    note("pthread_mutex_trylock");
    static const auto real = next<int (*)(pthread_mutex_t*)>("pthread_mutex_trylock");
    return real(mutex);
}
EXPORTED int pthread_rwlock_wrlock(pthread_rwlock_t* lock)
{
    note("pthread_rwlock_wrlock");
    static const auto real = next<int (*)(pthread_rwlock_t*)>("pthread_rwlock_wrlock");
    return real(lock);
}
EXPORTED int sched_yield()
{
    note("sched_yield");
    static const auto real = next<int (*)()>("sched_yield");
    return real();
}
EXPORTED ssize_t write(int file, const void* data, size_t size)
{
    note("write");
    static const auto real = next<ssize_t (*)(int, const void*, size_t)>("write");
    return real(file, data, size);
}

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
