#include "platform/hvaudio/dsp/snapshot.h"

#include "platform/hvaudio/dsp/loudness.h"

#include <algorithm>

namespace hvaudio::dsp {

namespace {

/// Writes one section into its lane of a coefficient table.
template <int rows, int lanes>
void place(float (&table)[rows][lanes], int lane, const Section& section)
{
    const Coefficients c = coefficientsOf(section);
    const double values[] = {c.b2, c.b3, c.c1, c.q1, c.q2, c.q3};
    for (int row = 0; row < rows; ++row)
        table[row][lane] = float(values[row]);
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
    for (int i = 0; i < cascadeSections; ++i)
        for (int channel = 0; channel < 2; ++channel)
            place(p.cascade, 2 * i + channel, exact.cascade[i]);
    for (int section = 0; section < 2; ++section) {
        for (int i = 0; i < cabinSpeakerCount; ++i) {
            place(p.highPass, 4 * section + i, exact.highPass[i][section]);
            place(p.lowPass, 4 * section + i, exact.lowPass[i][section]);
            snapshot.lowPassUsed |= s.cabin[i].lowPass.hz > 0;
        }
        for (int channel = 0; channel < 2; ++channel)
            place(p.subwoofer, 2 * section + channel, exact.subwoofer[section]);
    }
    for (int i = 0; i < speakerCount; ++i) {
        // The subwoofer hears the mean of both sides; its shorter path waits for the others.
        p.speakerGain[i] = float(exact.speakerGain[i] * (i == Subwoofer ? 0.5 : 1.0));
        const DelayParts delay = splitDelay(exact.delayFrames[i]);
        snapshot.delayTap[i] = delay.tap + (i == Subwoofer ? subwooferLead : 0);
        p.allPass[i] = float(delay.allPass);
    }
    p.bus[0] = float(exact.bus);
    for (int i = 0; i < promptCount; ++i)
        p.bus[1 + i] = float(factorOfDb(s.promptDb[i]));
    snapshot.power = s.power;
    snapshot.source = s.source;
    snapshot.sourceFactor = float(factorOfDb(s.sourceDb));
    return snapshot;
}

} // namespace hvaudio::dsp
