#pragma once

#include "platform/hvaudio/dsp/samples.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace hvaudio::dsp {

/// [RT] but for `prepare`: several signals with their recent past, each contiguous in memory. New frames are
/// written behind the past; when the space is used up the past moves to the front, once in many pieces, so
/// that reading never wraps around.
class History
{
public:
    /// [OFF] Allocates and clears. `past`: frames that stay readable.
    void prepare(int signalCount, int past)
    {
        m_past = past;
        m_stride = past + std::max(16 * pieceFrames, 4 * past);
        m_data.assign(size_t(signalCount) * m_stride, 0.0f);
        m_position = m_past;
    }
    /// Forgets the sound.
    void clear() noexcept
    {
        std::fill(m_data.begin(), m_data.end(), 0.0f);
        m_position = m_past;
    }
    /// Where the next up to `pieceFrames` frames of a signal are to be written.
    float* next(int signal) noexcept { return m_data.data() + size_t(signal) * m_stride + m_position; }
    /// The frames that lie `frames` (0..past) before the same place.
    const float* before(int signal, int frames) const noexcept
    {
        return m_data.data() + size_t(signal) * m_stride + m_position - frames;
    }
    /// Makes what was written part of the past.
    void advance(int frames) noexcept
    {
        m_position += frames;
        if (m_position + pieceFrames <= m_stride)
            return;
        for (size_t start = 0; start < m_data.size(); start += m_stride)
            std::memmove(&m_data[start], &m_data[start + m_position - m_past], m_past * sizeof(float));
        m_position = m_past;
    }

private:
    std::vector<float> m_data;
    int m_past = 0, m_stride = 0, m_position = 0;
};

} // namespace hvaudio::dsp
