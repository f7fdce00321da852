#pragma once

#include "platform/hvaudio/files/soundfile.h"
#include "platform/hvaudio/files/wavwriter.h"

#include <memory>
#include <string>

namespace hvaudio {

/// What reads and writes sound files, with the meaning of `SoundFile::open` and `WavWriter::create`.
struct FileFormats
{
    std::unique_ptr<SoundFile> (*open)(const std::string& path, double rate, SoundFile::Quality quality,
                                       std::string& error);
    std::unique_ptr<WavWriter> (*create)(int descriptor, const std::string& name, double rate, int channels,
                                         std::string& error);
};

/// [CT] In libhvaudio: of libhvaudiofiles, which lies beside it and is loaded with the first file, since
/// the libraries of a dozen formats come along; null, and a sentence in `error`, when it can't be loaded.
/// Where the processor is linked with its inside, so are they.
const FileFormats* fileFormats(std::string& error);

} // namespace hvaudio

/// The one thing that libhvaudiofiles shows.
extern "C" const hvaudio::FileFormats hvaudioFileFormats;
