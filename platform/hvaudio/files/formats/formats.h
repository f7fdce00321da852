#pragma once

#include "platform/hvaudio/files/soundfile.h"
#include "platform/hvaudio/files/wavwriter.h"

#include <memory>
#include <string>

namespace hvaudio {

/// `SoundFile::open` by libsndfile and libsamplerate.
std::unique_ptr<SoundFile> openByLibsndfile(const std::string& path, double rate, SoundFile::Quality quality,
                                            std::string& error);
/// `WavWriter::create` by libsndfile.
std::unique_ptr<WavWriter> createByLibsndfile(int descriptor, const std::string& name, double rate,
                                              int channels, std::string& error);

} // namespace hvaudio
