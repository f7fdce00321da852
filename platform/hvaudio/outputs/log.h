#pragma once

#include "platform/hvaudio/threads.h"

#include <functional>
#include <string>

namespace hvaudio {

enum class LogLevel {
    Info,
    Warning,
};
/// Takes one readable line without line end. Called from control threads, several at once included, never
/// from the audio thread.
using Log = std::function<void(LogLevel, const std::string&)>;

} // namespace hvaudio
