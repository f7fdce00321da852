#include "platform/hvaudio/files/render.h"

#include "platform/hvaudio/dsp/design.h"
#include "platform/hvaudio/dsp/engine.h"
#include "platform/hvaudio/dsp/fold.h"
#include "platform/hvaudio/files/replacement.h"
#include "platform/hvaudio/files/soundfile.h"
#include "platform/hvaudio/files/wavwriter.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
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

} // namespace

bool render(const RenderJob& job, RenderReport& report, std::string& error)
{
    const auto begin = std::chrono::steady_clock::now();
    std::error_code ignored;
    if (std::filesystem::equivalent(job.in, job.out, ignored)) {
        error = "can't write '" + job.out + "': it is the file that is read";
        return false;
    }
    auto file = SoundFile::open(job.in, 0, SoundFile::Quality::Rendering, error);
    if (!file)
        return false;
    const double rate = engineRate(file->fileRate());
    if (rate != file->fileRate())
        file = SoundFile::open(job.in, rate, SoundFile::Quality::Rendering, error);
    if (!file)
        return false;

    const int outChannels = job.stereo ? 2 : dsp::speakerCount;
    const auto result = Replacement::create(job.out, error);
    if (!result)
        return false;
    const auto writer = WavWriter::create(result->descriptor(), job.out, rate, outChannels, error);
    if (!writer)
        return false;

    dsp::Engine engine;
    engine.prepare(rate);
    dsp::Settings settings = job.settings;
    settings.power = true;
    settings.mute = false;
    engine.set(settings);
    engine.settle();

    std::vector<StereoFrame> frames(blockFrames);
    std::vector<float> samples(std::size_t(blockFrames) * (2 + dsp::speakerCount));
    float *in[2], *out[dsp::speakerCount];
    for (int s = 0; s < 2; ++s)
        in[s] = samples.data() + std::size_t(s) * blockFrames;
    for (int i = 0; i < dsp::speakerCount; ++i)
        out[i] = samples.data() + std::size_t(2 + i) * blockFrames;

    long long skip = engine.latencyFrames(), written = 0;
    long long tail = skip + (long long)(tailSeconds * rate);
    for (bool ended = false; !ended || tail > 0;) {
        if (job.stopped && job.stopped()) {
            error = "can't write '" + job.out + "': stopped";
            return false;
        }
        int count = ended ? 0 : file->read(frames.data(), blockFrames);
        for (int n = 0; n < count; ++n) {
            in[0][n] = frames[n].left;
            in[1][n] = frames[n].right;
        }
        if (count < blockFrames) {
            ended = true;
            const int quiet = int(std::min<long long>(tail, blockFrames - count));
            for (float* side : in)
                std::fill(side + count, side + count + quiet, 0.0f);
            tail -= quiet;
            count += quiet;
        }
        engine.process(in, out, count);
        const int drop = int(std::min<long long>(skip, count));
        skip -= drop;
        if (job.stereo)
            dsp::foldToStereo(out, in, count);
        const float* channels[dsp::speakerCount];
        for (int c = 0; c < outChannels; ++c)
            channels[c] = (job.stereo ? in[c] : out[c]) + drop;
        if (count > drop && !writer->write(channels, count - drop)) {
            error = "can't write '" + job.out + "': the medium is full or gone";
            return false;
        }
        written += count - drop;
    }
    if (!writer->finish(error) || !result->finish(error))
        return false;

    report = {};
    report.frames = written;
    report.rate = rate;
    report.channels = file->channels();
    report.inputRate = file->fileRate();
    if (file->isCutShort())
        report.remark = "the input is cut short after " + seconds(file->fileFramesRead(), file->fileRate());
    if (const float gain = engine.takeMeters().gain; gain < 0.999f)
        report.remark +=
            (report.remark.empty() ? "" : "; ") +
            ("the limiter took up to " + std::to_string(int(-dsp::dbOfFactor(gain) + 0.5)) + " dB");
    report.elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return true;
}

} // namespace hvaudio
