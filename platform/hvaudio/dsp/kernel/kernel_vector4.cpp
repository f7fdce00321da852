// Compiled for AVX2 and FMA on x86-64 and called only where kernelOf() found both.
#if defined(__AVX2__) && defined(__FMA__)

#include "platform/hvaudio/dsp/kernel/kernel_vector.h"

namespace hvaudio::dsp {

namespace {
typedef float F8 __attribute__((vector_size(32)));
const Kernel kernel = {gather,           cascade<D4>,   glidingCascade,     crossover<D4>,
                       glidingCrossover, largestOf<F8>, largestBetween<F8>, applyGain};
} // namespace
const Kernel* const vector4Kernel = &kernel;

} // namespace hvaudio::dsp

#else

#include "platform/hvaudio/dsp/kernel/kernel.h"

const hvaudio::dsp::Kernel* const hvaudio::dsp::vector4Kernel = nullptr;

#endif
