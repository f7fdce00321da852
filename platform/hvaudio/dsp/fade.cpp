#include "platform/hvaudio/dsp/fade.h"

#include <algorithm>

namespace hvaudio::dsp {

Fade::Fade(double rate)
    : m_points(int(rate * 0.043 / gridFrames))
{
}

float Fade::share(int point) const noexcept
{
    const float t = float(point) / float(m_points);
    return t * t * t * (10 + t * (6 * t - 15));
}

void Fade::mix(const Kernel& kernel, const float* before, const float* after, float* to, int frames,
               int offset) const noexcept
{
    for (int point = m_point; frames > 0; ++point, offset = 0) {
        const float from = share(point), step = (share(point + 1) - from) / gridFrames;
        const int count = std::min(frames, gridFrames - offset);
        kernel.mix(before, after, from, step, offset, to, count);
        before += count, after += count, to += count;
        frames -= count;
    }
}

} // namespace hvaudio::dsp
