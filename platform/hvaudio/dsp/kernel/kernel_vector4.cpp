#if defined(__SSE2__) || defined(__ARM_NEON)

#include "platform/hvaudio/dsp/kernel/kernel_vector.h"

namespace hvaudio::dsp {

namespace {
const Kernel kernel = {{cascade<F4>, crossover<F4, F4>}, {cascade<D2>, crossover<D4, D4>}};
}
const Kernel* const vector4Kernel = &kernel;

} // namespace hvaudio::dsp

#else

#include "platform/hvaudio/dsp/kernel/kernel_paths.h"

const hvaudio::dsp::Kernel* const hvaudio::dsp::vector4Kernel = nullptr;

#endif
