#pragma once

#include "tests/platform/hvaudio/dsp/sound.h"

#include "platform/hvaudio/dsp/design.h"
#include "platform/hvaudio/dsp/snapshot.h"

namespace sound {

/// As exact as the machine has it.
using Exact = long double;

/// One section as a direct-form biquad: the plain thing that the processor's is measured against.
class ReferenceBiquad
{
public:
    explicit ReferenceBiquad(const Section& s)
    {
        const Exact g = s.g, a0 = 1 + s.k * g + g * g;
        m_b0 = (s.hp + s.bp * g + s.lp * g * g) / a0;
        m_b1 = 2 * (s.lp * g * g - s.hp) / a0;
        m_b2 = (s.hp - s.bp * g + s.lp * g * g) / a0;
        m_a1 = 2 * (g * g - 1) / a0;
        m_a2 = (1 - s.k * g + g * g) / a0;
    }
    Exact run(Exact x)
    {
        const Exact y = m_b0 * x + m_m1;
        m_m1 = m_b1 * x - m_a1 * y + m_m2;
        m_m2 = m_b2 * x - m_a2 * y;
        return y;
    }

private:
    Exact m_b0, m_b1, m_b2, m_a1, m_a2, m_m1 = 0, m_m2 = 0;
};

/// The whole chain without the limiter and without the constant latency, one sample at a time.
inline std::array<std::vector<Exact>, speakerCount> playReference(const Settings& settings, double rate,
                                                                  const Signal& left, const Signal& right)
{
    const ExactSections exact = makeSections(settings, EqualizerDesign(rate), rate);
    const Exact gain = Exact(exact.bus) * factorOfDb(settings.sourceDb);
    const auto throughCascade = [&](const Signal& in) {
        std::vector<ReferenceBiquad> cascade(exact.cascade.begin(), exact.cascade.end());
        std::vector<Exact> out(in.begin(), in.end());
        for (Exact& y : out) {
            y *= gain;
            for (ReferenceBiquad& section : cascade)
                y = section.run(y);
        }
        return out;
    };
    const std::vector<Exact> first = throughCascade(left);
    const std::array<std::vector<Exact>, 2> bus = {first, left == right ? first : throughCascade(right)};
    std::array<std::vector<Exact>, speakerCount> out;
    for (int i = 0; i < speakerCount; ++i) {
        std::vector<ReferenceBiquad> filters;
        for (int section = 0; section < 2; ++section)
            if (i == Subwoofer) {
                filters.emplace_back(exact.subwoofer[section]);
            } else {
                filters.emplace_back(exact.highPass[i][section]);
                filters.emplace_back(exact.lowPass[i][section]);
            }
        std::vector<Exact> filtered;
        for (size_t n = 0; n < left.size(); ++n) {
            Exact x = i == Subwoofer ? (bus[0][n] + bus[1][n]) / 2 : bus[i & 1][n];
            x *= exact.speakerGain[i];
            for (ReferenceBiquad& filter : filters)
                x = filter.run(x);
            filtered.push_back(x);
        }
        // The delay: whole frames, then the all-pass without the one frame that belongs to the latency.
        const DelayParts delay = splitDelay(exact.delayFrames[i]);
        const auto at = [&](long n) {
            return n >= 0 && n < long(filtered.size()) ? filtered[size_t(n)] : Exact(0);
        };
        Exact y = 0;
        for (long n = -1; n < long(left.size()); ++n) {
            y = delay.allPass * (at(n + 1 - delay.tap) - y) + at(n - delay.tap);
            if (n >= 0)
                out[i].push_back(y);
        }
    }
    return out;
}

} // namespace sound
