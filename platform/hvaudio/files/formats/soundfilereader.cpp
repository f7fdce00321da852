#include "platform/hvaudio/dsp/samples.h"
#include "platform/hvaudio/files/formats/formats.h"
#include "platform/hvaudio/files/regularfile.h"

#include <samplerate.h>
#include <sndfile.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace hvaudio {

namespace {

constexpr int maxChannels = 8;
constexpr int chunkFrames = 1024;
constexpr float side = 0.70710678f;

struct Weight
{
    float left, right;
};

/// The usual channel order of 1 to 8 channels, as libsndfile's names of places.
// clang-format off
constexpr std::array<std::array<int, maxChannels>, maxChannels> usualPlaces = {{
    {SF_CHANNEL_MAP_MONO},
    {SF_CHANNEL_MAP_LEFT, SF_CHANNEL_MAP_RIGHT},
    {SF_CHANNEL_MAP_LEFT, SF_CHANNEL_MAP_RIGHT, SF_CHANNEL_MAP_CENTER},
    {SF_CHANNEL_MAP_LEFT, SF_CHANNEL_MAP_RIGHT, SF_CHANNEL_MAP_REAR_LEFT, SF_CHANNEL_MAP_REAR_RIGHT},
    {SF_CHANNEL_MAP_LEFT, SF_CHANNEL_MAP_RIGHT, SF_CHANNEL_MAP_CENTER, SF_CHANNEL_MAP_REAR_LEFT, SF_CHANNEL_MAP_REAR_RIGHT},
    {SF_CHANNEL_MAP_LEFT, SF_CHANNEL_MAP_RIGHT, SF_CHANNEL_MAP_CENTER, SF_CHANNEL_MAP_LFE, SF_CHANNEL_MAP_REAR_LEFT, SF_CHANNEL_MAP_REAR_RIGHT},
    {SF_CHANNEL_MAP_LEFT, SF_CHANNEL_MAP_RIGHT, SF_CHANNEL_MAP_CENTER, SF_CHANNEL_MAP_LFE, SF_CHANNEL_MAP_REAR_CENTER, SF_CHANNEL_MAP_SIDE_LEFT, SF_CHANNEL_MAP_SIDE_RIGHT},
    {SF_CHANNEL_MAP_LEFT, SF_CHANNEL_MAP_RIGHT, SF_CHANNEL_MAP_CENTER, SF_CHANNEL_MAP_LFE, SF_CHANNEL_MAP_REAR_LEFT, SF_CHANNEL_MAP_REAR_RIGHT, SF_CHANNEL_MAP_SIDE_LEFT, SF_CHANNEL_MAP_SIDE_RIGHT},
}};
// clang-format on

Weight weightOf(int place)
{
    switch (place) {
    case SF_CHANNEL_MAP_LEFT:
    case SF_CHANNEL_MAP_FRONT_LEFT:
        return {1, 0};
    case SF_CHANNEL_MAP_RIGHT:
    case SF_CHANNEL_MAP_FRONT_RIGHT:
        return {0, 1};
    case SF_CHANNEL_MAP_REAR_LEFT:
    case SF_CHANNEL_MAP_SIDE_LEFT:
    case SF_CHANNEL_MAP_FRONT_LEFT_OF_CENTER:
    case SF_CHANNEL_MAP_TOP_FRONT_LEFT:
    case SF_CHANNEL_MAP_TOP_REAR_LEFT:
        return {side, 0};
    case SF_CHANNEL_MAP_REAR_RIGHT:
    case SF_CHANNEL_MAP_SIDE_RIGHT:
    case SF_CHANNEL_MAP_FRONT_RIGHT_OF_CENTER:
    case SF_CHANNEL_MAP_TOP_FRONT_RIGHT:
    case SF_CHANNEL_MAP_TOP_REAR_RIGHT:
        return {0, side};
    case SF_CHANNEL_MAP_LFE:
        return {0, 0};
    default:
        return {side, side}; // centres of any kind, mono
    }
}

/// Weights of the file's channels; `map` is the file's own word.
std::array<Weight, maxChannels> weightsOf(const int* map, int channels)
{
    const auto known = [&](const int* places) {
        return std::all_of(places, places + channels,
                           [](int p) { return p > SF_CHANNEL_MAP_INVALID && p < SF_CHANNEL_MAP_MAX; });
    };
    const int* const places = known(map) ? map : usualPlaces[channels - 1].data();
    std::array<Weight, maxChannels> weights{};
    float left = 0, right = 0;
    for (int i = 0; i < channels; ++i) {
        weights[i] = weightOf(places[i]);
        left += weights[i].left;
        right += weights[i].right;
    }
    // A file of nothing but low-frequency channels, or whose map names one side only, is still heard.
    if (left <= 0 || right <= 0) {
        weights.fill({1, 1});
        left = right = float(channels);
    }
    for (Weight& w : weights)
        w = {w.left / left, w.right / right};
    return weights;
}

struct SoundFileReader final : SoundFile
{
    ~SoundFileReader() override
    {
        src_delete(converter);
        if (file)
            sf_close(file);
    }

    bool open(const std::string& path, double wantedRate, Quality quality, std::string& error);
    int channels() const override { return info.channels; }
    int fileRate() const override { return info.samplerate; }
    double rate() const override { return playedRate; }
    long long fileFramesRead() const override { return framesRead; }
    bool isCutShort() const override;
    int read(StereoFrame* frames, int count) override;
    bool rewind() override;

    /// Fills `chunk` from the file; false at its end. What gave nothing once is at its end until it is
    /// rewound: the decoder of MP3 gives nothing at a damaged place and may go on later, which nobody who has
    /// told a converter of the end can follow.
    bool nextChunk()
    {
        if (inputEnded)
            return false;
        raw.resize(std::size_t(chunkFrames) * info.channels);
        chunk.resize(chunkFrames);
        const sf_count_t got = sf_readf_float(file, raw.data(), chunkFrames);
        chunkStart = 0;
        chunkLeft = int(std::max<sf_count_t>(got, 0));
        framesRead += chunkLeft;
        for (int n = 0; n < chunkLeft; ++n) {
            StereoFrame frame;
            for (int c = 0; c < info.channels; ++c) {
                const float x = dsp::cleaned(raw[std::size_t(n) * info.channels + c]);
                frame.left += weights[c].left * x;
                frame.right += weights[c].right * x;
            }
            chunk[n] = frame;
        }
        inputEnded = chunkLeft == 0;
        return !inputEnded;
    }

    Descriptor descriptor; ///< what `file` reads
    SNDFILE* file = nullptr;
    SF_INFO info = {};
    SRC_STATE* converter = nullptr; ///< null when rates are equal
    double playedRate = 0;
    std::array<Weight, maxChannels> weights{};
    std::vector<float> raw;
    std::vector<StereoFrame> chunk;
    int chunkStart = 0, chunkLeft = 0;
    long long framesRead = 0;
    bool inputEnded = false; ///< of the file; the converter may still hold something
    bool ended = false;
};

bool SoundFileReader::open(const std::string& path, double wantedRate, Quality quality, std::string& error)
{
    descriptor = openForReading(path, error);
    if (!descriptor)
        return false;
    file = sf_open_fd(descriptor.get(), SFM_READ, &info, SF_FALSE);
    // An MP3 file that begins with something else is only known by its name's ending.
    if (!file) {
        info = {};
        file = sf_open(path.c_str(), SFM_READ, &info);
    }
    if (!file) {
        error = "can't read '" + path + "': " + sf_strerror(nullptr);
        while (!error.empty() && (error.back() == '\n' || error.back() == '.'))
            error.pop_back();
        return false;
    }
    if (info.channels < 1 || info.channels > maxChannels) {
        error = "can't use '" + path + "': it has " + std::to_string(info.channels) +
                " channels, 1 to 8 are possible";
        return false;
    }
    if (info.samplerate < 1000 || info.samplerate > 768000) {
        error = "can't use '" + path + "': its rate of " + std::to_string(info.samplerate) +
                " Hz is not between 1000 and 768000";
        return false;
    }
    int map[maxChannels] = {};
    if (!sf_command(file, SFC_GET_CHANNEL_MAP_INFO, map, int(sizeof(int)) * info.channels))
        std::fill(map, map + maxChannels, int(SF_CHANNEL_MAP_INVALID));
    weights = weightsOf(map, info.channels);
    playedRate = wantedRate > 0 ? wantedRate : info.samplerate;
    if (playedRate != info.samplerate) {
        int fault = 0;
        converter = src_new(quality == Quality::Rendering ? SRC_SINC_BEST_QUALITY : SRC_SINC_MEDIUM_QUALITY,
                            2, &fault);
        if (!converter || !src_is_valid_ratio(playedRate / info.samplerate)) {
            error = "can't convert '" + path + "' to " + std::to_string(int(playedRate)) + " Hz";
            return false;
        }
    }
    // The first samples are read at once: a file that is nothing but a header is refused here rather than
    // played as silence.
    if (!nextChunk()) {
        error = "can't use '" + path + "': it has no sound";
        return false;
    }
    return true;
}

bool SoundFileReader::isCutShort() const
{
    if (!ended)
        return false;
    // Without a tag the count of an MP3 is only an estimate from its first frames.
    const bool counted = (info.format & SF_FORMAT_TYPEMASK) != SF_FORMAT_MPEG && info.frames != SF_COUNT_MAX;
    return counted ? framesRead < info.frames : sf_error(file) != SF_ERR_NO_ERROR;
}

int SoundFileReader::read(StereoFrame* frames, int count)
{
    int done = 0;
    while (done < count && !ended) {
        const bool more = chunkLeft > 0 || nextChunk();
        if (!converter) {
            const int n = std::min(count - done, chunkLeft);
            std::copy_n(chunk.begin() + chunkStart, n, frames + done);
            chunkStart += n;
            chunkLeft -= n;
            done += n;
            ended = !more;
            continue;
        }
        SRC_DATA data = {};
        data.data_in = &chunk[chunkLeft > 0 ? chunkStart : 0].left;
        data.input_frames = chunkLeft;
        data.data_out = &frames[done].left;
        data.output_frames = count - done;
        data.end_of_input = !more;
        data.src_ratio = playedRate / info.samplerate;
        if (src_process(converter, &data) != 0)
            data.input_frames_used = data.output_frames_gen = 0;
        chunkStart += int(data.input_frames_used);
        chunkLeft -= int(data.input_frames_used);
        done += int(data.output_frames_gen);
        // At the end the converter still gives what it holds. One that neither takes nor gives never will.
        ended = data.output_frames_gen == 0 && (!more || data.input_frames_used == 0);
    }
    return done;
}

bool SoundFileReader::rewind()
{
    if (sf_seek(file, 0, SEEK_SET) != 0)
        return false;
    if (converter)
        src_reset(converter);
    chunkLeft = 0;
    framesRead = 0;
    inputEnded = ended = false;
    return true;
}

} // namespace

std::unique_ptr<SoundFile> openByLibsndfile(const std::string& path, double rate, SoundFile::Quality quality,
                                            std::string& error)
{
    auto file = std::make_unique<SoundFileReader>();
    if (!file->open(path, rate, quality, error))
        return nullptr;
    return file;
}

} // namespace hvaudio
