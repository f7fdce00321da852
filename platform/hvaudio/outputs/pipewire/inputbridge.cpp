#include "platform/hvaudio/outputs/pipewire/inputbridge.h"

namespace hvaudio {

namespace {

constexpr int pieceFrames = 256;

} // namespace

void InputBridge::reset(double rate) noexcept
{
    ring_.read(nullptr, ring_.readable());
    overflowed_ = false;
    pushCycle_ = 0;
    pushFrames_ = 0;
    state_ = Waiting;
    block_ = reserve_ = least_ = watched_ = level_ = 0;
    second_ = int(rate);
    sinceShort_ = 10 * second_;
    fadeFrames_ = std::max(1, int(0.003 * rate));
    last_ = {};
}

void InputBridge::push(std::uint64_t cycle, const float* left, const float* right, int frames) noexcept
{
    StereoFrame piece[pieceFrames];
    int done = 0;
    while (done < frames) {
        const int count = std::min(frames - done, pieceFrames);
        for (int n = 0; n < count; ++n)
            piece[n] = {left ? left[done + n] : 0, right ? right[done + n] : 0};
        const int taken = ring_.write(piece, count);
        done += taken;
        if (taken < count) {
            overflowed_.store(true, std::memory_order_release); // nobody pulls
            break;
        }
    }
    const bool same = pushCycle_.load(std::memory_order_relaxed) == cycle;
    pushFrames_.store(done + (same ? pushFrames_.load(std::memory_order_relaxed) : 0),
                      std::memory_order_relaxed);
    pushCycle_.store(cycle, std::memory_order_release);
}

void InputBridge::begin(std::uint64_t cycle, int frames) noexcept
{
    if (overflowed_.exchange(false, std::memory_order_acquire)) {
        ring_.read(nullptr, ring_.readable());
        state_ = Waiting;
    }
    const bool alreadyCame = pushCycle_.load(std::memory_order_acquire) == cycle;
    const int ready = std::max(0, ring_.readable() - (alreadyCame ? pushFrames_.load() : 0));
    block_ = frames;
    sinceShort_ = std::min(sinceShort_ + frames, 30 * second_);
    if (sinceShort_ == 30 * second_)
        reserve_ = 0;
    const bool enough = ready > 0 && ready >= frames + reserve_;
    if (level_ == 0 && state_ != Playing && enough) {
        // What has gathered meanwhile is old: only the newest is played.
        ring_.read(nullptr, ready - frames - reserve_);
        state_ = Playing;
        watched_ = 0;
    } else if (state_ == Playing) {
        watch(ready - frames);
    }
}

/// Two clocks that drift apart, or blocks that have become smaller, leave more behind than is needed.
void InputBridge::watch(int spare) noexcept
{
    least_ = watched_ == 0 ? spare : std::min(least_, spare);
    watched_ += block_;
    if (watched_ < second_)
        return;
    watched_ = 0;
    if (least_ > reserve_ + block_ / 4)
        state_ = Skipping;
}

void InputBridge::runShort() noexcept
{
    state_ = Waiting;
    if (sinceShort_ < 10 * second_)
        reserve_ = std::min(reserve_ + block_ / 2, 4 * block_);
    sinceShort_ = 0;
}

bool InputBridge::pull(float* left, float* right, int frames) noexcept
{
    if (state_ != Playing && level_ == 0)
        return false;
    for (int done = 0; done < frames;) {
        StereoFrame piece[pieceFrames];
        const int count = std::min(frames - done, pieceFrames);
        const int got = state_ == Waiting ? 0 : ring_.read(piece, count);
        if (got > 0)
            last_ = piece[got - 1];
        // Where frames are missing the last one is held and faded: softer than a step to silence.
        std::fill(piece + got, piece + count, last_);
        for (int n = 0; n < count; ++n) {
            if (n == got && state_ != Waiting)
                runShort();
            level_ = std::clamp(level_ + (state_ == Playing ? 1 : -1), 0, fadeFrames_);
            const float factor = smoothStep(float(level_) / float(fadeFrames_));
            left[done + n] = piece[n].left * factor;
            right[done + n] = piece[n].right * factor;
        }
        done += count;
    }
    return true;
}

} // namespace hvaudio
