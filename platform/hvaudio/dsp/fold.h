#pragma once

#include "platform/hvaudio/dsp/settings.h"

namespace hvaudio::dsp {

/// Share of each speaker in a fold to two. The subwoofer counts twice, as in a cabin whose front and rear
/// pair carry the rest together, so that a crossover stays flat: of sound that both sides have in common each
/// side of the fold gets half of what the cabin passes and half of what the subwoofer does, and the two add
/// up as `crossoverHighPass` says.
constexpr float cabinShare = 0.25f, subwooferShare = 0.5f;

/// [RT] Five speakers to two: left = cabinShare (FL + RL) + subwooferShare SUB, right likewise. The sum of
/// the weights is 1, so that what the limiter keeps below its ceiling stays there without another one. `out`
/// may be the same memory as any input. Null inputs are silence.
void foldToStereo(const float* const in[speakerCount], float* const out[2], int frames) noexcept;

} // namespace hvaudio::dsp
