// NEON of 32-bit ARM has no double.
#if defined(__SSE2__) || defined(__aarch64__)

#include "platform/hvaudio/dsp/kernel/kernel_vector.h"

namespace hvaudio::dsp {

namespace {
const Kernel kernel = {gather,   cascade<D2>, crossover<D2>,      mix<F4>,
                       copy<F4>, measure<F4>, largestBetween<F4>, applyGain<F4>};
}
const Kernel* const vector2Kernel = &kernel;

} // namespace hvaudio::dsp

#else

#include "platform/hvaudio/dsp/kernel/kernel.h"

const hvaudio::dsp::Kernel* const hvaudio::dsp::vector2Kernel = nullptr;

#endif
