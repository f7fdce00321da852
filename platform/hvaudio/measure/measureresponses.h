#pragma once

#include "platform/hvaudio/dsp/settings.h"
#include "platform/hvaudio/export.h"

#include <array>
#include <vector>

namespace hvaudio::dsp {

/// What each speaker does to a sine of each of its `hz`, as a factor, measured: an impulse runs through an
/// engine of its own that stands at these settings, and its answer is transformed. Both inputs get the
/// impulse, as in `Engine::response`. Takes a few hundred milliseconds for a hundred frequencies; not for the
/// audio thread. Rate in Hz; all 0 for one that the engine refuses. Frequencies are above 0 and below half
/// the rate.
using OfEachSpeaker = std::array<std::vector<double>, speakerCount>;
HVAUDIO_EXPORT OfEachSpeaker measureResponses(const Settings& settings, double rate, const OfEachSpeaker& hz);

} // namespace hvaudio::dsp
