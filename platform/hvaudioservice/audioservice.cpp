#include "hvaudio/audioservice.h"

#include "platform/hvaudioservice/audioserviceprivate.h"
#include "platform/hvaudioservice/audiostatestore.h"

#include "platform/common/framework/journal.h"
#include "platform/common/framework/journaltext.h"

#include <QDebug>

#include <cmath>

// The calls: each reports itself, refuses what is out of range, and leaves the rest to the private part.
namespace hvaudio {

namespace keys = audiostatestore;

namespace {

template <typename... Arguments>
void report(const char* operation, const Arguments&... arguments)
{
    cm::Journal::instance()->record(QStringLiteral("AudioService"), cm::journalCall(operation, arguments...));
}

void refuse(const char* operation, const char* what, double value, const QString& allowed)
{
    qWarning().noquote().nospace() << "AudioService: " << operation << ": " << what << ' ' << value
                                   << " is not " << allowed << "; nothing changes";
}

bool inRange(const char* operation, const char* what, int value, int minimum, int maximum)
{
    if (value >= minimum && value <= maximum)
        return true;
    refuse(operation, what, value, QStringLiteral("in %1..%2").arg(minimum).arg(maximum));
    return false;
}

bool isBandValue(const char* operation, int value, int band)
{
    return inRange(operation, "value", value, -maximumBandValue, maximumBandValue) &&
           inRange(operation, "band", band, 0, eqBandCount - 1);
}

/// Whether a filter could be applied.
bool isFilter(const char* operation, const Filter& filter, int lastFrequency)
{
    return inRange(operation, "frequency index", filter.frequency, 0, lastFrequency) &&
           inRange(operation, "attenuation", filter.attenuation, 0, maximumLevelSent) &&
           inRange(operation, "slope", filter.slope, 0, maximumSlope);
}

/// A hand-edited store lets the pages send more than there is to cut; it is kept as sent and sounds as the
/// largest. The main audio's page sends no cut.
void noteLargeCut(const char* operation, int attenuation, AudioServiceHost::FilterTables tables)
{
    if (attenuation > largestAttenuation && tables == AudioServiceHost::FilterTables::SpeakerGroups)
        qWarning() << "AudioService:" << operation << ": attenuation" << attenuation << "sounds as"
                   << largestAttenuation;
}

/// A filter of a cabin speaker. keyOf: under which it is kept.
void setCabinFilter(AudioServicePrivate* d, const char* operation, const Filter& filter, int speaker,
                    std::array<Filter, cabinSpeakers>* filters,
                    QString (*keyOf)(AudioServiceHost::FilterTables, int))
{
    const AudioServiceHost::FilterTables tables = d->state.tables;
    const int index = speakerOfBit(speaker);
    if (index < 0 || index >= cabinSpeakers) {
        refuse(operation, "speaker", speaker, QStringLiteral("one of 1, 2, 4, 8"));
        return;
    }
    if (!isFilter(operation, filter, lastCabinFrequency(tables)))
        return;
    noteLargeCut(operation, filter.attenuation, tables);
    d->setFilter(&(*filters)[static_cast<std::size_t>(index)], filter, keyOf(tables, index));
}

} // namespace

AudioService::AudioService()
    : d(new AudioServicePrivate(this))
{
}

AudioService::~AudioService()
{
    delete d;
}

void AudioService::doBeep(int tone)
{
    report("doBeep", tone);
    if (tone != 0)
        qWarning() << "AudioService: no beep tone" << tone << "- sounding 0";
    d->beep();
}

AudioEQType AudioService::getCurrEQType()
{
    report("getCurrEQType");
    return static_cast<AudioEQType>(d->state.eqType);
}

void AudioService::setEQType(AudioEQType type, bool save)
{
    const int number = type;
    report("setEQType", number, save);
    if (inRange("setEQType", "type", number, 0, lastEqType))
        d->setEqType(number, save);
}

int AudioService::getCustomEq(int band)
{
    report("getCustomEq", band);
    return inRange("getCustomEq", "band", band, 0, eqBandCount - 1) ? curveOf(d->state)[band] : 0;
}

void AudioService::setCustomEq(int value, int band, bool save)
{
    report("setCustomEq", value, band, save);
    const int curve = userCurveOf(d->state.eqType);
    if (curve < 0)
        refuse("setCustomEq", "current type", d->state.eqType, QStringLiteral("a user curve (6, 7)"));
    else if (isBandValue("setCustomEq", value, band))
        d->setUserBand(curve, band, value, save);
}

void AudioService::setCustomEq1(int value, int band, bool save)
{
    report("setCustomEq1", value, band, save);
    if (isBandValue("setCustomEq1", value, band))
        d->setUserBand(0, band, value, save);
}

void AudioService::setCustomEq2(int value, int band, bool save)
{
    report("setCustomEq2", value, band, save);
    if (isBandValue("setCustomEq2", value, band))
        d->setUserBand(1, band, value, save);
}

void AudioService::setCustomLoudness(bool on, bool save)
{
    report("setCustomLoudness", on, save);
    d->state.loudness = on;
    d->publish();
    d->keep(mem::keyOf(keys::loudnessSetting), on);
}

void AudioService::getBalanceFader(int& balance, int& fader)
{
    report("getBalanceFader");
    balance = d->state.balance;
    fader = d->state.fader;
}

void AudioService::setBalanceFader(int balance, int fader, bool save)
{
    report("setBalanceFader", balance, fader, save);
    if (!inRange("setBalanceFader", "balance", balance, -maximumBalance, maximumBalance) ||
        !inRange("setBalanceFader", "fader", fader, -maximumBalance, maximumBalance))
        return;
    d->state.balance = balance;
    d->state.fader = fader;
    d->publish();
    if (save) {
        d->keepSoon(mem::keyOf(keys::balanceSetting), balance);
        d->keep(mem::keyOf(keys::faderSetting), fader); // takes the balance along
    }
}

// The mark of a frequency says what the speaker says.
void AudioService::setHPFFilter(int frequency, int attenuation, int speaker, int slope)
{
    report("setHPFFilter", frequency, attenuation, speaker, slope);
    setCabinFilter(d, "setHPFFilter", {frequency & ~rearPairMark, attenuation, slope}, speaker,
                   &d->state.highPass, keys::highPassKey);
}

void AudioService::setLPFFilter(int frequency, int attenuation, int speaker, int slope)
{
    report("setLPFFilter", frequency, attenuation, speaker, slope);
    setCabinFilter(d, "setLPFFilter", {frequency & ~rearPairMark, attenuation, slope}, speaker,
                   &d->state.lowPass, keys::lowPassKey);
}

void AudioService::setSubFilter(int frequency, int attenuation, int slope)
{
    report("setSubFilter", frequency, attenuation, slope);
    const Filter filter = {frequency, attenuation, slope};
    if (!isFilter("setSubFilter", filter, lastSubwooferFrequency))
        return;
    noteLargeCut("setSubFilter", attenuation, d->state.tables);
    d->setFilter(&d->state.subwoofer, filter, keys::subwooferKey(d->state.tables));
}

void AudioService::setSurroundDelay(int speaker, float delay)
{
    report("setSurroundDelay", speaker, delay);
    const int index = speakerOfBit(speaker);
    if (index < 0) {
        refuse("setSurroundDelay", "speaker", speaker, QStringLiteral("one of 1, 2, 4, 8, 32"));
        return;
    }
    constexpr double usPerMs = 1000;
    const double us = std::round(static_cast<double>(delay) * usPerMs);
    // Written so that a delay that is no number is refused too.
    if (!(us >= 0 && us <= maximumDelayUs)) {
        refuse("setSurroundDelay", "delay", static_cast<double>(delay), QStringLiteral("in 0..10 ms"));
        return;
    }
    d->state.delayUs[static_cast<std::size_t>(index)] = static_cast<int>(us);
    d->publish();
    d->keepInBurst(keys::delayKey(index), static_cast<int>(us));
}

void AudioService::setVolumeLevel(int level, int channel)
{
    report("setVolumeLevel", level, channel);
    if (!isChannel(channel))
        refuse("setVolumeLevel", "channel", channel, QStringLiteral("one of 0, 1, 2, 4, 5"));
    else if (inRange("setVolumeLevel", "level", level, 0, maximumVolume))
        d->setVolume(channel, level);
}

void AudioService::setSourceOffsetGain(HVAudio_source_id_e source, int gain)
{
    const int number = source;
    report("setSourceOffsetGain", number, gain);
    const int row = rowOfSource(number);
    if (row < 0) {
        refuse("setSourceOffsetGain", "source", number, QStringLiteral("one of 0, 1, 5, 6, 7, 18, 19"));
        return;
    }
    if (!inRange("setSourceOffsetGain", "gain", gain, 0, maximumGain))
        return;
    // The page that sends it keeps it under its own key.
    d->state.gain[static_cast<std::size_t>(row)] = gain;
    d->publish();
}

} // namespace hvaudio
