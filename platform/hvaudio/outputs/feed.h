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

    /// [ANY] The last pull gave silence, and so will the next ones as long as nothing but silence comes in
    /// and the control side doesn't call `Output::wake`.
    virtual bool silent() const noexcept = 0;
    /// [ANY] Nobody but who hears the output would notice if nothing were pulled until `Output::wake`:
    /// nothing is measured, and no prompt's end is waited for.
    virtual bool unobserved() const noexcept = 0;
    /// [CT] Pulls are about to begin, or to go on after a rest.
    virtual void resumed() = 0;
};

} // namespace hvaudio
