#include "headunit/sound/responsemeter.h"

#include <algorithm>
#include <cmath>
#include <complex>

#include <kiss_fftr.h>

namespace headunit {

namespace {

constexpr double pieceSeconds = 0.6, meanSeconds = 4, settlingSeconds = 0.1;
/// Below this (about -130 dBFS in one bin) the programme has nothing there.
constexpr double leastAmplitude = 3e-7;
constexpr double pi = 3.14159265358979323846;

/// The window's terms (F. Harris, "On the Use of Windows for Harmonic Analysis with the Discrete Fourier
/// Transform", table 1: 4-term Blackman-Harris). A tone is spread over its main lobe and, 92 dB down, over
/// everything else. What the speaker does to a tone it does to all that is spread from it, so nothing but the
/// level tells a tone's skirt from sound.
constexpr double windowTerms[] = {0.35875, -0.48829, 0.14128, -0.01168};
constexpr int mainLobe = 4;          ///< bins to either side
constexpr double leastOfAll = 1e-8;  ///< part of the loudest bin's power: -80 dB, above the side lobes
constexpr double leastOfLobe = 1e-2; ///< part of the loudest power a lobe's width around: -20 dB
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
    /// By bin: whether the programme has sound of its own there.
    std::vector<bool> played(Reference reference) const;

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
            double sum = 0;
            for (std::size_t term = 0; term < std::size(windowTerms); ++term)
                sum += windowTerms[term] * std::cos(2 * pi * double(term) * double(n) / double(frames));
            d->window[n] = float(sum);
            d->windowSum += sum;
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

std::vector<bool> ResponseMeter::Private::played(Reference reference) const
{
    const std::vector<double>& all = power[reference];
    const double loudest = *std::max_element(all.begin(), all.end());
    const double least = std::max(std::pow(0.5 * leastAmplitude * windowSum, 2), leastOfAll * loudest);
    std::vector<bool> is(all.size());
    for (std::size_t k = 0; k < all.size(); ++k) {
        const auto from = all.begin() + std::max(std::ptrdiff_t(k) - mainLobe, std::ptrdiff_t(0));
        const auto to = all.begin() + std::min(std::ptrdiff_t(k) + mainLobe + 1, std::ptrdiff_t(all.size()));
        is[k] = all[k] >= least && all[k] >= leastOfLobe * *std::max_element(from, to);
    }
    return is;
}

ResponseMeter::Curve ResponseMeter::curve(Speaker speaker, const std::vector<double>& hz,
                                          double octaves) const
{
    Curve curve;
    if (d->pieces < 2)
        return curve;
    const std::vector<double>& power = d->power[references[speaker]];
    const std::vector<bool> played = d->played(references[speaker]);
    const double binHz = d->rate / double(d->window.size());
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
        std::size_t firstPlayed = 0, lastPlayed = 0; // 0 is in no dot
        for (std::size_t k = first; k <= last; ++k) {
            if (!played[k])
                continue;
            firstPlayed = firstPlayed ? firstPlayed : k;
            lastPlayed = k;
            in += power[k];
            out += d->speakerPower[speaker][k];
            both += std::abs(d->cross[speaker][k]);
        }
        if (!firstPlayed || both * both < leastCoherence * in * out)
            continue;
        curve.hz.push_back(binHz * std::sqrt(double(firstPlayed) * double(lastPlayed)));
        curve.factors.push_back(both / in);
    }
    return curve;
}

} // namespace headunit
