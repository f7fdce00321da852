// Compiled for AVX2 and FMA on x86-64 and called only where kernelOf() found both.
#if defined(__AVX2__) && defined(__FMA__)

#include "platform/hvaudio/dsp/kernel/kernel_vector.h"

namespace hvaudio::dsp {

namespace {
const Kernel kernel = {{cascade<F8>, crossover<F8, F4>}, {cascade<D4>, crossover<D4, D4>}};
}
const Kernel* const vector8Kernel = &kernel;

} // namespace hvaudio::dsp

#else

#include "platform/hvaudio/dsp/kernel/kernel_paths.h"

const hvaudio::dsp::Kernel* const hvaudio::dsp::vector8Kernel = nullptr;

#endif
