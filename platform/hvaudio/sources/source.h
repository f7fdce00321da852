#pragma once

#include "platform/hvaudio/threads.h"

namespace hvaudio {

/// What plays as one source of the unit.
class Source
{
public:
    virtual ~Source() = default;
    /// [RT] Fills `frames` (above 0) samples of both sides, full scale is 1; `in` is what other programs play
    /// into the unit, null for silence. False, with nothing written, when there is nothing but silence.
    virtual bool render(const float* const in[2], float* left, float* right, int frames) noexcept = 0;
};

} // namespace hvaudio
