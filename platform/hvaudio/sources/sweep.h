#pragma once

#include "platform/hvaudio/sources/source.h"

#include <memory>

namespace hvaudio {

/// Rate in Hz. Logarithmic sweep from 20 Hz to 20 kHz (0.45 of the rate where that is less) in 10 s after A.
/// Farina, "Simultaneous measurement of impulse response and distortion with a swept-sine technique", 2000;
/// the same on both sides, -20 dBFS peak, with soft ends, repeated.
std::unique_ptr<Source> makeSweep(double rate);

} // namespace hvaudio
