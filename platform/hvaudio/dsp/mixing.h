#pragma once

#include "platform/hvaudio/dsp/glide.h"
#include "platform/hvaudio/dsp/samples.h"
#include "platform/hvaudio/dsp/settings.h"

/// The small players around the filters. All are [RT] but for `prepare`, which is [OFF] and takes the rate of
/// samples in Hz; `advanceGrid` runs once at each grid point. Factors are linear.
namespace hvaudio::dsp {

/// Fades the programme out before another source may sound, and in afterwards.
class SourceSwitch
{
public:
    void prepare(double rate) noexcept;
    /// Takes the source at once and plays it.
    void jump(int source, double factor) noexcept;
    /// Takes the source at once while nothing is heard, and waits for its feeder if it is another one.
    void jumpUnheard(int source, double factor) noexcept;
    /// The wanted source and its gain. A gain change of the sounding source glides.
    void aim(int source, double factor) noexcept;
    /// Whoever feeds the programme has had a look at `audible` since the last call.
    void newBlock() noexcept { seen_ = true; }
    void advanceGrid() noexcept;

    /// Source that the programme is to carry from the next block on.
    int audible() const noexcept { return audible_; }
    double factor() const noexcept { return fade_.value() * gain_.value(); }
    bool moving() const noexcept { return state_ != Playing || fade_.moving() || gain_.moving(); }

private:
    enum State {
        Playing,
        Leaving, ///< fading out
        Waiting, ///< silent, until the feeder can have switched
    };
    State state_ = Playing;
    int audible_ = 0, wanted_ = 0;
    double wantedFactor_ = 1;
    bool seen_ = false;
    Glide fade_, gain_;
};

/// Lowers the programme while a prompt sounds.
class Ducker
{
public:
    void prepare(double rate) noexcept;
    /// Largest sample of a prompt in the piece that was just mixed, behind its volume: one that is turned
    /// down to nothing doesn't silence the music.
    void heard(int prompt, double largest) noexcept
    {
        if (largest > level_[prompt])
            level_[prompt] = largest;
    }
    void advanceGrid() noexcept;
    double factor() const noexcept { return glide_.value(); }
    /// While something holds or glides.
    bool moving() const noexcept { return busy_ || glide_.moving(); }

private:
    Glide glide_;
    double level_[promptCount] = {};
    int holdLeft_[promptCount] = {};
    int hold_ = 1; ///< grid points
    bool busy_ = false;
};

/// The key beep: a short tone with soft edges.
class Beeper
{
public:
    void prepare(double rate) noexcept;
    void trigger() noexcept { left_ = length_; }
    void advanceGrid() noexcept;
    bool sounding() const noexcept { return left_ > 0 || edge_.moving(); }
    /// Adds the tone to the pairs; `offset` is the first frame's place after the last grid point.
    void add(double* pairs, int frames, int offset) noexcept;

private:
    Glide edge_;
    double before_ = 0;         ///< edge at the last grid point
    int left_ = 0, length_ = 1; ///< grid points
    double phase_ = 0, turn_ = 0;
};

} // namespace hvaudio::dsp
