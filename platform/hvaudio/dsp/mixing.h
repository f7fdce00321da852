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
    void newBlock() noexcept { m_seen = true; }
    void advanceGrid() noexcept;

    /// Source that the programme is to carry from the next block on.
    int audible() const noexcept { return m_audible; }
    /// At the last grid point.
    double factor() const noexcept { return m_fade.value() * m_gain.value(); }
    bool moving() const noexcept { return m_state != Playing || m_fade.moving() || m_gain.moving(); }

private:
    enum State {
        Playing,
        Leaving, ///< fading out
        Waiting, ///< silent, until the feeder can have switched
    };
    State m_state = Playing;
    int m_audible = 0, m_wanted = 0;
    double m_wantedFactor = 1;
    bool m_seen = false;
    Glide m_fade, m_gain;
};

/// Lowers the programme while a prompt sounds.
class Ducker
{
public:
    void prepare(double rate) noexcept;
    /// Largest sample of a prompt in the piece that was just mixed, behind its volume: one that is turned
    /// down to nothing doesn't silence the music.
    void notePrompt(int prompt, double largest) noexcept
    {
        if (largest > m_level[prompt])
            m_level[prompt] = largest;
    }
    void advanceGrid() noexcept;
    /// At the last grid point.
    double factor() const noexcept { return m_glide.value(); }
    /// While something holds or glides.
    bool moving() const noexcept { return m_busy || m_glide.moving(); }

private:
    Glide m_glide;
    double m_level[promptCount] = {};
    int m_holdLeft[promptCount] = {};
    int m_hold = 1; ///< grid points
    bool m_busy = false;
};

/// The key beep: a short tone with soft edges.
class Beeper
{
public:
    void prepare(double rate) noexcept;
    /// One that sounds begins anew.
    void trigger() noexcept { m_left = m_length; }
    void advanceGrid() noexcept;
    bool sounding() const noexcept { return m_left > 0 || m_edge.moving(); }
    /// Adds the tone to the pairs; `offset` is the first frame's place after the last grid point.
    void add(double* pairs, int frames, int offset) noexcept;

private:
    Glide m_edge;
    double m_before = 0;          ///< edge at the last grid point
    int m_left = 0, m_length = 1; ///< grid points
    double m_phase = 0, m_turn = 0;
};

} // namespace hvaudio::dsp
