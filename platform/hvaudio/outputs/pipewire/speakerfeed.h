#pragma once

#include "platform/hvaudio/outputs/feed.h"
#include "platform/hvaudio/outputs/pipewire/inputbridge.h"

#include <algorithm>
#include <atomic>
#include <cstdint>

namespace hvaudio {

/// Brings the five speakers to the channels of a sound server's stream, and what comes in to the feed.
///
///     push -> [bridge] -> feed -> FL FR RL RR SUB -> [fold, fade] -> FL FR FC LFE RL RR
///
/// Changes of the layout, also ones that interrupt each other, are faded in 10 ms. Never allocates or waits.
class SpeakerFeed
{
public:
    enum Channel {
        FL,
        FR,
        FC,
        LFE,
        RL,
        RR,
        ChannelCount,
    };
    /// What the device makes of the channels.
    enum class Layout {
        Surround, ///< each speaker has its channel, FC is silent
        Stereo,   ///< all are folded to FL and FR (fold.h), the others are silent
        Mono,     ///< FL and FR each carry the mean of both sides of the fold: only one of them is heard
    };

    /// [OFF] Nothing waits, and the layout is `Stereo` without a fade. Rate in Hz, which the feed has been
    /// prepared for. The feed must outlive the use of `fill`.
    void reset(Feed& feed, double rate) noexcept;
    /// [ANY] Takes effect with the next block.
    void setLayout(Layout layout) noexcept { m_layout.store(layout, std::memory_order_relaxed); }
    /// [ANY] The layout that was set last.
    Layout layout() const noexcept { return m_layout.load(std::memory_order_relaxed); }

    /// [RT] The next block is silent and the one after it rises to its level in 10 ms: what was heard before
    /// has broken off, and of the first cycle after that a server may lose what it gets.
    void enter() noexcept
    {
        m_entered.now = 0;
        m_entersLater = true;
    }
    /// [RT] What has come in; as InputBridge::push.
    void push(std::uint64_t cycle, const float* left, const float* right, int frames) noexcept
    {
        m_bridge.push(cycle, left, right, frames);
    }
    /// [RT] Fills the channels of a block, any number of frames; null pointers aren't wanted. `cycle` as
    /// InputBridge::begin.
    void fill(std::uint64_t cycle, float* const channels[ChannelCount], int frames) noexcept;

private:
    static constexpr int pieceFrames = 1024;
    /// A share that glides to 0 or 1.
    struct Fade
    {
        float now = 0, aim = 0, step = 0;
        bool steady() const noexcept { return now == aim; }
        /// So many frames on.
        float after(int frames) const noexcept
        {
            const float way = step * float(frames);
            return aim > now ? std::min(aim, now + way) : std::max(aim, now - way);
        }
    };
    void fillPiece(float* const channels[ChannelCount], int done, int count) noexcept;
    void applyEntrance(float* const channels[ChannelCount], int done, int count) noexcept;

    Feed* m_feed = nullptr;
    std::atomic<Layout> m_layout{Layout::Stereo};
    InputBridge m_bridge;
    Fade m_folded;  ///< 1 = all in FL and FR
    Fade m_mean;    ///< 1 = of the fold, both carry the mean
    Fade m_entered; ///< 1 = all is heard
    bool m_entersLater = false;
    float m_input[2][pieceFrames];
    float m_speakers[dsp::speakerCount][pieceFrames];
    float m_sides[2][pieceFrames];
};

} // namespace hvaudio
