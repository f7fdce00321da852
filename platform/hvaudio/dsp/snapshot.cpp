#include "platform/hvaudio/dsp/snapshot.h"

#include "platform/hvaudio/dsp/loudness.h"

#include <algorithm>

namespace hvaudio::dsp {

namespace {

/// Writes one section into its lane of a table.
template <int lanes>
void place(StateTable<lanes>& table, int lane, const Section& section)
{
    const Coefficients c = coefficientsOf(section);
    table[Q3][lane] = c.q3;
    table[Q1][lane] = c.q1;
    table[Q2][lane] = c.q2;
    table[B2][lane] = c.b2;
    table[B3][lane] = c.b3;
    table[C1][lane] = c.c1;
}
template <int lanes>
void place(DirectTable<lanes>& table, int lane, const Section& s)
{
    const Coefficients c = coefficientsOf(s);
    // The output's mix of the three filters, with p, q and the input in place of their own formulas.
    const double band = c.b2 / 2, half = (s.lp - s.hp) / 2;
    const double r = (s.bp - s.k * s.hp) * band + half * (c.b3 - 1);
    table[E][lane] = (s.hp + s.lp) / 2 + r;
    table[R][lane] = r;
    table[F][lane] = -half;
    table[A][lane] = c.b2 / s.g - c.b3;
    table[B][lane] = c.b2 / s.g + c.b3;
}

double signedLevel(int attenuation, bool inverted)
{
    return (inverted ? -1 : 1) * factorOfDb(-attenuation);
}

} // namespace

ExactSections makeSections(const Settings& s, const EqualizerDesign& equalizer, double rate)
{
    ExactSections exact;
    std::array<double, bandCount> wanted;
    std::copy(s.equalizer.begin(), s.equalizer.end(), wanted.begin());
    const auto bands = equalizer.solve(wanted);
    std::copy(bands.begin(), bands.end(), exact.cascade.begin());

    const LoudnessSections loudness = designLoudness(s.loudness ? s.mainDb : 0, rate);
    std::copy(loudness.sections.begin(), loudness.sections.end(), exact.cascade.begin() + bandCount);
    exact.bus = s.mute ? 0 : factorOfDb(s.mainDb) * loudness.factor;

    const auto filter = [rate](auto design, const FilterSettings& f) {
        return f.hz > 0 ? design(f.hz, f.order, rate) : passThrough(rate);
    };
    const double power = s.power ? 1 : 0;
    for (int i = 0; i < cabinSpeakerCount; ++i) {
        const CabinSpeakerSettings& speaker = s.cabin[i];
        exact.highPass[i] = filter(crossoverHighPass, speaker.highPass);
        exact.lowPass[i] = filter(crossoverLowPass, speaker.lowPass);
        exact.speakerGain[i] = power * fieldFactor(Speaker(i), s.balance, s.fader) *
                               signedLevel(speaker.attenuation, speaker.inverted);
        exact.delayFrames[i] = speaker.delayMs * rate / 1000;
    }
    exact.subwoofer = filter(crossoverLowPass, s.subwoofer.lowPass);
    exact.speakerGain[Subwoofer] =
        s.subwoofer.silent ? 0 : power * signedLevel(s.subwoofer.attenuation, s.subwoofer.inverted);
    exact.delayFrames[Subwoofer] = s.subwoofer.delayMs * rate / 1000;
    return exact;
}

Snapshot makeSnapshot(const Settings& s, const EqualizerDesign& equalizer, double rate)
{
    const ExactSections exact = makeSections(s, equalizer, rate);
    Snapshot snapshot;
    Parameters& p = snapshot.parameters;
    Filters& filters = snapshot.filters;
    for (int i = 0; i < cascadeSections; ++i)
        for (int channel = 0; channel < 2; ++channel) {
            const int lane = 2 * cascadePlace(i) + channel;
            place(filters.cascade, lane, exact.cascade[i]);
            place(filters.directCascade, lane, exact.cascade[i]);
        }
    for (int section = 0; section < 2; ++section) {
        for (int i = 0; i < cabinSpeakerCount; ++i) {
            const int lane = 4 * section + i;
            place(filters.high, lane, exact.highPass[i][section]);
            place(filters.directHigh, lane, exact.highPass[i][section]);
            place(filters.low, lane, exact.lowPass[i][section]);
            filters.lowPass |= s.cabin[i].lowPass.hz > 0;
        }
        place(filters.low, subwooferLane + section, exact.subwoofer[section]);
    }
    for (int i = 0; i < speakerCount; ++i) {
        // The subwoofer hears the mean of both sides; its shorter path waits for the others.
        p.speakerGain[i] = exact.speakerGain[i] * (i == Subwoofer ? 0.5 : 1.0);
        const DelayParts delay = splitDelay(exact.delayFrames[i]);
        snapshot.delayTap[i] = delay.tap + (i == Subwoofer ? subwooferLead : 0);
        p.allPass[i] = delay.allPass;
    }
    p.bus[0] = exact.bus;
    for (int i = 0; i < promptCount; ++i)
        p.bus[1 + i] = factorOfDb(s.promptDb[i]);
    snapshot.power = s.power;
    snapshot.source = s.source;
    snapshot.sourceFactor = factorOfDb(s.sourceDb);
    return snapshot;
}

} // namespace hvaudio::dsp
