#pragma once

#include "platform/hvaudio/dsp/kernel/detector.h"
#include "platform/hvaudio/dsp/kernel/kernel.h"

// The loops that all paths share; the delay's and the limiter's in vectors `F` of floats. Everything stands
// in a nameless namespace: each including file is compiled for other instructions, and no function may be
// shared between them by the linker.

namespace hvaudio::dsp {
namespace {

void gather(const float* left, const float* right, Line factor, double* pairs, int frames)
{
    static const float silence[pieceFrames] = {};
    const float* const side[2] = {left ? left : silence, right ? right : silence};
    for (int n = 0; n < frames; ++n) {
        const double f = factor.at(n);
        pairs[2 * n] = cleaned(side[0][n]) * f;
        pairs[2 * n + 1] = cleaned(side[1][n]) * f;
    }
}

typedef float F4 __attribute__((vector_size(16)));
typedef float F8 __attribute__((vector_size(32)));
typedef float F16 __attribute__((vector_size(64)));

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
/// Down to four lanes.
inline F4 folded(F4 v)
{
    return v;
}
#ifdef __AVX2__
inline F4 folded(F8 v)
{
    return larger(__builtin_shufflevector(v, v, 0, 1, 2, 3), __builtin_shufflevector(v, v, 4, 5, 6, 7));
}
#endif
#ifdef __AVX512F__
inline F4 folded(F16 v)
{
    return folded(larger(__builtin_shufflevector(v, v, 0, 1, 2, 3, 4, 5, 6, 7),
                         __builtin_shufflevector(v, v, 8, 9, 10, 11, 12, 13, 14, 15)));
}
#endif
template <typename F>
inline float largestOfVector(F v)
{
    const F4 four = folded(v);
    const F4 two = larger(four, __builtin_shufflevector(four, four, 2, 3, 2, 3));
    return two[0] > two[1] ? two[0] : two[1];
}

/// The largest of each vector.
inline void storeLargest(const F4 (&v)[speakerCount], float largest[speakerCount])
{
    const F4 a = v[0], b = v[1], c = v[2], d = v[3];
    const F4 ab =
        larger(__builtin_shufflevector(a, b, 0, 1, 4, 5), __builtin_shufflevector(a, b, 2, 3, 6, 7));
    const F4 cd =
        larger(__builtin_shufflevector(c, d, 0, 1, 4, 5), __builtin_shufflevector(c, d, 2, 3, 6, 7));
    const F4 four =
        larger(__builtin_shufflevector(ab, cd, 0, 2, 4, 6), __builtin_shufflevector(ab, cd, 1, 3, 5, 7));
    __builtin_memcpy(largest, &four, sizeof four);
    largest[4] = largestOfVector(v[4]);
}

template <typename F>
void measure(const float* const cell[speakerCount], float bend[speakerCount], float top[speakerCount],
             float most[speakerCount])
{
    F4 tops[speakerCount], bends[speakerCount];
    for (int i = 0; i < speakerCount; ++i) {
        const float* const x = cell[i];
        F largest = sizeOf(loadSamples<F>(x - 6)), bent = {};
        for (int n = 0; n < cellFrames; n += int(sizeof(F) / sizeof(float))) {
            largest = larger(largest, sizeOf(loadSamples<F>(x + n - 5)));
            const F middle = loadSamples<F>(x + n - 1);
            const F sides = loadSamples<F>(x + n - 2) + loadSamples<F>(x + n);
            bent = larger(bent, sizeOf(sides - (middle + middle)));
        }
        tops[i] = folded(largest);
        bends[i] = folded(bent);
    }
    float now[speakerCount];
    storeLargest(tops, top);
    storeLargest(bends, now);
    for (int i = 0; i < speakerCount; ++i) {
        most[i] = top[i] + detector::perBend * (now[i] > bend[i] ? now[i] : bend[i]);
        bend[i] = now[i];
    }
}

/// A filter and its reverse are the sum and the difference of what is made of the sums and of the differences
/// of samples alike far from the middle.
template <typename F>
float largestBetween(const float* cell)
{
    using namespace detector;
    F top = {};
    for (int n = 0; n < cellFrames; n += int(sizeof(F) / sizeof(float))) {
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
    return largestOfVector(top);
}

/// Runs `change` over frames, vectors first, and returns the largest absolute of what it gives.
template <typename F, typename Change>
inline float changed(float* to, int frames, Change change)
{
    constexpr int width = int(sizeof(F) / sizeof(float));
    F top = {};
    int n = 0;
#pragma GCC unroll 2
    for (; n + width <= frames; n += width) {
        const F x = change(n, F{});
        __builtin_memcpy(to + n, &x, sizeof x);
        top = larger(top, sizeOf(x));
    }
    float largest = largestOfVector(top);
    for (; n < frames; ++n) {
        to[n] = change(n, 0.0f);
        largest = larger(largest, sizeOf(to[n]));
    }
    return largest;
}

template <typename F>
void mix(const float* before, const float* after, float share, float step, int start, float* to, int frames)
{
    constexpr int width = int(sizeof(F) / sizeof(float));
    const auto mixed = [](auto a, auto b, auto part) { return a + part * (b - a); };
    F place;
    for (int i = 0; i < width; ++i)
        place[i] = float(start + i);
    int n = 0;
    for (; n + width <= frames; n += width, place += float(width)) {
        const F x = mixed(loadSamples<F>(before + n), loadSamples<F>(after + n), share + step * place);
        __builtin_memcpy(to + n, &x, sizeof x);
    }
    for (; n < frames; ++n)
        to[n] = mixed(before[n], after[n], share + step * float(start + n));
}

template <typename F>
float copy(const float* from, float* to, int frames)
{
    return changed<F>(to, frames, [=](int n, auto v) { return loadSamples<decltype(v)>(from + n); });
}

template <typename F>
float applyGain(const float* from, const float* gain, float* to, int frames, float ceiling)
{
    return changed<F>(to, frames, [=](int n, auto v) {
        using X = decltype(v);
        const X x = loadSamples<X>(from + n) * loadSamples<X>(gain + n), most = X{} + ceiling;
        const X low = x > most ? most : x;
        return low < -most ? -most : low;
    });
}

} // namespace
} // namespace hvaudio::dsp
