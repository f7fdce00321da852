#pragma once

#include "platform/common/settings/settingsrows.h"

namespace mem {

/// What the settings file at path holds, without changing, holding or waiting for it: SQLite can't read a
/// write-ahead log without writing beside it, so it gets a copy to work on. False with a reason when the file
/// can't be read or isn't sound.
bool readSettings(const QString& path, SettingsMap* values, QString* reason);

struct RescuedSettings
{
    SettingsMap values;
    int fromFile = 0;     ///< how many of them could be read from the damaged file
    int fromGoodCopy = 0; ///< how many come from the last good copy, because the file didn't give them
};

/// What is left of a settings file that isn't sound; it isn't touched. Only what has a setting's type counts.
RescuedSettings rescueSettings(const QString& path);

} // namespace mem
