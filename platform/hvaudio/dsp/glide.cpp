#include "platform/hvaudio/dsp/glide.h"

#include <algorithm>

namespace hvaudio::dsp {

void advanceGlide(double share, const double* target, double* first, double* second, int count) noexcept
{
    for (int i = 0; i < count; ++i) {
        first[i] += share * (target[i] - first[i]);
        second[i] += share * (first[i] - second[i]);
    }
}

void stepBetween(const double* now, const double* next, double* step, int count) noexcept
{
    for (int i = 0; i < count; ++i)
        step[i] = (next[i] - now[i]) * (1.0 / gridFrames);
}

Fade::Fade(double rate)
    : m_points(int(rate * 0.043 / gridFrames))
{
}

float Fade::share(int point) const noexcept
{
    const float t = float(point) / float(m_points);
    return t * t * t * (10 + t * (6 * t - 15));
}

void Fade::mix(const float* before, const float* after, float* to, int frames, int offset) const noexcept
{
    for (int point = m_point; frames > 0; ++point, offset = 0) {
        const float from = share(point), step = (share(point + 1) - from) / gridFrames;
        const int count = std::min(frames, gridFrames - offset);
        for (int n = 0; n < count; ++n)
            to[n] = before[n] + (from + step * float(offset + n)) * (after[n] - before[n]);
        before += count, after += count, to += count;
        frames -= count;
    }
}

} // namespace hvaudio::dsp
