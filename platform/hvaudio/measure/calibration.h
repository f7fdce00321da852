#pragma once

#include "platform/hvaudio/export.h"

#include <string>
#include <string_view>
#include <vector>

namespace hvaudio::measure {

/// What a microphone shows where all frequencies are equally loud, or any curve that is written like that.
struct CalibrationPoint
{
    double hz;
    double db;
    double degrees; ///< of phase; 0 where the file says none
};

/// Reads the usual text of a calibration: a line for each point, "frequency dB" or "frequency dB phase", in
/// any order, with blanks, tabs, semicolons or commas between the numbers and a point within them. Lines end
/// with LF, CR LF or CR. What follows `*`, `"` or `#` is a comment.
///
/// Gives the points by rising frequency. Frequencies are 0.001 to 1000000 Hz, each once; levels within 200 dB
/// of 0. For any other text gives none and one sentence in `error` that names the line, as far as there is
/// one.
HVAUDIO_EXPORT std::vector<CalibrationPoint> readCalibration(std::string_view text, std::string& error);

/// The level at a frequency, linear over the logarithm of the frequency between two points; beyond the ends
/// it is the end's. points: one at least, as readCalibration() gives them; hz above 0.
HVAUDIO_EXPORT double levelAt(const std::vector<CalibrationPoint>& points, double hz);

} // namespace hvaudio::measure
