#pragma once

#include "platform/hvaudio/dsp/kernel/kernel_common.h"

#include <utility>

// The filters in vectors of 2, 4 or 8 lanes, in the compiler's own vector types, so that one text serves
// SSE2, AVX2 and NEON.

namespace hvaudio::dsp {
namespace {

typedef double D2 __attribute__((vector_size(16)));
typedef double D4 __attribute__((vector_size(32)));

template <typename V>
constexpr int widthOf = int(sizeof(V) / sizeof(double));

template <typename V, typename T>
inline V load(const T* p)
{
    V v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
}
template <typename V, typename T>
inline void store(T* p, V v)
{
    __builtin_memcpy(p, &v, sizeof v);
}

/// One vector of sections; where `shelf` is false all of them are peaking. The new p is left in `q` and the
/// new q in `p`: over two frames no register need be copied.
template <bool shelf, typename V>
inline V runSections(V x, const V (&c)[5], V& p, V& q)
{
    const V s = x + p;
    const V y = shelf ? c[E] * x + (c[R] * p + c[F] * q) : x + c[R] * s;
    q += c[A] * s;
    p -= c[B] * s;
    return y;
}

/// Four vectors are run at a time, as many as the registers hold. The vectors of a run hold the first,
/// second, third and fourth sections of as many groups as a vector has pairs of lanes, so that each vector's
/// input is the one before it, and only the first wants its lanes moved up to the next group.
template <typename V>
inline V loadGroups(const double* lane)
{
    V v;
    for (int i = 0; i < widthOf<V>; i += 2) {
        v[i] = lane[i * cascadeGroup];
        v[i + 1] = lane[i * cascadeGroup + 1];
    }
    return v;
}
template <typename V>
inline void storeGroups(double* lane, V v)
{
    for (int i = 0; i < widthOf<V>; i += 2) {
        lane[i * cascadeGroup] = v[i];
        lane[i * cascadeGroup + 1] = v[i + 1];
    }
}

/// The run's input: the pair for its first group, the last section's outputs for the others.
inline D2 groupInputs(const double* pair, D2)
{
    return load<D2>(pair);
}
inline void storeOutput(double* pair, D2 last)
{
    store(pair, last);
}
#ifdef __AVX2__
inline D4 groupInputs(const double* pair, D4 last)
{
    const D2 in = load<D2>(pair), low = __builtin_shufflevector(last, last, 0, 1);
    return __builtin_shufflevector(in, low, 0, 1, 2, 3);
}
inline void storeOutput(double* pair, D4 last)
{
    store(pair, (D2)__builtin_ia32_vextractf128_pd256(last, 1));
}
#endif
#ifdef __AVX512F__
typedef double D8 __attribute__((vector_size(64)));
inline D8 groupInputs(const double* pair, D8 last)
{
    const D2 in = load<D2>(pair);
    const D4 in4 = __builtin_shufflevector(in, in, 0, 1, 0, 1);
    const D8 in8 = __builtin_shufflevector(in4, in4, 0, 1, 2, 3, 0, 1, 2, 3);
    return __builtin_shufflevector(in8, last, 0, 1, 8, 9, 10, 11, 12, 13);
}
inline void storeOutput(double* pair, D8 last)
{
    store(pair, __builtin_shufflevector(last, last, 6, 7));
}
#endif

template <typename V, bool shelf>
void runGroups(double* pairs, int frames, const DirectTable<cascadeLanes>& table,
               SectionMemory<cascadeLanes>& m, int lane)
{
    V c[cascadeGroup][5], p[cascadeGroup], q[cascadeGroup], y[cascadeGroup];
#pragma GCC unroll 4
    for (int v = 0; v < cascadeGroup; ++v) {
        for (int row = 0; row < 5; ++row)
            c[v][row] = loadGroups<V>(&table[row][lane + 2 * v]);
        p[v] = loadGroups<V>(m.first + lane + 2 * v);
        q[v] = loadGroups<V>(m.second + lane + 2 * v);
        y[v] = loadGroups<V>(m.y + lane + 2 * v);
    }
    const auto frame = [&](double* pair, V(&p)[cascadeGroup], V(&q)[cascadeGroup]) {
        const V in = groupInputs(pair, y[3]);
        storeOutput(pair, y[3]);
        y[3] = runSections<shelf>(y[2], c[3], p[3], q[3]);
        y[2] = runSections<false>(y[1], c[2], p[2], q[2]);
        y[1] = runSections<false>(y[0], c[1], p[1], q[1]);
        y[0] = runSections<false>(in, c[0], p[0], q[0]);
    };
    int n = 0;
    for (; n + 2 <= frames; n += 2) {
        frame(pairs + 2 * n, p, q);
        frame(pairs + 2 * n + 2, q, p);
    }
    if (n < frames) {
        frame(pairs + 2 * n, p, q);
        for (int v = 0; v < cascadeGroup; ++v)
            std::swap(p[v], q[v]);
    }
#pragma GCC unroll 4
    for (int v = 0; v < cascadeGroup; ++v) {
        storeGroups(m.first + lane + 2 * v, p[v]);
        storeGroups(m.second + lane + 2 * v, q[v]);
        storeGroups(m.y + lane + 2 * v, y[v]);
    }
}

template <typename V>
void cascade(double* pairs, int frames, const Filters& filters, FilterMemory& memory)
{
    // The first group has no shelf.
    constexpr int step = cascadeGroup * widthOf<V>;
    runGroups<V, (step > 2 * cascadeGroup)>(pairs, frames, filters.directCascade, memory.cascade, 0);
    for (int lane = step; lane < cascadeLanes; lane += step)
        runGroups<V, true>(pairs, frames, filters.directCascade, memory.cascade, lane);
}

/// A section of the crossovers, one vector wide: in direct form with five rows of coefficients, in state form
/// with six.
template <typename V, int rows>
struct CrossoverSections
{
    V c[rows], first, second, y;

    template <int lanes>
    void open(const double (&table)[rows][lanes], const SectionMemory<lanes>& m, int lane)
    {
        for (int row = 0; row < rows; ++row)
            c[row] = load<V>(&table[row][lane]);
        first = load<V>(m.first + lane);
        second = load<V>(m.second + lane);
        y = load<V>(m.y + lane);
    }
    template <int lanes>
    void close(SectionMemory<lanes>& m, int lane) const
    {
        store(m.first + lane, first);
        store(m.second + lane, second);
        store(m.y + lane, y);
    }
    void run(V x)
    {
        if constexpr (rows == 5) {
            y = runSections<true>(x, c, first, second);
            std::swap(first, second);
        } else {
            const V v3 = x - second;
            y = (c[Q3] * second + c[Q2] * first) + c[Q1] * v3;
            second = (second + c[B2] * first) + c[B3] * v3;
            first = (first - c[C1] * first) + c[B2] * v3;
        }
    }
};

typedef float F2 __attribute__((vector_size(8)));
inline F2 single(D2 v)
{
    return __builtin_convertvector(v, F2);
}
inline D2 spread(const double* pair, D2)
{
    return load<D2>(pair);
}
#ifdef __AVX2__
inline F4 single(D4 v)
{
    return __builtin_convertvector(v, F4);
}
inline D4 spread(const double* pair, D4)
{
    const D2 v = load<D2>(pair);
    return __builtin_shufflevector(v, v, 0, 1, 0, 1);
}
#endif

/// Four frames of two or four speakers each, turned into speakers of four frames each.
inline void storeTurned(float* const* to, int n, F2 a, F2 b, F2 c, F2 d)
{
    const F4 ab = __builtin_shufflevector(a, b, 0, 2, 1, 3), cd = __builtin_shufflevector(c, d, 0, 2, 1, 3);
    store(to[0] + n, __builtin_shufflevector(ab, cd, 0, 1, 4, 5));
    store(to[1] + n, __builtin_shufflevector(ab, cd, 2, 3, 6, 7));
}
inline void storeTurned(float* const* to, int n, F4 a, F4 b, F4 c, F4 d)
{
    const F4 ab0 = __builtin_shufflevector(a, b, 0, 4, 1, 5), cd0 = __builtin_shufflevector(c, d, 0, 4, 1, 5);
    const F4 ab2 = __builtin_shufflevector(a, b, 2, 6, 3, 7), cd2 = __builtin_shufflevector(c, d, 2, 6, 3, 7);
    store(to[0] + n, __builtin_shufflevector(ab0, cd0, 0, 1, 4, 5));
    store(to[1] + n, __builtin_shufflevector(ab0, cd0, 2, 3, 6, 7));
    store(to[2] + n, __builtin_shufflevector(ab2, cd2, 0, 1, 4, 5));
    store(to[3] + n, __builtin_shufflevector(ab2, cd2, 2, 3, 6, 7));
}

/// What `frame` makes of each frame, a lane a speaker.
template <typename V, typename Frame>
__attribute__((always_inline)) inline void storeFrames(float* const* speakers, int frames, Frame& frame)
{
    int n = 0;
    for (; n + 4 <= frames; n += 4) {
        const auto a = frame(n), b = frame(n + 1), c = frame(n + 2), d = frame(n + 3);
        storeTurned(speakers, n, a, b, c, d);
    }
    for (; n < frames; ++n) {
        const auto a = frame(n);
        for (int i = 0; i < widthOf<V>; ++i)
            speakers[i][n] = a[i];
    }
}

/// As many of the cabin's speakers as a vector holds, from `at` on, and the subwoofer along with the first
/// ones: so much fits into registers.
template <typename V, bool subwoofer, bool lowPass, bool gliding>
void crossoverPass(int at, const double* pairs, float* const out[speakerCount], int frames,
                   const Filters& filters, Lines levels, FilterMemory& memory)
{
    CrossoverSections<V, 5> high[2];
    CrossoverSections<V, 6> low[2];
    for (int s = 0; s < 2; ++s) {
        high[s].open(filters.directHigh, memory.high, 4 * s + at);
        low[s].open(filters.low, memory.low, 4 * s + at);
    }
    CrossoverSections<D2, 6> sub; // its two sections side by side
    sub.open(filters.low, memory.low, subwooferLane);
    V apX = load<V>(memory.allPassX + at), apY = load<V>(memory.allPassY + at);
    double subApX = memory.allPassX[Subwoofer], subApY = memory.allPassY[Subwoofer];
    const Parameters &from = levels.from, &step = gliding ? *levels.step : from;
    const V gain0 = load<V>(from.speakerGain + at), gainStep = load<V>(step.speakerGain + at);
    const V allPass0 = load<V>(from.allPass + at), allPassStep = load<V>(step.allPass + at);
    float* const* const cabin = out + at;

    const auto frame = [&](int n) {
        const double place = levels.start + n;
        if constexpr (lowPass) {
            low[1].run(low[0].y);
            low[0].run(high[1].y);
        } else {
            low[1].y = low[0].y;
            low[0].y = high[1].y;
        }
        high[1].run(high[0].y);
        high[0].run(spread(pairs + 2 * n, V{}) * (gliding ? gain0 + gainStep * place : gain0));
        apY = (gliding ? allPass0 + allPassStep * place : allPass0) * (low[1].y - apY) + apX;
        apX = low[1].y;
        if constexpr (subwoofer) {
            const auto on = [&](const double* start, const double* by) {
                return gliding ? start[Subwoofer] + by[Subwoofer] * place : start[Subwoofer];
            };
            const D2 subIn = {(pairs[2 * n] + pairs[2 * n + 1]) * on(from.speakerGain, step.speakerGain),
                              sub.y[0]};
            sub.run(subIn);
            subApY = on(from.allPass, step.allPass) * (sub.y[1] - subApY) + subApX;
            subApX = sub.y[1];
            out[Subwoofer][n] = float(subApY);
        }
        return single(apY);
    };
    storeFrames<V>(cabin, frames, frame);

    for (int s = 0; s < 2; ++s) {
        high[s].close(memory.high, 4 * s + at);
        low[s].close(memory.low, 4 * s + at);
    }
    store(memory.allPassX + at, apX);
    store(memory.allPassY + at, apY);
    if constexpr (subwoofer) {
        sub.close(memory.low, subwooferLane);
        memory.allPassX[Subwoofer] = subApX;
        memory.allPassY[Subwoofer] = subApY;
    }
}

template <typename V, bool lowPass, bool gliding>
void crossoverPasses(const double* pairs, float* const out[speakerCount], int frames, const Filters& filters,
                     Lines levels, FilterMemory& memory)
{
    crossoverPass<V, true, lowPass, gliding>(0, pairs, out, frames, filters, levels, memory);
    for (int at = widthOf<V>; at < cabinSpeakerCount; at += widthOf<V>)
        crossoverPass<V, false, lowPass, gliding>(at, pairs, out, frames, filters, levels, memory);
}

template <typename V>
void crossover(const double* pairs, float* const out[speakerCount], int frames, const Filters& filters,
               Lines levels, FilterMemory& memory)
{
    const auto run =
        levels.step ? (filters.lowPass ? crossoverPasses<V, true, true> : crossoverPasses<V, false, true>)
                    : (filters.lowPass ? crossoverPasses<V, true, false> : crossoverPasses<V, false, false>);
    run(pairs, out, frames, filters, levels, memory);
}

} // namespace
} // namespace hvaudio::dsp
