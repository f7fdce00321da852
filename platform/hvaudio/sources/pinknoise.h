#pragma once

#include "platform/hvaudio/sources/source.h"

#include <memory>

namespace hvaudio {

/// Rate in Hz. White noise through pairs of poles and zeros that stand closer than two octaves: -3 dB per
/// octave within 0.3 dB from 20 Hz to 0.4 of the rate, whatever the rate. -20 dBFS RMS, the sides
/// independent; `seed` chooses the noise.
std::unique_ptr<Source> makePinkNoise(double rate, unsigned seed = 1);

} // namespace hvaudio
