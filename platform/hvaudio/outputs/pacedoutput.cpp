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
    wake();
    m_thread.join();
    close();
}

void PacedOutput::wake()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_woken = true;
    }
    m_changed.notify_all();
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
    feed.resumed();
    auto next = Clock::now();
    while (m_running) {
        if (mayRest(feed)) {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_resting = true;
            m_changed.wait(lock, [this] { return m_woken; });
            m_resting = false;
            lock.unlock();
            feed.resumed();
            next = Clock::now();
        }
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_woken = false;
        }
        feed.pull(in, out, blockFrames);
        deliver(out, blockFrames);
        next += period;
        next = std::max(next, Clock::now() - 10 * period);
        std::this_thread::sleep_until(next);
    }
}

} // namespace hvaudio
