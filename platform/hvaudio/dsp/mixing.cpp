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
    m_fade.setLaw(GlideLaw(rate, glideMs));
    m_gain.setLaw(GlideLaw(rate, glideMs));
    jump(Settings().source, 1);
}

void SourceSwitch::jump(int source, double factor) noexcept
{
    m_audible = m_wanted = source;
    m_wantedFactor = factor;
    m_state = Playing;
    m_fade.jump(1);
    m_gain.jump(factor);
}

void SourceSwitch::jumpUnheard(int source, double factor) noexcept
{
    const bool other = source != m_audible;
    jump(source, factor);
    if (other) {
        // The rest of the block that is under way still carries the old one.
        m_state = Waiting;
        m_seen = false;
        m_fade.jump(0);
    }
}

void SourceSwitch::aim(int source, double factor) noexcept
{
    m_wanted = source;
    m_wantedFactor = factor;
}

void SourceSwitch::advanceGrid() noexcept
{
    if (m_state == Playing && m_wanted != m_audible)
        m_state = Leaving;
    if (m_state == Leaving && m_wanted == m_audible)
        m_state = Playing; // back before it was gone
    if (m_state == Leaving && m_fade.target() == 0 && !m_fade.moving()) {
        m_audible = m_wanted;
        m_gain.jump(m_wantedFactor);
        m_seen = false;
        m_state = Waiting;
    }
    if (m_state == Waiting && m_wanted != m_audible) {
        m_audible = m_wanted;
        m_gain.jump(m_wantedFactor);
        m_seen = false;
    }
    if (m_state == Waiting && m_seen)
        m_state = Playing;
    m_fade.aim(m_state == Playing ? 1 : 0);
    if (m_wanted == m_audible)
        m_gain.aim(m_wantedFactor);
    m_fade.advance();
    m_gain.advance();
}

void Ducker::prepare(double rate) noexcept
{
    m_hold = int(holdSeconds * rate / gridFrames);
    m_glide.setLaw(GlideLaw(rate, glideMs));
    m_glide.jump(1);
    std::fill(m_level, m_level + promptCount, 0.0f);
    std::fill(m_holdLeft, m_holdLeft + promptCount, 0);
    m_busy = false;
}

void Ducker::advanceGrid() noexcept
{
    double factor = 1;
    m_busy = false;
    for (int i = 0; i < promptCount; ++i) {
        if (m_level[i] > audibleLevel)
            m_holdLeft[i] = m_hold;
        else if (m_holdLeft[i] > 0)
            --m_holdLeft[i];
        m_level[i] = 0;
        if (m_holdLeft[i] > 0) {
            m_busy = true;
            factor = std::min(factor, ducks[i].factor);
        }
    }
    m_glide.aim(factor);
    m_glide.advance();
}

void Beeper::prepare(double rate) noexcept
{
    m_length = int(beepSeconds * rate / gridFrames);
    m_edge.setLaw(GlideLaw(rate, beepEdgeMs));
    m_edge.jump(0);
    m_before = 0;
    m_left = 0;
    m_phase = 0;
    m_turn = 2 * 3.14159265358979323846 * beepHz / rate;
}

void Beeper::advanceGrid() noexcept
{
    m_before = m_edge.value();
    if (m_left > 0)
        --m_left;
    m_edge.aim(m_left > 0 ? beepLevel : 0);
    m_edge.advance();
}

void Beeper::add(double* pairs, int frames, int offset) noexcept
{
    const double step = (m_edge.value() - m_before) / gridFrames;
    for (int n = 0; n < frames; ++n) {
        const double x = std::sin(m_phase) * (m_before + step * (offset + n));
        m_phase += m_turn;
        if (m_phase > 2 * 3.14159265358979323846)
            m_phase -= 2 * 3.14159265358979323846;
        pairs[2 * n] += x;
        pairs[2 * n + 1] += x;
    }
}

} // namespace hvaudio::dsp
