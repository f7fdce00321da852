#pragma once

namespace hvaudio {

/// A rise from 0 to 1 without a kink at either end, for fades: x in 0..1.
inline float smoothStep(float x) noexcept
{
    return x * x * (3 - 2 * x);
}

} // namespace hvaudio
