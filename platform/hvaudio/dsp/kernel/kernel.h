#pragma once

#include "platform/hvaudio/dsp/settings.h"

#include <cstddef>

namespace hvaudio::dsp {

/// The inner loop: filter memory, coefficients in single precision, and the functions that run over samples,
/// one set for each instruction set. Coefficients are designed elsewhere (design.h), in double.
///
/// Samples and memory come in single and in double precision; which one runs is decided while it runs
/// (precision.h). Coefficients stay single in both: their rounding bends a response by a ten-thousandth of a
/// decibel and adds no noise.
///
/// All filters are second-order state-variable sections (trapezoidal integrators; A. Simper, "Solving the
/// continuous SVF equations using trapezoidal integration and equivalent currents", Cytomic 2013), written in
/// the form that changes its memory by small amounts, whose coefficients single precision holds well at 32
/// Hz:
///
///     v3   = x - ic2
///     y    = q3 * ic2 + q1 * v3 + q2 * ic1
///     ic2' = (ic2 + b2 * ic1) + b3 * v3    added in this order: the parentheses don't wait for v3, which is
///     the ic1' = (ic1 - c1 * ic1) + b2 * v3    longest way from one frame to the next
///
/// With trapezoidal integrators the memory's energy never grows, whatever the coefficients; that property is
/// convex, so gliding linearly between two sets of coefficients is stable too.
///
/// A cascade computed section by section waits for each result. Here every section takes the previous frame's
/// output of the section before it, so that all sections of a frame are independent and share a vector; each
/// section costs one frame of latency instead.

/// Sections of the stereo cascade: the equalizer's bands, two bass shelves and a treble shelf for loudness.
constexpr int cascadeSections = bandCount + 3;
/// Lane 2 * section + channel.
constexpr int cascadeLanes = 2 * cascadeSections;
/// Frames from the cascade's input to its output, and through the cabin speakers' crossover.
constexpr int cascadeLatency = cascadeSections;
constexpr int crossoverLatency = 3;
/// The subwoofer's path has two sections less than the others.
constexpr int subwooferLead = 2;

/// Rows of a coefficient table, in the order of the formulas above.
enum CoefficientRow { B2, B3, C1, Q1, Q2, Q3 };
constexpr int cascadeRows = 5; ///< all sections of the cascade have q3 = 1
constexpr int crossoverRows = 6;

/// Everything that glides, as one flat row of floats in the order in which the vectors read it.
struct alignas(64) Parameters
{
    float cascade[cascadeRows][cascadeLanes] = {};
    float highPass[crossoverRows][8] = {};  ///< lane: 4 * section + cabin speaker
    float lowPass[crossoverRows][8] = {};   ///< likewise
    float subwoofer[crossoverRows][4] = {}; ///< lane: 2 * section + channel, summed behind the filter
    float speakerGain[8] = {};              ///< balance, fader, level, polarity, power; order of `Speaker`
    float allPass[8] = {}; ///< first-order all-pass of the delay's fraction; order of `Speaker`
    float bus[8] = {};     ///< factor of the programme, then of the prompts in order of `Prompt`

    float* data() { return &cascade[0][0]; }
    const float* data() const { return &cascade[0][0]; }
};
constexpr int parameterCount = int(sizeof(Parameters) / sizeof(float));
static_assert(parameterCount == cascadeRows * cascadeLanes + crossoverRows * (8 + 8 + 4) + 8 + 8 + 8,
              "no padding: the glide runs over the flat row");

/// Filter memory, lanes as in `Parameters`; `y` is the output of the previous frame.
template <typename Real>
struct alignas(64) FilterMemory
{
    struct Cascade
    {
        Real ic1[cascadeLanes], ic2[cascadeLanes], y[cascadeLanes];
    } cascade;
    struct Eight
    {
        Real ic1[8], ic2[8], y[8];
    } highPass, lowPass;
    struct Four
    {
        Real ic1[4], ic2[4], y[4];
    } subwoofer;
    Real allPassX[8], allPassY[8];

    static constexpr int count = 3 * (cascadeLanes + 8 + 8 + 4) + 8 + 8;
    Real* data() { return cascade.ic1; }
    const Real* data() const { return cascade.ic1; }
    /// What the other precision remembers.
    template <typename Other>
    void take(const FilterMemory<Other>& other)
    {
        for (int i = 0; i < count; ++i)
            data()[i] = Real(other.data()[i]);
    }
};
static_assert(sizeof(FilterMemory<double>) / sizeof(double) - FilterMemory<double>::count < 8 &&
                  offsetof(FilterMemory<double>, allPassY) ==
                      (FilterMemory<double>::count - 8) * sizeof(double),
              "no padding but at the end: it is taken over as a flat row");

/// Instruction sets.
enum class Path {
    Scalar,  ///< plain loops: the readable prototype, and the only path of machines without the others
    Vector4, ///< four lanes: SSE2 on x86-64, NEON on ARM
    Vector8, ///< eight lanes: AVX2 and FMA
};

/// The functions of one path in one precision. All are [RT] and advance `now` by `step` each frame when
/// `step` is given.
template <typename Real>
struct Loops
{
    /// Runs the cascade over interleaved left/right pairs in place.
    void (*cascade)(Real* pairs, int frames, Parameters& now, const Parameters* step,
                    FilterMemory<Real>& memory);
    /// Pairs to the five speakers: gain, crossover, all-pass; each output is contiguous. With `lowPass` false
    /// the low-pass sections pass their input on, as late as they would otherwise.
    void (*crossover)(const Real* pairs, float* const out[speakerCount], int frames, Parameters& now,
                      const Parameters* step, FilterMemory<Real>& memory, bool lowPass);
};

struct Kernel
{
    Loops<float> inSingle;
    Loops<double> inDouble;

    template <typename Real>
    const Loops<Real>& in() const
    {
        if constexpr (sizeof(Real) == sizeof(float))
            return inSingle;
        else
            return inDouble;
    }
};

/// Null when this processor can't run the path.
const Kernel* kernelOf(Path path) noexcept;
/// The fastest path that this processor can run.
Path bestPath() noexcept;

} // namespace hvaudio::dsp
