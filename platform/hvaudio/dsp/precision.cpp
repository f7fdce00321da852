#include "platform/hvaudio/dsp/precision.h"

#include <algorithm>
#include <cmath>

namespace hvaudio::dsp {

namespace {

/// Over which the shares are averaged, and for which all must be well before single precision returns.
constexpr double meanSeconds = 0.1, calmSeconds = 0.2;

/// Shares of the energy that a speaker must keep. The rounding in front of a low-pass is taken away with
/// everything else above it, so the subwoofer may keep less.
constexpr double cabinShare = 0.05;     // -13 dB
constexpr double subwooferShare = 0.01; // -20 dB
/// In units of that: above `plenty` shares count alike, so that a change for the worse is soon seen whatever
/// was before, and single precision returns only above `again`.
constexpr double plenty = 4, again = 1.6;

constexpr double shareOf(int speaker)
{
    return speaker == Subwoofer ? subwooferShare : cabinShare;
}

/// A speaker that is turned down so far has no sound to keep clean.
constexpr float silentGain = 1e-7f;
/// Of a window: -260 dB.
constexpr double silentEnergy = 1e-26;

} // namespace

void Precision::prepare(double rate) noexcept
{
    newest_ = 1 - std::exp(-windowFrames / (rate * meanSeconds));
    calmWindows_ = int(std::ceil(rate * calmSeconds / windowFrames));
    place_ = 0;
    clear();
}

void Precision::clear() noexcept
{
    std::fill(std::begin(window_), std::end(window_), Energy());
    std::fill(std::begin(kept_), std::end(kept_), 0.0);
    calm_ = 0;
    double_ = true;
}

void Precision::heard(const double in[2], const double out[speakerCount],
                      const float gain[speakerCount]) noexcept
{
    for (int i = 0; i < speakerCount; ++i) {
        const double squared = double(gain[i]) * gain[i];
        if (squared < double(silentGain) * silentGain)
            continue;
        window_[i].wanted = true;
        window_[i].in += squared * (i == Subwoofer ? in[0] + in[1] : in[i & 1]);
        window_[i].out += out[i];
    }
}

bool Precision::advance(int frames) noexcept
{
    place_ += frames;
    if (place_ < windowFrames)
        return false;
    place_ = 0;
    decide();
    return true;
}

void Precision::decide() noexcept
{
    bool poor = false, calm = true;
    for (int i = 0; i < speakerCount; ++i) {
        Energy& window = window_[i];
        if (!window.wanted) {
            kept_[i] = 0;
            continue;
        }
        if (window.in > silentEnergy)
            kept_[i] += newest_ * (std::min(window.out / (window.in * shareOf(i)), plenty) - kept_[i]);
        window = Energy();
        poor |= kept_[i] < 1;
        calm &= kept_[i] >= again;
    }
    calm_ = calm ? calm_ + 1 : 0;
    if (poor)
        double_ = true;
    else if (calm_ >= calmWindows_)
        double_ = false;
}

} // namespace hvaudio::dsp
