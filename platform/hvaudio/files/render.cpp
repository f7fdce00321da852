#include "platform/hvaudio/files/render.h"

#include "platform/hvaudio/dsp/design.h"
#include "platform/hvaudio/dsp/engine.h"
#include "platform/hvaudio/dsp/fold.h"
#include "platform/hvaudio/files/replacement.h"
#include "platform/hvaudio/files/soundfile.h"
#include "platform/hvaudio/files/wavwriter.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <vector>

namespace hvaudio {

namespace {

constexpr int blockFrames = 4096;
constexpr double tailSeconds = 0.1;

double engineRate(int fileRate)
{
    return fileRate == 44100 || fileRate == 48000 || fileRate == 96000 ? fileRate : 48000;
}

/// To a tenth, with a point in every language.
std::string seconds(long long frames, int rate)
{
    const long long tenths = (10 * frames + rate / 2) / rate;
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " s";
}

/// The input at the rate that the engine runs at for it; null with a sentence in `error`.
std::unique_ptr<SoundFile> openInput(const RenderJob& job, std::string& error)
{
    std::error_code ignored;
    if (std::filesystem::equivalent(job.in, job.out, ignored)) {
        error = "can't write '" + job.out + "': it is the file that is read";
        return nullptr;
    }
    auto file = SoundFile::open(job.in, 0, SoundFile::Quality::Rendering, error);
    if (file && engineRate(file->fileRate()) != file->fileRate())
        file = SoundFile::open(job.in, engineRate(file->fileRate()), SoundFile::Quality::Rendering, error);
    return file;
}

/// At once at its settings.
void settle(dsp::Engine& engine, double rate, dsp::Settings settings)
{
    engine.prepare(rate);
    settings.power = true;
    settings.mute = false;
    engine.set(settings);
    engine.settle();
}

/// Channels of one block, one after the other.
struct Channels
{
    explicit Channels(int count)
        : samples(std::size_t(count) * blockFrames)
    {
        for (int c = 0; c < count; ++c)
            channel.push_back(samples.data() + std::size_t(c) * blockFrames);
    }
    std::vector<float> samples;
    std::vector<float*> channel;
};

/// All of the input through the engine, and what rings out. Frames written; -1 with a sentence in `error`.
long long run(const RenderJob& job, SoundFile& file, dsp::Engine& engine, WavWriter& writer,
              std::string& error)
{
    std::vector<StereoFrame> frames(blockFrames);
    Channels in(2), out(dsp::speakerCount);
    std::vector<float*>& result = job.stereo ? in.channel : out.channel;
    long long skip = engine.latencyFrames(), written = 0;
    long long tail = skip + (long long)(tailSeconds * engine.rate());
    for (bool ended = false; !ended || tail > 0;) {
        if (job.stopped && job.stopped()) {
            error = "can't write '" + job.out + "': stopped";
            return -1;
        }
        int count = ended ? 0 : file.read(frames.data(), blockFrames);
        for (int n = 0; n < count; ++n) {
            in.channel[0][n] = frames[n].left;
            in.channel[1][n] = frames[n].right;
        }
        if (count < blockFrames) {
            ended = true;
            const int quiet = int(std::min<long long>(tail, blockFrames - count));
            for (float* const side : in.channel)
                std::fill(side + count, side + count + quiet, 0.0f);
            tail -= quiet;
            count += quiet;
        }
        engine.process(in.channel.data(), out.channel.data(), count);
        if (job.stereo)
            dsp::foldToStereo(out.channel.data(), in.channel.data(), count);
        // The engine's own latency is left out at the start.
        const int drop = int(std::min<long long>(skip, count));
        skip -= drop;
        const float* channels[dsp::speakerCount];
        std::transform(result.begin(), result.end(), channels, [drop](float* from) { return from + drop; });
        if (count > drop && !writer.write(channels, count - drop)) {
            error = "can't write '" + job.out + "': the medium is full or gone";
            return -1;
        }
        written += count - drop;
    }
    return written;
}

std::string remarkOn(const SoundFile& file, float limiterGain)
{
    std::string remark;
    if (file.isCutShort())
        remark = "the input is cut short after " + seconds(file.fileFramesRead(), file.fileRate());
    if (limiterGain < 0.999f)
        remark +=
            (remark.empty() ? "" : "; ") +
            ("the limiter took up to " + std::to_string(int(-dsp::dbOfFactor(limiterGain) + 0.5)) + " dB");
    return remark;
}

} // namespace

bool render(const RenderJob& job, RenderReport& report, std::string& error)
{
    const auto begin = std::chrono::steady_clock::now();
    const auto file = openInput(job, error);
    if (!file)
        return false;
    const auto result = Replacement::create(job.out, error);
    if (!result)
        return false;
    const auto writer = WavWriter::create(result->descriptor(), job.out, file->rate(),
                                          job.stereo ? 2 : dsp::speakerCount, error);
    if (!writer)
        return false;
    dsp::Engine engine;
    settle(engine, file->rate(), job.settings);
    const long long written = run(job, *file, engine, *writer, error);
    if (written < 0 || !writer->finish(error) || !result->finish(error))
        return false;

    report = {};
    report.frames = written;
    report.rate = file->rate();
    report.channels = file->channels();
    report.inputRate = file->fileRate();
    report.remark = remarkOn(*file, engine.takeMeters().gain);
    report.elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return true;
}

} // namespace hvaudio
