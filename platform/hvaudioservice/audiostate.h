#pragma once

#include "platform/hvaudioservice/audioservicehost.h"

#include "common/settingstable.h"
#include "hvaudio/audiosources.h"
#include "hvaudio/crossovers.h"
#include "hvaudio/eqcurves.h"

#include <array>

namespace hvaudio {

namespace dsp {
struct Settings;
}

/// The speakers in the order of every array here; the first four have a place in the cabin.
constexpr int cabinSpeakers = 4;
constexpr int speakers = 5;
/// Index of a speaker bit (1, 2, 4, 8, 32), -1 for any other number.
int speakerOfBit(int bit);

/// Channels of volumes are numbers 0 ... 5; 3 is none.
constexpr int channels = mem::settingOf("volume%1").count;

/// A filter as it was sent: table index, attenuation in dB, index of 6, 12, 18, 24 dB/octave.
struct Filter
{
    int frequency = 0;
    int attenuation = 0;
    int slope = 0;
};

// Ranges of what the pages send.
constexpr int lastEqType = mem::settingOf("AudioService_EQType").largest;
constexpr int maximumBandValue = mem::settingOf("eq1%1").largest;
constexpr int maximumBalance = mem::settingOf("AudioService_Balance").largest;
constexpr int maximumVolume = mem::settingOf("volume%1").largest;
constexpr int maximumGain = audioSources[0].gain.largest;
constexpr int maximumDelayUs = mem::settingOf("AudioService_DelayUs_%1").largest;
constexpr int maximumSlope = int(std::size(crossoverSlopes)) - 1;
/// Levels reach the service masked to seven bits; what is beyond largestAttenuation, in dB, sounds as that.
constexpr int maximumLevelSent = mem::subwooferLevelBits;

/// Row of a source in audioSources, -1 for any other number.
int rowOfSource(int source);

struct StartVolume
{
    int channel;
    const mem::Setting& setting; ///< the level at power-on
};

// clang-format off
constexpr StartVolume startVolumes[] = {
    {0, mem::settingOf("Setup_Main_Volume")},
    {1, mem::settingOf("Setup_Volume_Type_BT_Ringer")},
    {2, mem::settingOf("Setup_Volume_Type_BT_Talking")},
    {5, mem::settingOf("Setup_Volume_Type_Navi")},
    {4, mem::settingOf("Setup_Volume_Type_Voice")},
};
// clang-format on
static_assert(std::size(startVolumes) == 5, "one row a channel");
/// Whether a volume has this number.
bool isChannel(int channel);

/// What the listener has set, in the units of the service's calls.
struct AudioState
{
    bool power = false;
    AudioServiceHost::FilterTables tables = AudioServiceHost::FilterTables::SpeakerGroups;
    HVAudio_source_id_e source = HVAudio_source_Radio;

    int eqType = EQ_Type_Flat;
    std::array<std::array<int, eqBandCount>, 2> userCurve = {};
    bool loudness = false;
    int balance = 0;
    int fader = 0;
    std::array<Filter, cabinSpeakers> highPass = {};
    std::array<Filter, cabinSpeakers> lowPass = {};
    Filter subwoofer; ///< slope 0: subwooferSlope
    int subwooferSlope = 0;
    bool subwooferInverted = false;
    std::array<int, speakers> delayUs = {};
    std::array<int, channels> volume = {};
    std::array<int, std::size(audioSources)> gain = {};
};

/// Index into userCurve of an EQ type, -1 for a type that the user can't edit.
int userCurveOf(int eqType);
/// Values of the curve that sounds.
const int* curveOf(const AudioState& state);

/// Largest index of a cabin filter's frequencies, high-pass and low-pass alike.
int lastCabinFrequency(AudioServiceHost::FilterTables tables);
/// The same of the subwoofer's; both lists count alike.
constexpr int lastSubwooferFrequency = int(std::size(mainSubwoofer)) - 1;

/// Volume 0..50 in dB: 0 is silence (dsp::silentDb), 50 is 0 dB, and each step is 1.2 dB, which is even to
/// the ear.
double dbOfVolume(int level);

/// The state in the sound processor's terms: Hz, orders, dB, ms. Every value of `state` must be in its range.
dsp::Settings dspSettings(const AudioState& state);

} // namespace hvaudio
