#pragma once

#include "platform/hvaudio/files/stereoframe.h"
#include "platform/hvaudio/sources/ring.h"

#include <cstdint>

namespace hvaudio {

/// Carries the sound that comes in by one stream into the blocks that another stream gives. A sound server
/// runs both once a cycle, but in an order that it chooses and may change. So the block that goes out carries
/// what came in during the cycle before: the delay is one block, always, and no change of the order is heard.
///
/// When it runs short all the same (block sizes change, two clocks drift apart), the sound fades out and
/// returns by a fade; running short twice in ten seconds makes it keep half a block in reserve. What waits
/// beyond that is skipped, in a fade too. Never allocates or waits.
class InputBridge
{
public:
    /// [OFF] Empty and silent. Rate in Hz.
    void reset(double rate) noexcept;

    /// [RT] Of the stream that comes in; null pointers are silence. `cycle` is a number that both streams see
    /// alike during one cycle and that no two cycles in a row share.
    void push(std::uint64_t cycle, const float* left, const float* right, int frames) noexcept;
    /// [RT] Of the stream that goes out: a block of so many frames begins. Its frames are then fetched by one
    /// or several calls of `pull`.
    void begin(std::uint64_t cycle, int frames) noexcept;
    /// [RT] Fills `frames` of both sides and returns true; false, with nothing written, for silence.
    bool pull(float* left, float* right, int frames) noexcept;

private:
    enum State {
        Waiting, ///< for enough to come in; fading out or silent
        Playing,
        Skipping, ///< fading out, to throw the surplus away then
    };
    void runShort() noexcept;
    void watch(int spare) noexcept;

    Ring<StereoFrame> m_ring{32768};
    std::atomic<bool> m_overflowed{false}; ///< something didn't fit: what waits is old
    std::atomic<std::uint64_t> m_pushCycle{0};
    std::atomic<int> m_pushFrames{0}; ///< in that cycle

    State m_state = Waiting;
    int m_block = 0;      ///< frames of the current block
    int m_reserve = 0;    ///< frames that are to be left after a block
    int m_least = 0;      ///< fewest frames that were spare since the watch began
    int m_watched = 0;    ///< frames since then
    int m_sinceShort = 0; ///< frames, as far as it matters
    int m_second = 48000;
    int m_fadeFrames = 1;
    int m_level = 0; ///< 0..m_fadeFrames
    StereoFrame m_last;
};

} // namespace hvaudio
