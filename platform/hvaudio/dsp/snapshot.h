#pragma once

#include "platform/hvaudio/dsp/equalizer.h"
#include "platform/hvaudio/dsp/kernel/kernel.h"
#include "platform/hvaudio/dsp/settings.h"

#include <array>

namespace hvaudio::dsp {

/// Everything that the audio thread needs to know, as one plain copy: the wanted coefficients and gains.
/// Made by `makeSnapshot`, never changed afterwards, published through a `TripleBuffer`.
struct Snapshot
{
    Parameters parameters; ///< all that glides, see kernel.h; bus[0] is without the source gain
    Filters filters;
    std::array<int, speakerCount> delayTap = {}; ///< whole frames; the rest is in the parameters' all-pass
    int source = 0;
    double sourceFactor = 1; ///< kept apart because it changes while the programme is faded out
    bool power = false;
};

/// The running filters as sections. The tests' reference computes with these.
struct ExactSections
{
    std::array<Section, cascadeSections> cascade;
    TwoSections highPass[cabinSpeakerCount], lowPass[cabinSpeakerCount], subwoofer;
    double bus, speakerGain[speakerCount], delayFrames[speakerCount];
};
/// `settings` must be in range (`clampToRange`); `equalizer` is the design for `rate`, in Hz.
ExactSections makeSections(const Settings& settings, const EqualizerDesign& equalizer, double rate);

/// Settings to the audio thread's view of them; same conditions.
Snapshot makeSnapshot(const Settings& settings, const EqualizerDesign& equalizer, double rate);

} // namespace hvaudio::dsp
