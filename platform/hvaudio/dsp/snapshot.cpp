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

    const LoudnessSections loudness = designLoudness(s.loudness ? volumeDb(s.mainVolume) : 0, rate);
    std::copy(loudness.sections.begin(), loudness.sections.end(), exact.cascade.begin() + bandCount);
    exact.bus = s.mute ? 0 : volumeFactor(s.mainVolume) * loudness.factor;

    const double power = s.power ? 1 : 0;
    for (int i = 0; i < cabinSpeakerCount; ++i) {
        const CabinSpeakerSettings& speaker = s.cabin[i];
        const double high = highPassHz(s.tables, speaker.highPass.frequency);
        const double low = lowPassHz(s.tables, speaker.lowPass.frequency);
        exact.highPass[i] =
            high > 0 ? butterworthHighPass(high, speaker.highPass.slope + 1, rate) : passThrough(rate);
        exact.lowPass[i] =
            low > 0 ? butterworthLowPass(low, speaker.lowPass.slope + 1, rate) : passThrough(rate);
        exact.speakerGain[i] = power * fieldFactor(Speaker(i), s.balance, s.fader) *
                               signedLevel(speaker.attenuation, speaker.inverted);
        exact.delayFrames[i] = speaker.delayMs * rate / 1000;
    }
    const double low = subwooferHz(s.tables, s.subwoofer.filter);
    // A silent subwoofer keeps the lowest filter, so that no treble slips out while its gain glides.
    const double closed = subwooferHz(s.tables, 2);
    exact.subwoofer = low == 0 ? passThrough(rate)
                               : butterworthLowPass(low < 0 ? closed : low, s.subwoofer.slope + 1, rate);
    exact.speakerGain[Subwoofer] =
        low < 0 ? 0 : power * signedLevel(s.subwoofer.attenuation, s.subwoofer.inverted);
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
            snapshot.lowPassUsed |= lowPassHz(s.tables, s.cabin[i].lowPass.frequency) > 0;
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
        p.bus[1 + i] = float(volumeFactor(s.promptVolume[i]));
    snapshot.power = s.power;
    snapshot.source = s.source;
    snapshot.sourceFactor = float(sourceFactor(s.sourceGain));
    return snapshot;
}

} // namespace hvaudio::dsp
