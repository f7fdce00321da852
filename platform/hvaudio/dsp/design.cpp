#include "platform/hvaudio/dsp/design.h"

#include <algorithm>
#include <cmath>

namespace hvaudio::dsp {

namespace {

constexpr double pi = 3.14159265358979323846;

/// Output mix of a high-pass or low-pass section; k is set by the caller.
Section firstOrder(double g, bool high)
{
    // (s + 1)^2 below, one of the two factors again above: what remains is the first-order filter.
    return high ? Section{g, 2, 1, 1, 0} : Section{g, 2, 0, 1, 1};
}

Section secondOrder(double g, double q, bool high)
{
    return high ? Section{g, 1 / q, 1, 0, 0} : Section{g, 1 / q, 0, 0, 1};
}

TwoSections crossover(double hz, int order, double rate, bool high)
{
    const double g = prewarp(hz, rate);
    const Section pass{g, 2, 1, 2, 1};
    switch (std::clamp(order, 1, 4)) {
    case 1:
        return {firstOrder(g, high), pass};
    case 2: // of first order twice
        return {secondOrder(g, 0.5, high), pass};
    case 3:
        return {firstOrder(g, high), secondOrder(g, 1, high)};
    default: // of second order twice
        return {secondOrder(g, std::sqrt(0.5), high), secondOrder(g, std::sqrt(0.5), high)};
    }
}

} // namespace

Coefficients coefficientsOf(const Section& s)
{
    const double a1 = 1 / (1 + s.g * (s.g + s.k));
    const double a2 = s.g * a1;
    const double a3 = s.g * a2;
    return {2 * a2,
            2 * a3,
            2 * s.g * (s.g + s.k) * a1,
            s.hp * a1 + s.bp * a2 + s.lp * a3,
            -s.hp * (s.g + s.k) * a1 + s.bp * a1 + s.lp * a2,
            s.lp};
}

std::complex<double> responseOf(const Section& s, double hz, double rate)
{
    const std::complex<double> p(0, std::tan(pi * std::min(hz / rate, 0.499999)) / s.g);
    return (s.hp * p * p + s.bp * p + s.lp) / (p * p + s.k * p + 1.0);
}

std::complex<double> responseOf(const Coefficients& c, double hz, double rate)
{
    // State space of the inner loop: memory' = M memory + B x, y = C memory + D x.
    const std::complex<double> z = std::polar(1.0, 2 * pi * hz / rate);
    const double m11 = 1 - c.c1, m12 = -c.b2, m21 = c.b2, m22 = 1 - c.b3;
    const std::complex<double> det = (z - m11) * (z - m22) - m12 * m21;
    if (std::abs(det) < 1e-300)
        return c.q1;
    const std::complex<double> s1 = ((z - m22) * c.b2 + m12 * c.b3) / det;
    const std::complex<double> s2 = (m21 * c.b2 + (z - m11) * c.b3) / det;
    return c.q2 * s1 + (c.q3 - c.q1) * s2 + c.q1;
}

double prewarp(double hz, double rate)
{
    return std::tan(pi * std::clamp(hz, 1.0, 0.49 * rate) / rate);
}

Section peaking(double hz, double q, double gainDb, double rate)
{
    const double a = std::pow(10.0, gainDb / 40);
    return {prewarp(hz, rate), 1 / (q * a), 1, a / q, 1};
}

Section highShelf(double hz, double q, double gainDb, double rate)
{
    // The cookbook's shelf has s^2 + k s + A below; counting s in units of sqrt(A) brings it to the section's
    // form.
    const double a = std::pow(10.0, gainDb / 40);
    return {prewarp(hz, rate) * std::sqrt(a), 1 / q, a * a, a / q, 1};
}

TwoSections crossoverHighPass(double hz, int order, double rate)
{
    return crossover(hz, order, rate, true);
}

TwoSections crossoverLowPass(double hz, int order, double rate)
{
    return crossover(hz, order, rate, false);
}

TwoSections passThrough(double rate)
{
    const Section pass{prewarp(80, rate), 2, 1, 2, 1};
    return {pass, pass};
}

double farSideFactor(double away)
{
    if (away <= 0)
        return 1;
    return away >= 1 ? 0.0 : std::cos(pi / 2 * away);
}

double fieldFactor(Speaker speaker, double balance, double fader)
{
    const bool left = speaker == FrontLeft || speaker == RearLeft;
    const bool front = speaker == FrontLeft || speaker == FrontRight;
    return farSideFactor(left ? balance : -balance) * farSideFactor(front ? -fader : fader);
}

double factorOfDb(double db)
{
    return std::pow(10.0, db / 20);
}

double dbOfFactor(double factor)
{
    return 20 * std::log10(std::max(factor, 1e-12));
}

DelayParts splitDelay(double frames)
{
    // The all-pass' own delay is 0.5..1.5 frames, 1 of which every speaker has.
    const double wanted = std::max(frames, 0.0) + 1;
    const int tap = int(std::floor(wanted - 0.5));
    const double rest = wanted - tap;
    return {tap, (1 - rest) / (1 + rest)};
}

} // namespace hvaudio::dsp
