#pragma once

#include <cmath>

namespace hvaudio::dsp {

/// Frames between two points of every glide and fade; in between values move on straight lines. The points
/// lie on a grid that starts with the stream's first frame, so nothing depends on the block size.
constexpr int gridFrames = 64;

/// How every audible number moves: two one-pole smoothers in a row, advanced once a grid point. Level and
/// speed are both continuous, also when a new target interrupts the movement; the value never leaves the
/// range of its targets; and after a fixed number of points it is exactly the target.
struct GlideLaw
{
    GlideLaw() = default;
    /// Time constant of each smoother in ms, at a rate of samples in Hz; the movement ends after 16 of them,
    /// 115 dB down.
    GlideLaw(double rate, double ms)
        : share(1 - std::exp(-gridFrames / (rate * ms / 1000)))
        , points(int(std::ceil(16 * rate * ms / 1000 / gridFrames)))
    {
    }
    double share = 1;
    int points = 1;
};

/// [RT] One point: `first` moves towards `target`, `second` towards `first`.
void advanceGlide(double share, const double* target, double* first, double* second, int count) noexcept;
/// [RT] step = (next - now) / gridFrames
void stepBetween(const double* now, const double* next, double* step, int count) noexcept;

/// [RT] One number that glides.
class Glide
{
public:
    void setLaw(const GlideLaw& law) noexcept { m_law = law; }
    void jump(double value) noexcept
    {
        m_target = m_first = m_second = value;
        m_left = 0;
    }
    void aim(double target) noexcept
    {
        if (target != m_target)
            m_left = m_law.points;
        m_target = target;
    }
    /// The next grid point's value.
    double advance() noexcept
    {
        if (m_left > 0) {
            if (--m_left == 0)
                m_first = m_second = m_target;
            else
                advanceGlide(m_law.share, &m_target, &m_first, &m_second, 1);
        }
        return m_second;
    }
    double value() const noexcept { return m_second; }
    double target() const noexcept { return m_target; }
    bool moving() const noexcept { return m_left > 0; }

private:
    GlideLaw m_law;
    double m_target = 0, m_first = 0, m_second = 0;
    int m_left = 0;
};

} // namespace hvaudio::dsp
