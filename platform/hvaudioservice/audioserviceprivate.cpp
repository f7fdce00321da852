#include "platform/hvaudioservice/audioserviceprivate.h"

#include "platform/hvaudioservice/audiostatestore.h"

#include "common/mcumanager.h"
#include "common/settings.h"
#include "platform/common/settings/settingsstore.h"
#include "platform/hvaudio/dsp/settings.h"

#include <QDebug>
#include <QTimer>

namespace hvaudio {

namespace keys = audiostatestore;
using mem::SettingsStore;

namespace {
AudioService* theService = nullptr;
} // namespace

HostCallbacks& hostCallbacks()
{
    static HostCallbacks theCallbacks;
    return theCallbacks;
}

AudioServicePrivate::AudioServicePrivate(AudioService* service)
    : q(service)
{
    connect(SettingsStore::instance(), &SettingsStore::valueChanged, this,
            &AudioServicePrivate::onSettingChanged);
    connect(SettingsStore::instance(), &SettingsStore::edited, this, &AudioServicePrivate::onSettingEdited);
    connect(McuManager::instance(), &McuManager::beepTriggered, this, &AudioServicePrivate::beep);
    keys::restore(state);
}

AudioServicePrivate::~AudioServicePrivate()
{
    commitBurst();
}

AudioServicePrivate* AudioServicePrivate::of()
{
    if (!theService)
        theService = new AudioService;
    return theService->d;
}

AudioServicePrivate* AudioServicePrivate::existing()
{
    return theService ? theService->d : nullptr;
}

AudioService* AudioService::instance()
{
    return AudioServicePrivate::of()->service();
}

void AudioServicePrivate::destroyService()
{
    delete theService;
    theService = nullptr;
}

void AudioServicePrivate::powerOn()
{
    const int typeBefore = state.eqType;
    keys::restore(state);
    const std::array<int, channels> levels = keys::storedStartVolumes();
    for (int channel = 0; channel < channels; ++channel) {
        if (isChannel(channel))
            setVolume(channel, levels[static_cast<std::size_t>(channel)]);
    }
    state.power = true;
    publish();
    if (state.eqType != typeBefore)
        emit mem::SettingsUtil::instance()->EQType(state.eqType);
}

void AudioServicePrivate::powerOff()
{
    state.power = false;
    publish();
    m_burst = false;
    SettingsStore::instance()->commit();
}

void AudioServicePrivate::setFilterTables(AudioServiceHost::FilterTables tables)
{
    if (state.tables == tables)
        return;
    state.tables = tables;
    keys::restoreFilters(state);
    publish();
}

void AudioServicePrivate::setEqType(int type, bool save)
{
    const bool changed = state.eqType != type;
    state.eqType = type;
    if (changed)
        publish();
    if (save)
        keep(mem::keyOf(keys::eqTypeSetting), type);
    if (changed)
        emit mem::SettingsUtil::instance()->EQType(type);
}

void AudioServicePrivate::setUserBand(int curve, int band, int value, bool save)
{
    state.userCurve[static_cast<std::size_t>(curve)][static_cast<std::size_t>(band)] = value;
    if (userCurveOf(state.eqType) == curve)
        publish();
    if (save)
        keep(keys::userBandKey(curve, band), value);
}

void AudioServicePrivate::setFilter(Filter* filter, const Filter& value, const QString& key)
{
    *filter = value;
    publish();
    keepInBurst(key, keys::filterText(value));
}

void AudioServicePrivate::setVolume(int channel, int level)
{
    int& volume = state.volume[static_cast<std::size_t>(channel)];
    const bool changed = volume != level;
    volume = level;
    // The knob sends many steps a second; the delayed write is soon enough for what power-on replaces anyway.
    keepSoon(keys::volumeKey(channel), level);
    if (!changed)
        return;
    if (state.power)
        publish();
    emit q->audioVolumeChanged(false, level, channel);
}

void AudioServicePrivate::keep(const QString& key, const QVariant& value)
{
    SettingsStore::instance()->setValue(key, value, true);
}

void AudioServicePrivate::keepSoon(const QString& key, const QVariant& value)
{
    SettingsStore::instance()->setValue(key, value, false);
}

void AudioServicePrivate::keepInBurst(const QString& key, const QVariant& value)
{
    keepSoon(key, value);
    if (m_burst)
        return;
    m_burst = true;
    QTimer::singleShot(0, this, &AudioServicePrivate::commitBurst);
}

void AudioServicePrivate::commitBurst()
{
    if (m_burst)
        SettingsStore::instance()->commit();
    m_burst = false;
}

void AudioServicePrivate::publish()
{
    if (const AudioServiceHost::Sink& sink = hostCallbacks().sink)
        sink(dspSettings(state));
}

void AudioServicePrivate::beep()
{
    if (const AudioServiceHost::Beeper& beeper = hostCallbacks().beeper)
        beeper();
}

void AudioServicePrivate::onSettingChanged(const QString& key)
{
    if (key == mem::keyOf(keys::subwooferSlopeSetting)) {
        state.subwooferSlope = keys::storedSubwooferSlope();
        // The newest word counts, also after a filter that came with a slope of its own.
        if (state.subwoofer.slope != 0) {
            state.subwoofer.slope = 0;
            keepInBurst(keys::subwooferKey(state.tables), keys::filterText(state.subwoofer));
        }
    } else if (key == mem::keyOf(keys::subwooferPhaseSetting)) {
        state.subwooferInverted = keys::storedSubwooferPhase();
    } else {
        return;
    }
    publish();
}

void AudioServicePrivate::onSettingEdited(const QString& key)
{
    const AudioState before = state;
    if (!keys::restoreKey(state, key))
        return;
    // As at power-on. The pages read a channel's level from the store, where none means 0 to them.
    for (int channel = 0; channel < channels; ++channel) {
        if (isChannel(channel) && key == keys::volumeKey(channel) &&
            !SettingsStore::instance()->value(key).isValid())
            keepSoon(key, state.volume[static_cast<std::size_t>(channel)]);
    }
    publish();
    if (state.eqType != before.eqType)
        emit mem::SettingsUtil::instance()->EQType(state.eqType);
    for (int channel = 0; channel < channels; ++channel) {
        const auto index = static_cast<std::size_t>(channel);
        if (state.volume[index] != before.volume[index])
            emit q->audioVolumeChanged(false, state.volume[index], channel);
    }
}

} // namespace hvaudio
