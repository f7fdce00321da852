#pragma once

#include "platform/hvaudio/sources/source.h"

#include <memory>

namespace hvaudio {

/// What other programs play into the unit; where one side is missing it is silent.
std::unique_ptr<Source> makeInput();

} // namespace hvaudio
