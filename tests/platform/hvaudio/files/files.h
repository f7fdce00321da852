#pragma once

#include <QByteArray>

#include <sndfile.h>
#include <string>
#include <vector>

/// Sound files for the tests, written and read by libsndfile itself.
namespace files {

/// Interleaved samples to a file; an empty result means that it couldn't be written.
inline std::string write(const std::string& path, int format, int rate, int channels,
                         const std::vector<float>& interleaved)
{
    SF_INFO info = {};
    info.samplerate = rate;
    info.channels = channels;
    info.format = format;
    SNDFILE* const file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!file)
        return {};
    const sf_count_t frames = sf_count_t(interleaved.size()) / channels;
    const bool ok = sf_writef_float(file, interleaved.data(), frames) == frames;
    return sf_close(file) == 0 && ok ? path : std::string();
}

struct Contents
{
    SF_INFO info = {};
    std::vector<std::vector<float>> channels;
};

inline Contents read(const std::string& path)
{
    Contents contents;
    SNDFILE* const file = sf_open(path.c_str(), SFM_READ, &contents.info);
    if (!file)
        return contents;
    std::vector<float> all(std::size_t(contents.info.frames * contents.info.channels));
    sf_readf_float(file, all.data(), contents.info.frames);
    sf_close(file);
    contents.channels.resize(std::size_t(contents.info.channels));
    for (std::size_t i = 0; i < all.size(); ++i)
        contents.channels[i % contents.channels.size()].push_back(all[i]);
    return contents;
}

} // namespace files
