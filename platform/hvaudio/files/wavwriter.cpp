#include "platform/hvaudio/files/wavwriter.h"

#include <sndfile.h>

#include <cmath>

namespace hvaudio {

std::unique_ptr<WavWriter> WavWriter::create(const std::string& path, double rate, int channels,
                                             std::string& error)
{
    Descriptor file = openForWriting(path, error);
    if (!file)
        return nullptr;
    auto writer = create(file.get(), path, rate, channels, error);
    if (writer)
        writer->own_ = std::move(file);
    return writer;
}

std::unique_ptr<WavWriter> WavWriter::create(int descriptor, const std::string& name, double rate,
                                             int channels, std::string& error)
{
    SF_INFO info = {};
    info.samplerate = int(std::lround(rate));
    info.channels = channels;
    info.format = SF_FORMAT_RF64 | SF_FORMAT_FLOAT;
    SNDFILE* const file = sf_open_fd(descriptor, SFM_WRITE, &info, SF_FALSE);
    if (!file) {
        error = "can't write '" + name + "': " + sf_strerror(nullptr);
        while (!error.empty() && (error.back() == '\n' || error.back() == '.'))
            error.pop_back();
        return nullptr;
    }
    sf_command(file, SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
    std::unique_ptr<WavWriter> writer(new WavWriter);
    writer->file_ = file;
    writer->name_ = name;
    writer->channels_ = channels;
    return writer;
}

WavWriter::~WavWriter()
{
    if (file_)
        sf_close(file_);
}

bool WavWriter::write(const float* const* channels, int frames)
{
    interleaved_.resize(std::size_t(frames) * channels_);
    for (int c = 0; c < channels_; ++c)
        for (int n = 0; n < frames; ++n)
            interleaved_[std::size_t(n) * channels_ + c] = channels[c][n];
    return file_ && sf_writef_float(file_, interleaved_.data(), frames) == frames;
}

bool WavWriter::finish(std::string& error)
{
    if (!file_)
        return true;
    const int fault = sf_close(file_);
    file_ = nullptr;
    if (fault != 0)
        error = "can't complete '" + name_ + "': " + sf_error_number(fault);
    return fault == 0;
}

} // namespace hvaudio
