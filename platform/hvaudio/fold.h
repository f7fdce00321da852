#pragma once

#include "hvaudio/settings.h"

namespace hvaudio::dsp {

/// [RT] Five speakers to two: left = 0.5 (FL + RL) + 0.5 SUB and right likewise, limited to the ceiling that the
/// speakers keep (`Limiter::ceiling`). A front and rear pair that carry the same sound come out as loud as one of
/// them. `out` may be the same memory as any input. Null inputs are silence.
void foldToStereo(const float* const in[speakerCount], float* const out[2], int frames) noexcept;

} // namespace hvaudio::dsp
