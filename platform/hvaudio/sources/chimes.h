#pragma once

#include "platform/hvaudio/dsp/settings.h"
#include "platform/hvaudio/threads.h"

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

namespace hvaudio {

/// The chimes of the prompt channels: struck bells, each note a sum of a few decaying sines below 8 kHz (and
/// below 0.4 of the rate), with soft attacks. Peak -12 dBFS. Each is written into a table when it is first
/// wanted, by a thread of its own, so playing is copying; until the table is there (some milliseconds) it is
/// silent.
class Chimes
{
public:
    ~Chimes();

    /// [OFF] Falls silent. Rate in Hz, above 0. To be called before all others.
    void prepare(double rate);

    /// [CT] From its beginning; one that sounds is faded out first. Never waits for the audio thread.
    void start(dsp::Prompt which, bool repeated) noexcept;
    /// [CT] Fades it out (20 ms). Lock-free.
    void end(dsp::Prompt which) noexcept;
    /// [ANY] From `start` on until the last sample was rendered.
    bool sounds(dsp::Prompt which) const noexcept;
    /// [ANY] True when one of them does.
    bool anySounds() const noexcept;
    /// [ANY] The table is there.
    bool isMade(dsp::Prompt which) const noexcept
    {
        return m_voices[which].made.load(std::memory_order_acquire);
    }
    /// [CT] Length of one round in seconds; 0 before the first `prepare`.
    double seconds(dsp::Prompt which) const noexcept;

    /// [RT] Fills `out` (mono, `frames` above 0) and returns true; false, and nothing written, when it is
    /// silent.
    bool render(dsp::Prompt which, float* out, int frames) noexcept;

private:
    struct Voice
    {
        std::vector<float> table;
        std::atomic<bool> made{false}; ///< `table` stays as it is from then on
        std::thread maker;
        /// What is wanted, as one word: a number that changes with each wish, and the wish in two bits.
        std::atomic<unsigned> wish{0};
        std::atomic<unsigned> done{0}; ///< the last wish that came to an end
        unsigned seen = 0;
        int at = -1;   ///< next sample of the table; -1 = silent
        int fade = -1; ///< frames left of a fade-out; -1 = none
    };
    void ask(dsp::Prompt which, unsigned wish) noexcept;
    /// Begins to make the table where there is none; false when that can't be.
    bool make(dsp::Prompt which) noexcept;

    std::mutex m_makers;
    Voice m_voices[dsp::promptCount];
    int m_fadeFrames = 1;
    double m_rate = 0;
};

} // namespace hvaudio
