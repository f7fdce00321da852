#pragma once

#include "hvaudio/history.h"
#include "hvaudio/settings.h"

namespace hvaudio::dsp {

/// [RT] but for `prepare`: keeps every sample of every speaker at or below the ceiling. It looks ahead, so
/// that the gain is down before the peak leaves; one gain for all speakers keeps the picture in its place.
///
///     largest sample of all speakers -> gain that it needs -> smallest of the window (look-ahead and hold)
///        -> slow way up -> two moving means in a row -> times the speakers, delayed by the look-ahead
///
/// The two means make the gain's way down smooth; as each mean only sees gains that the delayed sample
/// allows, so is their mean, and the last clamp only takes away what rounding may add. Below the ceiling the
/// gain is exactly 1.
class Limiter
{
public:
    /// Just below -0.1 dBFS, which is 0.98855309.
    static constexpr float ceiling = 0.988553f;

    /// [OFF]
    void prepare(double rate);
    void clear() noexcept;
    int latencyFrames() const noexcept { return 2 * mean_ - 2; }

    /// Where the next frames of each speaker are to be written.
    float* const* room() noexcept;
    /// Limits what was written into `room`. `frame` holds for each frame the largest absolute sample of all
    /// speakers, `peak` the largest of all frames for each speaker, which becomes that of what leaves. Null
    /// outputs are skipped. Returns the smallest gain that was used.
    float process(float* const out[speakerCount], int frames, const float* frame,
                  float peak[speakerCount]) noexcept;
    /// True while the gain isn't 1.
    bool working() const noexcept { return working_; }

private:
    float nextGain(float needed) noexcept;

    /// A gain and the frame that needs it.
    struct Need
    {
        long long frame;
        float gain;
    };
    /// A moving mean; the length is a power of two, so a row of ones gives exactly 1.
    struct Mean
    {
        std::vector<float> ring;
        double sum = 0;
        int at = 0;
        void reset(int length);
        float add(float value) noexcept;
    };

    History history_;
    float* room_[speakerCount] = {};
    int mean_ = 64;           ///< frames of each mean
    int window_ = 128;        ///< frames of the smallest-gain window
    float recovery_ = 0;      ///< share of the way to 1 a frame
    std::vector<Need> needs_; ///< ring of the window's needs, rising gains from first_ on
    long long first_ = 0, last_ = 0;
    long long frame_ = 0;
    float slow_ = 1;
    int ones_ = 0; ///< frames for which `slow_` has been 1
    Mean means_[2];
    bool working_ = false;
};

} // namespace hvaudio::dsp
