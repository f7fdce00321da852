#pragma once

#include "platform/hvaudio/dsp/settings.h"

namespace hvaudio {

/// What was heard at one moment, for measuring: see `Player::listen`. Full scale is 1.
struct HeardFrame
{
    float programme[2]; ///< what went into the engine
    float speaker[dsp::speakerCount];
};

} // namespace hvaudio
