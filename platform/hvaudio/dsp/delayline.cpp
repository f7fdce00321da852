#include "platform/hvaudio/dsp/delayline.h"

#include "platform/hvaudio/dsp/glide.h"

namespace hvaudio::dsp {

namespace {

constexpr double fadeSeconds = 0.043;

/// 0..1 with level, speed and turn of speed at rest at both ends.
float fadeCurve(int point, int points)
{
    const float t = float(point) / points;
    return t * t * t * (10 + t * (6 * t - 15));
}

/// Returns the largest absolute sample.
float copyAndMeasure(const float* from, float* to, int frames) noexcept
{
    float largest = 0;
    for (int i = 0; i < frames; ++i) {
        const float x = from[i];
        const float size = x < 0 ? -x : x;
        to[i] = x;
        largest = size > largest ? size : largest;
    }
    return largest;
}

} // namespace

void DelayLine::prepare(double rate, int longestTap)
{
    history_.prepare(speakerCount, longestTap);
    points_ = int(rate * fadeSeconds / gridFrames);
    for (Tap& tap : taps_)
        tap = Tap();
}

void DelayLine::clear() noexcept
{
    history_.clear();
}

void DelayLine::aim(int speaker, int tap) noexcept
{
    taps_[speaker].wanted = tap;
}

void DelayLine::jump() noexcept
{
    for (Tap& tap : taps_)
        tap = Tap{tap.wanted, tap.wanted, tap.wanted, -1};
}

bool DelayLine::advanceGrid() noexcept
{
    bool fading = false;
    for (Tap& tap : taps_) {
        if (tap.point >= 0 && ++tap.point == points_) {
            tap.now = tap.next;
            tap.point = -1;
        }
        if (tap.point < 0 && tap.now != tap.wanted) {
            tap.next = tap.wanted;
            tap.point = 0;
        }
        fading |= tap.point >= 0;
    }
    return fading;
}

float* const* DelayLine::room() noexcept
{
    for (int i = 0; i < speakerCount; ++i)
        room_[i] = history_.room(i);
    return room_;
}

void DelayLine::read(float* const out[speakerCount], int frames, int offset,
                     float peak[speakerCount]) noexcept
{
    for (int i = 0; i < speakerCount; ++i) {
        const Tap& tap = taps_[i];
        const float* now = history_.before(i, tap.now);
        if (tap.point < 0) {
            peak[i] = copyAndMeasure(now, out[i], frames);
            continue;
        }
        const float* next = history_.before(i, tap.next);
        const float from = fadeCurve(tap.point, points_);
        const float step = (fadeCurve(tap.point + 1, points_) - from) / gridFrames;
        float mixed[gridFrames];
        for (int n = 0; n < frames; ++n)
            mixed[n] = now[n] + (from + step * float(offset + n)) * (next[n] - now[n]);
        peak[i] = copyAndMeasure(mixed, out[i], frames);
    }
    history_.advance(frames);
}

} // namespace hvaudio::dsp
