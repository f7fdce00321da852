#pragma once

#include "platform/hvaudio/dsp/settings.h"

namespace hvaudio::dsp {

/// What goes in and comes out in one call of `Engine::process`. All samples are floats, full scale is 1.0.
/// A pointer that is null stands for silence. An input may be the same memory as an output.
struct Block
{
    const float* programme[2] = {};           ///< left, right
    const float* prompt[promptCount][2] = {}; ///< left, right; only the left one given = mono
    float* out[speakerCount] = {};            ///< null = that speaker isn't wanted
    int frames = 0;                           ///< any number; 0 and below do nothing
};

} // namespace hvaudio::dsp
