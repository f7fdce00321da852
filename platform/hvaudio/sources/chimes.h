#pragma once

#include "platform/hvaudio/dsp/settings.h"
#include "platform/hvaudio/threads.h"

#include <atomic>
#include <vector>

namespace hvaudio {

/// The chimes of the prompt channels: struck bells, each note a sum of a few decaying sines below 8 kHz (and
/// below 0.4 of the rate), with soft attacks. Peak -12 dBFS. Written into tables beforehand, so playing is
/// copying.
class Chimes
{
public:
    /// [OFF] Falls silent. Rate in Hz, above 0.
    void prepare(double rate);

    /// [CT] From its beginning; one that sounds is faded out first. Lock-free.
    void start(dsp::Prompt which, bool repeated) noexcept;
    /// [CT] Fades it out (20 ms). Lock-free.
    void end(dsp::Prompt which) noexcept;
    /// [ANY] From `start` on until the last sample was rendered.
    bool sounds(dsp::Prompt which) const noexcept;
    /// [CT] Length of one round in seconds; 0 before the first `prepare`.
    double seconds(dsp::Prompt which) const noexcept;

    /// [RT] Fills `out` (mono, `frames` above 0) and returns true; false, and nothing written, when it is
    /// silent.
    bool render(dsp::Prompt which, float* out, int frames) noexcept;

private:
    struct Voice
    {
        std::vector<float> table;
        /// What is wanted, as one word: a number that changes with each wish, and the wish in two bits.
        std::atomic<unsigned> wish{0};
        std::atomic<unsigned> done{0}; ///< the last wish that came to an end
        unsigned seen = 0;
        int at = -1;   ///< next sample of the table; -1 = silent
        int fade = -1; ///< frames left of a fade-out; -1 = none
    };
    void ask(dsp::Prompt which, unsigned wish) noexcept;

    Voice m_voices[dsp::promptCount];
    int m_fadeFrames = 1;
    double m_rate = 0;
};

} // namespace hvaudio
