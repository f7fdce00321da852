#include "hvaudio/samples.h"

#include <cfloat>

namespace hvaudio::dsp {

namespace {

constexpr float loudest = 64;

inline float clean(float x)
{
    const float size = x < 0 ? -x : x;
    const float finite = size <= FLT_MAX ? x : 0.0f; // false for NaN too
    const float low = finite < -loudest ? -loudest : finite;
    return low > loudest ? loudest : low;
}

} // namespace

float cleaned(float sample) noexcept
{
    return clean(sample);
}

void gatherPairs(const float* left, const float* right, Line factor, float* pairs, int frames) noexcept
{
    if (!left && !right) {
        for (int n = 0; n < 2 * frames; ++n)
            pairs[n] = 0;
        return;
    }
    if (!left || !right) {
        const int side = left ? 0 : 1;
        const float* only = left ? left : right;
        for (int n = 0; n < frames; ++n) {
            pairs[2 * n + side] = clean(only[n]) * factor.at(n);
            pairs[2 * n + 1 - side] = 0;
        }
        return;
    }
    for (int n = 0; n < frames; ++n) {
        const float f = factor.at(n);
        pairs[2 * n] = clean(left[n]) * f;
        pairs[2 * n + 1] = clean(right[n]) * f;
    }
}

float addPairs(const float* left, const float* right, Line factor, float* pairs, int frames) noexcept
{
    float largest = 0;
    for (int n = 0; n < frames; ++n) {
        const float l = clean(left[n]), r = clean(right[n]);
        const float f = factor.at(n);
        pairs[2 * n] += l * f;
        pairs[2 * n + 1] += r * f;
        const float a = l < 0 ? -l : l, b = r < 0 ? -r : r;
        largest = a > largest ? a : largest;
        largest = b > largest ? b : largest;
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
