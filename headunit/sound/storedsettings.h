#pragma once

#include "platform/hvaudio/dsp/settings.h"

#include <QString>

namespace headunit {

/// What the unit would sound like after power-on with the settings in this file (empty: the user's own), read
/// through the audio service. The file is never changed, so a unit that is running on it isn't disturbed.
/// False, with a sentence in `error`, when a file that was named can't be read; without a file of the user's
/// own it is the factory settings. The process-wide store holds them afterwards. Thread: GUI.
bool readStoredSettings(const QString& path, hvaudio::dsp::Settings* settings, QString* error);

} // namespace headunit
