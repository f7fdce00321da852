#pragma once

#include "platform/hvaudio/dsp/block.h"
#include "platform/hvaudio/dsp/delayline.h"
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
    void prepare(double rate);
    void setKernel(const Kernel* kernel)
    {
        kernel_ = kernel;
        limiter_.setKernel(kernel);
    }
    int latencyFrames() const noexcept;

    /// The newest wishes; taken up at the next grid point.
    void aim(const Snapshot& snapshot) noexcept;
    /// Starts the key beep at the next grid point.
    void beep() noexcept { beepWanted_ = true; }
    /// Jumps to the newest wishes and forgets all sound.
    void settle() noexcept;
    /// Runs the block; `meters` is raised where the block goes beyond it.
    void process(const Block& block, Meters& meters) noexcept;

    int audibleSource() const noexcept { return source_.audible(); }
    bool idle() const noexcept { return idle_; }

private:
    void advanceGrid() noexcept;
    bool switchingOff() const noexcept;
    void takeSnapshot() noexcept;
    void jumpUnheard() noexcept;
    bool silentInput(const Block& block, int start, int frames) const noexcept;
    void endWindow() noexcept;
    void processPiece(const Block& block, int start, int frames, Meters& meters) noexcept;
    /// Everything in front of the delays.
    void filterPiece(const Block& block, int start, int frames) noexcept;
    void clearSound() noexcept;

    const Kernel* kernel_ = kernelOf(bestPath());
    Snapshot newest_, wanted_; ///< as it came; as the glides aim at it
    bool snapshotWaiting_ = false, beepWanted_ = false;

    /// The filters' running parameters, and the way to the next grid point while `left_` of them are to come.
    Parameters now_, first_, next_, step_;
    GlideLaw law_;
    int left_ = 0;
    bool gliding_ = false; ///< between these two grid points
    bool lowPass_ = false;
    bool deaf_ = true; ///< every speaker's gain is 0 and stays there: the input can't be heard

    FilterMemory memory_{}; ///< in state form while `gliding_`, in direct form else
    SourceSwitch source_;
    Ducker ducker_;
    Beeper beeper_;
    DelayLine delay_;
    Limiter limiter_;

    /// Factors of the programme and the prompts between the last grid point and the next.
    Line bus_[1 + promptCount];
    bool moving_ = false; ///< anything but the sound: pieces end at the next grid point
    int offset_ = 0;      ///< frames since the last grid point
    bool idle_ = true;
    int window_ = 0;    ///< frames of the present window
    bool loud_ = false; ///< anything has gone in or come out in it
    int quiet_ = 0;     ///< frames of the windows since then
    int ringOut_ = 0;   ///< as many make the chain idle
};

} // namespace hvaudio::dsp
