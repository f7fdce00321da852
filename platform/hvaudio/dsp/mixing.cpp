#include "platform/hvaudio/dsp/mixing.h"

#include <algorithm>

namespace hvaudio::dsp {

namespace {

constexpr double glideMs = 10;

constexpr double beepHz = 2000, beepSeconds = 0.05, beepEdgeMs = 1.5;
constexpr double beepLevel = 0.1; // -20 dBFS

constexpr double holdSeconds = 0.4;
/// Below this (-80 dBFS) a prompt is silent.
constexpr double audibleLevel = 1e-4;
/// What is left of the programme while a prompt sounds: a caller is to be heard alone, a navigation hint over
/// the music.
struct Duck
{
    Prompt prompt;
    double factor;
};
// clang-format off
constexpr Duck ducks[promptCount] = {
    {Ring,  0.1},   // -20 dB
    {Call,  0.0},
    {Voice, 0.1},
    {Navi,  0.25},  // -12 dB
};
// clang-format on
static_assert(ducks[Ring].prompt == Ring && ducks[Call].prompt == Call && ducks[Voice].prompt == Voice &&
                  ducks[Navi].prompt == Navi,
              "one row a prompt, in order");

} // namespace

void SourceSwitch::prepare(double rate) noexcept
{
    fade_.setLaw(GlideLaw(rate, glideMs));
    gain_.setLaw(GlideLaw(rate, glideMs));
    jump(Settings().source, 1);
}

void SourceSwitch::jump(int source, double factor) noexcept
{
    audible_ = wanted_ = source;
    wantedFactor_ = factor;
    state_ = Playing;
    fade_.jump(1);
    gain_.jump(factor);
}

void SourceSwitch::jumpUnheard(int source, double factor) noexcept
{
    const bool other = source != audible_;
    jump(source, factor);
    if (other) {
        // The rest of the block that is under way still carries the old one.
        state_ = Waiting;
        seen_ = false;
        fade_.jump(0);
    }
}

void SourceSwitch::aim(int source, double factor) noexcept
{
    wanted_ = source;
    wantedFactor_ = factor;
}

void SourceSwitch::advanceGrid() noexcept
{
    if (state_ == Playing && wanted_ != audible_)
        state_ = Leaving;
    if (state_ == Leaving && wanted_ == audible_)
        state_ = Playing; // back before it was gone
    if (state_ == Leaving && fade_.target() == 0 && !fade_.moving()) {
        audible_ = wanted_;
        gain_.jump(wantedFactor_);
        seen_ = false;
        state_ = Waiting;
    }
    if (state_ == Waiting && wanted_ != audible_) {
        audible_ = wanted_;
        gain_.jump(wantedFactor_);
        seen_ = false;
    }
    if (state_ == Waiting && seen_)
        state_ = Playing;
    fade_.aim(state_ == Playing ? 1 : 0);
    if (wanted_ == audible_)
        gain_.aim(wantedFactor_);
    fade_.advance();
    gain_.advance();
}

void Ducker::prepare(double rate) noexcept
{
    hold_ = int(holdSeconds * rate / gridFrames);
    glide_.setLaw(GlideLaw(rate, glideMs));
    glide_.jump(1);
    std::fill(level_, level_ + promptCount, 0.0f);
    std::fill(holdLeft_, holdLeft_ + promptCount, 0);
    busy_ = false;
}

void Ducker::advanceGrid() noexcept
{
    double factor = 1;
    busy_ = false;
    for (int i = 0; i < promptCount; ++i) {
        if (level_[i] > audibleLevel)
            holdLeft_[i] = hold_;
        else if (holdLeft_[i] > 0)
            --holdLeft_[i];
        level_[i] = 0;
        if (holdLeft_[i] > 0) {
            busy_ = true;
            factor = std::min(factor, ducks[i].factor);
        }
    }
    glide_.aim(factor);
    glide_.advance();
}

void Beeper::prepare(double rate) noexcept
{
    length_ = int(beepSeconds * rate / gridFrames);
    edge_.setLaw(GlideLaw(rate, beepEdgeMs));
    edge_.jump(0);
    before_ = 0;
    left_ = 0;
    phase_ = 0;
    turn_ = 2 * 3.14159265358979323846 * beepHz / rate;
}

void Beeper::advanceGrid() noexcept
{
    before_ = edge_.value();
    if (left_ > 0)
        --left_;
    edge_.aim(left_ > 0 ? beepLevel : 0);
    edge_.advance();
}

void Beeper::add(double* pairs, int frames, int offset) noexcept
{
    const double step = (edge_.value() - before_) / gridFrames;
    for (int n = 0; n < frames; ++n) {
        const double x = std::sin(phase_) * (before_ + step * (offset + n));
        phase_ += turn_;
        if (phase_ > 2 * 3.14159265358979323846)
            phase_ -= 2 * 3.14159265358979323846;
        pairs[2 * n] += x;
        pairs[2 * n + 1] += x;
    }
}

} // namespace hvaudio::dsp
