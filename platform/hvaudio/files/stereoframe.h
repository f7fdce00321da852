#pragma once

namespace hvaudio {

/// One moment of a stereo signal; full scale is 1.
struct StereoFrame
{
    float left = 0, right = 0;
};

} // namespace hvaudio
