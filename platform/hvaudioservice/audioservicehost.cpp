#include "platform/hvaudioservice/audioservicehost.h"

#include "platform/hvaudioservice/audioserviceprivate.h"

#include "platform/hvaudio/dsp/settings.h"

#include <QDebug>

#include <utility>

namespace hvaudio {

void AudioServiceHost::powerOn()
{
    AudioServicePrivate::of()->powerOn();
}

void AudioServiceHost::powerOff()
{
    AudioServicePrivate::of()->powerOff();
}

void AudioServiceHost::shutdown()
{
    AudioServicePrivate::destroyService();
}

void AudioServiceHost::setFilterTables(FilterTables tables)
{
    AudioServicePrivate::of()->setFilterTables(tables);
}

void AudioServiceHost::setActiveSource(HVAudio_source_id_e source)
{
    if (rowOfSource(source) < 0) {
        qWarning() << "AudioService: there is no source" << static_cast<int>(source) << "to play";
        return;
    }
    AudioServicePrivate* const service = AudioServicePrivate::of();
    service->state.source = source;
    service->publish();
}

void AudioServiceHost::setSink(Sink sink)
{
    hostCallbacks().sink = std::move(sink);
    // Not before there is a service: a host that takes its sink back after shutdown() wants no new one.
    if (AudioServicePrivate* const service = AudioServicePrivate::existing())
        service->publish();
}

void AudioServiceHost::setBeeper(Beeper beeper)
{
    hostCallbacks().beeper = std::move(beeper);
}

} // namespace hvaudio
