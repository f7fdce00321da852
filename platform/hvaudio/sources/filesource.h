#pragma once

#include "platform/hvaudio/sources/source.h"

#include <memory>
#include <string>

namespace hvaudio {

/// A sound file, repeated for ever. Reads 1.3 s ahead; the first part is read here. Null and a sentence in
/// `error` when the file can't be read.
std::unique_ptr<Source> makeFileSource(const std::string& path, double rate, std::string& error);

} // namespace hvaudio
