#pragma once

#include "platform/hvaudio/dsp/block.h"
#include "platform/hvaudio/dsp/kernel/kernel.h"
#include "platform/hvaudio/dsp/meters.h"
#include "platform/hvaudio/dsp/settings.h"
#include "platform/hvaudio/dsp/snapshot.h"
#include "platform/hvaudio/export.h"
#include "platform/hvaudio/threads.h"

#include <complex>
#include <memory>

namespace hvaudio::dsp {

/// The sound processor: stereo programme in, five speakers out.
///
///     programme -> source gain -> volume -> equalizer -> loudness -+-> balance/fader, level, polarity
///                                              prompts, key beep --+        |
///                        limiter <- delay <- crossover <--------------------+
///                           |
///                        FL FR RL RR SUB
///
/// The control side turns `Settings` into a `Snapshot` and publishes it; the audio side picks the newest one
/// up at the start of a block and glides to it. Glides, fades and holds are counted in frames on a grid that
/// starts with the first frame, so the sound doesn't depend on how the stream is cut into blocks.
class HVAUDIO_EXPORT Engine
{
public:
    Engine();
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    /// [OFF] Allocates everything and forgets all sound. Rate in Hz, 8000..192000; false (and nothing
    /// changed) for others. Before the first call the engine gives silence.
    bool prepare(double rate);
    /// [ANY] The rate of the last `prepare` in Hz, 0 before.
    double rate() const noexcept;
    /// [ANY] Frames from an input sample to the same sample at a speaker whose delay is 0.
    int latencyFrames() const noexcept;

    /// [CT] Makes these settings the wanted ones; they are clamped first (see `clampToRange`). Takes well
    /// below a millisecond and never waits for the audio thread.
    void set(const Settings& settings);
    /// [CT] The wanted settings, clamped.
    Settings settings() const;
    /// [CT] The wanted settings as gains and coefficients; of nothing before `prepare` and `set`.
    Snapshot snapshot() const;
    /// [CT] Transfer function at `hz` (above 0, below half the rate) from the input that belongs to the
    /// speaker (the subwoofer: both at once) to it, from the wanted coefficients, volumes and delays
    /// included, the limiter and `latencyFrames` left out.
    std::complex<double> response(Speaker speaker, double hz) const;
    /// [CT] Sounds the key beep; lock-free. Beeps that come while one sounds start it anew.
    void beep() noexcept;
    /// [OFF] Jumps to the wanted settings without any glide or fade and forgets all sound.
    void settle();

    /// [RT] Any block size.
    void process(const Block& block) noexcept;
    /// [RT] The same without prompts.
    void process(const float* const in[2], float* const out[speakerCount], int frames) noexcept;

    /// [ANY] The source that the programme input is to carry from the next block on: a change of
    /// `Settings::source` fades the old one out first, then this changes, then the new one fades in.
    int audibleSource() const noexcept;
    /// [ANY] True when nothing sounds and nothing rings any more: an output may be closed without a click.
    bool idle() const noexcept;
    /// [CT] One reader at a time: the meters, which start anew.
    Meters takeMeters() noexcept;

    /// [OFF] Which instructions do the work; by default the fastest that this processor has. A path that it
    /// doesn't have is refused with false.
    bool setPath(Path path);
    /// [ANY] The instructions that do the work.
    Path path() const noexcept;

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace hvaudio::dsp
