#pragma once

#include "platform/hvaudio/dsp/kernel/detector.h"
#include "platform/hvaudio/dsp/kernel/kernel.h"

// The limiter's loops, in vectors `F` of floats.

namespace hvaudio::dsp {
namespace {

typedef float F4 __attribute__((vector_size(16)));

template <typename F>
inline F loadSamples(const float* samples)
{
    F v;
    __builtin_memcpy(&v, samples, sizeof v);
    return v;
}
template <typename F>
inline F sizeOf(F x)
{
    return x < 0 ? -x : x;
}
template <typename F>
inline F larger(F a, F b)
{
    return a > b ? a : b;
}
template <typename F>
inline float largestOfVector(F v)
{
    float top = 0;
    for (unsigned i = 0; i < sizeof v / sizeof(float); ++i)
        top = v[i] > top ? v[i] : top;
    return top;
}

template <typename F>
float largestOf(const float* cell)
{
    F top = {};
    for (int n = 0; n < gridFrames; n += int(sizeof(F) / sizeof(float)))
        top = larger(top, sizeOf(loadSamples<F>(cell + n)));
    return largestOfVector(top);
}

/// A filter and its reverse are the sum and the difference of what is made of the sums and of the differences
/// of samples alike far from the middle.
template <typename F>
float largestBetween(const float* cell)
{
    using namespace detector;
    F top = {};
    for (int n = 0; n < gridFrames; n += int(sizeof(F) / sizeof(float))) {
        F middle = {}, even = {}, odd = {};
#pragma GCC unroll 6
        for (int k = 0; k < taps / 2; ++k) {
            const F near = loadSamples<F>(cell + n - k), far = loadSamples<F>(cell + n - (taps - 1 - k));
            const F sum = near + far;
            middle += half[k] * sum;
            even += 0.5f * (quarter[k] + quarter[taps - 1 - k]) * sum;
            odd += 0.5f * (quarter[k] - quarter[taps - 1 - k]) * (near - far);
        }
        // The larger of |even + odd| and |even - odd| is the sum of the sizes.
        top = larger(top, larger(sizeOf(middle), sizeOf(even) + sizeOf(odd)));
    }
    return margin * largestOfVector(top);
}

float applyGain(const float* from, const float* gain, float* to, int frames, float ceiling)
{
    float top = 0;
    for (int n = 0; n < frames; ++n) {
        float x = from[n] * gain[n];
        x = x > ceiling ? ceiling : x;
        x = x < -ceiling ? -ceiling : x;
        const float size = x < 0 ? -x : x;
        top = size > top ? size : top;
        to[n] = x;
    }
    return top;
}

} // namespace
} // namespace hvaudio::dsp
