#pragma once

#include "platform/hvaudio/dsp/kernel/kernel.h"
#include "platform/hvaudio/dsp/kernel/kernel_peaks.h"

#include <cstring>

// The prototype: the formulas of kernel.h one after the other, as loops over the lanes, which the compiler
// puts into vectors where it has any. Everything stands in a nameless namespace: each including file is
// compiled for other instructions, and no function may be shared between them by the linker.

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

/// One frame of all sections in the direct form.
template <int lanes>
void runDirect(const double* __restrict x, const DirectTable<lanes>& __restrict c,
               SectionMemory<lanes>& __restrict m)
{
    for (int i = 0; i < lanes; ++i) {
        const double p = m.first[i], q = m.second[i];
        const double s = x[i] + p;
        m.y[i] = c[E][i] * x[i] + (c[R][i] * p + c[F][i] * q);
        m.first[i] = q + c[A][i] * s;
        m.second[i] = p - c[B][i] * s;
    }
}

/// The same in the state-variable form.
template <int lanes>
void runState(const double* __restrict x, const StateTable<lanes>& __restrict c,
              SectionMemory<lanes>& __restrict m)
{
    for (int i = 0; i < lanes; ++i) {
        const double ic1 = m.first[i], ic2 = m.second[i];
        const double v3 = x[i] - ic2;
        m.y[i] = (c[Q3][i] * ic2 + c[Q2][i] * ic1) + c[Q1][i] * v3;
        m.second[i] = (ic2 + c[B2][i] * ic1) + c[B3][i] * v3;
        m.first[i] = (ic1 - c[C1][i] * ic1) + c[B2][i] * v3;
    }
}

template <int lanes>
void advance(StateTable<lanes>& __restrict c, const StateTable<lanes>& __restrict step)
{
    for (int row = 0; row < 6; ++row)
        for (int i = 0; i < lanes; ++i)
            c[row][i] += step[row][i];
}

/// One frame of the cascade around `run`, which gets the sections' inputs.
template <typename Run>
void cascadeFrame(double* pair, SectionMemory<cascadeLanes>& m, Run run)
{
    double x[cascadeLanes];
    std::memcpy(x, pair, 2 * sizeof(double));
    std::memcpy(x + 2, m.y, sizeof x - 2 * sizeof(double));
    std::memcpy(pair, m.y + cascadeLanes - 2, 2 * sizeof(double));
    run(x);
}

/// One frame of the crossovers likewise, around the high-passes; with `lowPass` false those pass their input
/// on.
template <typename Run>
void crossoverFrame(const double* pair, float* const out[speakerCount], int n, const Parameters& now,
                    FilterMemory& memory, bool lowPass, Run runHigh)
{
    double high[highLanes], low[lowLanes];
    for (int i = 0; i < cabinSpeakerCount; ++i)
        high[i] = pair[i & 1] * now.speakerGain[i];
    std::memcpy(high + 4, memory.high.y, 4 * sizeof(double));
    std::memcpy(low, memory.high.y + 4, 4 * sizeof(double));
    std::memcpy(low + 4, memory.low.y, 4 * sizeof(double));
    low[subwooferLane] = (pair[0] + pair[1]) * now.speakerGain[Subwoofer];
    low[subwooferLane + 1] = memory.low.y[subwooferLane];
    runHigh(high);
    runState<lowLanes>(low, now.low, memory.low);
    if (!lowPass)
        std::memcpy(memory.low.y, low, 8 * sizeof(double));
    for (int i = 0; i < speakerCount; ++i) {
        const double in = memory.low.y[i == Subwoofer ? subwooferLane + 1 : 4 + i];
        const double late = now.allPass[i] * (in - memory.allPassY[i]) + memory.allPassX[i];
        memory.allPassX[i] = in;
        memory.allPassY[i] = late;
        out[i][n] = float(late);
    }
}

void glidingCascade(double* pairs, int frames, Parameters& now, const Parameters& step, FilterMemory& memory)
{
    for (int n = 0; n < frames; ++n)
        cascadeFrame(pairs + 2 * n, memory.cascade, [&](const double* x) {
            runState<cascadeLanes>(x, now.cascade, memory.cascade);
            advance<cascadeLanes>(now.cascade, step.cascade);
        });
}

void glidingCrossover(const double* pairs, float* const out[speakerCount], int frames, Parameters& now,
                      const Parameters& step, FilterMemory& memory)
{
    for (int n = 0; n < frames; ++n) {
        crossoverFrame(pairs + 2 * n, out, n, now, memory, true,
                       [&](const double* x) { runState<highLanes>(x, now.high, memory.high); });
        advance<highLanes>(now.high, step.high);
        advance<lowLanes>(now.low, step.low);
        for (int i = 0; i < speakerCount; ++i) {
            now.speakerGain[i] += step.speakerGain[i];
            now.allPass[i] += step.allPass[i];
        }
    }
}

} // namespace
} // namespace hvaudio::dsp
