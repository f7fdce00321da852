#pragma once

#include "common/export.h"
#include "hvaudio/audioservice.h"

#include <functional>

namespace hvaudio {

namespace dsp {
struct Settings;
}

/// What only a host of the audio service needs. Thread: GUI.
class HVAUDIOSERVICE_EXPORT AudioServiceHost
{
public:
    /// Which frequency tables the filter indexes mean.
    enum class FilterTables {
        SpeakerGroups, ///< off, 30 ... 250 Hz, as the hub's crossover page counts
        MainAudio,     ///< the stand-alone crossover page's texts
    };

    /// Takes everything that the listener has asked for, whenever something changes, and when it is
    /// installed while there is a service.
    using Sink = std::function<void(const dsp::Settings& settings)>;
    /// Sounds one key beep.
    using Beeper = std::function<void()>;

    /// Restores the state from the settings store and sets each channel to its stored start-up volume. Called
    /// once the store is open; again for a power cycle.
    static void powerOn();
    /// Keeps what has to be kept and falls silent.
    static void powerOff();
    /// Deletes the service; the next instance() makes a new one. Sink and beeper stay.
    static void shutdown();

    /// The filters last applied under one set of tables are kept apart from those of the other, so choosing a
    /// set restores its own.
    static void setFilterTables(FilterTables tables);

    /// The source that plays, for its input gain; the radio until told otherwise. An unknown one is logged
    /// and changes nothing.
    static void setActiveSource(HVAudio_source_id_e source);

    /// The sound below the service. None (the default, or an empty function) is a silent unit that works
    /// otherwise.
    static void setSink(Sink sink);
    /// Called for AudioService::doBeep and McuManager::triggerBeep alike.
    static void setBeeper(Beeper beeper);
};

} // namespace hvaudio
