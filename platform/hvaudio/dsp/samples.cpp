#include "platform/hvaudio/dsp/samples.h"

#include <algorithm>
#include <cmath>

namespace hvaudio::dsp {

double addPairs(const float* left, const float* right, Line factor, double* pairs, int frames) noexcept
{
    double largest = 0;
    for (int n = 0; n < frames; ++n) {
        const double f = factor.at(n), l = cleaned(left[n]) * f, r = cleaned(right[n]) * f;
        pairs[2 * n] += l;
        pairs[2 * n + 1] += r;
        largest = std::max({largest, std::abs(l), std::abs(r)});
    }
    return largest;
}

bool allZero(const float* signal, int frames) noexcept
{
    if (!signal)
        return true;
    // In runs, so that a signal that isn't silent is found out at once and a silent one is read at full
    // width.
    constexpr int run = 64;
    for (int n = 0; n < frames; n += run) {
        const int end = n + run < frames ? n + run : frames;
        bool any = false;
        for (int i = n; i < end; ++i)
            any |= signal[i] != 0.0f;
        if (any)
            return false;
    }
    return true;
}

} // namespace hvaudio::dsp
