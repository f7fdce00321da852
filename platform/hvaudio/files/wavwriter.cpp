#include "platform/hvaudio/files/wavwriter.h"

#include "platform/hvaudio/dsp/settings.h"

#include <sndfile.h>

#include <cmath>
#include <iterator>

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

} // namespace

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
    std::unique_ptr<WavWriter> writer(new WavWriter);
    writer->m_file = file;
    writer->m_name = name;
    writer->m_channels = channels;
    return writer;
}

WavWriter::~WavWriter()
{
    if (m_file)
        sf_close(m_file);
}

bool WavWriter::write(const float* const* channels, int frames)
{
    m_interleaved.resize(std::size_t(frames) * m_channels);
    for (int c = 0; c < m_channels; ++c)
        for (int n = 0; n < frames; ++n)
            m_interleaved[std::size_t(n) * m_channels + c] = channels[placesOf(m_channels)[c].from][n];
    return m_file && sf_writef_float(m_file, m_interleaved.data(), frames) == frames;
}

bool WavWriter::finish(std::string& error)
{
    if (!m_file)
        return true;
    const int fault = sf_close(m_file);
    m_file = nullptr;
    if (fault != 0)
        error = "can't complete '" + m_name + "': " + sf_error_number(fault);
    return fault == 0;
}

} // namespace hvaudio
