#include "platform/hvaudio/outputs/pacedoutput.h"

#include <algorithm>
#include <chrono>
#include <vector>

namespace hvaudio {

namespace {

constexpr double rate = 48000;
constexpr int blockFrames = 480;

} // namespace

PacedOutput::~PacedOutput() = default;

bool PacedOutput::start(Feed& feed, std::string& error)
{
    stop();
    if (!feed.prepare(rate)) {
        error = "the sound processor refuses 48000 Hz";
        return false;
    }
    if (!open(rate, error))
        return false;
    m_running = true;
    m_thread = std::thread([this, &feed] { run(feed); });
    return true;
}

void PacedOutput::stop()
{
    m_running = false;
    if (!m_thread.joinable())
        return;
    m_thread.join();
    close();
}

void PacedOutput::run(Feed& feed)
{
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::microseconds period(std::int64_t(1e6 * blockFrames / rate));
    std::vector<float> samples(std::size_t(blockFrames) * dsp::speakerCount);
    float* out[dsp::speakerCount];
    for (int i = 0; i < dsp::speakerCount; ++i)
        out[i] = samples.data() + std::size_t(i) * blockFrames;
    const float* const in[2] = {};
    auto next = Clock::now();
    while (m_running) {
        feed.pull(in, out, blockFrames);
        deliver(out, blockFrames);
        next += period;
        next = std::max(next, Clock::now() - 10 * period);
        std::this_thread::sleep_until(next);
    }
}

} // namespace hvaudio
