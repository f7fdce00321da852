#include "platform/hvaudioservice/audiostate.h"

#include "platform/hvaudio/dsp/settings.h"

#include <algorithm>

namespace hvaudio {

using Tables = AudioServiceHost::FilterTables;

namespace {

constexpr int speakerBits[speakers] = {1, 2, 4, 8, 32};

static_assert(dsp::speakerCount == speakers && dsp::cabinSpeakerCount == cabinSpeakers &&
                  dsp::bandCount == eqBandCount,
              "service and sound processor count alike");

/// Attenuation in dB of one cabin filter. A filter that is off doesn't attenuate either: its page shows 0 dB
/// then. The stand-alone page sends its frequency index once more in place of a level.
int attenuationOf(const Filter& filter, Tables tables)
{
    return filter.frequency == 0 || tables == Tables::MainAudio ? 0 : filter.attenuation;
}

dsp::SubwooferSettings subwooferOf(const AudioState& state)
{
    dsp::SubwooferSettings settings;
    settings.filter = state.subwoofer.frequency;
    settings.attenuation = state.subwoofer.attenuation;
    // The audio levels page sends slope 0 with every level, which must not flatten the filter.
    settings.slope = state.subwoofer.slope != 0 ? state.subwoofer.slope : state.subwooferSlope;
    settings.inverted = state.subwooferInverted;
    if (state.tables == Tables::MainAudio) {
        // Stored indexes 6 ... 9 come from the speaker groups' list (100, 120, 160, 250 Hz); the stand-alone
        // list ends at 5, so they sound as its nearest entry: 120, 120, 160, 160 Hz.
        constexpr int nearest[] = {4, 4, 5, 5};
        if (settings.filter > 5)
            settings.filter = nearest[settings.filter - 6];
        // Its level is one, not an attenuation: 14 is the loudest.
        constexpr int loudest = 14;
        settings.attenuation = loudest - std::min(settings.attenuation, loudest);
    } else {
        constexpr int softest = 12;
        settings.attenuation = std::min(settings.attenuation, softest);
    }
    return settings;
}

} // namespace

int speakerOfBit(int bit)
{
    const int* const found = std::find(std::begin(speakerBits), std::end(speakerBits), bit);
    return found == std::end(speakerBits) ? -1 : static_cast<int>(found - speakerBits);
}

int rowOfSource(int source)
{
    for (int row = 0; row < sourceCount; ++row) {
        if (sourceGains[row].source == source)
            return row;
    }
    return -1;
}

bool isChannel(int channel)
{
    return std::any_of(std::begin(startVolumes), std::end(startVolumes),
                       [channel](const StartVolume& row) { return row.channel == channel; });
}

int userCurveOf(int eqType)
{
    return eqType == EQ_Type_User1 ? 0 : eqType == EQ_Type_User2 ? 1 : -1;
}

const int* curveOf(const AudioState& state)
{
    const int user = userCurveOf(state.eqType);
    return user >= 0 ? state.userCurve[static_cast<std::size_t>(user)].data() : eqCurveOf(state.eqType).value;
}

int lastHighPassFrequency(Tables tables)
{
    return tables == Tables::MainAudio ? 5 : 8;
}

int lastLowPassFrequency(Tables tables)
{
    return lastHighPassFrequency(tables);
}

int lastSubwooferFrequency(Tables)
{
    return 9;
}

dsp::Settings dspSettings(const AudioState& state)
{
    dsp::Settings settings;
    settings.power = state.power;
    settings.source = state.source;
    settings.sourceGain = state.gain[static_cast<std::size_t>(rowOfSource(state.source))];
    settings.mainVolume = state.volume[0];
    for (int channel = 0; channel < channels; ++channel) {
        const int prompt = dsp::promptOfChannel(channel);
        if (prompt >= 0)
            settings.promptVolume[static_cast<std::size_t>(prompt)] =
                state.volume[static_cast<std::size_t>(channel)];
    }
    std::copy_n(curveOf(state), eqBandCount, settings.equalizer.begin());
    settings.loudness = state.loudness;
    settings.balance = state.balance;
    settings.fader = state.fader;
    settings.tables = state.tables == Tables::MainAudio ? dsp::CrossoverTables::StandAlonePage
                                                        : dsp::CrossoverTables::SpeakerPage;
    constexpr double msPerUs = 0.001;
    for (std::size_t speaker = 0; speaker < cabinSpeakers; ++speaker) {
        const Filter& high = state.highPass[speaker];
        const Filter& low = state.lowPass[speaker];
        dsp::CabinSpeakerSettings& cabin = settings.cabin[speaker];
        cabin.highPass = {high.frequency, high.slope};
        cabin.lowPass = {low.frequency, low.slope};
        constexpr int softest = 12;
        cabin.attenuation =
            std::min(attenuationOf(high, state.tables) + attenuationOf(low, state.tables), softest);
        cabin.delayMs = state.delayUs[speaker] * msPerUs;
    }
    settings.subwoofer = subwooferOf(state);
    settings.subwoofer.delayMs = state.delayUs[cabinSpeakers] * msPerUs;
    return settings;
}

} // namespace hvaudio
