#pragma once

#include "platform/hvaudio/dsp/glide.h"
#include "platform/hvaudio/dsp/history.h"
#include "platform/hvaudio/dsp/kernel/kernel.h"
#include "platform/hvaudio/dsp/settings.h"

#include <vector>

namespace hvaudio::dsp {

/// [RT] but for `prepare`: one gain for several speakers, so that the picture stands still, that follows what
/// they need.
///
///     gain that a cell needs -> smallest of the window (look-ahead and hold) -> slow way up -> mean of means
///        -> straight line to the next cell
///
/// A cell is `cellFrames` long. A need is known when its cell is complete, so it counts from the next cell
/// on, and the sound is late enough that the mean and the line then only see gains that the cell allows.
///
/// Each need is held for a quarter longer than the time from one crest of what limits to the next, 10 to 32
/// ms, and the way up takes 15 times as long (time constant): a steady tone from 20 Hz up is held by its own
/// crests and keeps its shape, while after something short the sound is back soon.
class LimiterGain
{
public:
    /// [OFF] `lookAhead`: cells that the sound comes later than its needs.
    void prepare(double rate, int lookAhead);
    /// Forgets the sound: the gain is 1.
    void clear() noexcept;
    /// At a cell's beginning: takes up what the cell before it needs, 1 or less, and aims at its gain for the
    /// next one's.
    void nextCell(float needed) noexcept;
    /// The gain at or below which all that this cell brings is kept by what came before it.
    float held() const noexcept;
    /// The gains of the cell's `cellFrames` frames.
    void line(float* gains) const noexcept;
    /// True while the gain isn't 1.
    bool working() const noexcept { return m_working; }

private:
    void followCrests(float needed) noexcept;

    /// A gain and the cell that needs it.
    struct Need
    {
        long long cell;
        float gain;
    };
    int m_lookAhead = 8;
    int m_shortestHold = 30, m_longestHold = 96; ///< cells
    float m_forgetting = 0;                      ///< share of the crests' distance a cell
    std::vector<Need> m_needs;                   ///< ring of the window's needs, rising gains from m_first on
    long long m_first = 0, m_last = 0, m_cell = 0;
    float m_before = 1, m_now = 1; ///< needs of the last two cells
    int m_sinceCrest = 0;          ///< cells
    float m_crests = 0;            ///< cells from crest to crest, forgotten slowly
    float m_slow = 1;              ///< gain before the means
    /// Rings of what the two means see, and their sums; in double these are exact, so a row of ones gives
    /// exactly 1.
    std::vector<double> m_slows, m_sums;
    double m_sum = 0, m_sumOfSums = 0;
    std::size_t m_place = 0;
    double m_share = 1;         ///< of one gain in the mean of means
    float m_from = 1, m_to = 1; ///< the line's gains at both ends of the cell
    int m_ones = 0;             ///< cells for which the slow gain has been 1
    bool m_working = false;
};

/// [RT] but for `prepare`: keeps every sample of every speaker at or below the ceiling, and what a converter
/// makes of them between the samples, as far as a four times oversampled detector sees it (ITU-R BS.1770-4,
/// annex 2). It looks ahead, so that the gain is down before the peak leaves; the last
/// clamp only takes away what rounding may add. What stays 0.05 dB below the ceiling has a gain of exactly 1.
///
/// The cabin's speakers share one gain, the subwoofer has its own: an overdriven bass leaves the rest alone.
/// A fold to two (fold.h) stays at or below the ceiling with them, since its weights add up to 1.
class Limiter
{
public:
    /// Just below -0.1 dBFS, which is 0.98855309.
    static constexpr float ceiling = 0.988553f;

    /// [OFF] Rate of samples in Hz.
    void prepare(double rate);
    /// [OFF]
    void setKernel(const Kernel* kernel) { m_kernel = kernel; }
    /// Forgets the sound: both gains are 1.
    void clear() noexcept;
    /// Of the usual rates at most 3.1 ms from 44.1 kHz up, 3.5 ms from 11.025 kHz up, 4.8 ms at 8 kHz.
    int latencyFrames() const noexcept { return m_lookAhead * cellFrames + detectorFrames; }

    /// Where the next frames of each speaker are to be written.
    float* const* inputs() noexcept;
    /// Limits what was written into `inputs`, from `offset` frames behind a cell's beginning on. `peak` holds
    /// each speaker's largest absolute sample of these frames; while it works, that becomes the largest of
    /// what leaves. Null outputs are skipped. Returns the smallest gain that was used.
    float process(float* const out[speakerCount], int frames, int offset, float peak[speakerCount]) noexcept;
    /// True while a gain isn't 1.
    bool working() const noexcept { return m_cabin.working() || m_subwoofer.working(); }

private:
    /// The detector tells of a peak so many frames later.
    static constexpr int detectorFrames = 6;

    void startCell() noexcept;
    void endCell(int end) noexcept;
    template <int count>
    float found(const float* const* cell, const float* top, const float* most,
                const LimiterGain& gain) const noexcept;

    const Kernel* m_kernel = kernelOf(bestPath());
    History m_history;
    float* m_inputs[speakerCount] = {};
    int m_lookAhead = 8; ///< cells
    LimiterGain m_cabin, m_subwoofer;
    float m_cabinTop = 0, m_subwooferTop = 0; ///< what the detector has found in the last cell
    float m_bend[speakerCount] = {};          ///< largest second differences of the last cell
    int m_calm = 0;                           ///< frames since anything might have come near the ceiling
};

} // namespace hvaudio::dsp
