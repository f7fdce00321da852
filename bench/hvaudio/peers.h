#pragma once

#include "platform/hvaudio/dsp/design.h"
#include "platform/hvaudio/dsp/engine.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

/// The chain that is timed, as settings and as the plainest program that computes it.
namespace peers {

using namespace hvaudio::dsp;

constexpr double rate = 48000;

/// Thirteen bands, loudness, five 24 dB/octave crossovers, delays and the limiter, as `compare.sh` asks of
/// the others.
inline Settings fullChain()
{
    Settings s;
    s.power = true;
    s.mainDb = -6;
    s.loudness = true;
    s.equalizer = {6, 4, 2, -1, -3, -2, 1, 3, 5, -4, 2, -6, 4};
    const double delays[] = {2.1, 3.4, 5.6, 7.8};
    for (int i = 0; i < cabinSpeakerCount; ++i) {
        s.cabin[i].highPass = {80, 4};
        s.cabin[i].attenuation = i;
        s.cabin[i].delayMs = delays[i];
    }
    s.subwoofer = {false, {80, 4}, 3, false, 10};
    return s;
}

/// Pink noise, about 0 dBFS at its loudest: Paul Kellet's filter on white noise.
class PinkNoise
{
public:
    explicit PinkNoise(unsigned seed)
        : random_(seed)
    {
    }
    float next()
    {
        static const double pole[6] = {0.99886, 0.99332, 0.96900, 0.86650, 0.55000, -0.7616};
        static const double gain[6] = {0.0555179, 0.0750759, 0.1538520, 0.3104856, 0.5329522, -0.0168980};
        const double white = int32_t(random_()) / 2147483648.0;
        double sum = white * 0.5362;
        for (int i = 0; i < 6; ++i) {
            memory_[i] = pole[i] * memory_[i] + gain[i] * white;
            sum += memory_[i];
        }
        return float(0.11 * sum);
    }

private:
    std::mt19937 random_;
    double memory_[6] = {};
};

/// One sample at a time, double, transposed direct form, section after section: what one writes first.
class PlainChain
{
public:
    PlainChain()
    {
        const double gains[bandCount] = {6, 4, 2, -1, -3, -2, 1, 3, 5, -4, 2, -6, 4};
        for (int channel = 0; channel < 2; ++channel) {
            for (int i = 0; i < bandCount; ++i)
                equalizer_[channel].emplace_back(peaking(bandHz[i], 1.41, gains[i], rate));
            equalizer_[channel].emplace_back(highShelf(100, 0.707, -6, rate));
            equalizer_[channel].emplace_back(highShelf(10000, 0.707, 3, rate));
        }
        const double delays[speakerCount] = {2.1, 3.4, 5.6, 7.8, 10};
        for (int i = 0; i < speakerCount; ++i) {
            const TwoSections filter =
                i == Subwoofer ? crossoverLowPass(80, 4, rate) : crossoverHighPass(80, 4, rate);
            crossover_[i] = {Biquad(filter[0]), Biquad(filter[1])};
            ring_[i].resize(size_t(delays[i] * rate / 1000));
        }
    }

    void process(const float* left, const float* right, float* const out[speakerCount], int frames)
    {
        for (int n = 0; n < frames; ++n) {
            double bus[2] = {0.5 * left[n], 0.5 * right[n]};
            for (int channel = 0; channel < 2; ++channel)
                for (Biquad& section : equalizer_[channel])
                    bus[channel] = section.run(bus[channel]);
            double x[speakerCount] = {0.9 * bus[0], 0.8 * bus[1], 0.7 * bus[0], 0.6 * bus[1],
                                      0.35 * (bus[0] + bus[1])};
            double largest = 0;
            for (int i = 0; i < speakerCount; ++i) {
                for (Biquad& section : crossover_[i])
                    x[i] = section.run(x[i]);
                std::swap(x[i], ring_[i][at_[i]]);
                at_[i] = at_[i] + 1 < ring_[i].size() ? at_[i] + 1 : 0;
                largest = std::max(largest, std::abs(x[i]));
            }
            envelope_ = std::max(largest, envelope_ * 0.9995);
            const double gain = envelope_ > 0.98 ? 0.98 / envelope_ : 1;
            for (int i = 0; i < speakerCount; ++i)
                out[i][n] = float(x[i] * gain);
        }
    }

private:
    class Biquad
    {
    public:
        Biquad() = default;
        explicit Biquad(const Section& s)
        {
            const double a0 = 1 + s.k * s.g + s.g * s.g;
            b0_ = (s.hp + s.bp * s.g + s.lp * s.g * s.g) / a0;
            b1_ = 2 * (s.lp * s.g * s.g - s.hp) / a0;
            b2_ = (s.hp - s.bp * s.g + s.lp * s.g * s.g) / a0;
            a1_ = 2 * (s.g * s.g - 1) / a0;
            a2_ = (1 - s.k * s.g + s.g * s.g) / a0;
        }
        double run(double x)
        {
            const double y = b0_ * x + m1_;
            m1_ = b1_ * x - a1_ * y + m2_;
            m2_ = b2_ * x - a2_ * y;
            return y;
        }

    private:
        double b0_ = 1, b1_ = 0, b2_ = 0, a1_ = 0, a2_ = 0, m1_ = 0, m2_ = 0;
    };

    std::vector<Biquad> equalizer_[2];
    std::array<Biquad, 2> crossover_[speakerCount];
    std::vector<double> ring_[speakerCount];
    size_t at_[speakerCount] = {};
    double envelope_ = 0;
};

} // namespace peers
