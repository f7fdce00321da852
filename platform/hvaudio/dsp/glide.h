#pragma once

#include <cmath>

namespace hvaudio::dsp {

/// Frames between two points of every glide and fade; in between values move on straight lines. The points
/// lie on a grid that starts with the stream's first frame, so nothing depends on the block size.
constexpr int gridFrames = 16;

/// How every audible number moves: two one-pole smoothers in a row, advanced once a grid point. Level and
/// speed are both continuous, also when a new target interrupts the movement; the value never leaves the
/// range of its targets (so filters stay stable, see kernel.h); and after a fixed number of points it is
/// exactly the target.
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
    void setLaw(const GlideLaw& law) noexcept { law_ = law; }
    void jump(double value) noexcept
    {
        target_ = first_ = second_ = value;
        left_ = 0;
    }
    void aim(double target) noexcept
    {
        if (target != target_)
            left_ = law_.points;
        target_ = target;
    }
    /// The next grid point's value.
    double advance() noexcept
    {
        if (left_ > 0) {
            if (--left_ == 0)
                first_ = second_ = target_;
            else
                advanceGlide(law_.share, &target_, &first_, &second_, 1);
        }
        return second_;
    }
    double value() const noexcept { return second_; }
    double target() const noexcept { return target_; }
    bool moving() const noexcept { return left_ > 0; }

private:
    GlideLaw law_;
    double target_ = 0, first_ = 0, second_ = 0;
    int left_ = 0;
};

} // namespace hvaudio::dsp
