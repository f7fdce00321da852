#pragma once

#include "platform/hvaudio/export.h"
#include "platform/hvaudio/outputs/feed.h"

#include <string>

namespace hvaudio {

/// Where the sound goes: an object that pulls blocks from a feed. A machine without a sound server is a
/// normal case (nulloutput.h), so is a file (wavoutput.h).
class HVAUDIO_EXPORT Output
{
public:
    virtual ~Output() = default;
    /// [CT] Prepares the feed and begins to pull. The feed must outlive the output or its `stop`. On failure
    /// false and one readable sentence in `error`.
    virtual bool start(Feed& feed, std::string& error) = 0;
    /// [CT] No pull runs when it returns. Calling it twice is harmless.
    virtual void stop() = 0;
    /// [ANY] True while blocks are pulled; an output that waits for its sound server, or that rests, doesn't
    /// pull.
    virtual bool pulling() const = 0;
    /// [CT] The feed has news after it was silent or unobserved: an output that rests pulls again, at least
    /// once. To be called after whatever the next pull is to find.
    virtual void wake() {}
    /// [CT] One short sentence for a status line.
    virtual std::string status() const = 0;
};

} // namespace hvaudio
