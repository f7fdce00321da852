#pragma once

#include "hvaudio/kernel.h"
#include "hvaudio/settings.h"

#include <array>

namespace hvaudio::dsp {

/// Everything that the audio thread needs to know, as one plain copy: the wanted coefficients and gains.
/// Made by `makeSnapshot`, never changed afterwards, published through a `TripleBuffer`.
struct Snapshot
{
    Parameters parameters;                       ///< all that glides, see kernel.h
    std::array<int, speakerCount> delayTap = {}; ///< whole frames; the rest is in the parameters' all-pass
    int source = 0;
    float sourceGain = 1; ///< factor; kept apart because it changes while the programme is faded out
    bool lowPassUsed = false;
};

} // namespace hvaudio::dsp
