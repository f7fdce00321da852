#include "platform/hvaudio/dsp/equalizer.h"

#include <algorithm>
#include <cmath>

namespace hvaudio::dsp {

namespace {

/// No section goes beyond this, whatever is asked: it keeps the arithmetic finite.
constexpr double gainLimitDb = 40;
constexpr int maxSteps = 40;
constexpr double goodEnoughDb = 1e-3;

/// Section response in dB at squared distance x2 for gain u, and its slope against u.
struct Value
{
    double db, slope;
};

Value peakingDb(double gainDb, double q, double x2)
{
    // |H|^2 = (x2 + A^2 / Q^2) / (x2 + 1 / (A Q)^2), A = 10^(gain / 40)
    const double a2 = std::pow(10.0, gainDb / 20);
    const double q2 = q * q;
    const double above = a2 / q2, below = 1 / (a2 * q2);
    // d(10 log10 .) / d gain, with d(a2) / d gain = a2 ln(10) / 20
    return {10 * std::log10((x2 + above) / (x2 + below)),
            0.5 * (above / (x2 + above) + below / (x2 + below))};
}

/// Solves the n x n system in place by elimination with row exchange; the solution is left in `b`.
void solveLinear(double (&m)[bandCount][bandCount], double (&b)[bandCount], int n)
{
    for (int c = 0; c < n; ++c) {
        int pivot = c;
        for (int r = c + 1; r < n; ++r)
            if (std::abs(m[r][c]) > std::abs(m[pivot][c]))
                pivot = r;
        std::swap(m[c], m[pivot]);
        std::swap(b[c], b[pivot]);
        for (int r = c + 1; r < n; ++r) {
            const double f = m[r][c] / m[c][c];
            for (int k = c; k < n; ++k)
                m[r][k] -= f * m[c][k];
            b[r] -= f * b[c];
        }
    }
    for (int r = n - 1; r >= 0; --r) {
        for (int k = r + 1; k < n; ++k)
            b[r] -= m[r][k] * b[k];
        b[r] /= m[r][r];
    }
}

} // namespace

EqualizerDesign::EqualizerDesign(double rate)
    : m_rate(rate)
    , m_used(0)
{
    while (m_used < bandCount && bandHz[m_used] < 0.46 * rate)
        ++m_used;
    std::array<double, bandCount> w{};
    for (int i = 0; i < bandCount; ++i)
        w[i] = prewarp(bandHz[i], rate);
    for (int i = 0; i < bandCount; ++i) {
        // Bandwidth in octaves of the prewarped axis, between the gain's half points, from the distance to
        // the neighbours. Where the distances differ, as at 8 kHz, the nearer one counts more, or the closer
        // pair could not be told apart. Broad sections (2 would let them meet half way) leave less of a dent
        // between bands that are lifted together, 2 dB for +10, and cost gain where neighbours disagree, at
        // most 25 dB.
        constexpr double breadth = 2.8;
        const double below = i > 0 ? std::log2(w[i] / w[i - 1]) : std::log2(w[1] / w[0]);
        const double above = i + 1 < m_used ? std::log2(w[i + 1] / w[i]) : below;
        const double octaves = breadth / (1 / std::max(below, 0.05) + 1 / std::max(above, 0.05));
        m_q[i] = 1 / (2 * std::sinh(0.5 * std::log(2.0) * octaves));
        for (int j = 0; j < bandCount; ++j) {
            const double ratio = w[j] / w[i];
            m_distance[i][j] = (ratio - 1 / ratio) * (ratio - 1 / ratio);
        }
    }
}

double EqualizerDesign::chainDb(const std::array<double, bandCount>& gainDb, int band) const
{
    double sum = 0;
    for (int i = 0; i < m_used; ++i)
        sum += peakingDb(gainDb[i], m_q[i], m_distance[i][band]).db;
    return sum;
}

std::array<double, bandCount> EqualizerDesign::solveGains(const std::array<double, bandCount>& wantedDb,
                                                          int* steps) const
{
    std::array<double, bandCount> gain = wantedDb;
    std::fill(gain.begin() + m_used, gain.end(), 0.0);
    int step = 0;
    for (; step < maxSteps; ++step) {
        double slopes[bandCount][bandCount], error[bandCount];
        double worst = 0;
        for (int j = 0; j < m_used; ++j) {
            error[j] = wantedDb[j];
            for (int i = 0; i < m_used; ++i) {
                const Value v = peakingDb(gain[i], m_q[i], m_distance[i][j]);
                error[j] -= v.db;
                slopes[j][i] = v.slope;
            }
            worst = std::max(worst, std::abs(error[j]));
        }
        if (worst < goodEnoughDb)
            break;
        solveLinear(slopes, error, m_used);
        for (int i = 0; i < m_used; ++i)
            // A step is held short of where the slopes stop describing the curve.
            gain[i] = std::clamp(gain[i] + std::clamp(error[i], -12.0, 12.0), -gainLimitDb, gainLimitDb);
    }
    if (steps)
        *steps = step;
    return gain;
}

std::array<Section, bandCount> EqualizerDesign::solve(const std::array<double, bandCount>& wantedDb) const
{
    const std::array<double, bandCount> gain = solveGains(wantedDb);
    std::array<Section, bandCount> sections;
    for (int i = 0; i < bandCount; ++i)
        sections[i] = peaking(bandHz[i], m_q[i], gain[i], m_rate);
    return sections;
}

} // namespace hvaudio::dsp
