#pragma once

#include "platform/hvaudio/dsp/kernel/kernel.h"

namespace hvaudio::dsp {

/// [RT] A crossfade over about 43 ms, with level, speed and turn of speed at rest at both ends.
class Fade
{
public:
    Fade() = default;
    /// rate: of samples, in Hz.
    explicit Fade(double rate);
    void start() noexcept { m_point = 0; }
    void stop() noexcept { m_point = -1; }
    bool running() const noexcept { return m_point >= 0; }
    /// At a grid point: true when it has just arrived.
    bool advance() noexcept
    {
        if (!running() || ++m_point < m_points)
            return false;
        stop();
        return true;
    }
    /// Frames from the last grid point to the end.
    int frames() const noexcept { return (m_points - m_point) * gridFrames; }
    /// Grid points go by that `advance` isn't called for.
    void skip(int points) noexcept { m_point += running() ? points : 0; }
    /// Frames up to the end, the first `offset` behind the last grid point; `to` may be either of the others.
    void mix(const Kernel& kernel, const float* before, const float* after, float* to, int frames,
             int offset) const noexcept;

private:
    float share(int point) const noexcept;

    int m_points = 1;
    int m_point = -1;
};

} // namespace hvaudio::dsp
