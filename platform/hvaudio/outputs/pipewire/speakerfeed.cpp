#include "platform/hvaudio/outputs/pipewire/speakerfeed.h"

#include "platform/hvaudio/dsp/fold.h"
#include "platform/hvaudio/sources/smoothstep.h"

#include <iterator>

namespace hvaudio {

namespace {

constexpr double fadeSeconds = 0.01;
constexpr int none = -1;

struct Place
{
    int speaker; ///< that the channel carries by itself
    int side;    ///< of the fold
};
// clang-format off
constexpr Place places[] = {
    {dsp::FrontLeft,  0},    // FL
    {dsp::FrontRight, 1},    // FR
    {none,            none}, // FC
    {dsp::Subwoofer,  none}, // LFE
    {dsp::RearLeft,   none}, // RL
    {dsp::RearRight,  none}, // RR
};
// clang-format on
static_assert(std::size(places) == SpeakerFeed::ChannelCount);

} // namespace

void SpeakerFeed::reset(Feed& feed, double rate) noexcept
{
    m_feed = &feed;
    m_bridge.reset(rate);
    setLayout(Layout::Stereo);
    const float step = float(1 / (fadeSeconds * rate));
    m_folded = {1, 1, step};
    m_mean = {0, 0, step};
    m_entered = {1, 1, step};
    m_entersLater = false;
}

void SpeakerFeed::fill(std::uint64_t cycle, float* const channels[ChannelCount], int frames) noexcept
{
    const Layout wanted = layout();
    m_folded.aim = wanted == Layout::Surround ? 0.0f : 1.0f;
    m_mean.aim = wanted == Layout::Mono ? 1.0f : 0.0f;
    m_bridge.begin(cycle, frames);
    for (int done = 0; done < frames; done += pieceFrames)
        fillPiece(channels, done, std::min(frames - done, pieceFrames));
    m_entersLater = false;
}

void SpeakerFeed::fillPiece(float* const channels[ChannelCount], int done, int count) noexcept
{
    const bool any = m_bridge.pull(m_input[0], m_input[1], count);
    const float* const in[2] = {any ? m_input[0] : nullptr, any ? m_input[1] : nullptr};
    float* own[dsp::speakerCount];
    for (int i = 0; i < dsp::speakerCount; ++i)
        own[i] = m_speakers[i];
    m_feed->pull(in, own, count);

    const bool folds = !m_folded.steady() || m_folded.now > 0;
    if (folds) {
        float* const sides[2] = {m_sides[0], m_sides[1]};
        dsp::foldToStereo(own, sides, count);
    }
    if (folds && (!m_mean.steady() || m_mean.now > 0)) {
        for (int n = 0; n < count; ++n) {
            const float share = smoothStep(m_mean.after(n));
            const float half = 0.5f * share * (m_sides[1][n] - m_sides[0][n]);
            m_sides[0][n] += half;
            m_sides[1][n] -= half;
        }
    }
    for (int i = 0; i < ChannelCount; ++i) {
        if (!channels[i])
            continue;
        float* const to = channels[i] + done;
        const float* const alone = places[i].speaker == none ? nullptr : own[places[i].speaker];
        const float* const side = places[i].side == none ? nullptr : m_sides[places[i].side];
        if (!m_folded.steady() && alone) {
            for (int n = 0; n < count; ++n) {
                const float share = smoothStep(m_folded.after(n));
                to[n] = alone[n] * (1 - share) + (side ? side[n] * share : 0.0f);
            }
        } else if (const float* const from = m_folded.now > 0 ? side : alone) {
            std::copy(from, from + count, to);
        } else {
            std::fill(to, to + count, 0.0f);
        }
    }
    m_folded.now = m_folded.after(count);
    m_mean.now = m_mean.after(count);
    if (!m_entered.steady())
        applyEntrance(channels, done, count);
}

void SpeakerFeed::applyEntrance(float* const channels[ChannelCount], int done, int count) noexcept
{
    for (int i = 0; i < ChannelCount; ++i)
        for (int n = 0; channels[i] && n < count; ++n)
            channels[i][done + n] *= m_entersLater ? 0.0f : smoothStep(m_entered.after(n));
    if (!m_entersLater)
        m_entered.now = m_entered.after(count);
}

} // namespace hvaudio
