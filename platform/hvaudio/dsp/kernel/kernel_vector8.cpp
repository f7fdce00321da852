// Compiled for AVX-512 on x86-64 and called only where kernelOf() found it. The crossovers are for four
// speakers and stay as wide as that.
#if defined(__AVX512F__) && defined(__AVX512DQ__) && defined(__AVX512VL__)

#include "platform/hvaudio/dsp/kernel/kernel_vector.h"

namespace hvaudio::dsp {

namespace {
const Kernel kernel = {gather,    cascade<D8>,  crossover<D4>,       mix<F16>,
                       copy<F16>, measure<F16>, largestBetween<F16>, applyGain<F16>};
} // namespace
const Kernel* const vector8Kernel = &kernel;

} // namespace hvaudio::dsp

#else

#include "platform/hvaudio/dsp/kernel/kernel.h"

const hvaudio::dsp::Kernel* const hvaudio::dsp::vector8Kernel = nullptr;

#endif
