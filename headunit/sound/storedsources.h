#pragma once

#include "headunit/sound/soundtypes.h"

#include <QStringList>

#include <functional>

namespace headunit {

class SoundControl;
struct UnitSource;

// What the user has chosen to play as each source, and which of them is heard, in the settings store: under
// "Headunit_Source_<name>" one of "input", "pink", "sweep", "silence" and "file:<path>", under
// "Headunit_Playing" the name of a source. Need an open store. Thread: GUI.

/// Keeps the choice for a source. Durable when it returns.
void keepSource(HVAudio_source_id_e id, const SourceChoice& choice);
void keepPlayingSource(HVAudio_source_id_e id);

/// Who wants to know when a remembered file is opened: a damaged one may take the unit down with it.
struct FileWatch
{
    /// Before; false: the source stays silent this time, and the file isn't touched.
    std::function<bool(const UnitSource& source)> mayOpen;
    /// After, whether it could be read or not.
    std::function<void()> opened;
};

/// Sets the sound to what is kept, else to other programs as each source and the radio playing; what it does
/// already isn't touched. key: only what is kept under it; empty: everything. A value that is no choice is
/// logged and counts as none. watch: both functions or none. A file that can't be played is logged, stays
/// kept (its medium may come back) and is replaced by silence.
void restoreSources(SoundControl* sound, const QString& key = QString(), const FileWatch& watch = {});

/// A sentence for each source that has a file kept that the sound doesn't play.
QStringList sourceComplaints(const SoundControl& sound);

} // namespace headunit
