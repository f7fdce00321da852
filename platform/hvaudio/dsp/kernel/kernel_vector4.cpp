// Compiled for AVX2 and FMA on x86-64 and called only where kernelOf() found both.
#if defined(__AVX2__) && defined(__FMA__)

#include "platform/hvaudio/dsp/kernel/kernel_vector.h"

namespace hvaudio::dsp {

namespace {
const Kernel kernel = {gather,   cascade<D4>, crossover<D4>,      mix<F8>,
                       copy<F8>, measure<F8>, largestBetween<F8>, applyGain<F8>};
} // namespace
const Kernel* const vector4Kernel = &kernel;

} // namespace hvaudio::dsp

#else

#include "platform/hvaudio/dsp/kernel/kernel.h"

const hvaudio::dsp::Kernel* const hvaudio::dsp::vector4Kernel = nullptr;

#endif
