#pragma once

/// The limiter's detector of what lies between samples, as numbers.
namespace hvaudio::dsp::detector {

/// The detector's filters: what lies a quarter and half of the way between two samples, by a sinc under a
/// Kaiser window (beta 4) of 12 samples; three quarters of the way is a quarter backwards. Up to 0.375 of the
/// rate they are right within 0.07 dB, where the standard's own example of such filters is within 0.24 dB.
constexpr int taps = 12;
// clang-format off
constexpr float quarter[taps] = {
    -0.004689601f,  0.013215159f, -0.028639637f,  0.055971889f,
    -0.110747606f,  0.292089887f,  0.897619942f, -0.166945734f,
     0.077881933f, -0.040290107f,  0.019848306f, -0.008275233f};
constexpr float half[taps / 2] = { // and the same backwards
    -0.008953532f,  0.023044449f, -0.048153154f,
     0.093256388f, -0.190222875f,  0.629019364f};
// clang-format on

/// The most that the detector can make of samples up to 1: the sum of the sizes of the filter for the
/// middle, 1.985.
constexpr float detectorGain = [] {
    float sum = 0;
    for (const float tap : half)
        sum += 2 * (tap < 0 ? -tap : tap);
    return sum;
}();
/// 0.05 dB for crests that lie between what the detector sees.
constexpr float margin = 1.006f;
/// No answer of the detector is more than so many times the largest sample that it sees.
constexpr float mostBetween = detectorGain * margin * 1.0001f;

/// What the detector finds between two samples is no more than the larger of these and `perBend` times the
/// largest second difference x[n-1] - 2 x[n] + x[n+1] of what it sees: either filter is a straight line
/// between the two, not quite as high, and the rest of it a filter for second differences whose taps' sizes
/// add up to 0.34809 (half) and 0.25447 (quarter).
constexpr float perBend = 0.3482f;

} // namespace hvaudio::dsp::detector
