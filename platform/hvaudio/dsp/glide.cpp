#include "platform/hvaudio/dsp/glide.h"

namespace hvaudio::dsp {

void advanceGlide(float share, const float* target, float* first, float* second, int count) noexcept
{
    for (int i = 0; i < count; ++i) {
        first[i] += share * (target[i] - first[i]);
        second[i] += share * (first[i] - second[i]);
    }
}

void stepBetween(const float* now, const float* next, float* step, int count) noexcept
{
    for (int i = 0; i < count; ++i)
        step[i] = (next[i] - now[i]) * (1.0f / gridFrames);
}

} // namespace hvaudio::dsp
