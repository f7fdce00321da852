// What a limiter makes of a programme that is far too loud, for comparison beside others; limiters.sh drives
// it.
//
//   limiters programme FILE SECONDS   writes a hot programme: pink noise, a bass line of 45 to 90 Hz and drum
//                                     beats, peaks up to 12 dB over full scale; stereo float, 48 kHz
//   limiters tone FILE SECONDS HZ     writes a tone, 12 dB over full scale
//   limiters ours|lsp IN OUT          limits a file with ours, or with the LSP project's limiter
//   limiters crest FILE               peak over RMS, in dB
//   limiters thdn FILE HZ             what isn't the tone beside the tone, in percent, of the second half

#include "bench/hvaudio/peers.h"

#include "platform/hvaudio/dsp/limiter.h"

#ifdef HAVE_LADSPA
#include "bench/hvaudio/lspchain.h"
#endif

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

using namespace peers;

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr float over = 3.98f; ///< 12 dB

using Samples = std::vector<float>; ///< interleaved stereo

Samples readFile(const char* path)
{
    SF_INFO info{};
    SNDFILE* const file = sf_open(path, SFM_READ, &info);
    if (!file || info.channels != 2)
        throw std::runtime_error(std::string(path) + ": no stereo file");
    Samples samples(2 * std::size_t(info.frames));
    sf_readf_float(file, samples.data(), info.frames);
    sf_close(file);
    return samples;
}

void writeFile(const char* path, const Samples& samples)
{
    SF_INFO info{};
    info.samplerate = int(rate);
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    SNDFILE* const file = sf_open(path, SFM_WRITE, &info);
    if (!file)
        throw std::runtime_error(std::string(path) + ": " + sf_strerror(nullptr));
    sf_writef_float(file, samples.data(), sf_count_t(samples.size() / 2));
    sf_close(file);
}

Samples programme(double seconds)
{
    PinkNoise side[2] = {PinkNoise(1), PinkNoise(2)}, beat(3);
    Samples samples(2 * std::size_t(seconds * rate));
    constexpr double notes[] = {45, 60, 67.5, 90};
    double phase = 0;
    for (std::size_t n = 0; n < samples.size() / 2; ++n) {
        const double t = double(n) / rate;
        phase += 2 * pi * notes[std::size_t(t) % 4] / rate;
        const double sinceBeat = std::fmod(t, 0.5);
        const double bass = 0.35 * std::sin(phase) * std::exp(-1.5 * std::fmod(t, 1.0));
        const double drum = 1.2 * std::exp(-35 * sinceBeat) * double(beat.next());
        for (std::size_t i = 0; i < 2; ++i)
            samples[2 * n + i] = float(bass + drum + 0.25 * double(side[i].next()));
    }
    float top = 0;
    for (const float x : samples)
        top = std::max(top, std::abs(x));
    for (float& x : samples)
        x *= over / top;
    return samples;
}

Samples tone(double seconds, double hz)
{
    Samples samples(2 * std::size_t(seconds * rate));
    for (std::size_t n = 0; n < samples.size(); ++n)
        samples[n] = over * float(std::sin(2 * pi * hz * double(n / 2) / rate));
    return samples;
}

/// Ours, with both sides on cabin speakers.
Samples limitedByUs(const Samples& in)
{
    using namespace hvaudio::dsp;
    Limiter limiter;
    limiter.prepare(rate);
    Samples out(in.size());
    float left[pieceFrames], right[pieceFrames];
    float* const to[speakerCount] = {left, right};
    for (std::size_t done = 0; done < in.size() / 2; done += pieceFrames) {
        const int frames = int(std::min<std::size_t>(pieceFrames, in.size() / 2 - done));
        float* const* const inputs = limiter.inputs();
        float peak[speakerCount] = {};
        for (int i = 0; i < speakerCount; ++i)
            for (int n = 0; n < frames; ++n) {
                inputs[i][n] = i < 2 ? in[2 * (done + std::size_t(n)) + std::size_t(i)] : 0;
                peak[i] = std::max(peak[i], std::abs(inputs[i][n]));
            }
        limiter.process(to, frames, 0, peak); // a piece is a whole number of cells
        for (int n = 0; n < frames; ++n)
            for (std::size_t i = 0; i < 2; ++i)
                out[2 * (done + std::size_t(n)) + i] = to[i][n];
    }
    return out;
}

#ifdef HAVE_LADSPA
Samples limitedByLsp(const Samples& in)
{
    constexpr int block = 1024;
    LspPlugin limiter("limiter_stereo", (unsigned long)(rate));
    limiter.set("Automatic level regulation", 0);
    limiter.set("Threshold", hvaudio::dsp::Limiter::ceiling);
    // Its own defaults, which the plug-in's format only carries roughly.
    for (const char* const time : {"Lookahead", "Attack time", "Release time"})
        limiter.set(time, 5);
    Samples out(in.size());
    float side[2][block];
    float* const both[2] = {side[0], side[1]};
    for (std::size_t done = 0; done < in.size() / 2; done += block) {
        const std::size_t frames = std::min<std::size_t>(block, in.size() / 2 - done);
        for (std::size_t n = 0; n < 2 * frames; ++n)
            side[n & 1][n / 2] = in[2 * done + n];
        limiter.run(both, both, int(frames));
        for (std::size_t n = 0; n < 2 * frames; ++n)
            out[2 * done + n] = side[n & 1][n / 2];
    }
    return out;
}
#endif

double crest(const Samples& samples)
{
    double top = 0, sum = 0;
    for (const float x : samples) {
        top = std::max(top, std::abs(double(x)));
        sum += double(x) * double(x);
    }
    return 20 * std::log10(top / std::sqrt(sum / double(samples.size())));
}

/// By fitting sine, cosine and offset to the left side's second half, whole seconds of it.
double thdn(const Samples& samples, double hz)
{
    const std::size_t second = std::size_t(rate), frames = samples.size() / 2;
    const std::size_t count = frames / 2 / second * second, start = frames - count;
    double s = 0, c = 0, mean = 0;
    for (std::size_t n = 0; n < count; ++n) {
        const double x = double(samples[2 * (start + n)]), at = 2 * pi * hz * double(n) / rate;
        s += x * std::sin(at);
        c += x * std::cos(at);
        mean += x;
    }
    s *= 2 / double(count);
    c *= 2 / double(count);
    mean /= double(count);
    double rest = 0;
    for (std::size_t n = 0; n < count; ++n) {
        const double at = 2 * pi * hz * double(n) / rate;
        const double x = double(samples[2 * (start + n)]) - s * std::sin(at) - c * std::cos(at) - mean;
        rest += x * x;
    }
    return 100 * std::sqrt(rest / double(count)) / std::sqrt((s * s + c * c) / 2);
}

int run(int count, char** words)
{
    const std::string what = count > 2 ? words[1] : "";
    if (what == "programme" && count == 4)
        writeFile(words[2], programme(std::atof(words[3])));
    else if (what == "tone" && count == 5)
        writeFile(words[2], tone(std::atof(words[3]), std::atof(words[4])));
    else if (what == "ours" && count == 4)
        writeFile(words[3], limitedByUs(readFile(words[2])));
#ifdef HAVE_LADSPA
    else if (what == "lsp" && count == 4)
        writeFile(words[3], limitedByLsp(readFile(words[2])));
#endif
    else if (what == "crest" && count == 3)
        std::printf("%.2f\n", crest(readFile(words[2])));
    else if (what == "thdn" && count == 4)
        std::printf("%.4f\n", thdn(readFile(words[2]), std::atof(words[3])));
    else
        throw std::runtime_error("what to do? See the head of limiters.cpp");
    return 0;
}

} // namespace

int main(int count, char** words)
{
    try {
        return run(count, words);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "limiters: %s\n", error.what());
        return 1;
    }
}
