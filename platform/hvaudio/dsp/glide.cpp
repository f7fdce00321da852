#include "platform/hvaudio/dsp/glide.h"

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

} // namespace hvaudio::dsp
