#include "platform/hvaudio/dsp/kernel/kernel_paths.h"

// The prototype: the formulas of kernel.h one after the other. The vector paths are tested against it.

namespace hvaudio::dsp {

namespace {

/// One frame of one section. `c` points at the section's lane of row B2, `lanes` floats between rows.
template <typename Real>
Real runSection(Real x, const float* c, int lanes, bool hasQ3, Real& ic1, Real& ic2)
{
    const Real b2 = c[B2 * lanes], b3 = c[B3 * lanes], c1 = c[C1 * lanes];
    const Real q1 = c[Q1 * lanes], q2 = c[Q2 * lanes], q3 = hasQ3 ? c[Q3 * lanes] : 1.0f;
    const Real v3 = x - ic2;
    const Real y = q3 * ic2 + (q1 * v3 + q2 * ic1);
    const Real ahead2 = ic2 + b2 * ic1;
    const Real ahead1 = ic1 - c1 * ic1;
    ic2 = ahead2 + b3 * v3;
    ic1 = ahead1 + b2 * v3;
    return y;
}

void advance(float* row, const float* step, int count)
{
    for (int i = 0; i < count; ++i)
        row[i] += step[i];
}

template <typename Real>
void cascade(Real* pairs, int frames, Parameters& now, const Parameters* step, FilterMemory<Real>& memory)
{
    auto& m = memory.cascade;
    for (int n = 0; n < frames; ++n) {
        // From the last section to the first: each still finds its predecessor's output of the frame before.
        const Real out[2] = {m.y[cascadeLanes - 2], m.y[cascadeLanes - 1]};
        for (int lane = cascadeLanes - 1; lane >= 0; --lane) {
            const Real x = lane < 2 ? pairs[2 * n + lane] : m.y[lane - 2];
            m.y[lane] = runSection(x, &now.cascade[0][lane], cascadeLanes, false, m.ic1[lane], m.ic2[lane]);
        }
        pairs[2 * n] = out[0];
        pairs[2 * n + 1] = out[1];
        if (step)
            advance(&now.cascade[0][0], &step->cascade[0][0], cascadeRows * cascadeLanes);
    }
}

template <typename Real>
void crossover(const Real* pairs, float* const out[speakerCount], int frames, Parameters& now,
               const Parameters* step, FilterMemory<Real>& memory, bool lowPass)
{
    auto& high = memory.highPass;
    auto& low = memory.lowPass;
    auto& sub = memory.subwoofer;
    const auto allPass = [&](int speaker, Real x) {
        const Real y = now.allPass[speaker] * (x - memory.allPassY[speaker]) + memory.allPassX[speaker];
        memory.allPassX[speaker] = x;
        memory.allPassY[speaker] = y;
        return float(y);
    };
    for (int n = 0; n < frames; ++n) {
        const Real left = pairs[2 * n], right = pairs[2 * n + 1];
        for (int i = 0; i < cabinSpeakerCount; ++i) {
            const Real x[4] = {(i & 1 ? right : left) * now.speakerGain[i], high.y[i], high.y[4 + i],
                               low.y[i]};
            for (int section = 0; section < 2; ++section) {
                const int lane = 4 * section + i;
                high.y[lane] =
                    runSection(x[section], &now.highPass[0][lane], 8, true, high.ic1[lane], high.ic2[lane]);
                low.y[lane] = lowPass ? runSection(x[2 + section], &now.lowPass[0][lane], 8, true,
                                                   low.ic1[lane], low.ic2[lane])
                                      : x[2 + section];
            }
            out[i][n] = allPass(i, low.y[4 + i]);
        }
        const Real gain = now.speakerGain[Subwoofer];
        const Real x[4] = {left * gain, right * gain, sub.y[0], sub.y[1]};
        for (int lane = 0; lane < 4; ++lane)
            sub.y[lane] = runSection(x[lane], &now.subwoofer[0][lane], 4, true, sub.ic1[lane], sub.ic2[lane]);
        out[Subwoofer][n] = allPass(Subwoofer, sub.y[2] + sub.y[3]);
        if (step)
            advance(&now.highPass[0][0], &step->highPass[0][0], crossoverRows * (8 + 8 + 4) + 8 + 8);
    }
}

} // namespace

const Kernel scalarKernel = {{cascade<float>, crossover<float>}, {cascade<double>, crossover<double>}};

} // namespace hvaudio::dsp
