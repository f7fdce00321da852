// Runs a sound file through the full chain and throws the result away, for whole-process timing beside other
// tools: the same reading for every way of computing, so that "pass" can be taken off.
//
//   hvaudio_chain FILE pass|scalar|vector2|vector4|vector8|plain|bare|lsp [GAIN]
//                                         GAIN in dB on what is read, so that the limiter has work
//   hvaudio_chain FILE noise SECONDS      writes pink noise, -12 dB, stereo float, 48 kHz
//   hvaudio_chain FILE bass SECONDS       the same with a bass line of 45 Hz
//
// "vector2+" and so on run the low-passes of the cabin's speakers too, which the others haven't got. Built
// once more for AVX2 and FMA as hvaudio_chain_avx2, which alone has "bare".

#if defined(__AVX2__) && defined(__FMA__)
#include "bench/hvaudio/barekernel.h"
#endif
#include "bench/hvaudio/peers.h"

#include "platform/hvaudio/dsp/design.h"

#ifdef HAVE_LADSPA
#include "bench/hvaudio/lspchain.h"
#endif

#include <sndfile.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

using namespace peers;

namespace {

constexpr int blockFrames = 1024;

/// Notes of half a second with soft edges, every third of them a rest.
float bassLine(size_t frame)
{
    const double t = double(frame) / rate, note = std::fmod(2 * t, 1);
    if (size_t(2 * t) % 3 == 2)
        return 0;
    return float(0.3 * std::sin(3.14159265358979323846 * note) *
                 std::sin(2 * 3.14159265358979323846 * 45 * t));
}

int makeNoise(const char* file, int seconds, bool bass)
{
    SF_INFO info{};
    info.samplerate = int(rate);
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    SNDFILE* out = sf_open(file, SFM_WRITE, &info);
    if (!out) {
        std::fprintf(stderr, "%s: %s\n", file, sf_strerror(nullptr));
        return 1;
    }
    PinkNoise side[2] = {PinkNoise(1), PinkNoise(2)};
    std::vector<float> block(2 * size_t(rate));
    for (int second = 0; second < seconds; ++second) {
        for (size_t n = 0; n < block.size(); ++n)
            block[n] =
                0.25f * side[n & 1].next() + (bass ? bassLine(size_t(second) * size_t(rate) + n / 2) : 0.0f);
        sf_writef_float(out, block.data(), sf_count_t(rate));
    }
    sf_close(out);
    return 0;
}

using Process = std::function<void(const float*, const float*, float* const*, int)>;

Process processOf(const std::string& way)
{
    if (way == "pass")
        return [](const float*, const float*, float* const*, int) {};
    if (way == "plain") {
        auto chain = std::make_shared<PlainChain>();
        return [chain](const float* l, const float* r, float* const* out, int n) {
            chain->process(l, r, out, n);
        };
    }
#if defined(__AVX2__) && defined(__FMA__)
    if (way == "bare") {
        auto kernel = std::make_shared<BareKernel>();
        return [kernel](const float* l, const float* r, float* const* out, int n) {
            kernel->process(l, r, out, n);
        };
    }
#endif
#ifdef HAVE_LADSPA
    if (way == "lsp") {
        auto chain = std::make_shared<LspChain>((unsigned long)rate);
        return [chain](const float* l, const float* r, float* const* out, int n) {
            chain->process(l, r, out, n);
        };
    }
#endif
    struct Named
    {
        const char* name;
        Path path;
    };
    for (const Named& p : {Named{"scalar", Path::Scalar},
                           {"vector2", Path::Vector2},
                           {"vector4", Path::Vector4},
                           {"vector8", Path::Vector8}}) {
        const bool lowPasses = way == std::string(p.name) + "+";
        if (way != p.name && !lowPasses)
            continue;
        auto engine = std::make_shared<Engine>();
        if (!engine->setPath(p.path))
            throw std::runtime_error("this processor can't run " + way);
        engine->prepare(rate);
        Settings settings = fullChain();
        if (lowPasses)
            for (auto& speaker : settings.cabin)
                speaker.lowPass = {16000, 4};
        engine->set(settings);
        engine->settle();
        return [engine](const float* l, const float* r, float* const* out, int n) {
            const float* const in[2] = {l, r};
            engine->process(in, out, n);
        };
    }
    throw std::runtime_error("no way " + way);
}

} // namespace

int main(int argc, char** argv)
try {
    const std::string wanted = argc == 4 ? argv[2] : "";
    if (wanted == "noise" || wanted == "bass")
        return makeNoise(argv[1], std::atoi(argv[3]), wanted == "bass");
    if (argc != 3 && argc != 4) {
        std::fprintf(
            stderr,
            "usage: %s FILE pass|scalar|vector2|vector4|vector8|plain|bare|lsp [GAIN], or FILE noise|bass "
            "SECONDS\n",
            argv[0]);
        return 2;
    }
    const Process process = processOf(argv[2]);
    const auto gain = float(factorOfDb(argc == 4 ? std::atof(argv[3]) : 0));
    SF_INFO info{};
    SNDFILE* in = sf_open(argv[1], SFM_READ, &info);
    if (!in || info.channels != 2) {
        std::fprintf(stderr, "%s: %s\n", argv[1], in ? "not stereo" : sf_strerror(nullptr));
        return 1;
    }
    std::vector<float> pairs(2 * blockFrames), side[2], speakers[speakerCount];
    for (auto& s : side)
        s.resize(blockFrames);
    float* out[speakerCount];
    for (int i = 0; i < speakerCount; ++i) {
        speakers[i].resize(blockFrames);
        out[i] = speakers[i].data();
    }
    float largest = 0;
    while (const auto frames = int(sf_readf_float(in, pairs.data(), blockFrames))) {
        for (int n = 0; n < frames; ++n)
            for (int i = 0; i < 2; ++i)
                side[i][size_t(n)] = gain * pairs[size_t(2 * n + i)];
        process(side[0].data(), side[1].data(), out, frames);
        for (const float* speaker : out)
            largest = std::max(largest, std::abs(speaker[frames - 1]));
    }
    sf_close(in);
    std::fprintf(stderr, "%g\n", largest); // so that nothing can be left out
    return 0;
} catch (const std::exception& e) {
    std::fprintf(stderr, "%s: %s\n", argv[0], e.what());
    return 1;
}
