#include "platform/hvaudio/dsp/limiter.h"

#include <algorithm>
#include <cmath>

namespace hvaudio::dsp {

namespace {

constexpr double meanSeconds = 0.001, holdSeconds = 0.010, recoverySeconds = 0.15;
/// Where the way up ends in exactly 1.
constexpr float nearlyOne = 0.9999f;

int nextPowerOfTwo(double atLeast)
{
    int n = 1;
    while (n < atLeast)
        n *= 2;
    return n;
}

/// One speaker; returns the largest sample.
float applyGain(const float* from, const float* gain, float* to, int frames) noexcept
{
    constexpr float ceiling = Limiter::ceiling;
    float top = 0;
    for (int n = 0; n < frames; ++n) {
        float x = from[n] * gain[n];
        x = x > ceiling ? ceiling : x;
        x = x < -ceiling ? -ceiling : x;
        const float size = x < 0 ? -x : x;
        top = size > top ? size : top;
        to[n] = x;
    }
    return top;
}

} // namespace

void Limiter::prepare(double rate)
{
    // A power of two, so that the weights are exact and a row of ones gives exactly 1.
    mean_ = nextPowerOfTwo(rate * meanSeconds / gridFrames);
    window_ = 2 * mean_ + int(std::ceil(rate * holdSeconds / gridFrames));
    recovery_ = float(1 - std::exp(-gridFrames / (rate * recoverySeconds)));
    history_.prepare(speakerCount, latencyFrames());
    needs_.assign(nextPowerOfTwo(window_ + 1), Need{});
    slow_.assign(2 * mean_ - 1, 1.0f);
    weights_.resize(slow_.size());
    for (int i = 0; i < 2 * mean_ - 1; ++i)
        weights_[i] = float(std::min(i + 1, 2 * mean_ - 1 - i)) / float(mean_ * mean_);
    clear();
}

void Limiter::clear() noexcept
{
    history_.clear();
    first_ = last_ = cell_ = 0;
    largest_ = 0;
    std::fill(slow_.begin(), slow_.end(), 1.0f);
    from_ = to_ = 1;
    ones_ = int(slow_.size());
    working_ = false;
}

float* const* Limiter::room() noexcept
{
    for (int i = 0; i < speakerCount; ++i)
        room_[i] = history_.room(i);
    return room_;
}

/// At a grid point: takes up what the cell before it needs and aims at the gain of the next point.
void Limiter::nextCell() noexcept
{
    const long long mask = (long long)(needs_.size()) - 1;
    while (first_ != last_ && needs_[first_ & mask].cell < cell_ - window_)
        ++first_;
    if (largest_ > ceiling) {
        // A hair below the ceiling, so that the product's rounding stays below it too.
        const float needed = ceiling * 0.9999999f / largest_;
        while (first_ != last_ && needs_[(last_ - 1) & mask].gain >= needed)
            --last_;
        needs_[last_++ & mask] = {cell_ - 1, needed};
    }
    largest_ = 0;
    ++cell_;

    float slow = slow_.back();
    slow += recovery_ * (1 - slow);
    if (slow > nearlyOne)
        slow = 1;
    if (first_ != last_)
        slow = std::min(slow, needs_[first_ & mask].gain);
    std::copy(slow_.begin() + 1, slow_.end(), slow_.begin());
    slow_.back() = slow;

    float mean = 0;
    for (size_t i = 0; i < slow_.size(); ++i)
        mean += weights_[i] * slow_[i];
    from_ = to_;
    to_ = mean;
    ones_ = slow == 1 ? ones_ + 1 : 0;
}

/// The gain of each frame; returns the smallest.
float Limiter::fillGain(float* gain, int frames, int offset, const float* frame) noexcept
{
    float smallest = 1;
    for (int done = 0; done < frames;) {
        if (offset == 0)
            nextCell();
        const int count = std::min(frames - done, gridFrames - offset);
        const float step = (to_ - from_) * (1.0f / gridFrames);
        float largest = largest_;
        for (int n = 0; n < count; ++n) {
            const float size = frame[done + n];
            largest = size > largest ? size : largest;
            gain[done + n] = from_ + step * float(offset + n);
        }
        largest_ = largest;
        smallest = std::min({smallest, gain[done], gain[done + count - 1]});
        done += count;
        offset = (offset + count) % gridFrames;
    }
    // The line has arrived at 1 as well when one more cell than the mean sees has been at 1.
    working_ = first_ != last_ || largest_ > ceiling || ones_ <= int(slow_.size());
    return smallest;
}

float Limiter::process(float* const out[speakerCount], int frames, int offset, const float* frame,
                       float peak[speakerCount]) noexcept
{
    const int late = latencyFrames();
    const float largest = *std::max_element(peak, peak + speakerCount);
    float smallest = 1;
    if (!working_ && largest <= ceiling) {
        for (int i = 0; i < speakerCount; ++i)
            if (out[i])
                std::memcpy(out[i], history_.before(i, late), size_t(frames) * sizeof(float));
    } else {
        alignas(64) float gain[pieceFrames], unwanted[pieceFrames];
        smallest = fillGain(gain, frames, offset, frame);
        for (int i = 0; i < speakerCount; ++i)
            peak[i] = applyGain(history_.before(i, late), gain, out[i] ? out[i] : unwanted, frames);
    }
    history_.advance(frames);
    return smallest;
}

} // namespace hvaudio::dsp
