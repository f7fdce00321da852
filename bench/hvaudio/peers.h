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
        : m_random(seed)
    {
    }
    float next()
    {
        static const double pole[6] = {0.99886, 0.99332, 0.96900, 0.86650, 0.55000, -0.7616};
        static const double gain[6] = {0.0555179, 0.0750759, 0.1538520, 0.3104856, 0.5329522, -0.0168980};
        const double white = int32_t(m_random()) / 2147483648.0;
        double sum = white * 0.5362;
        for (int i = 0; i < 6; ++i) {
            m_memory[i] = pole[i] * m_memory[i] + gain[i] * white;
            sum += m_memory[i];
        }
        return float(0.11 * sum);
    }

private:
    std::mt19937 m_random;
    double m_memory[6] = {};
};

/// What the plainest programs run: transposed direct form II.
struct Biquad
{
    double b0 = 1, b1 = 0, b2 = 0, a1 = 0, a2 = 0;
};
inline Biquad biquadOf(const Section& s)
{
    const double a0 = 1 + s.k * s.g + s.g * s.g;
    return {(s.hp + s.bp * s.g + s.lp * s.g * s.g) / a0, 2 * (s.lp * s.g * s.g - s.hp) / a0,
            (s.hp - s.bp * s.g + s.lp * s.g * s.g) / a0, 2 * (s.g * s.g - 1) / a0,
            (1 - s.k * s.g + s.g * s.g) / a0};
}

/// Equalizer and loudness, and the speakers' delays, as all the others are asked for them.
inline std::vector<Section> plainSections()
{
    const double gains[bandCount] = {6, 4, 2, -1, -3, -2, 1, 3, 5, -4, 2, -6, 4};
    std::vector<Section> sections;
    for (int i = 0; i < bandCount; ++i)
        sections.push_back(peaking(bandHz[i], 1.41, gains[i], rate));
    sections.push_back(highShelf(100, 0.707, -6, rate));
    sections.push_back(highShelf(10000, 0.707, 3, rate));
    return sections;
}
constexpr double plainDelaysMs[speakerCount] = {2.1, 3.4, 5.6, 7.8, 10};

/// One sample at a time, double, transposed direct form, section after section: what one writes first.
class PlainChain
{
public:
    PlainChain()
    {
        for (auto& side : m_equalizer)
            for (const Section& section : plainSections())
                side.emplace_back(section);
        for (int i = 0; i < speakerCount; ++i) {
            const TwoSections filter =
                i == Subwoofer ? crossoverLowPass(80, 4, rate) : crossoverHighPass(80, 4, rate);
            m_crossover[i] = {Filter(filter[0]), Filter(filter[1])};
            m_ring[i].resize(size_t(plainDelaysMs[i] * rate / 1000));
        }
    }

    void process(const float* left, const float* right, float* const out[speakerCount], int frames)
    {
        for (int n = 0; n < frames; ++n) {
            double bus[2] = {0.5 * left[n], 0.5 * right[n]};
            for (int channel = 0; channel < 2; ++channel)
                for (Filter& section : m_equalizer[channel])
                    bus[channel] = section.run(bus[channel]);
            double x[speakerCount] = {0.9 * bus[0], 0.8 * bus[1], 0.7 * bus[0], 0.6 * bus[1],
                                      0.35 * (bus[0] + bus[1])};
            double largest = 0;
            for (int i = 0; i < speakerCount; ++i) {
                for (Filter& section : m_crossover[i])
                    x[i] = section.run(x[i]);
                std::swap(x[i], m_ring[i][m_at[i]]);
                m_at[i] = m_at[i] + 1 < m_ring[i].size() ? m_at[i] + 1 : 0;
                largest = std::max(largest, std::abs(x[i]));
            }
            m_envelope = std::max(largest, m_envelope * 0.9995);
            const double gain = m_envelope > 0.98 ? 0.98 / m_envelope : 1;
            for (int i = 0; i < speakerCount; ++i)
                out[i][n] = float(x[i] * gain);
        }
    }

private:
    class Filter
    {
    public:
        Filter() = default;
        explicit Filter(const Section& s)
            : m_c(biquadOf(s))
        {
        }
        double run(double x)
        {
            const double y = m_c.b0 * x + m_m1;
            m_m1 = m_c.b1 * x - m_c.a1 * y + m_m2;
            m_m2 = m_c.b2 * x - m_c.a2 * y;
            return y;
        }

    private:
        Biquad m_c;
        double m_m1 = 0, m_m2 = 0;
    };

    std::vector<Filter> m_equalizer[2];
    std::array<Filter, 2> m_crossover[speakerCount];
    std::vector<double> m_ring[speakerCount];
    size_t m_at[speakerCount] = {};
    double m_envelope = 0;
};

} // namespace peers
