#pragma once

namespace hvaudio::dsp {

/// A factor on a straight line from the last grid point on. `start` is the place of a piece's first frame
/// after it: counted so, a factor doesn't depend on where pieces end.
struct Line
{
    float from = 1, step = 0;
    int start = 0;
    float at(int frame) const { return from + step * float(start + frame); }
};

/// [RT] What may be put into a filter: a sample that is not a number or not finite is 0, and one beyond 64
/// times full scale (36 dB) is held there, so that nothing that comes in can spoil the filters' memory.
float cleaned(float sample) noexcept;

/// [RT] Cleaned left/right times a factor, interleaved. A null input is silence. `Real`: float or double.
template <typename Real>
void gatherPairs(const float* left, const float* right, Line factor, Real* pairs, int frames) noexcept;
/// [RT] Adds likewise and returns the largest absolute sample behind the factor.
template <typename Real>
float addPairs(const float* left, const float* right, Line factor, Real* pairs, int frames) noexcept;
/// [RT] Sums of the squares of left and right.
struct PairEnergy
{
    double side[2];
};
template <typename Real>
PairEnergy energyOfPairs(const Real* pairs, int frames) noexcept;
/// [RT] Sum of the squares.
double energyOf(const float* signal, int frames) noexcept;
/// [RT] True when every sample is 0; a null signal is.
bool allZero(const float* signal, int frames) noexcept;

} // namespace hvaudio::dsp
