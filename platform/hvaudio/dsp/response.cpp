#include "platform/hvaudio/dsp/response.h"

#include "platform/hvaudio/dsp/fold.h"

namespace hvaudio::dsp {

namespace {

template <int lanes>
std::complex<double> laneResponse(const StateTable<lanes>& c, int lane, double hz, double rate)
{
    return responseOf(
        Coefficients{c[B2][lane], c[B3][lane], c[C1][lane], c[Q1][lane], c[Q2][lane], c[Q3][lane]}, hz, rate);
}

} // namespace

std::complex<double> responseOf(const Snapshot& snapshot, Speaker speaker, double hz, double rate)
{
    const Parameters& p = snapshot.parameters;
    const Filters& filters = snapshot.filters;
    // The cascade takes its input a frame later for each section; that part of the phase is common to all
    // speakers and stays out.
    std::complex<double> h = p.bus[0] * snapshot.sourceFactor * p.speakerGain[speaker];
    for (int i = 0; i < cascadeSections; ++i)
        h *= laneResponse(filters.cascade, 2 * i, hz, rate);
    if (speaker == Subwoofer) {
        h *= 2.0; // the gain is that of the mean
        for (int section = 0; section < 2; ++section)
            h *= laneResponse(filters.low, subwooferLane + section, hz, rate);
    } else {
        for (int section = 0; section < 2; ++section)
            h *= laneResponse(filters.high, 4 * section + speaker, hz, rate) *
                 laneResponse(filters.low, 4 * section + speaker, hz, rate);
    }
    const std::complex<double> zInverse = std::polar(1.0, -2 * 3.14159265358979323846 * hz / rate);
    const double a = p.allPass[speaker];
    // The all-pass without the one frame that every speaker has.
    h *= (a + zInverse) / (1.0 + a * zInverse) / zInverse;
    const int tap = snapshot.delayTap[speaker] - (speaker == Subwoofer ? subwooferLead : 0);
    return h * std::pow(zInverse, tap);
}

std::complex<double> sumAtSeat(const Snapshot& snapshot, double hz, double rate)
{
    std::complex<double> sum = 2.0 * double(subwooferShare) * responseOf(snapshot, Subwoofer, hz, rate);
    for (int i = 0; i < cabinSpeakerCount; ++i)
        sum += double(cabinShare) * responseOf(snapshot, Speaker(i), hz, rate);
    return sum;
}

} // namespace hvaudio::dsp
