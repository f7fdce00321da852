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

} // namespace

void DelayLine::prepare(double rate, int longestTap)
{
    m_history.prepare(speakerCount, longestTap);
    m_points = int(rate * fadeSeconds / gridFrames);
    for (Tap& tap : m_taps)
        tap = Tap();
}

void DelayLine::clear() noexcept
{
    m_history.clear();
}

void DelayLine::aim(int speaker, int tap) noexcept
{
    m_taps[speaker].wanted = tap;
}

void DelayLine::jump() noexcept
{
    for (Tap& tap : m_taps)
        tap = Tap{tap.wanted, tap.wanted, tap.wanted, -1};
}

bool DelayLine::advanceGrid() noexcept
{
    bool fading = false;
    for (Tap& tap : m_taps) {
        if (tap.point >= 0 && ++tap.point == m_points) {
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

float* const* DelayLine::inputs() noexcept
{
    for (int i = 0; i < speakerCount; ++i)
        m_inputs[i] = m_history.next(i);
    return m_inputs;
}

void DelayLine::read(float* const out[speakerCount], int frames, int offset,
                     float peak[speakerCount]) noexcept
{
    for (int i = 0; i < speakerCount; ++i) {
        const Tap& tap = m_taps[i];
        const float* now = m_history.before(i, tap.now);
        if (tap.point < 0) {
            peak[i] = m_kernel->copy(now, out[i], frames);
            continue;
        }
        const float* next = m_history.before(i, tap.next);
        const float from = fadeCurve(tap.point, m_points);
        const float step = (fadeCurve(tap.point + 1, m_points) - from) / gridFrames;
        float mixed[gridFrames];
        for (int n = 0; n < frames; ++n)
            mixed[n] = now[n] + (from + step * float(offset + n)) * (next[n] - now[n]);
        peak[i] = m_kernel->copy(mixed, out[i], frames);
    }
    m_history.advance(frames);
}

} // namespace hvaudio::dsp
