#pragma once

#include "platform/hvaudio/dsp/settings.h"
#include "platform/hvaudio/threads.h"

namespace hvaudio {

/// What an output pulls from.
class Feed
{
public:
    virtual ~Feed() = default;
    /// [OFF] Before the first `pull`, and again whenever the rate has changed. Rate in Hz; false when the
    /// feed can't work at it.
    virtual bool prepare(double rate) = 0;
    /// [ANY] Frames from an input sample to the same sample at the speakers.
    virtual int latencyFrames() const noexcept = 0;
    /// [RT] Fills `frames` samples of each speaker in the order of `dsp::Speaker`; a null pointer isn't
    /// wanted. `in` is what other programs play into the unit, left and right; null pointers are silence. Any
    /// number of frames.
    virtual void pull(const float* const in[2], float* const out[dsp::speakerCount], int frames) noexcept = 0;
};

} // namespace hvaudio
