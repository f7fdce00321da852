#include "platform/hvaudio/files/fileformats.h"

#include <utility>

namespace hvaudio {

std::unique_ptr<SoundFile> SoundFile::open(const std::string& path, double rate, Quality quality,
                                           std::string& error)
{
    const FileFormats* const formats = fileFormats(error);
    return formats ? formats->open(path, rate, quality, error) : nullptr;
}

std::unique_ptr<WavWriter> WavWriter::create(const std::string& path, double rate, int channels,
                                             std::string& error)
{
    Descriptor file = openForWriting(path, error);
    if (!file)
        return nullptr;
    auto writer = create(file.get(), path, rate, channels, error);
    if (writer)
        writer->m_own = std::move(file);
    return writer;
}

std::unique_ptr<WavWriter> WavWriter::create(int descriptor, const std::string& name, double rate,
                                             int channels, std::string& error)
{
    const FileFormats* const formats = fileFormats(error);
    return formats ? formats->create(descriptor, name, rate, channels, error) : nullptr;
}

} // namespace hvaudio
