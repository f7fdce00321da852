#pragma once

#include "headunit/cli/options.h"

namespace headunit {

/// --render and --plot: work that needs no screen and no driver. Thread: GUI.
/// Returns false and a sentence in `message` when it failed, or was stopped by a signal (StopSignals), with
/// nothing left behind; else `message` says what was done.
bool renderFile(const Options& options, QString* message);
bool plotResponses(const Options& options, QString* message);

} // namespace headunit
