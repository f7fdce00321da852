// Text that is to be a microphone's calibration: points in order, or one sentence.
#include "tests/faults/fuzz/fuzz.h"

#include "platform/hvaudio/measure/calibration.h"

#include <algorithm>
#include <cmath>

using namespace hvaudio::measure;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string error;
    const auto points = readCalibration({reinterpret_cast<const char*>(data), size}, error);
    fuzz::require(points.empty() != error.empty(), "points or an error, one of them");
    fuzz::require(error.size() < 120 &&
                      std::all_of(error.begin(), error.end(), [](char c) { return c >= ' ' && c <= '~'; }),
                  "the error is no sentence");
    for (std::size_t i = 0; i < points.size(); ++i) {
        const CalibrationPoint& point = points[i];
        fuzz::require(i == 0 || points[i - 1].hz < point.hz, "the points are out of order");
        fuzz::require(point.hz > 0 && std::abs(point.db) <= 200 && std::isfinite(point.degrees),
                      "a point is out of range");
        const double here = levelAt(points, point.hz), after = levelAt(points, std::nextafter(point.hz, 2e6));
        fuzz::require(std::abs(here - point.db) < 1e-9 && std::abs(after) <= 200, "a level is out of range");
    }
    return 0;
}
