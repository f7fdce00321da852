#pragma once

#include "platform/hvaudioservice/audiostate.h"

#include <QObject>
#include <QString>
#include <QVariant>

namespace hvaudio {

/// The service's state and the three ways it goes from here: down to the sound, into the store, up as
/// signals; in this order, since a commit may wait for the disk and nobody should hear it do so.
class AudioServicePrivate : public QObject
{
    Q_OBJECT
public:
    explicit AudioServicePrivate(AudioService* service);
    ~AudioServicePrivate() override;

    /// The service's private part; makes the service when there is none.
    static AudioServicePrivate* of();
    /// Null when there is none.
    static AudioServicePrivate* existing();
    AudioService* service() const { return q; }
    static void destroyService();

    AudioState state;

    // Arguments of these have been found in range. Thread: GUI.
    void powerOn();
    void powerOff();
    void setFilterTables(AudioServiceHost::FilterTables tables);
    void setEqType(int type, bool save);
    void setUserBand(int curve, int band, int value, bool save);
    void setFilter(Filter* filter, const Filter& value, const QString& key);
    void setVolume(int channel, int level);

    /// Durable when it returns, with everything kept before it.
    void keep(const QString& key, const QVariant& value);
    /// Durable within the store's delay.
    void keepSoon(const QString& key, const QVariant& value);
    /// Keeps a value of a call that comes in bursts (a filter for each speaker, a delay for each): the burst
    /// costs one commit, as soon as the page's slot has returned.
    void keepInBurst(const QString& key, const QVariant& value);
    /// Hands the state down.
    void publish();
    void beep();

private slots:
    void onSettingChanged(const QString& key);
    void onSettingEdited(const QString& key);
    void commitBurst();

private:
    AudioService* const q;
    bool m_burst = false;
};

/// What the host has installed; outlives the service.
struct HostCallbacks
{
    AudioServiceHost::Sink sink;
    AudioServiceHost::Beeper beeper;
};
HostCallbacks& hostCallbacks();

} // namespace hvaudio
