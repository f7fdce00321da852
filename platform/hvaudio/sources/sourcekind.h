#pragma once

namespace hvaudio {

/// Ids of sources are 0 .. sourceIds - 1; those of the audio service fit.
constexpr int sourceIds = 32;

/// What stands in for a source of the unit.
enum class SourceKind {
    Silence,
    File,      ///< a sound file, repeated for ever
    PinkNoise, ///< -20 dBFS RMS, both sides independent
    Sweep,     ///< logarithmic, 20 Hz to 20 kHz in 10 s, repeated, -20 dBFS peak
    Input,     ///< what other programs play into the unit
};

} // namespace hvaudio
