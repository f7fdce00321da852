#pragma once

#include "platform/hvaudio/dsp/block.h"
#include "platform/hvaudio/dsp/delayline.h"
#include "platform/hvaudio/dsp/fade.h"
#include "platform/hvaudio/dsp/limiter.h"
#include "platform/hvaudio/dsp/meters.h"
#include "platform/hvaudio/dsp/mixing.h"
#include "platform/hvaudio/dsp/snapshot.h"

namespace hvaudio::dsp {

/// The audio side of the engine: what runs on the audio thread and nothing else. `prepare`, `settle` and
/// `setKernel` are [OFF], the rest is [RT].
class Chain
{
public:
    /// rate: Hz.
    void prepare(double rate);
    /// kernel: never null.
    void setKernel(const Kernel* kernel)
    {
        m_kernel = kernel;
        m_delay.setKernel(kernel);
        m_limiter.setKernel(kernel);
    }
    /// As Engine::latencyFrames.
    int latencyFrames() const noexcept;

    /// The newest wishes; taken up at the next grid point.
    void aim(const Snapshot& snapshot) noexcept;
    /// Starts the key beep at the next grid point.
    void beep() noexcept { m_beepWanted = true; }
    /// Jumps to the newest wishes and forgets all sound.
    void settle() noexcept;
    /// Runs the block; `meters` is raised where the block goes beyond it.
    void process(const Block& block, Meters& meters) noexcept;

    // As in Engine.
    int audibleSource() const noexcept { return m_source.audible(); }
    bool idle() const noexcept { return m_idle; }

private:
    void advanceGrid() noexcept;
    bool switchingOff() const noexcept;
    void takeSnapshot() noexcept;
    void changeFilters() noexcept;
    void jumpUnheard() noexcept;
    bool silentInput(const Block& block, int start, int frames) const noexcept;
    void endWindow() noexcept;
    void processPiece(const Block& block, int start, int frames, Meters& meters) noexcept;
    /// Everything in front of the delays.
    void filterPiece(const Block& block, int start, int frames) noexcept;
    void clearSound() noexcept;

    const Kernel* m_kernel = kernelOf(bestPath());
    Snapshot m_newest, m_wanted; ///< as it came; as the glides aim at it
    bool m_snapshotWaiting = false, m_beepWanted = false;

    /// The running parameters, and the way to the next grid point while `m_left` of them are to come.
    Parameters m_now, m_first, m_next, m_step;
    GlideLaw m_law;
    int m_left = 0;
    bool m_gliding = false; ///< between these two grid points
    bool m_deaf = true;     ///< every speaker's gain is 0 and stays there: the input can't be heard

    /// The filters that sound, and those that fade in; newer ones wait for the fade's end.
    struct Running
    {
        Filters filters;
        FilterMemory memory;
    };
    Running m_running, m_incoming;
    Fade m_fade;
    bool m_filtersWaiting = false;

    SourceSwitch m_source;
    Ducker m_ducker;
    Beeper m_beeper;
    DelayLine m_delay;
    Limiter m_limiter;

    /// Factors of the programme and the prompts between the last grid point and the next.
    Line m_bus[1 + promptCount];
    bool m_moving = false; ///< anything but the sound: pieces end at the next grid point
    int m_offset = 0;      ///< frames since the last grid point
    bool m_idle = true;
    int m_window = 0;    ///< frames of the present window
    bool m_loud = false; ///< anything has gone in or come out in it
    int m_quiet = 0;     ///< frames of the windows since then
    int m_ringOut = 0;   ///< as many make the chain idle
};

} // namespace hvaudio::dsp
