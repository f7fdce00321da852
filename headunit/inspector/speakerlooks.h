#pragma once

#include "headunit/sound/soundtypes.h"

#include <QRgb>

namespace headunit {

struct SpeakerLook
{
    Speaker speaker;
    const char* name; ///< the inspector speaks English
    QRgb colour;
};

// clang-format off
constexpr SpeakerLook speakerLooks[] = {
    {FrontLeft,  "Front left",  0xff4fc3f7},
    {FrontRight, "Front right", 0xffffb74d},
    {RearLeft,   "Rear left",   0xff81c784},
    {RearRight,  "Rear right",  0xfff06292},
    {Subwoofer,  "Subwoofer",   0xffba9df5},
};
// clang-format on
static_assert(std::size(speakerLooks) == speakerCount && speakerLooks[Subwoofer].speaker == Subwoofer,
              "one row a speaker");

} // namespace headunit
