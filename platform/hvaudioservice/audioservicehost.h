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
    /// Which lists of frequencies the filter indexes count, see crossovers.h.
    enum class FilterTables {
        SpeakerGroups, ///< groupCrossoverHz, as the hub's crossover page counts
        MainAudio,     ///< mainHighPass, mainLowPass and mainSubwoofer, as the stand-alone page counts
    };

    /// Takes everything that the listener has asked for, every value in its range, whenever something changes
    /// and when it is installed while there is a service. Called on the GUI thread, inside the call that
    /// changes something, and before the service writes that to the disk; it must not call the service.
    using Sink = std::function<void(const dsp::Settings& settings)>;
    /// Sounds one key beep.
    using Beeper = std::function<void()>;

    /// Restores the state from the settings store and sets each channel to its stored start-up volume. Called
    /// once the store is open; again for a power cycle.
    static void powerOn();
    /// Falls silent, then commits what isn't on the disk yet. The service stays and takes calls; volumes that
    /// change meanwhile are heard from the next powerOn() on at the earliest.
    static void powerOff();
    /// Deletes the service, with what it has kept committed; the next instance() makes a new one, which reads
    /// the store anew. Sink and beeper stay. Harmless when there is none.
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
    /// Called for AudioService::doBeep and McuManager::triggerBeep alike, on the GUI thread; an empty
    /// function takes it away.
    static void setBeeper(Beeper beeper);
};

} // namespace hvaudio
