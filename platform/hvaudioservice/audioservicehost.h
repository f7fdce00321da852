#pragma once

#include "common/export.h"

namespace hvaudio {

/// What only a host of the audio service needs. Thread: GUI.
class HVAUDIOSERVICE_EXPORT AudioServiceHost
{
public:
    /// Which frequency tables the filter indexes mean.
    enum class FilterTables {
        SpeakerGroups, ///< off, 30 ... 250 Hz, as the hub's crossover page counts
        MainAudio,     ///< the stand-alone crossover page's texts
    };

    /// Restores the state from the settings store and sets each channel to its stored start-up volume. Called
    /// once the store is open; again for a power cycle.
    static void powerOn();
    /// Keeps what has to be kept and falls silent.
    static void powerOff();
    /// Deletes the service; the next instance() makes a new one.
    static void shutdown();

    static void setFilterTables(FilterTables tables);
};

} // namespace hvaudio
