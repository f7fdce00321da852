#pragma once

#include "headunit/sound/soundtypes.h"
#include "platform/hvaudio/dsp/snapshot.h"

namespace headunit {

/// What the running processor does to each speaker's part of the programme, as it is asked for at one moment:
/// a value to be kept and compared. Any one thread.
class SpeakerResponses
{
public:
    /// Of no processor: rate 0, every factor 0.
    SpeakerResponses() = default;
    /// rate: of the processor, in Hz.
    SpeakerResponses(const hvaudio::dsp::Snapshot& snapshot, double rate);

    /// In Hz; 0: of no processor.
    double rate() const { return m_rate; }
    /// Output over input at a frequency in Hz (1 = 0 dB), volumes included, limiter left out; 0 at half the
    /// rate and above.
    double factor(Speaker speaker, double hz) const;

    /// The same of the speakers' sum at the seat, see hvaudio::dsp::sumAtSeat.
    double sum(double hz) const;

    /// True when every factor is the same. What the speakers' responses don't show, such as the volumes of
    /// prompts, makes no difference.
    bool operator==(const SpeakerResponses& other) const;

private:
    hvaudio::dsp::Snapshot m_snapshot;
    double m_rate = 0;
};

} // namespace headunit
