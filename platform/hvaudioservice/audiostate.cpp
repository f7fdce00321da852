#include "platform/hvaudioservice/audiostate.h"

#include "hvaudio/crossovers.h"
#include "platform/hvaudio/dsp/settings.h"

#include <algorithm>

namespace hvaudio {

using Tables = AudioServiceHost::FilterTables;

namespace {

constexpr int speakerBits[speakers] = {1, 2, 4, 8, 32};

static_assert(dsp::speakerCount == speakers && dsp::cabinSpeakerCount == cabinSpeakers &&
                  dsp::bandCount == eqBandCount,
              "service and sound processor count alike");

struct PromptChannel
{
    std::size_t channel; ///< of a volume
    dsp::Prompt prompt;
};

// clang-format off
constexpr PromptChannel promptChannels[] = {
    {1, dsp::Ring},
    {2, dsp::Call},
    {4, dsp::Voice},
    {5, dsp::Navi},
};
// clang-format on
static_assert(std::size(promptChannels) == dsp::promptCount, "one row a prompt");

/// slope: index into crossoverSlopes.
int orderOfSlope(int slope)
{
    return crossoverSlopes[slope] / dbAnOrder;
}

/// Attenuation in dB of one cabin filter. A filter that is off doesn't attenuate either: its page shows 0 dB
/// then. The stand-alone page sends its frequency index once more in place of a level.
int attenuationOf(const Filter& filter, Tables tables)
{
    return filter.frequency == 0 || tables == Tables::MainAudio ? 0 : filter.attenuation;
}

/// main: the frequencies of the main audio's page.
dsp::FilterSettings cabinFilterOf(const Filter& filter, Tables tables, const CrossoverFrequency* main)
{
    const auto index = static_cast<std::size_t>(filter.frequency);
    return {double(tables == Tables::MainAudio ? main[index].hz : groupCrossoverHz[index]),
            orderOfSlope(filter.slope)};
}

/// index: 1 and up; 1 plays everything.
int subwooferHz(int index, Tables tables)
{
    return tables == Tables::MainAudio ? mainSubwoofer[index].hz : groupCrossoverHz[index - 1];
}

/// Whether the subwoofer is turned round so that it adds to the cabin's speakers. The first of them that has
/// a high-pass speaks for all; without one, or without a low-pass, there is no crossover.
bool isTurnedForCrossover(const AudioState& state, int subwooferSlope)
{
    const auto crossed = [](const Filter& filter) { return filter.frequency != 0; };
    const auto cabin = std::find_if(state.highPass.begin(), state.highPass.end(), crossed);
    constexpr int unfiltered = 1;
    if (cabin == state.highPass.end() || state.subwoofer.frequency <= unfiltered)
        return false;
    return subwooferTurned[cabin->slope][subwooferSlope];
}

dsp::SubwooferSettings subwooferOf(const AudioState& state)
{
    dsp::SubwooferSettings settings;
    const int index = state.subwoofer.frequency;
    settings.silent = index == 0;
    // One that falls silent takes the lowest filter, so that no treble slips out on the way.
    constexpr int lowest = 2;
    settings.lowPass.hz = subwooferHz(settings.silent ? lowest : index, state.tables);
    // The audio levels page sends slope 0 with every level, which must not flatten the filter.
    const int slope = state.subwoofer.slope != 0 ? state.subwoofer.slope : state.subwooferSlope;
    settings.lowPass.order = orderOfSlope(slope);
    settings.inverted = state.subwooferInverted != isTurnedForCrossover(state, slope);
    if (state.tables == Tables::MainAudio) {
        // Its level is one, not an attenuation.
        settings.attenuation =
            loudestMainSubwoofer - std::min(state.subwoofer.attenuation, loudestMainSubwoofer);
    } else {
        settings.attenuation = std::min(state.subwoofer.attenuation, largestAttenuation);
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
    const AudioSource* const row = audioSourceOf(source);
    return row ? static_cast<int>(row - audioSources) : -1;
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

int lastCabinFrequency(Tables tables)
{
    return int(tables == Tables::MainAudio ? std::size(mainHighPass) : std::size(groupCrossoverHz)) - 1;
}

double dbOfVolume(int level)
{
    constexpr double step = 1.2;
    return level <= 0 ? dsp::silentDb : step * (level - maximumVolume);
}

dsp::Settings dspSettings(const AudioState& state)
{
    dsp::Settings settings;
    settings.power = state.power;
    settings.source = state.source;
    const auto row = static_cast<std::size_t>(rowOfSource(state.source));
    settings.sourceDb = state.gain[row] - gainOfZeroDb;
    settings.mainDb = dbOfVolume(state.volume[0]);
    for (const PromptChannel& row : promptChannels)
        settings.promptDb[row.prompt] = dbOfVolume(state.volume[row.channel]);
    std::copy_n(curveOf(state), eqBandCount, settings.equalizer.begin());
    settings.loudness = state.loudness;
    settings.balance = double(state.balance) / maximumBalance;
    settings.fader = double(state.fader) / maximumBalance;
    constexpr double msPerUs = 0.001;
    for (std::size_t speaker = 0; speaker < cabinSpeakers; ++speaker) {
        const Filter& high = state.highPass[speaker];
        const Filter& low = state.lowPass[speaker];
        dsp::CabinSpeakerSettings& cabin = settings.cabin[speaker];
        cabin.highPass = cabinFilterOf(high, state.tables, mainHighPass);
        cabin.lowPass = cabinFilterOf(low, state.tables, mainLowPass);
        cabin.attenuation = std::min(attenuationOf(high, state.tables) + attenuationOf(low, state.tables),
                                     largestAttenuation);
        cabin.delayMs = state.delayUs[speaker] * msPerUs;
    }
    settings.subwoofer = subwooferOf(state);
    settings.subwoofer.delayMs = state.delayUs[cabinSpeakers] * msPerUs;
    return settings;
}

} // namespace hvaudio
