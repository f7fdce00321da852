#pragma once

#include "platform/hvaudio/dsp/design.h"

namespace hvaudio::dsp {

/// The thirteen peaking sections, with gains solved so that the whole cascade's response at the thirteen
/// centres is what was asked for; alone, each section would lift its neighbours too. Newton's method on the
/// chain itself, in tens of microseconds. Centres above 0.46 rate have no section: the rate can't carry them.
class EqualizerDesign
{
public:
    /// Works out bandwidths for this rate of samples, in Hz, 8000 and above.
    explicit EqualizerDesign(double rate);

    /// Wanted dB at the centres to sections. Any finite wish within +-20 dB is met within 0.05 dB.
    std::array<Section, bandCount> solve(const std::array<double, bandCount>& wantedDb) const;
    /// The section gains in dB behind `solve`; `steps`, if given, gets the number of Newton steps.
    std::array<double, bandCount> solveGains(const std::array<double, bandCount>& wantedDb,
                                             int* steps = nullptr) const;
    /// dB of the cascade at centre `band` (0..12) when the sections have these gains.
    double chainDb(const std::array<double, bandCount>& gainDb, int band) const;

    /// Quality factor of a band 0..12.
    double q(int band) const { return m_q[band]; }
    /// Bands that this rate carries: the first so many.
    int usedBands() const { return m_used; }

private:
    double m_rate;
    int m_used;
    std::array<double, bandCount> m_q;
    /// Squared distance (w/w0 - w0/w)^2 of centre j from section i on the prewarped axis.
    std::array<std::array<double, bandCount>, bandCount> m_distance;
};

} // namespace hvaudio::dsp
