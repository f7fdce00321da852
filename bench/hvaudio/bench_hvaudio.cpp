#include "bench/hvaudio/peers.h"

#include "platform/hvaudio/dsp/equalizer.h"
#include "platform/hvaudio/dsp/snapshot.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <ctime>
#include <fstream>
#include <string>

using namespace peers;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int blockFrames = 1024;

/// A second and more of sound, played round and round.
struct Blocks
{
    Blocks()
    {
        PinkNoise noise[2] = {PinkNoise(1), PinkNoise(2)};
        for (int i = 0; i < 2; ++i) {
            in[i].resize(soundFrames);
            for (float& x : in[i])
                x = 0.25f * noise[i].next();
        }
    }
    void run(Engine& engine, int frames = blockFrames)
    {
        const float* const from[2] = {&in[0][at], &in[1][at]};
        float* const to[speakerCount] = {out[0], out[1], out[2], out[3], out[4]};
        engine.process(from, to, frames);
        at = (at + size_t(frames)) % soundFrames;
    }
    void silence()
    {
        for (auto& side : in)
            std::fill(side.begin(), side.end(), 0.0f);
    }
    static constexpr size_t soundFrames = 64 * blockFrames; ///< a multiple of every block that is timed
    std::vector<float> in[2];
    size_t at = 0;
    alignas(64) float out[speakerCount][blockFrames];
};

bool start(benchmark::State& state, Engine& engine, Path path)
{
    if (!engine.setPath(path)) {
        state.SkipWithError("this processor hasn't got the instructions");
        return false;
    }
    engine.prepare(rate);
    engine.set(fullChain());
    engine.settle();
    return true;
}

void perFrame(benchmark::State& state, int frames = blockFrames)
{
    state.SetItemsProcessed(state.iterations() * frames);
    state.counters["per_frame"] = benchmark::Counter(
        double(state.iterations()) * frames, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

/// The full chain at rest, by path and block size.
void fullChainAtRest(benchmark::State& state)
{
    Engine engine;
    if (!start(state, engine, Path(state.range(0))))
        return;
    const int frames = int(state.range(1));
    Blocks blocks;
    for (auto _ : state)
        blocks.run(engine, frames);
    perFrame(state, frames);
}
BENCHMARK(fullChainAtRest)->ArgsProduct({{0, 1, 2, 3}, {64, 256, 1024}})->ArgNames({"path", "block"});

/// Filters, levels and delays change all the time.
void fullChainGliding(benchmark::State& state)
{
    Engine engine;
    if (!start(state, engine, Path(state.range(0))))
        return;
    Blocks blocks;
    Settings s = fullChain();
    int step = 0;
    for (auto _ : state) {
        state.PauseTiming();
        ++step;
        s.equalizer[3] = step % 13 - 6;
        s.balance = (step % 15 - 7) / 15.0;
        s.cabin[size_t(step % 4)].delayMs = 0.1 * (step % 90);
        engine.set(s);
        state.ResumeTiming();
        blocks.run(engine);
    }
    perFrame(state);
}
BENCHMARK(fullChainGliding)->DenseRange(0, 3)->ArgName("path");

void limiterWorking(benchmark::State& state)
{
    Engine engine;
    if (!start(state, engine, bestPath()))
        return;
    Blocks blocks;
    for (auto& side : blocks.in)
        for (float& x : side)
            x *= 60;
    for (auto _ : state)
        blocks.run(engine);
    perFrame(state);
}
BENCHMARK(limiterWorking);

void plainDoubleChain(benchmark::State& state)
{
    PlainChain chain;
    Blocks blocks;
    float* const to[speakerCount] = {blocks.out[0], blocks.out[1], blocks.out[2], blocks.out[3],
                                     blocks.out[4]};
    for (auto _ : state)
        chain.process(blocks.in[0].data(), blocks.in[1].data(), to, blockFrames);
    perFrame(state);
}
BENCHMARK(plainDoubleChain);

void idleEngine(benchmark::State& state)
{
    Engine engine;
    if (!start(state, engine, bestPath()))
        return;
    Blocks blocks;
    blocks.silence();
    for (auto _ : state)
        blocks.run(engine);
    perFrame(state);
}
BENCHMARK(idleEngine);

/// What a slider's step costs the control thread.
void setSettings(benchmark::State& state)
{
    Engine engine;
    if (!start(state, engine, bestPath()))
        return;
    Settings s = fullChain();
    int step = 0;
    for (auto _ : state) {
        s.equalizer[size_t(step % bandCount)] = step % 21 - 10;
        ++step;
        engine.set(s);
    }
}
BENCHMARK(setSettings);

void solveEqualizerCorner(benchmark::State& state)
{
    const EqualizerDesign design(rate);
    std::array<double, bandCount> wanted;
    for (int i = 0; i < bandCount; ++i)
        wanted[size_t(i)] = i & 1 ? 10 : -10;
    for (auto _ : state)
        benchmark::DoNotOptimize(design.solveGains(wanted));
}
BENCHMARK(solveEqualizerCorner);

/// From `set` to the first changed sample, in blocks of 64: computing, and frames that sound as before.
void setToFirstChangedSample(benchmark::State& state)
{
    Engine engine, still;
    if (!start(state, engine, bestPath()) || !start(state, still, bestPath()))
        return;
    Blocks a, b;
    double frames = 0;
    for (auto _ : state) {
        state.PauseTiming();
        engine.set(fullChain());
        engine.settle();
        still.settle();
        for (int i = 0; i < 10; ++i) {
            a.run(engine, 64);
            b.run(still, 64);
        }
        Settings s = fullChain();
        s.balance = 10 / 15.0;
        state.ResumeTiming();
        engine.set(s);
        for (bool same = true; same; frames += 64) {
            a.run(engine, 64);
            state.PauseTiming();
            b.run(still, 64);
            same = !std::memcmp(a.out, b.out, sizeof a.out);
            state.ResumeTiming();
        }
    }
    state.counters["frames"] = benchmark::Counter(frames, benchmark::Counter::kAvgIterations);
}
BENCHMARK(setToFirstChangedSample)->Iterations(200);

/// Time that this thread has computed, in microseconds.
double computed()
{
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return 1e6 * double(t.tv_sec) + 1e-3 * double(t.tv_nsec);
}

/// Ten minutes of sound in blocks of 480 with a change before each second block; the worst block in
/// microseconds, by the clock, which counts what else the machine did, and computed.
void worstBlockOfTenMinutes(benchmark::State& state)
{
    Engine engine;
    if (!start(state, engine, bestPath()))
        return;
    Blocks blocks;
    std::mt19937 random(2);
    double worst = 0, worstComputed = 0;
    for (auto _ : state) {
        for (int block = 0; block < 600 * int(rate) / 480; ++block) {
            if (block & 1) {
                Settings s = fullChain();
                for (int& band : s.equalizer)
                    band = int(random() % 21) - 10;
                s.balance = int(random() % 31) / 15.0 - 1;
                s.cabin[random() % 4].delayMs = 0.1 * (random() % 101);
                s.mainDb = 1.2 * (int(random() % 51) - 50);
                engine.set(s);
            }
            const auto before = Clock::now();
            const double computedBefore = computed();
            blocks.run(engine, 480);
            worstComputed = std::max(worstComputed, computed() - computedBefore);
            worst = std::max(worst, std::chrono::duration<double, std::micro>(Clock::now() - before).count());
        }
    }
    state.counters["worst_us_of_10ms"] = worst;
    state.counters["computed_us"] = worstComputed;
}
BENCHMARK(worstBlockOfTenMinutes)->Iterations(1)->Unit(benchmark::kMillisecond);

/// Growth of the resident set by one prepared engine.
void memoryOfAnEngine(benchmark::State& state)
{
    const auto resident = [] {
        std::ifstream file("/proc/self/statm");
        long size = 0, pages = 0;
        file >> size >> pages;
        return pages * 4096L;
    };
    constexpr int count = 64;
    long bytes = 0;
    for (auto _ : state) {
        const long before = resident();
        std::vector<std::unique_ptr<Engine>> engines;
        Blocks blocks;
        for (int i = 0; i < count; ++i) {
            engines.push_back(std::make_unique<Engine>());
            engines.back()->prepare(rate);
            engines.back()->set(fullChain());
            blocks.run(*engines.back());
        }
        bytes = (resident() - before) / count;
    }
    state.counters["bytes"] = double(bytes);
}
BENCHMARK(memoryOfAnEngine)->Iterations(1);

} // namespace

BENCHMARK_MAIN();
