#pragma once

#include "platform/hvaudio/dsp/design.h"

namespace hvaudio::dsp {

/// Sound pressure in dB at which a tone of `hz` (20..12500, interpolated between the standard's rows) is as
/// loud as 1 kHz at `phon` dB. Formula and table: ISO 226:2003, section 4.1 and table 1.
double equalLoudnessLevel(double hz, double phon);

/// Lift in dB that a tone of `hz` (as above) needs against 1 kHz when the music is turned down to `mainDb` (0
/// or less). At 0 dB the listener is taken to hear 80 phon, so that the lowest volume, -58.8 dB, is at 21
/// phon, just above the 20 phon where the contours begin: the lift grows over the whole knob. Below -60 dB it
/// stays as it is. No frequency's lift grows faster than the volume falls, so nothing ever gets louder on the
/// way down.
double loudnessLift(double hz, double mainDb);

/// The lift as three high shelves and a factor: a bass lift is a cut of all above it and gain, which keeps
/// every section at 0 dB for low frequencies as the inner loop wants it. From 44.1 kHz up the contour is
/// followed within 0.75 dB between 20 Hz and 12.5 kHz at every volume. Lower rates squeeze the treble's
/// shelf, and below 28 kHz it has no room and stays flat; the bass is the same.
struct LoudnessSections
{
    std::array<Section, 3> sections;
    double factor;
};
/// mainDb: any level, above 0 dB as at 0 dB; rate of samples in Hz, 8000 and above.
LoudnessSections designLoudness(double mainDb, double rate);

} // namespace hvaudio::dsp
