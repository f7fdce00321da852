#include "platform/hvaudio/outputs/pacedoutput.h"

#include "platform/hvaudio/files/wavwriter.h"

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
    running_ = true;
    thread_ = std::thread([this, &feed] { run(feed); });
    return true;
}

void PacedOutput::stop()
{
    running_ = false;
    if (!thread_.joinable())
        return;
    thread_.join();
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
    while (running_) {
        feed.pull(in, out, blockFrames);
        take(out, blockFrames);
        next += period;
        next = std::max(next, Clock::now() - 10 * period);
        std::this_thread::sleep_until(next);
    }
}

NullOutput::~NullOutput()
{
    stop();
}

std::string NullOutput::status() const
{
    return "no sound output";
}

bool NullOutput::open(double, std::string&)
{
    return true;
}

WavOutput::WavOutput(std::string path)
    : path_(std::move(path))
{
}

WavOutput::~WavOutput()
{
    stop();
}

std::string WavOutput::status() const
{
    return (full_ ? "can't write any more to " : "writing ") + path_;
}

bool WavOutput::open(double wavRate, std::string& error)
{
    full_ = false;
    writer_ = WavWriter::create(path_, wavRate, dsp::speakerCount, error);
    return writer_ != nullptr;
}

void WavOutput::close()
{
    writer_.reset();
}

void WavOutput::take(const float* const out[dsp::speakerCount], int frames)
{
    if (!full_ && !writer_->write(out, frames))
        full_ = true;
}

} // namespace hvaudio
