#pragma once

#include "hvaudio/design.h"

namespace hvaudio::dsp {

/// Sound pressure in dB at which a tone of `hz` (20..12500, interpolated between the standard's rows) is as
/// loud as 1 kHz at `phon` dB. Formula and table: ISO 226:2003, section 4.1 and table 1.
double equalLoudnessLevel(double hz, double phon);

/// Lift in dB that a tone needs against 1 kHz when the music is turned down to `mainDb` (0 or less). At 0 dB
/// the listener is taken to hear 80 phon; below 40 phon the cabin's noise masks what more lift would bring
/// back, so the lift stays where it is there.
double loudnessLift(double hz, double mainDb);

/// The lift as three high shelves and a factor: a bass lift is a cut of all above it and gain, which keeps
/// every section at 0 dB for low frequencies as the inner loop wants it. The contour is followed within 0.5
/// dB between 31.5 Hz and 12.5 kHz.
struct LoudnessSections
{
    std::array<Section, 3> sections;
    double factor;
};
LoudnessSections designLoudness(double mainDb, double rate);

} // namespace hvaudio::dsp
