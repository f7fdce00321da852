#pragma once

#include "platform/hvaudio/sources/source.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace hvaudio {

/// A sound file as `FileSource` plays it, opened and read by threads of its own: a medium that doesn't answer
/// holds up nobody but this source, which is silent then. Its threads sleep while nobody plays it.
class BackgroundFile final : public Source
{
public:
    enum class Opening {
        UnderWay,
        Done,
        Failed, ///< the source is silent for good
    };
    using Clock = std::chrono::steady_clock;

    /// [CT] Begins to open the file; rate in Hz, above 0. One that isn't open after `limit` has failed.
    /// `report` gets a sentence, on a thread of this object, when it fails after `opened` has been left.
    BackgroundFile(const std::string& path, double rate, std::function<void(const std::string&)> report,
                   Clock::duration limit = std::chrono::seconds(5));
    /// [CT] Waits for its threads, but no more than half a second for a medium that doesn't answer.
    ~BackgroundFile() override;

    /// [CT] To be asked once, by who made it. Waits up to `patience`. Failed: why is in `error`.
    Opening opened(Clock::duration patience, std::string& error);
    /// [ANY]
    bool hasFailed() const noexcept;

    /// [CT] Reads on for a while: it is, or may soon be, played. To be called when blocks begin to be pulled
    /// and when another source is chosen; while it is played it goes on by itself.
    void wake();

    bool render(const float* const in[2], float* left, float* right, int frames) noexcept override;

private:
    struct Shared;
    const std::shared_ptr<Shared> m_shared; ///< with its threads, one of which may outlive this object
};

} // namespace hvaudio
