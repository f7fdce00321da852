#include "headunit/sound/mastervolume.h"

#include "common/settings.h"
#include "hvaudio/audioservice.h"

namespace headunit {

namespace {

constexpr mem::Setting volumeSetting = mem::settingOf("volume%1");
constexpr int mainChannel = 0;

} // namespace

MasterVolume::MasterVolume(QObject* parent)
    : QObject(parent)
{
    connect(hvaudio::AudioService::instance(), &hvaudio::AudioService::audioVolumeChanged, this,
            &MasterVolume::onAudioVolumeChanged);
    reload();
}

void MasterVolume::reload()
{
    show(mem::SettingsFunc::instance()->getValue(mem::keyOf(volumeSetting, mainChannel),
                                                 volumeSetting.defaultValue),
         false);
}

void MasterVolume::step(int steps)
{
    const int level = qBound(0, m_level + qBound(-maximum, steps, maximum), maximum);
    if (level == m_level && !m_muted)
        return;
    show(level, false);
    hvaudio::AudioService::instance()->setVolumeLevel(level, mainChannel);
}

void MasterVolume::toggleMute()
{
    // The service has no muting of its own: silence is level 0, and the level to come back to is kept here.
    show(m_level, !m_muted);
    hvaudio::AudioService::instance()->setVolumeLevel(m_muted ? 0 : m_level, mainChannel);
}

void MasterVolume::onAudioVolumeChanged(bool muted, int level, int channel)
{
    if (channel != mainChannel)
        return;
    // The echo of our own muting; any other level that a page sets ends it.
    if (m_muted && level == 0)
        return;
    show(muted ? m_level : level, muted);
}

void MasterVolume::show(int level, bool muted)
{
    // Whoever paints the level counts on its range.
    const int shown = qBound(0, level, maximum);
    if (shown == m_level && muted == m_muted)
        return;
    m_level = shown;
    m_muted = muted;
    emit changed();
}

} // namespace headunit
