#pragma once

#include "platform/hvaudio/dsp/fade.h"
#include "platform/hvaudio/dsp/history.h"
#include "platform/hvaudio/dsp/settings.h"

namespace hvaudio::dsp {

/// [RT] but for `prepare`: the whole-frame part of the speakers' delays. A changed delay fades from one tap
/// to the other on a smooth curve over about 40 ms; one that changes again meanwhile waits for the fade's end
/// and then fades to the newest wish.
class DelayLine
{
public:
    /// [OFF] Longest tap in frames; the rate, in Hz, gives the fade's length.
    void prepare(double rate, int longestTap);
    /// [OFF]
    void setKernel(const Kernel* kernel) { m_kernel = kernel; }
    /// Forgets the sound.
    void clear() noexcept;
    /// Wanted tap, 0 .. the longest one.
    void aim(int speaker, int tap) noexcept;
    /// Takes the wanted taps without a fade.
    void jump() noexcept;
    /// At a grid point: starts or moves on the fades. True while any is under way.
    bool advanceGrid() noexcept;

    /// Where the next frames of each speaker are to be written.
    float* const* inputs() noexcept;
    /// Reads the frames just written into `inputs`, delayed, to `out`, which may not be the same memory;
    /// notes each speaker's largest absolute sample in `peak`. `offset` is the place of the first frame after
    /// the last grid point; while a fade is under way the piece may not go beyond the next one. Then makes
    /// them the past.
    void read(float* const out[speakerCount], int frames, int offset, float peak[speakerCount]) noexcept;

private:
    struct Tap
    {
        int now = 0, next = 0, wanted = 0;
        Fade fade;
    };
    const Kernel* m_kernel = kernelOf(bestPath());
    History m_history;
    Tap m_taps[speakerCount];
    float* m_inputs[speakerCount] = {};
};

} // namespace hvaudio::dsp
