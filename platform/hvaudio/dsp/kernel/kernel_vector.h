#pragma once

#include "platform/hvaudio/dsp/kernel/kernel_paths.h"

#include <type_traits>
#include <utility>

// The body of the vector paths, for 4 or 8 lanes, in the compiler's own vector types, so that one text serves
// SSE2, AVX2 and NEON. Everything stands in a nameless namespace: each including file is compiled for other
// instructions, and no function may be shared between them by the linker.

namespace hvaudio::dsp {
namespace {

typedef float F4 __attribute__((vector_size(16)));
typedef double D2 __attribute__((vector_size(16)));
typedef double D4 __attribute__((vector_size(32))); // two registers where one holds two
#ifdef __AVX2__
typedef float F8 __attribute__((vector_size(32)));
#endif

template <typename V>
using RealOf = std::remove_reference_t<decltype(std::declval<V&>()[0])>;
template <typename V>
constexpr int widthOf = int(sizeof(V) / sizeof(RealOf<V>));

/// The coefficients of a vector's lanes.
template <typename V>
struct SingleOf
{
    using Type = V;
};
template <>
struct SingleOf<D4>
{
    using Type = F4;
};
template <>
struct SingleOf<D2>
{
    typedef float Type __attribute__((vector_size(8)));
};

template <typename V>
inline V load(const RealOf<V>* p)
{
    V v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
}
template <typename V>
inline void store(RealOf<V>* p, V v)
{
    __builtin_memcpy(p, &v, sizeof v);
}
/// The same numbers in the precision of `To`.
template <typename To, typename From>
inline To as(From v)
{
    if constexpr (std::is_same_v<To, From>)
        return v;
    else
        return __builtin_convertvector(v, To);
}

/// A section input that comes from outside: the left/right pair in the two low lanes.
template <typename V4>
inline V4 loadPair4(const RealOf<V4>* pair)
{
    typedef RealOf<V4> Pair __attribute__((vector_size(2 * sizeof(RealOf<V4>))));
    Pair v;
    __builtin_memcpy(&v, pair, sizeof v);
    return __builtin_shufflevector(v, v, 0, 1, 0, 1);
}

/// Moves `own` up by one section (a left/right pair) and puts the last section of `before` in front.
template <typename V4>
inline V4 shiftPair(V4 before, V4 own)
{
    return __builtin_shufflevector(before, own, 2, 3, 4, 5);
}
template <typename V4>
inline V4 firstPair(const RealOf<V4>* pair, V4 own)
{
    return __builtin_shufflevector(loadPair4<V4>(pair), own, 0, 1, 4, 5);
}
template <typename V4>
inline void storeLastPair(RealOf<V4>* pair, V4 v)
{
    const V4 high = __builtin_shufflevector(v, v, 2, 3, 2, 3);
    __builtin_memcpy(pair, &high, 2 * sizeof(RealOf<V4>));
}
// A section is a whole vector.
inline D2 shiftPair(D2 before, D2)
{
    return before;
}
inline D2 firstPair(const double* pair, D2)
{
    return load<D2>(pair);
}
inline void storeLastPair(double* pair, D2 v)
{
    store(pair, v);
}
#ifdef __AVX2__
inline F8 shiftPair(F8 before, F8 own)
{
    return __builtin_shufflevector(before, own, 6, 7, 8, 9, 10, 11, 12, 13);
}
inline F8 firstPair(const float* pair, F8 own)
{
    const F4 pair4 = loadPair4<F4>(pair);
    const F8 wide = __builtin_shufflevector(pair4, pair4, 0, 1, 2, 3, 0, 1, 2, 3);
    return __builtin_shufflevector(wide, own, 0, 1, 8, 9, 10, 11, 12, 13);
}
inline void storeLastPair(float* pair, F8 v)
{
    const F4 high = __builtin_shufflevector(v, v, 6, 7, 6, 7);
    __builtin_memcpy(pair, &high, 2 * sizeof(float));
}
#endif

/// The coefficients of a vector of sections; their rows lie `lanes` floats apart. They glide in single
/// precision whatever the samples have, so that nothing depends on where a block ends.
template <typename V, int rows>
struct VectorCoefficients
{
    using Single = typename SingleOf<V>::Type;
    Single row[rows];
    void loadFrom(const float* table, int lanes)
    {
        for (int r = 0; r < rows; ++r)
            row[r] = load<Single>(table + r * lanes);
    }
    void storeTo(float* table, int lanes) const
    {
        for (int r = 0; r < rows; ++r)
            store(table + r * lanes, row[r]);
    }
    void advance(const VectorCoefficients& step)
    {
        for (int r = 0; r < rows; ++r)
            row[r] += step.row[r];
    }
    V operator[](CoefficientRow r) const { return as<V>(row[r]); }
};

/// One frame of all sections in a vector; see kernel.h.
template <typename V, int rows>
inline V runSections(V x, const VectorCoefficients<V, rows>& c, V& ic1, V& ic2)
{
    const V v3 = x - ic2;
    V y;
    if constexpr (rows > Q3)
        y = c[Q3] * ic2 + (c[Q1] * v3 + c[Q2] * ic1);
    else
        y = ic2 + (c[Q1] * v3 + c[Q2] * ic1);
    // What doesn't need v3 first: that is the longest way from frame to frame.
    const V ahead2 = ic2 + c[B2] * ic1;
    const V ahead1 = ic1 - c[C1] * ic1;
    ic2 = ahead2 + c[B3] * v3;
    ic1 = ahead1 + c[B2] * v3;
    return y;
}

/// As many vectors of the cascade as the registers hold, over all frames.
template <typename V, bool gliding>
void cascadePass(RealOf<V>* pairs, int frames, float* now, const float* step, RealOf<V>* ic1, RealOf<V>* ic2,
                 RealOf<V>* last)
{
    constexpr int width = widthOf<V>, vectors = 4;
    using C = VectorCoefficients<V, cascadeRows>;
    C c[vectors], d[vectors];
    V i1[vectors], i2[vectors], y[vectors];
#pragma GCC unroll 4
    for (int v = 0; v < vectors; ++v) {
        c[v].loadFrom(now + v * width, cascadeLanes);
        if constexpr (gliding)
            d[v].loadFrom(step + v * width, cascadeLanes);
        i1[v] = load<V>(ic1 + v * width);
        i2[v] = load<V>(ic2 + v * width);
        y[v] = load<V>(last + v * width);
    }
    for (int n = 0; n < frames; ++n) {
        RealOf<V>* const pair = pairs + 2 * n;
        V x[vectors];
        x[0] = firstPair(pair, y[0]);
#pragma GCC unroll 4
        for (int v = 1; v < vectors; ++v)
            x[v] = shiftPair(y[v - 1], y[v]);
        storeLastPair(pair, y[vectors - 1]);
#pragma GCC unroll 4
        for (int v = 0; v < vectors; ++v) {
            y[v] = runSections(x[v], c[v], i1[v], i2[v]);
            if constexpr (gliding)
                c[v].advance(d[v]);
        }
    }
#pragma GCC unroll 4
    for (int v = 0; v < vectors; ++v) {
        if constexpr (gliding)
            c[v].storeTo(now + v * width, cascadeLanes);
        store(ic1 + v * width, i1[v]);
        store(ic2 + v * width, i2[v]);
        store(last + v * width, y[v]);
    }
}

template <typename V>
void cascade(RealOf<V>* pairs, int frames, Parameters& now, const Parameters* step,
             FilterMemory<RealOf<V>>& memory)
{
    auto& m = memory.cascade;
    for (int lane = 0; lane < cascadeLanes; lane += 4 * widthOf<V>)
        if (step)
            cascadePass<V, true>(pairs, frames, &now.cascade[0][lane], &step->cascade[0][lane], m.ic1 + lane,
                                 m.ic2 + lane, m.y + lane);
        else
            cascadePass<V, false>(pairs, frames, &now.cascade[0][lane], nullptr, m.ic1 + lane, m.ic2 + lane,
                                  m.y + lane);
}

/// The two sections of a cabin filter: one vector of eight lanes or two of four.
template <typename V4>
struct TwoSectionVectors
{
    using C = VectorCoefficients<V4, crossoverRows>;
    C c[2], d[2];
    V4 ic1[2], ic2[2], y[2];

    template <typename M>
    void open(float (&now)[crossoverRows][8], const float (*step)[8], const M& m)
    {
        for (int s = 0; s < 2; ++s) {
            c[s].loadFrom(&now[0][4 * s], 8);
            if (step)
                d[s].loadFrom(&step[0][4 * s], 8);
            ic1[s] = load<V4>(m.ic1 + 4 * s);
            ic2[s] = load<V4>(m.ic2 + 4 * s);
            y[s] = load<V4>(m.y + 4 * s);
        }
    }
    template <typename M>
    void close(float (&now)[crossoverRows][8], const float (*step)[8], M& m) const
    {
        for (int s = 0; s < 2; ++s) {
            if (step)
                c[s].storeTo(&now[0][4 * s], 8);
            store(m.ic1 + 4 * s, ic1[s]);
            store(m.ic2 + 4 * s, ic2[s]);
            store(m.y + 4 * s, y[s]);
        }
    }
    void run(V4 x)
    {
        const V4 x1 = y[0];
        y[0] = runSections(x, c[0], ic1[0], ic2[0]);
        y[1] = runSections(x1, c[1], ic1[1], ic2[1]);
    }
    void pass(V4 x)
    {
        y[1] = y[0];
        y[0] = x;
    }
    void advance()
    {
        c[0].advance(d[0]);
        c[1].advance(d[1]);
    }
    V4 out() const { return y[1]; }
};

#ifdef __AVX2__
template <>
struct TwoSectionVectors<F8>
{
    using C = VectorCoefficients<F8, crossoverRows>;
    C c, d;
    F8 ic1, ic2, y;

    template <typename M>
    void open(float (&now)[crossoverRows][8], const float (*step)[8], const M& m)
    {
        c.loadFrom(&now[0][0], 8);
        if (step)
            d.loadFrom(&step[0][0], 8);
        ic1 = load<F8>(m.ic1);
        ic2 = load<F8>(m.ic2);
        y = load<F8>(m.y);
    }
    template <typename M>
    void close(float (&now)[crossoverRows][8], const float (*step)[8], M& m) const
    {
        if (step)
            c.storeTo(&now[0][0], 8);
        store(m.ic1, ic1);
        store(m.ic2, ic2);
        store(m.y, y);
    }
    F8 input(F4 x) const
    {
        const F4 firstSection = __builtin_shufflevector(y, y, 0, 1, 2, 3);
        return __builtin_shufflevector(x, firstSection, 0, 1, 2, 3, 4, 5, 6, 7);
    }
    void run(F4 x) { y = runSections(input(x), c, ic1, ic2); }
    void pass(F4 x) { y = input(x); }
    void advance() { c.advance(d); }
    F4 out() const { return __builtin_shufflevector(y, y, 4, 5, 6, 7); }
};
#endif

/// `V` is what holds the two sections of a cabin filter, `V4` four lanes of the same precision.
template <typename V, typename V4, bool gliding, bool lowPass>
void crossoverPass(const RealOf<V>* pairs, float* const out[speakerCount], int frames, Parameters& now,
                   const Parameters* step, FilterMemory<RealOf<V>>& memory)
{
    using Real = RealOf<V>;
    TwoSectionVectors<V> high, low;
    high.open(now.highPass, gliding ? step->highPass : nullptr, memory.highPass);
    low.open(now.lowPass, gliding ? step->lowPass : nullptr, memory.lowPass);
    VectorCoefficients<V4, crossoverRows> subC, subD;
    subC.loadFrom(&now.subwoofer[0][0], 4);
    V4 subIc1 = load<V4>(memory.subwoofer.ic1), subIc2 = load<V4>(memory.subwoofer.ic2);
    V4 subY = load<V4>(memory.subwoofer.y);
    F4 gain = load<F4>(now.speakerGain), allPass = load<F4>(now.allPass);
    V4 apX = load<V4>(memory.allPassX), apY = load<V4>(memory.allPassY);
    F4 gainStep{}, allPassStep{};
    float subGain = now.speakerGain[Subwoofer], subAllPass = now.allPass[Subwoofer];
    Real subApX = memory.allPassX[Subwoofer], subApY = memory.allPassY[Subwoofer];
    if constexpr (gliding) {
        subD.loadFrom(&step->subwoofer[0][0], 4);
        gainStep = load<F4>(step->speakerGain);
        allPassStep = load<F4>(step->allPass);
    }
    float* const cabin[4] = {out[0], out[1], out[2], out[3]};
    float* const sub = out[Subwoofer];

    const auto frame = [&](int n) {
        const V4 x = loadPair4<V4>(pairs + 2 * n);
        if constexpr (lowPass)
            low.run(high.out());
        else
            low.pass(high.out());
        high.run(x * as<V4>(gain));
        const V4 apIn = low.out();
        const V4 y = as<V4>(allPass) * (apIn - apY) + apX;
        apX = apIn;
        apY = y;

        subY =
            runSections(__builtin_shufflevector(x * Real(subGain), subY, 0, 1, 4, 5), subC, subIc1, subIc2);
        const Real subSum = subY[2] + subY[3];
        const Real z = Real(subAllPass) * (subSum - subApY) + subApX;
        subApX = subSum;
        subApY = z;
        sub[n] = float(z);
        if constexpr (gliding) {
            high.advance();
            low.advance();
            subC.advance(subD);
            gain += gainStep;
            allPass += allPassStep;
            subGain += step->speakerGain[Subwoofer];
            subAllPass += step->allPass[Subwoofer];
        }
        return as<F4>(y);
    };
    int n = 0;
    for (; n + 4 <= frames; n += 4) {
        // Four frames of four speakers each, turned into four speakers of four frames each.
        const F4 a = frame(n), b = frame(n + 1), c = frame(n + 2), d = frame(n + 3);
        const F4 ab0 = __builtin_shufflevector(a, b, 0, 4, 1, 5),
                 cd0 = __builtin_shufflevector(c, d, 0, 4, 1, 5);
        const F4 ab2 = __builtin_shufflevector(a, b, 2, 6, 3, 7),
                 cd2 = __builtin_shufflevector(c, d, 2, 6, 3, 7);
        store(cabin[0] + n, __builtin_shufflevector(ab0, cd0, 0, 1, 4, 5));
        store(cabin[1] + n, __builtin_shufflevector(ab0, cd0, 2, 3, 6, 7));
        store(cabin[2] + n, __builtin_shufflevector(ab2, cd2, 0, 1, 4, 5));
        store(cabin[3] + n, __builtin_shufflevector(ab2, cd2, 2, 3, 6, 7));
    }
    for (; n < frames; ++n) {
        const F4 a = frame(n);
        for (int i = 0; i < cabinSpeakerCount; ++i)
            cabin[i][n] = a[i];
    }

    high.close(now.highPass, gliding ? step->highPass : nullptr, memory.highPass);
    low.close(now.lowPass, gliding ? step->lowPass : nullptr, memory.lowPass);
    store(memory.subwoofer.ic1, subIc1);
    store(memory.subwoofer.ic2, subIc2);
    store(memory.subwoofer.y, subY);
    store(memory.allPassX, apX);
    store(memory.allPassY, apY);
    memory.allPassX[Subwoofer] = subApX;
    memory.allPassY[Subwoofer] = subApY;
    if constexpr (gliding) {
        subC.storeTo(&now.subwoofer[0][0], 4);
        store(now.speakerGain, gain);
        store(now.allPass, allPass);
        now.speakerGain[Subwoofer] = subGain;
        now.allPass[Subwoofer] = subAllPass;
    }
}

template <typename V, typename V4>
void crossover(const RealOf<V>* pairs, float* const out[speakerCount], int frames, Parameters& now,
               const Parameters* step, FilterMemory<RealOf<V>>& memory, bool lowPass)
{
    if (step)
        lowPass ? crossoverPass<V, V4, true, true>(pairs, out, frames, now, step, memory)
                : crossoverPass<V, V4, true, false>(pairs, out, frames, now, step, memory);
    else
        lowPass ? crossoverPass<V, V4, false, true>(pairs, out, frames, now, step, memory)
                : crossoverPass<V, V4, false, false>(pairs, out, frames, now, step, memory);
}

} // namespace
} // namespace hvaudio::dsp
