#pragma once

#include "platform/hvaudio/dsp/settings.h"

namespace hvaudio::dsp {

/// What the listener could have heard since the last `Engine::takeMeters`.
struct Meters
{
    std::array<float, speakerCount> peak = {}; ///< largest output sample, 0..1
    float gain = 1;                            ///< smallest factor of the limiter, 1 = it didn't work
};

} // namespace hvaudio::dsp
