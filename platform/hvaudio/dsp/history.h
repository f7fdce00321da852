#pragma once

#include "platform/hvaudio/dsp/samples.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace hvaudio::dsp {

/// [RT] but for `prepare`: several signals with their recent past, each contiguous in memory. New frames are
/// written behind the past; when the room is used up the past moves to the front, once in many pieces, so
/// that reading never wraps around.
class History
{
public:
    /// [OFF] Allocates and clears. `past`: frames that stay readable.
    void prepare(int signals, int past)
    {
        past_ = past;
        stride_ = past + std::max(16 * pieceFrames, 4 * past);
        data_.assign(size_t(signals) * stride_, 0.0f);
        position_ = past_;
    }
    void clear() noexcept
    {
        std::fill(data_.begin(), data_.end(), 0.0f);
        position_ = past_;
    }
    /// Where the next up to `pieceFrames` frames of a signal are to be written.
    float* room(int signal) noexcept { return data_.data() + size_t(signal) * stride_ + position_; }
    /// The frames that lie `frames` (0..past) before the same place.
    const float* before(int signal, int frames) const noexcept
    {
        return data_.data() + size_t(signal) * stride_ + position_ - frames;
    }
    /// Makes what was written part of the past.
    void advance(int frames) noexcept
    {
        position_ += frames;
        if (position_ + pieceFrames <= stride_)
            return;
        for (size_t start = 0; start < data_.size(); start += stride_)
            std::memmove(&data_[start], &data_[start + position_ - past_], past_ * sizeof(float));
        position_ = past_;
    }

private:
    std::vector<float> data_;
    int past_ = 0, stride_ = 0, position_ = 0;
};

} // namespace hvaudio::dsp
