#pragma once

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
    /// [OFF] Empty and silent.
    void reset(double rate) noexcept;

    /// [RT] Of the stream that comes in; null pointers are silence. `cycle` is a number that both streams see
    /// alike during one cycle and that no two cycles in a row share.
    void push(std::uint64_t cycle, const float* left, const float* right, int frames) noexcept;
    /// [RT] Of the stream that goes out: a block of so many frames begins. Its frames are then fetched by one
    /// or several calls of `pull`.
    void begin(std::uint64_t cycle, int frames) noexcept;
    /// [RT] False, with nothing written, for silence.
    bool pull(float* left, float* right, int frames) noexcept;

private:
    enum State {
        Waiting, ///< for enough to come in; fading out or silent
        Playing,
        Skipping, ///< fading out, to throw the surplus away then
    };
    void runShort() noexcept;
    void watch(int spare) noexcept;

    Ring<StereoFrame> ring_{32768};
    std::atomic<bool> overflowed_{false}; ///< something didn't fit: what waits is old
    std::atomic<std::uint64_t> pushCycle_{0};
    std::atomic<int> pushFrames_{0}; ///< in that cycle

    State state_ = Waiting;
    int block_ = 0;      ///< frames of the current block
    int reserve_ = 0;    ///< frames that are to be left after a block
    int least_ = 0;      ///< fewest frames that were spare since the watch began
    int watched_ = 0;    ///< frames since then
    int sinceShort_ = 0; ///< frames, as far as it matters
    int second_ = 48000;
    int fadeFrames_ = 1;
    int level_ = 0; ///< 0..fadeFrames_
    StereoFrame last_;
};

} // namespace hvaudio
