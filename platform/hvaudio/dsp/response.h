#pragma once

#include "platform/hvaudio/dsp/snapshot.h"
#include "platform/hvaudio/export.h"

#include <complex>

namespace hvaudio::dsp {

/// Transfer function from the programme input that belongs to the speaker (the subwoofer: both inputs at
/// once) to it, computed from the snapshot's own coefficients; without the limiter and without the latency
/// that all speakers share. hz: above 0 and below half the rate; rate in Hz, the one that the snapshot was
/// made for.
HVAUDIO_EXPORT std::complex<double> responseOf(const Snapshot& snapshot, Speaker speaker, double hz,
                                               double rate);

/// The five speakers' sum at the seat, of sound that both sides have in common: no room, no distances, and
/// each speaker with twice its share of a fold (fold.h), so that a crossover that adds up flat is at 0 dB.
/// Arguments as above.
HVAUDIO_EXPORT std::complex<double> sumAtSeat(const Snapshot& snapshot, double hz, double rate);

} // namespace hvaudio::dsp
