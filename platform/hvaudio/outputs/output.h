#pragma once

#include "platform/hvaudio/dsp/settings.h"
#include "platform/hvaudio/threads.h"

#include <functional>
#include <string>

/// Where the sound goes: an output is an object that pulls blocks from a feed. A machine without a sound
/// server is a normal case, so is a file (pacedoutput.h).
namespace hvaudio {

enum class LogLevel {
    Info,
    Warning,
};
/// Takes one readable line without line end. Called from control threads, several at once included, never
/// from the audio thread.
using Log = std::function<void(LogLevel, const std::string&)>;

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

class Output
{
public:
    virtual ~Output() = default;
    /// [CT] Prepares the feed and begins to pull. The feed must outlive the output or its `stop`. On failure
    /// false and one readable sentence in `error`.
    virtual bool start(Feed& feed, std::string& error) = 0;
    /// [CT] No pull runs when it returns. Calling it twice is harmless.
    virtual void stop() = 0;
    /// [ANY] True while blocks are pulled; an output that waits for its sound server doesn't pull.
    virtual bool pulling() const = 0;
    /// [CT] One short sentence for a status line.
    virtual std::string status() const = 0;
};

} // namespace hvaudio
