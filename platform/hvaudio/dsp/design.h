#pragma once

#include "platform/hvaudio/dsp/settings.h"

#include <array>
#include <complex>

/// Coefficient design: pure functions. Frequencies and rates (of samples) are in Hz; a frequency is brought
/// into 1 Hz .. 0.49 rate, quality factors and rates must be above 0, and everything must be finite.
namespace hvaudio::dsp {

/// One second-order section as its analogue prototype: (hp s^2 + bp s + lp) / (s^2 + k s + 1), with s counted
/// in units of g = tan(pi f / rate), the prewarped frequency.
struct Section
{
    double g = 0.01;
    double k = 2;
    double hp = 1, bp = 2, lp = 1; ///< hp = 1, bp = k, lp = 1 passes everything
};

/// The section in the form that the inner loop runs (kernel.h).
struct Coefficients
{
    double b2, b3, c1, q1, q2, q3;
};
Coefficients coefficientsOf(const Section& section);

/// Transfer function at `hz`; the second from coefficients, which may have been rounded.
std::complex<double> responseOf(const Section& section, double hz, double rate);
std::complex<double> responseOf(const Coefficients& coefficients, double hz, double rate);

/// tan(pi hz / rate).
double prewarp(double hz, double rate);

/// Peaking section of R. Bristow-Johnson's "Cookbook formulae for audio EQ biquad filter coefficients".
Section peaking(double hz, double q, double gainDb, double rate);
/// High shelf of the same source; 0 dB at 0 Hz, `gainDb` at the top, half of it (in dB) at hz.
Section highShelf(double hz, double q, double gainDb, double rate);

/// A crossover's filter of order 1 to 4 (others count as the nearest) as two sections; the second passes
/// everything for orders 1 and 2. Odd orders are Butterworth, -3.01 dB at the corner. Even ones are the
/// Butterworth filter of half the order twice, -6.02 dB at the corner (S. Linkwitz, "Active Crossover
/// Networks for Noncoincident Drivers", 1976): a high-pass and a low-pass of equal corner and order add up to
/// an all-pass, so to a flat sum. At order 2 one of the two must be turned round for that.
using TwoSections = std::array<Section, 2>;
TwoSections crossoverHighPass(double hz, int order, double rate);
TwoSections crossoverLowPass(double hz, int order, double rate);
/// Sections that pass everything but keep the memory of a filter at 80 Hz running, from which one that is
/// switched on goes on.
TwoSections passThrough(double rate);

/// What the side that the control points away from keeps: 1 at the centre and on the near side, falling along
/// cos to silence. `away` is up to 1, the far end.
double farSideFactor(double away);
/// Balance and fader, -1..1 as in `Settings`, for one cabin speaker.
double fieldFactor(Speaker speaker, double balance, double fader);
/// 10^(db / 20); 0 for `silentDb`.
double factorOfDb(double db);
/// 20 log10(factor); factors below 1e-12 count as that.
double dbOfFactor(double factor);

/// A delay in frames as a whole tap and the coefficient a of the all-pass (a + z^-1) / (1 + a z^-1) that
/// supplies the rest (Laakso et al., "Splitting the unit delay", 1996: Thiran, first order). The all-pass
/// itself always takes one frame of the constant latency, so a fraction of 0 gives a = 0 and is exact; its
/// magnitude is 1 everywhere and each tone's delay (phase delay) is within 0.01 ms of the wish up to 16 kHz
/// at 44.1 kHz.
struct DelayParts
{
    int tap;
    double allPass;
};
/// frames: any finite number; one below 0 counts as 0.
DelayParts splitDelay(double frames);

} // namespace hvaudio::dsp
