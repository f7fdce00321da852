#pragma once

#include "platform/hvaudio/dsp/settings.h"

namespace hvaudio::dsp {

/// [RT] Decides whether the filters run in single or in double precision. All functions are [RT] but
/// `prepare`, which is [OFF].
///
/// Each section of the cascade rounds what it hands on, 150 dB below it in single precision; together that is
/// 120 to 135 dB below the signal, white, and nobody hears it. But a speaker's crossover may take the signal
/// away and leave the rounding: a 20 Hz tone is 48 dB down behind a high-pass of 80 Hz and 24 dB/octave, and
/// what was rounded off at 1 kHz passes whole. No filter can repair that; only what carries the signal up to
/// there can, and double precision costs about twice as much. So energies are compared in front of and behind
/// the crossovers: where a speaker keeps so little of its input that its error could come within 100 dB of
/// it, the filters change over to double precision, and back when all of them have kept enough for a while.
/// Each window counts the same, however loud it is: a quiet tone after loud music is to be clean, too. A
/// speaker that is turned down isn't asked; one that is turned up starts like one after silence.
///
/// The changeover converts the filters' memory, which is exact one way and rounds once the other way: nothing
/// is heard of it. After silence they start in double precision. Decisions fall every `windowFrames` frames
/// of the stream, so that they don't depend on the block size.
class Precision
{
public:
    static constexpr int windowFrames = 1024;

    void prepare(double rate) noexcept;
    /// As after silence.
    void clear() noexcept;

    bool isDouble() const noexcept { return double_; }
    /// Frames that may be processed before the next decision; at least 1.
    int room() const noexcept { return windowFrames - place_; }
    /// Energies (sums of squares) of a piece: left and right in front of the crossovers, and of each speaker
    /// behind its own, where `gain` is the factor that was applied before it.
    void heard(const double in[2], const double out[speakerCount], const float gain[speakerCount]) noexcept;
    /// Moves on by as many frames as `room` allows; decides at a window's end and says whether it was one.
    bool advance(int frames) noexcept;
    /// Moves on by any number of silent frames, after `clear`.
    void pass(int frames) noexcept { place_ = (place_ + frames) % windowFrames; }

private:
    void decide() noexcept;

    struct Energy
    {
        double in = 0, out = 0;
        bool wanted = false; ///< the speaker is turned up
    };
    Energy window_[speakerCount];
    double kept_[speakerCount] = {}; ///< mean of the windows' shares, in units of the least that is enough
    double newest_ = 0.1;            ///< part of the newest window in the mean
    int calmWindows_ = 1;            ///< as many let single precision return
    int calm_ = 0;
    int place_ = 0; ///< in the window
    bool double_ = true;
};

} // namespace hvaudio::dsp
