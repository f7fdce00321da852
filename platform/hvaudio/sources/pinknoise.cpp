#include "platform/hvaudio/sources/pinknoise.h"

#include <array>
#include <cmath>
#include <cstdint>

namespace hvaudio {

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double level = 0.1; // -20 dBFS

class PinkNoise final : public Source
{
public:
    PinkNoise(double rate, unsigned seed)
    {
        for (int i = 0; i < pairs; ++i) {
            const double pole = lowestHz * std::pow(spacing, i);
            m_pole[i] = std::exp(-2 * pi * pole / rate);
            m_zero[i] = std::exp(-2 * pi * pole * std::sqrt(spacing) / rate);
        }
        for (int s = 0; s < 2; ++s)
            m_random[s] = seed * 2654435761u + 40503u * unsigned(s + 1);
        // The filter's gain for white noise is the energy of its impulse response.
        double energy = 0;
        std::array<double, pairs> memory{};
        for (int n = 0; n < int(rate); ++n) {
            const double x = filter(n == 0 ? 1 : 0, memory);
            energy += x * x;
        }
        // Uniform numbers in -1..1 have a mean square of 1/3.
        m_scale = level / std::sqrt(energy / 3);
    }

    bool render(const float* const*, float* left, float* right, int frames) noexcept override
    {
        float* const out[2] = {left, right};
        for (int s = 0; s < 2; ++s)
            for (int n = 0; n < frames; ++n)
                out[s][n] = float(m_scale * filter(white(m_random[s]), m_memory[s]));
        return true;
    }

private:
    static constexpr int pairs = 9;
    static constexpr double lowestHz = 8, spacing = 2.6;

    /// xorshift32 of G. Marsaglia, "Xorshift RNGs", 2003.
    static double white(std::uint32_t& state) noexcept
    {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return double(state) / 2147483648.0 - 1;
    }
    /// y = (1 - zero z^-1) / (1 - pole z^-1) x, one pair after the other.
    double filter(double x, std::array<double, pairs>& memory) const noexcept
    {
        for (int i = 0; i < pairs; ++i) {
            const double state = x + m_pole[i] * memory[i];
            x = state - m_zero[i] * memory[i];
            memory[i] = state;
        }
        return x;
    }

    double m_pole[pairs], m_zero[pairs];
    double m_scale = 1;
    std::array<double, pairs> m_memory[2] = {};
    std::uint32_t m_random[2];
};

} // namespace

std::unique_ptr<Source> makePinkNoise(double rate, unsigned seed)
{
    return std::make_unique<PinkNoise>(rate, seed);
}

} // namespace hvaudio
