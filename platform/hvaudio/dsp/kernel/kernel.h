#pragma once

#include "platform/hvaudio/dsp/glide.h"
#include "platform/hvaudio/dsp/samples.h"
#include "platform/hvaudio/dsp/settings.h"

#include <cstddef>
#include <cstring>

namespace hvaudio::dsp {

/// The inner loop: filter memory, coefficients, and the functions that run over samples, one set for each
/// instruction set. Coefficients are designed elsewhere (design.h). Everything is double: what a section of a
/// bass filter rounds comes out again a hundred thousand times larger, and a crossover may take the signal
/// away and leave what the others rounded.
///
/// All filters are second-order state-variable sections (trapezoidal integrators; A. Simper, "Solving the
/// continuous SVF equations using trapezoidal integration and equivalent currents", Cytomic 2013):
///
///     v3   = x - ic2
///     y    = q3 * ic2 + q2 * ic1 + q1 * v3
///     ic2' = ic2 + b2 * ic1 + b3 * v3
///     ic1' = ic1 - c1 * ic1 + b2 * v3
///
/// The cascade and the high-passes run in a direct form of the same sections, with g = b3 / b2 (the prewarped
/// frequency), p = ic1 / g - ic2 and q = -ic1 / g - ic2:
///
///     s  = x + p
///     y  = e * x + r * p + f * q
///     p' = q + a * s
///     q' = p - b * s
///
/// It takes less arithmetic: half for a peaking section, whose y is x + r * s. The low-passes stay as they
/// are: what a direct form rounds is measured by what goes in, and of that they may keep a millionth.
///
/// Changed filters fade in beside the ones that sound. A direct form's memory means nothing at another
/// frequency, that of the integrators does: as g is never 0 the memory goes from either form to the other
/// whatever the coefficients are, and the new filters go on from what the others remember.
///
/// A cascade computed section by section waits for each result. Here every section takes the previous frame's
/// output of the section before it, so that all sections of a frame are independent and share a vector; each
/// section costs one frame of latency instead.

/// Sections of the stereo cascade: the equalizer's bands, two bass shelves and a treble shelf for loudness.
constexpr int cascadeSections = bandCount + 3;
/// Lane 2 * section + channel.
constexpr int cascadeLanes = 2 * cascadeSections;
/// The sections are taken in groups of four; each group's last may be a shelf, the others are peaking.
constexpr int cascadeGroup = 4;
static_assert(cascadeSections == 4 * cascadeGroup && cascadeSections - bandCount == 3,
              "three of four groups end in a shelf");
/// Place in the cascade of a band (0..12) or a shelf (13..15).
constexpr int cascadePlace(int section)
{
    if (section >= bandCount)
        return 2 * cascadeGroup - 1 + cascadeGroup * (section - bandCount);
    return section < 7 ? section : section + (section - 4) / 3;
}
/// The crossovers' sections, high-pass and low-pass: lane 4 * section + speaker for the cabin; behind the
/// low-passes the subwoofer's two.
constexpr int highLanes = 8, subwooferLane = 8, lowLanes = 10;
/// Frames from the cascade's input to its output, and through the cabin speakers' crossover.
constexpr int cascadeLatency = cascadeSections;
constexpr int crossoverLatency = 3;
/// The subwoofer's path has two sections less than the others.
constexpr int subwooferLead = 2;

/// Rows of a table of coefficients, in the order of the formulas above.
enum StateRow { Q3, Q1, Q2, B2, B3, C1 };
enum DirectRow { E, R, F, A, B };
template <int lanes>
using StateTable = double[6][lanes];
template <int lanes>
using DirectTable = double[5][lanes];

/// The filters of one setting, in both forms where they have two.
struct alignas(64) Filters
{
    StateTable<cascadeLanes> cascade = {};
    StateTable<highLanes> high = {};
    StateTable<lowLanes> low = {};
    DirectTable<cascadeLanes> directCascade = {};
    DirectTable<highLanes> directHigh = {};
    bool lowPass = false; ///< else the cabin's low-passes only pass their input on

    bool operator==(const Filters& other) const noexcept
    {
        return std::memcmp(this, &other, offsetof(Filters, lowPass)) == 0 && lowPass == other.lowPass;
    }
};

/// Everything that glides, as one flat row of numbers.
struct Parameters
{
    double speakerGain[8] = {}; ///< balance, fader, level, polarity, power; order of `Speaker`
    double allPass[8] = {};     ///< first-order all-pass of the delay's fraction; order of `Speaker`
    double bus[8] = {};         ///< factor of the programme, then of the prompts in order of `Prompt`

    double* data() { return speakerGain; }
    const double* data() const { return speakerGain; }
};
constexpr int parameterCount = sizeof(Parameters) / sizeof(double);

/// Parameters on straight lines from the last grid point on, as `Line` is one.
struct Lines
{
    const Parameters& from;
    const Parameters* step = nullptr; ///< null: they stay
    int start = 0;
};

/// Filter memory, lanes as in `Filters`.
template <int lanes>
struct SectionMemory
{
    double first[lanes], second[lanes]; ///< ic1 and ic2, or p and q
    double y[lanes];                    ///< the output of the previous frame
};
struct alignas(64) FilterMemory
{
    SectionMemory<cascadeLanes> cascade;
    SectionMemory<highLanes> high;
    SectionMemory<lowLanes> low;
    double allPassX[8], allPassY[8];
};
/// [RT] Changes the form of the memory of the filters that have both.
void toStateForm(FilterMemory& memory, const Filters& filters) noexcept;
void toDirectForm(FilterMemory& memory, const Filters& filters) noexcept;

/// What the limiter measures in one go.
constexpr int cellFrames = 16;
static_assert(gridFrames % cellFrames == 0, "a cell begins at every grid point");

/// Instruction sets.
enum class Path {
    Scalar,  ///< plain loops: the readable prototype, and the only path of machines without the others
    Vector2, ///< two lanes: SSE2 on x86-64, NEON on 64-bit ARM
    Vector4, ///< four lanes: AVX2 and FMA
    Vector8, ///< eight lanes: AVX-512
};
constexpr Path allPaths[] = {Path::Scalar, Path::Vector2, Path::Vector4, Path::Vector8}; ///< slowest first

/// The functions of one path. All are [RT].
struct Kernel
{
    /// Cleaned left/right times a factor, interleaved. A null input is silence.
    void (*gather)(const float* left, const float* right, Line factor, double* pairs, int frames);
    /// Runs the cascade over interleaved left/right pairs in place.
    void (*cascade)(double* pairs, int frames, const Filters& filters, FilterMemory& memory);
    /// Pairs to the five speakers: gain, crossover, all-pass; each output is contiguous.
    void (*crossover)(const double* pairs, float* const out[speakerCount], int frames, const Filters& filters,
                      Lines levels, FilterMemory& memory);
    /// The way from `before` to `after` by a share on a straight line, counted as in `Line`; `to` may be
    /// either.
    void (*mix)(const float* before, const float* after, float share, float step, int start, float* to,
                int frames);
    /// Copies, and returns the largest absolute sample.
    float (*copy)(const float* from, float* to, int frames);
    /// For each speaker's cell of `cellFrames` frames the largest absolute sample of those between which
    /// `largestBetween` looks, and a bound of what that finds. `bend` keeps the largest second differences
    /// from cell to cell. Reads six frames before the cell.
    void (*measure)(const float* const cell[speakerCount], float bend[speakerCount], float top[speakerCount],
                    float most[speakerCount]);
    /// Largest of what lies between samples, six frames late (it reads eleven frames before the cell).
    float (*largestBetween)(const float* cell);
    /// Times the gain, held at the ceiling; returns the largest absolute sample.
    float (*applyGain)(const float* from, const float* gain, float* to, int frames, float ceiling);
};

/// One in each file kernel_*.cpp; null where the machine that was built for has no such instructions.
extern const Kernel scalarKernel;
extern const Kernel* const vector2Kernel;
extern const Kernel* const vector4Kernel;
extern const Kernel* const vector8Kernel;

/// Null when this processor can't run the path.
const Kernel* kernelOf(Path path) noexcept;
/// The fastest path that this processor can run.
Path bestPath() noexcept;

} // namespace hvaudio::dsp
