#pragma once

#include "platform/hvaudio/sources/source.h"

#include <memory>

namespace hvaudio {

/// What comes in.
std::unique_ptr<Source> makeInput();

} // namespace hvaudio
