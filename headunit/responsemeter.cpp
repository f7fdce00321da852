#include "headunit/responsemeter.h"

#include <algorithm>
#include <cmath>
#include <complex>

#include <kiss_fftr.h>

namespace headunit {

using namespace hvaudio::dsp;
using hvaudio::HeardFrame;

namespace {

constexpr double pieceSeconds = 0.3, meanSeconds = 4, settlingSeconds = 0.1;
/// Below this (about -130 dBFS in one bin) the programme has nothing there.
constexpr double leastAmplitude = 3e-7;
/// Part of a speaker's power that must stem from the programme.
constexpr double leastCoherence = 0.8;

/// What a speaker is compared with.
enum Reference { Left, Right, Mean };
constexpr int referenceCount = 3;
// clang-format off
constexpr Reference references[speakerCount] = {
    Left,  // front left
    Right, // front right
    Left,  // rear left
    Right, // rear right
    Mean,  // subwoofer
};
// clang-format on

using Spectrum = std::vector<std::complex<float>>;
static_assert(sizeof(kiss_fft_cpx) == sizeof(std::complex<float>), "the same two floats");

struct FreeConfig
{
    void operator()(kiss_fftr_cfg config) const { kiss_fftr_free(config); }
};

} // namespace

struct ResponseMeter::Private
{
    using Transform = std::unique_ptr<std::remove_pointer_t<kiss_fftr_cfg>, FreeConfig>;

    template <typename Pick>
    void transform(std::size_t offset, Pick pick, Spectrum& into)
    {
        for (std::size_t n = 0; n < window.size(); ++n)
            windowed[n] = window[n] * pick(waiting[offset + n]);
        kiss_fftr(fft.get(), windowed.data(), reinterpret_cast<kiss_fft_cpx*>(into.data()));
    }

    std::size_t bins() const { return window.size() / 2 + 1; }
    /// Frames from one piece to the next.
    std::size_t hop() const { return window.size() / 2; }

    double rate = 0;
    std::size_t latency = 0;
    int leaveOut = 0;
    int pieces = 0;
    double windowSum = 1;
    Transform fft;
    std::vector<float> window, windowed;
    std::vector<HeardFrame> waiting; ///< a piece, and the latency behind it

    Spectrum programme[referenceCount], speaker[speakerCount];
    std::array<std::vector<double>, referenceCount> power;
    std::array<std::vector<double>, speakerCount> speakerPower;
    std::array<std::vector<std::complex<double>>, speakerCount> cross;
};

ResponseMeter::ResponseMeter()
    : d(std::make_unique<Private>())
{
    restart(48000, 0);
}

ResponseMeter::~ResponseMeter() = default;

void ResponseMeter::restart(double rate, int latencyFrames)
{
    if (rate != d->rate) {
        d->rate = rate;
        std::size_t frames = 1024;
        while (double(frames) < pieceSeconds * rate)
            frames *= 2;
        d->fft.reset(kiss_fftr_alloc(int(frames), 0, nullptr, nullptr));
        d->window.resize(frames);
        d->windowed.resize(frames);
        d->windowSum = 0;
        for (std::size_t n = 0; n < frames; ++n) {
            const double turn = 2 * 3.14159265358979323846 * double(n) / double(frames);
            d->window[n] = float(0.5 - 0.5 * std::cos(turn));
            d->windowSum += double(d->window[n]);
        }
        for (Spectrum& spectrum : d->programme)
            spectrum.resize(d->bins());
        for (Spectrum& spectrum : d->speaker)
            spectrum.resize(d->bins());
    }
    d->latency = std::size_t(std::max(0, latencyFrames));
    d->leaveOut = int(settlingSeconds * rate);
    d->pieces = 0;
    d->waiting.clear();
    d->power.fill(std::vector<double>(d->bins()));
    d->speakerPower.fill(std::vector<double>(d->bins()));
    d->cross.fill(std::vector<std::complex<double>>(d->bins()));
}

void ResponseMeter::gap()
{
    d->waiting.clear();
}

int ResponseMeter::pieces() const
{
    return d->pieces;
}

void ResponseMeter::add(const HeardFrame* frames, int count)
{
    const int skipped = std::min(count, d->leaveOut);
    d->leaveOut -= skipped;
    d->waiting.insert(d->waiting.end(), frames + skipped, frames + count);
    while (d->waiting.size() >= d->window.size() + d->latency) {
        analyse();
        d->waiting.erase(d->waiting.begin(), d->waiting.begin() + std::ptrdiff_t(d->hop()));
    }
}

void ResponseMeter::analyse()
{
    for (int side = Left; side <= Right; ++side)
        d->transform(
            0, [side](const HeardFrame& frame) { return frame.programme[side]; }, d->programme[side]);
    for (int i = 0; i < speakerCount; ++i)
        d->transform(
            d->latency, [i](const HeardFrame& frame) { return frame.speaker[i]; }, d->speaker[i]);
    for (std::size_t k = 0; k < d->bins(); ++k)
        d->programme[Mean][k] = 0.5f * (d->programme[Left][k] + d->programme[Right][k]);

    // A plain mean while there are few pieces, one that forgets afterwards.
    ++d->pieces;
    const double wanted = meanSeconds * d->rate / double(d->hop());
    const double share = 1 / std::min(double(d->pieces), wanted);
    const auto mix = [share](auto& mean, auto value) { mean += share * (value - mean); };
    for (int r = 0; r < referenceCount; ++r)
        for (std::size_t k = 0; k < d->bins(); ++k)
            mix(d->power[r][k], double(std::norm(d->programme[r][k])));
    for (int i = 0; i < speakerCount; ++i) {
        const Spectrum& x = d->programme[references[i]];
        for (std::size_t k = 0; k < d->bins(); ++k) {
            const std::complex<double> y(d->speaker[i][k]);
            mix(d->speakerPower[i][k], std::norm(y));
            mix(d->cross[i][k], std::conj(std::complex<double>(x[k])) * y);
        }
    }
}

ResponseMeter::Curve ResponseMeter::curve(Speaker speaker, const std::vector<double>& hz,
                                          double octaves) const
{
    Curve curve;
    if (d->pieces < 2)
        return curve;
    const std::vector<double>& power = d->power[references[speaker]];
    const double binHz = d->rate / double(d->window.size());
    const double least = std::pow(0.5 * leastAmplitude * d->windowSum, 2);
    std::size_t firstBefore = 0, lastBefore = 0;
    for (const double centre : hz) {
        const auto binOf = [&](double at) {
            return std::size_t(std::clamp(std::round(at / binHz), 1.0, double(d->bins() - 1)));
        };
        const std::size_t first = binOf(centre * std::exp2(-octaves / 2)),
                          last = binOf(centre * std::exp2(octaves / 2));
        if (first == firstBefore && last == lastBefore)
            continue; // the same dot again
        firstBefore = first;
        lastBefore = last;
        double in = 0, out = 0, both = 0;
        for (std::size_t k = first; k <= last; ++k) {
            in += power[k];
            out += d->speakerPower[speaker][k];
            both += std::abs(d->cross[speaker][k]);
        }
        if (in < least * double(last - first + 1) || both * both < leastCoherence * in * out)
            continue;
        curve.hz.push_back(binHz * std::sqrt(double(first) * double(last)));
        curve.factors.push_back(both / in);
    }
    return curve;
}

} // namespace headunit
