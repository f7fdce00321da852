#pragma once

#include "platform/hvaudio/dsp/settings.h"

namespace hvaudio::dsp {

/// [RT] Five speakers to two: left = 0.25 (FL + RL) + 0.5 SUB, right likewise. The subwoofer counts twice, as
/// in a cabin whose front and rear pair carry the rest together, so that a crossover stays flat; the sum of
/// the weights is 1, so that what the limiter keeps below its ceiling stays there without another one. `out`
/// may be the same memory as any input. Null inputs are silence.
void foldToStereo(const float* const in[speakerCount], float* const out[2], int frames) noexcept;

} // namespace hvaudio::dsp
