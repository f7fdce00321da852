#include "hvaudio/inputbridge.h"

namespace hvaudio {

namespace {

constexpr int pieceFrames = 256;

} // namespace

void InputBridge::reset(double rate) noexcept
{
    ring_.read(nullptr, ring_.readable());
    state_ = Waiting;
    overflowed_ = false;
    margin_ = least_ = sinceLeast_ = level_ = 0;
    watchFrames_ = int(rate);
    fadeFrames_ = std::max(1, int(0.003 * rate));
    last_ = {};
}

void InputBridge::push(const float* left, const float* right, int frames) noexcept
{
    StereoFrame piece[pieceFrames];
    while (frames > 0) {
        const int count = std::min(frames, pieceFrames);
        for (int n = 0; n < count; ++n)
            piece[n] = {left ? left[n] : 0, right ? right[n] : 0};
        if (ring_.write(piece, count) < count) {
            overflowed_.store(true, std::memory_order_release); // nobody pulls
            return;
        }
        left += left ? count : 0;
        right += right ? count : 0;
        frames -= count;
    }
}

void InputBridge::fade(StereoFrame* frames, int count, bool out) noexcept
{
    for (int n = 0; n < count; ++n) {
        level_ = std::clamp(level_ + (out ? -1 : 1), 0, fadeFrames_);
        const float factor = smoothStep(float(level_) / float(fadeFrames_));
        frames[n].left *= factor;
        frames[n].right *= factor;
    }
}

bool InputBridge::pull(float* left, float* right, int frames) noexcept
{
    if (overflowed_.exchange(false, std::memory_order_acquire)) {
        ring_.read(nullptr, ring_.readable());
        state_ = Waiting;
    }
    const int waiting = ring_.readable();
    if (state_ == Skipping && level_ == 0) {
        ring_.read(nullptr, std::max(0, waiting - frames - margin_));
        state_ = Playing;
        sinceLeast_ = 0;
    }
    if (state_ == Waiting && waiting >= frames + margin_ && waiting > 0) {
        // What has gathered while nobody pulled is old: only the newest is played.
        ring_.read(nullptr, waiting - frames - margin_);
        state_ = Playing;
        sinceLeast_ = 0;
    }
    const bool wasSilent = level_ == 0;
    if (state_ == Waiting && wasSilent)
        return false;

    StereoFrame piece[pieceFrames];
    for (int done = 0; done < frames;) {
        const int count = std::min(frames - done, pieceFrames);
        int got = state_ == Waiting ? 0 : ring_.read(piece, count);
        if (got < count && state_ != Waiting) {
            state_ = Waiting;
            margin_ = std::min(margin_ + frames / 2, 4 * frames);
        }
        if (got > 0)
            last_ = piece[got - 1];
        std::fill(piece + got, piece + count, last_);
        if (state_ == Waiting) {
            // The samples that are missing are the last one's, fading: softer than a step to silence.
            if (got < count && level_ == fadeFrames_)
                fade(piece + got, count - got, true);
            else
                fade(piece, count, true);
        } else if (state_ == Skipping || level_ < fadeFrames_) {
            fade(piece, count, state_ == Skipping);
        }
        for (int n = 0; n < count; ++n) {
            left[done + n] = piece[n].left;
            right[done + n] = piece[n].right;
        }
        done += count;
    }

    // Two clocks that drift apart, or a margin that a single hiccup has raised, leave more and more behind.
    const int left_over = ring_.readable();
    least_ = sinceLeast_ == 0 ? left_over : std::min(least_, left_over);
    sinceLeast_ += frames;
    if (sinceLeast_ >= watchFrames_) {
        sinceLeast_ = 0;
        if (state_ == Playing && least_ > margin_ + frames)
            state_ = Skipping;
        else if (state_ == Playing && least_ >= frames / 2)
            margin_ = std::max(0, margin_ - frames / 2);
    }
    return true;
}

} // namespace hvaudio
