#pragma once

#include "headunit/sound/soundtypes.h"

#include <array>
#include <memory>
#include <vector>

namespace headunit {

/// Measures what each speaker does to the programme, from what plays: the averaged cross-spectrum of
/// programme and speaker over the programme's own (J. Bendat, A. Piersol, "Random Data", the estimator H1).
/// The programme is the input that belongs to the speaker, for the subwoofer the mean of both, so the result
/// compares with hvaudio::dsp::responseOf. Any signal will do for the frequencies that are in it; noise and
/// sweeps have them all.
///
/// Pieces of 0.6 s and more, Blackman-Harris window, half overlapping; the mean of the last
/// four seconds. Phase is left out, so delays don't matter. Plain C++; any one thread.
class ResponseMeter
{
public:
    ResponseMeter();
    ~ResponseMeter();

    /// Forgets everything. rate in Hz; latencyFrames: the part of the delay that all speakers share. What
    /// comes in the next tenth of a second is left out: it may stem from before the change that this is
    /// called for.
    void restart(double rate, int latencyFrames);
    /// Takes the next frames; what doesn't follow the ones before is announced by `gap`.
    void add(const HeardFrame* frames, int count);
    /// The frames so far don't join on to the next ones; what they said stays.
    void gap();
    /// Pieces that have been averaged since the restart; the first result needs two.
    int pieces() const;

    struct Curve
    {
        std::vector<double> hz, factors; ///< of the same length
    };
    /// Factors (1 = 0 dB) at about these frequencies, each the mean over a width of `octaves`; the curve says
    /// at which, since low ones fall between the spectrum's bins, and a lone tone is where it is. Those are
    /// left out where the programme has nothing, or 80 dB less than where it has most, or where the speaker
    /// plays something else, such as a chime.
    Curve curve(Speaker speaker, const std::vector<double>& hz, double octaves) const;

private:
    void analyse();

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace headunit
