#include "platform/hvaudio/dsp/samples.h"

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

template <typename Real>
void gatherPairs(const float* left, const float* right, Line factor, Real* pairs, int frames) noexcept
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
            pairs[2 * n + side] = Real(clean(only[n])) * factor.at(n);
            pairs[2 * n + 1 - side] = 0;
        }
        return;
    }
    for (int n = 0; n < frames; ++n) {
        const Real f = factor.at(n);
        pairs[2 * n] = clean(left[n]) * f;
        pairs[2 * n + 1] = clean(right[n]) * f;
    }
}

template <typename Real>
float addPairs(const float* left, const float* right, Line factor, Real* pairs, int frames) noexcept
{
    float largest = 0;
    for (int n = 0; n < frames; ++n) {
        const float f = factor.at(n);
        const float l = clean(left[n]) * f, r = clean(right[n]) * f;
        pairs[2 * n] += l;
        pairs[2 * n + 1] += r;
        const float a = l < 0 ? -l : l, b = r < 0 ? -r : r;
        largest = a > largest ? a : largest;
        largest = b > largest ? b : largest;
    }
    return largest;
}

template void gatherPairs(const float*, const float*, Line, float*, int) noexcept;
template void gatherPairs(const float*, const float*, Line, double*, int) noexcept;
template float addPairs(const float*, const float*, Line, float*, int) noexcept;
template float addPairs(const float*, const float*, Line, double*, int) noexcept;

namespace {

/// Sum of the squares in eight interleaved parts, each short enough for its own precision.
template <typename Real>
void squares(const Real* x, int count, Real part[8])
{
    int n = 0;
    for (; n + 8 <= count; n += 8)
        for (int i = 0; i < 8; ++i)
            part[i] += x[n + i] * x[n + i];
    for (; n < count; ++n)
        part[n & 7] += x[n] * x[n];
}

} // namespace

template <typename Real>
PairEnergy energyOfPairs(const Real* pairs, int frames) noexcept
{
    Real part[8] = {};
    squares(pairs, 2 * frames, part);
    return {{double(part[0]) + part[2] + part[4] + part[6], double(part[1]) + part[3] + part[5] + part[7]}};
}

template PairEnergy energyOfPairs(const float*, int) noexcept;
template PairEnergy energyOfPairs(const double*, int) noexcept;

double energyOf(const float* signal, int frames) noexcept
{
    float part[8] = {};
    squares(signal, frames, part);
    return double(part[0]) + part[1] + part[2] + part[3] + part[4] + part[5] + part[6] + part[7];
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
