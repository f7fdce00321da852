#include "platform/hvaudio/sources/sweep.h"

#include "platform/hvaudio/sources/smoothstep.h"

#include <algorithm>
#include <cmath>

namespace hvaudio {

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double level = 0.1; // -20 dBFS

class Sweep final : public Source
{
public:
    explicit Sweep(double rate)
        : m_rate(rate)
        , m_frames(int(10 * rate))
        , m_edge(int(0.02 * rate))
        , m_growth(std::log(std::min(20000.0, 0.45 * rate) / lowestHz) / m_frames)
    {
    }

    bool render(const float* const*, float* left, float* right, int frames) noexcept override
    {
        for (int n = 0; n < frames; ++n) {
            const int toEdge = std::min({m_at, m_frames - m_at, m_edge});
            const double x = level * smoothStep(float(toEdge) / float(m_edge)) * std::sin(m_phase);
            left[n] = right[n] = float(x);
            m_phase += 2 * pi * lowestHz * std::exp(m_growth * m_at) / m_rate;
            if (m_phase > 2 * pi)
                m_phase -= 2 * pi;
            if (++m_at >= m_frames) {
                m_at = 0;
                m_phase = 0;
            }
        }
        return true;
    }

private:
    static constexpr double lowestHz = 20;
    const double m_rate;
    const int m_frames, m_edge;
    const double m_growth;
    int m_at = 0;
    double m_phase = 0;
};

} // namespace

std::unique_ptr<Source> makeSweep(double rate)
{
    return std::make_unique<Sweep>(rate);
}

} // namespace hvaudio
