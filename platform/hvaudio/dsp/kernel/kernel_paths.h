#pragma once

#include "platform/hvaudio/dsp/kernel/kernel.h"

namespace hvaudio::dsp {

/// One per source file kernel_*.cpp; null where this build's machine has no such instructions.
extern const Kernel scalarKernel;
extern const Kernel* const vector2Kernel;
extern const Kernel* const vector4Kernel;
extern const Kernel* const vector8Kernel;

} // namespace hvaudio::dsp
