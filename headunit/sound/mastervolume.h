#pragma once

#include "common/settingstable.h"

#include <QObject>

namespace headunit {

/// The unit's volume knob: the audio service's main channel, and muting on top of it. Thread: GUI.
class MasterVolume : public QObject
{
    Q_OBJECT
public:
    static constexpr int maximum = mem::settingOf("volume%1").largest;

    explicit MasterVolume(QObject* parent = nullptr);

    /// 0..maximum; while muted the level that unmuting goes back to.
    int level() const { return m_level; }
    bool isMuted() const { return m_muted; }

    /// Turns the knob by that many steps, any number, down to 0 or up to maximum; unmutes.
    void step(int steps);
    void toggleMute();
    /// Reads the level anew after the service was switched on; one out of range is the nearest end.
    void reload();

signals:
    void changed();

private slots:
    void onAudioVolumeChanged(bool muted, int level, int channel);

private:
    /// level: as somebody else says it, of any size.
    void show(int level, bool muted);

    int m_level = 0;
    bool m_muted = false;
};

} // namespace headunit
