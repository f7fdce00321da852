#include "platform/hvaudio/dsp/kernel/kernel_common.h"

namespace hvaudio::dsp {

namespace {

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

void cascade(double* pairs, int frames, const Filters& filters, FilterMemory& memory)
{
    SectionMemory<cascadeLanes>& m = memory.cascade;
    for (double* pair = pairs; pair < pairs + 2 * frames; pair += 2) {
        double x[cascadeLanes];
        std::memcpy(x, pair, 2 * sizeof(double));
        std::memcpy(x + 2, m.y, sizeof x - 2 * sizeof(double));
        std::memcpy(pair, m.y + cascadeLanes - 2, 2 * sizeof(double));
        runDirect<cascadeLanes>(x, filters.directCascade, m);
    }
}

void crossover(const double* pairs, float* const out[speakerCount], int frames, const Filters& filters,
               Lines levels, FilterMemory& memory)
{
    const Parameters still, &step = levels.step ? *levels.step : still;
    for (int n = 0; n < frames; ++n) {
        const double* pair = pairs + 2 * n;
        const auto on = [&](const double* from, const double* by, int i) {
            return from[i] + by[i] * (levels.start + n);
        };
        double high[highLanes], low[lowLanes], gain[speakerCount];
        for (int i = 0; i < speakerCount; ++i)
            gain[i] = on(levels.from.speakerGain, step.speakerGain, i);
        for (int i = 0; i < cabinSpeakerCount; ++i)
            high[i] = pair[i & 1] * gain[i];
        std::memcpy(high + 4, memory.high.y, 4 * sizeof(double));
        std::memcpy(low, memory.high.y + 4, 4 * sizeof(double));
        std::memcpy(low + 4, memory.low.y, 4 * sizeof(double));
        low[subwooferLane] = (pair[0] + pair[1]) * gain[Subwoofer];
        low[subwooferLane + 1] = memory.low.y[subwooferLane];
        runDirect<highLanes>(high, filters.directHigh, memory.high);
        runState<lowLanes>(low, filters.low, memory.low);
        if (!filters.lowPass)
            std::memcpy(memory.low.y, low, 8 * sizeof(double));
        for (int i = 0; i < speakerCount; ++i) {
            const double in = memory.low.y[i == Subwoofer ? subwooferLane + 1 : 4 + i];
            const double late =
                on(levels.from.allPass, step.allPass, i) * (in - memory.allPassY[i]) + memory.allPassX[i];
            memory.allPassX[i] = in;
            memory.allPassY[i] = late;
            out[i][n] = float(late);
        }
    }
}

} // namespace

const Kernel scalarKernel = {gather,   cascade,     crossover,          mix<F4>,
                             copy<F4>, measure<F4>, largestBetween<F4>, applyGain<F4>};

} // namespace hvaudio::dsp
