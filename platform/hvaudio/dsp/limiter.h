#pragma once

#include "platform/hvaudio/dsp/glide.h"
#include "platform/hvaudio/dsp/history.h"
#include "platform/hvaudio/dsp/settings.h"

namespace hvaudio::dsp {

/// [RT] but for `prepare`: keeps every sample of every speaker at or below the ceiling. It looks ahead, so
/// that the gain is down before the peak leaves; one gain for all speakers keeps the picture in its place.
///
///     largest sample of all speakers in a cell -> gain that it needs -> smallest of the window (look-ahead
///        and hold) -> slow way up -> mean of means -> straight line to the next cell
///        -> times the speakers, delayed by the look-ahead
///
/// A cell lies between two points of the chain's grid (glide.h); all but the last step is done once a cell. A
/// need is known when its cell is complete, so it counts from the next cell on, and the sound is late enough
/// that the mean and the line then only see gains that the cell allows; the last clamp only takes away what
/// rounding may add. Below the ceiling the gain is exactly 1.
class Limiter
{
public:
    /// Just below -0.1 dBFS, which is 0.98855309.
    static constexpr float ceiling = 0.988553f;

    /// [OFF] Rate of samples in Hz.
    void prepare(double rate);
    void clear() noexcept;
    int latencyFrames() const noexcept { return 2 * mean_ * gridFrames; }

    /// Where the next frames of each speaker are to be written.
    float* const* room() noexcept;
    /// Limits what was written into `room`, from `offset` frames behind a grid point on. `frame` holds for
    /// each frame the largest absolute sample of all speakers, `peak` the largest of all frames for each
    /// speaker; while it works, that becomes the largest of what leaves. Null outputs are skipped. Returns
    /// the smallest gain that was used.
    float process(float* const out[speakerCount], int frames, int offset, const float* frame,
                  float peak[speakerCount]) noexcept;
    /// True while the gain isn't 1.
    bool working() const noexcept { return working_; }

private:
    void nextCell() noexcept;
    float fillGain(float* gain, int frames, int offset, const float* frame) noexcept;

    /// A gain and the cell that needs it.
    struct Need
    {
        long long cell;
        float gain;
    };

    History history_;
    float* room_[speakerCount] = {};
    int mean_ = 4;            ///< cells of each of the two means
    int window_ = 38;         ///< cells of the smallest-gain window
    float recovery_ = 0;      ///< share of the way to 1 a cell
    std::vector<Need> needs_; ///< ring of the window's needs, rising gains from first_ on
    long long first_ = 0, last_ = 0;
    long long cell_ = 0;
    float largest_ = 0;          ///< sample of the cell so far
    std::vector<float> slow_;    ///< gains of the last cells, newest last, as many as the weights
    std::vector<float> weights_; ///< of the mean of means: a triangle
    float from_ = 1, to_ = 1;    ///< the line's gains at both ends of the cell
    int ones_ = 0;               ///< cells for which the slow gain has been 1
    bool working_ = false;
};

} // namespace hvaudio::dsp
