#include "hvaudio/limiter.h"

#include <cmath>

namespace hvaudio::dsp {

namespace {

constexpr double meanSeconds = 0.0013, holdSeconds = 0.010, recoverySeconds = 0.15;
/// Where the way up ends in exactly 1.
constexpr float nearlyOne = 0.9999f;

int nextPowerOfTwo(double atLeast)
{
    int n = 1;
    while (n < atLeast)
        n *= 2;
    return n;
}

} // namespace

void Limiter::Mean::reset(int length)
{
    ring.assign(length, 1.0f);
    sum = length;
    at = 0;
}

float Limiter::Mean::add(float value) noexcept
{
    const int length = int(ring.size());
    sum += double(value) - ring[at];
    ring[at] = value;
    if (++at == length) {
        // Summed anew once a round, so that rounding can't pile up over hours.
        at = 0;
        sum = 0;
        for (float v : ring)
            sum += v;
    }
    return float(sum / length);
}

void Limiter::prepare(double rate)
{
    mean_ = nextPowerOfTwo(rate * meanSeconds * 0.75);
    window_ = 2 * mean_ - 1 + int(rate * holdSeconds);
    recovery_ = float(1 - std::exp(-1 / (rate * recoverySeconds)));
    history_.prepare(speakerCount, latencyFrames());
    needs_.assign(nextPowerOfTwo(window_ + 1), Need{});
    for (Mean& mean : means_)
        mean.reset(mean_);
    clear();
}

void Limiter::clear() noexcept
{
    history_.clear();
    first_ = last_ = frame_ = 0;
    slow_ = 1;
    ones_ = 0;
    working_ = false;
    for (Mean& mean : means_) {
        std::fill(mean.ring.begin(), mean.ring.end(), 1.0f);
        mean.sum = mean_;
        mean.at = 0;
    }
}

float* const* Limiter::room() noexcept
{
    for (int i = 0; i < speakerCount; ++i)
        room_[i] = history_.room(i);
    return room_;
}

float Limiter::nextGain(float needed) noexcept
{
    const long long mask = (long long)(needs_.size()) - 1;
    while (first_ != last_ && needs_[first_ & mask].frame <= frame_ - window_)
        ++first_;
    if (needed < 1) {
        while (first_ != last_ && needs_[(last_ - 1) & mask].gain >= needed)
            --last_;
        needs_[last_++ & mask] = {frame_, needed};
    }
    const float smallest = first_ != last_ ? needs_[first_ & mask].gain : 1.0f;
    slow_ += recovery_ * (1 - slow_);
    if (slow_ > nearlyOne)
        slow_ = 1;
    if (slow_ > smallest)
        slow_ = smallest;
    ++frame_;
    ones_ = slow_ == 1 ? ones_ + 1 : 0;
    const float gain = means_[1].add(means_[0].add(slow_));
    working_ = first_ != last_ || ones_ < 2 * mean_;
    if (!working_)
        for (Mean& mean : means_)
            mean.sum = mean_; // all ones: whatever rounding left goes
    return gain;
}

float Limiter::process(float* const out[speakerCount], int frames, const float* frame,
                       float peak[speakerCount]) noexcept
{
    float largest = 0;
    for (int i = 0; i < speakerCount; ++i)
        largest = peak[i] > largest ? peak[i] : largest;

    const int late = latencyFrames();
    float smallest = 1;
    if (!working_ && largest <= ceiling) {
        for (int i = 0; i < speakerCount; ++i)
            if (out[i])
                std::memcpy(out[i], history_.before(i, late), frames * sizeof(float));
    } else {
        float gain[pieceFrames];
        for (int n = 0; n < frames; ++n) {
            // A hair below the ceiling, so that the product's rounding stays below it too.
            gain[n] = nextGain(frame[n] > ceiling ? ceiling * 0.9999999f / frame[n] : 1.0f);
            smallest = gain[n] < smallest ? gain[n] : smallest;
        }
        for (int i = 0; i < speakerCount; ++i) {
            const float* from = history_.before(i, late);
            float top = 0;
            for (int n = 0; n < frames; ++n) {
                float x = from[n] * gain[n];
                x = x > ceiling ? ceiling : x < -ceiling ? -ceiling : x;
                top = x > top ? x : -x > top ? -x : top;
                if (out[i])
                    out[i][n] = x;
            }
            peak[i] = top;
        }
    }
    history_.advance(frames);
    return smallest;
}

} // namespace hvaudio::dsp
