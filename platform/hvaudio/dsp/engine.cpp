#include "platform/hvaudio/dsp/engine.h"

#include "platform/hvaudio/dsp/chain.h"
#include "platform/hvaudio/dsp/response.h"
#include "platform/hvaudio/dsp/triplebuffer.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <optional>

namespace hvaudio::dsp {

struct Engine::Private
{
    /// Wants `mutex`.
    void publish()
    {
        if (!design || !everSet)
            return;
        snapshot = makeSnapshot(settings, *design, rate);
        buffer.write(snapshot);
    }

    // Control side.
    mutable std::mutex mutex;
    Settings settings;
    bool everSet = false;
    std::optional<EqualizerDesign> design; ///< for `rate`
    Snapshot snapshot;

    // Between the sides.
    TripleBuffer<Snapshot> buffer;
    std::atomic<unsigned> beepsAsked{0};
    std::atomic<int> audibleSource{Settings().source};
    std::atomic<bool> idle{true};
    std::atomic<float> peak[speakerCount] = {};
    std::atomic<float> limiterGain{1};

    std::atomic<double> rate{0};
    std::atomic<int> latencyFrames{0};

    // Audio side, and what [OFF] functions may touch.
    Path path = bestPath();
    Chain chain;
    unsigned beepsDone = 0;
};

Engine::Engine()
    : d(std::make_unique<Private>())
{
}

Engine::~Engine() = default;

bool Engine::prepare(double rate)
{
    if (!(rate >= 8000 && rate <= 192000))
        return false;
    const std::lock_guard<std::mutex> lock(d->mutex);
    d->rate = rate;
    d->design.emplace(rate);
    d->chain.prepare(rate);
    d->latencyFrames = d->chain.latencyFrames();
    d->buffer.update(); // what was made for another rate
    d->publish();
    d->idle.store(true, std::memory_order_relaxed);
    return true;
}

double Engine::rate() const noexcept
{
    return d->rate;
}

int Engine::latencyFrames() const noexcept
{
    return d->latencyFrames;
}

void Engine::set(const Settings& settings)
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    d->settings = settings;
    clampToRange(d->settings);
    d->everSet = true;
    d->publish();
}

Settings Engine::settings() const
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    return d->settings;
}

Snapshot Engine::snapshot() const
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    return d->snapshot;
}

std::complex<double> Engine::response(Speaker speaker, double hz) const
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    return d->rate > 0 ? responseOf(d->snapshot, speaker, hz, d->rate) : 0.0;
}

void Engine::beep() noexcept
{
    d->beepsAsked.fetch_add(1, std::memory_order_relaxed);
}

void Engine::settle()
{
    if (d->buffer.update())
        d->chain.aim(d->buffer.value());
    d->chain.settle();
    d->audibleSource.store(d->chain.audibleSource(), std::memory_order_relaxed);
    d->idle.store(true, std::memory_order_relaxed);
}

void Engine::process(const Block& block) noexcept
{
    if (block.frames <= 0)
        return;
    if (d->rate <= 0) {
        for (float* out : block.out)
            if (out)
                std::fill(out, out + block.frames, 0.0f);
        return;
    }
    if (d->buffer.update())
        d->chain.aim(d->buffer.value());
    if (const unsigned asked = d->beepsAsked.load(std::memory_order_relaxed); asked != d->beepsDone) {
        d->beepsDone = asked;
        d->chain.beep();
    }
    Meters meters;
    d->chain.process(block, meters);

    // A reader that empties the meters between load and store loses one block's reading at most.
    for (int i = 0; i < speakerCount; ++i)
        if (meters.peak[i] > d->peak[i].load(std::memory_order_relaxed))
            d->peak[i].store(meters.peak[i], std::memory_order_relaxed);
    if (meters.gain < d->limiterGain.load(std::memory_order_relaxed))
        d->limiterGain.store(meters.gain, std::memory_order_relaxed);
    d->audibleSource.store(d->chain.audibleSource(), std::memory_order_relaxed);
    d->idle.store(d->chain.idle(), std::memory_order_relaxed);
}

void Engine::process(const float* const in[2], float* const out[speakerCount], int frames) noexcept
{
    Block block;
    std::copy(in, in + 2, block.programme);
    std::copy(out, out + speakerCount, block.out);
    block.frames = frames;
    process(block);
}

int Engine::audibleSource() const noexcept
{
    return d->audibleSource.load(std::memory_order_relaxed);
}

bool Engine::idle() const noexcept
{
    return d->idle.load(std::memory_order_relaxed);
}

Meters Engine::takeMeters() noexcept
{
    Meters meters;
    for (int i = 0; i < speakerCount; ++i)
        meters.peak[i] = d->peak[i].exchange(0, std::memory_order_relaxed);
    meters.gain = d->limiterGain.exchange(1, std::memory_order_relaxed);
    return meters;
}

bool Engine::setPath(Path path)
{
    const Kernel* const kernel = kernelOf(path);
    if (!kernel)
        return false;
    d->path = path;
    d->chain.setKernel(kernel);
    return true;
}

Path Engine::path() const noexcept
{
    return d->path;
}

} // namespace hvaudio::dsp
