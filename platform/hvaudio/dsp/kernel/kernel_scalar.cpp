#include "platform/hvaudio/dsp/kernel/kernel_plain.h"

namespace hvaudio::dsp {

namespace {

void cascade(double* pairs, int frames, const DirectFilters& filters, FilterMemory& memory)
{
    for (int n = 0; n < frames; ++n)
        cascadeFrame(pairs + 2 * n, memory.cascade,
                     [&](const double* x) { runDirect<cascadeLanes>(x, filters.cascade, memory.cascade); });
}

void crossover(const double* pairs, float* const out[speakerCount], int frames, const DirectFilters& filters,
               const Parameters& now, FilterMemory& memory, bool lowPass)
{
    for (int n = 0; n < frames; ++n)
        crossoverFrame(pairs + 2 * n, out, n, now, memory, lowPass,
                       [&](const double* x) { runDirect<highLanes>(x, filters.high, memory.high); });
}

} // namespace

const Kernel scalarKernel = {gather,   cascade,     glidingCascade,     crossover,    glidingCrossover,
                             copy<F4>, measure<F4>, largestBetween<F4>, applyGain<F4>};

} // namespace hvaudio::dsp
