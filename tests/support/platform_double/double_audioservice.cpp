#include "common/settingstable.h"
#include "hvaudio/eqcurves.h"
#include "tests/support/platform_double/platform_double.h"

namespace platform_double {

namespace {

AudioState state;

template <typename... Arguments>
void recordCall(Kind kind, const char* operation, Arguments... arguments)
{
    record(kind, service(operation, arguments...));
}

/// Whether an argument is in its range. One that isn't is logged; the operation then changes nothing.
bool inRange(const char* operation, int value, int smallest, int largest)
{
    const bool good = value >= smallest && value <= largest;
    if (!good)
        qWarning("AudioService.%s: %d is out of range", operation, value);
    return good;
}

bool inRange(const char* operation, int value, const mem::Setting& setting)
{
    return inRange(operation, value, setting.smallest, setting.largest);
}

} // namespace

void resetAudio()
{
    state = AudioState();
}

AudioState& audio()
{
    return state;
}

void emitVolumeChanged(bool muted, int level, int channel)
{
    emit hvaudio::AudioService::instance()->audioVolumeChanged(muted, level, channel);
}

} // namespace platform_double

namespace hvaudio {

using namespace platform_double;

AudioService::AudioService()
    : d(nullptr)
{
}

AudioService::~AudioService() = default;

AudioService* AudioService::instance()
{
    static AudioService theInstance;
    return &theInstance;
}

void AudioService::doBeep(int tone)
{
    recordCall(Audio, "doBeep", tone);
}

AudioEQType AudioService::getCurrEQType()
{
    recordCall(Read, "getCurrEQType");
    return static_cast<AudioEQType>(audio().eqType);
}

void AudioService::setEQType(AudioEQType type, bool save)
{
    recordCall(Audio, "setEQType", static_cast<int>(type), save);
    if (inRange("setEQType", type, mem::settingOf("AudioService_EQType")))
        audio().eqType = type;
}

int AudioService::getCustomEq(int band)
{
    recordCall(Read, "getCustomEq", band);
    return inRange("getCustomEq", band, 0, eqBandCount - 1) ? audio().customEq[band] : 0;
}

void AudioService::setCustomEq(int value, int band, bool save)
{
    recordCall(Audio, "setCustomEq", value, band, save);
}

void AudioService::setCustomEq1(int value, int band, bool save)
{
    recordCall(Audio, "setCustomEq1", value, band, save);
}

void AudioService::setCustomEq2(int value, int band, bool save)
{
    recordCall(Audio, "setCustomEq2", value, band, save);
}

void AudioService::setCustomLoudness(bool on, bool save)
{
    recordCall(Audio, "setCustomLoudness", on, save);
}

void AudioService::getBalanceFader(int& balance, int& fader)
{
    recordCall(Read, "getBalanceFader");
    balance = audio().balance;
    fader = audio().fader;
}

void AudioService::setBalanceFader(int balance, int fader, bool save)
{
    recordCall(Audio, "setBalanceFader", balance, fader, save);
    if (inRange("setBalanceFader", balance, mem::settingOf("AudioService_Balance")) &&
        inRange("setBalanceFader", fader, mem::settingOf("AudioService_Fader"))) {
        audio().balance = balance;
        audio().fader = fader;
    }
}

void AudioService::setHPFFilter(int frequency, int attenuation, int speaker, int slope)
{
    recordCall(Audio, "setHPFFilter", frequency, attenuation, speaker, slope);
}

void AudioService::setLPFFilter(int frequency, int attenuation, int speaker, int slope)
{
    recordCall(Audio, "setLPFFilter", frequency, attenuation, speaker, slope);
}

void AudioService::setSubFilter(int frequency, int attenuation, int slope)
{
    recordCall(Audio, "setSubFilter", frequency, attenuation, slope);
}

void AudioService::setSurroundDelay(int speaker, float delay)
{
    recordCall(Audio, "setSurroundDelay", speaker, delay);
}

void AudioService::setVolumeLevel(int level, int channel)
{
    recordCall(Audio, "setVolumeLevel", level, channel);
}

void AudioService::setSourceOffsetGain(HVAudio_source_id_e source, int gain)
{
    recordCall(Audio, "setSourceOffsetGain", static_cast<int>(source), gain);
}

} // namespace hvaudio
