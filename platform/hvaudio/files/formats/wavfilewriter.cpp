#include "platform/hvaudio/dsp/settings.h"
#include "platform/hvaudio/files/formats/formats.h"

#include <sndfile.h>

#include <cmath>
#include <iterator>
#include <vector>

namespace hvaudio {

namespace {

/// A channel of the file and where its samples come from.
struct Place
{
    int map, from;
};
// clang-format off
constexpr Place five[] = {
    {SF_CHANNEL_MAP_LEFT,       dsp::FrontLeft},
    {SF_CHANNEL_MAP_RIGHT,      dsp::FrontRight},
    {SF_CHANNEL_MAP_LFE,        dsp::Subwoofer},
    {SF_CHANNEL_MAP_REAR_LEFT,  dsp::RearLeft},
    {SF_CHANNEL_MAP_REAR_RIGHT, dsp::RearRight},
};
constexpr Place two[] = {
    {SF_CHANNEL_MAP_LEFT,  0},
    {SF_CHANNEL_MAP_RIGHT, 1},
};
// clang-format on
static_assert(std::size(five) == dsp::speakerCount);

const Place* placesOf(int channels)
{
    return channels == dsp::speakerCount ? five : two;
}

struct WavFileWriter final : WavWriter
{
    ~WavFileWriter() override
    {
        if (file)
            sf_close(file);
    }

    bool write(const float* const* samples, int frames) override;
    bool finish(std::string& error) override;

    SNDFILE* file = nullptr;
    std::string name;
    int channels = 0;
    std::vector<float> interleaved;
};

bool WavFileWriter::write(const float* const* samples, int frames)
{
    interleaved.resize(std::size_t(frames) * channels);
    for (int c = 0; c < channels; ++c)
        for (int n = 0; n < frames; ++n)
            interleaved[std::size_t(n) * channels + c] = samples[placesOf(channels)[c].from][n];
    return file && sf_writef_float(file, interleaved.data(), frames) == frames;
}

bool WavFileWriter::finish(std::string& error)
{
    if (!file)
        return true;
    const int fault = sf_close(file);
    file = nullptr;
    if (fault != 0)
        error = "can't complete '" + name + "': " + sf_error_number(fault);
    return fault == 0;
}

} // namespace

std::unique_ptr<WavWriter> createByLibsndfile(int descriptor, const std::string& name, double rate,
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
    int map[dsp::speakerCount];
    for (int c = 0; c < channels; ++c)
        map[c] = placesOf(channels)[c].map;
    sf_command(file, SFC_SET_CHANNEL_MAP_INFO, map, int(sizeof(int)) * channels);
    auto writer = std::make_unique<WavFileWriter>();
    writer->file = file;
    writer->name = name;
    writer->channels = channels;
    return writer;
}

} // namespace hvaudio
