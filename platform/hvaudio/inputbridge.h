#pragma once

#include "hvaudio/ring.h"

namespace hvaudio {

/// Carries the sound that comes in by one stream into the blocks that another stream pulls. Both are run by
/// the same sound server, once a cycle each, but in an order and in block sizes that it chooses. So what has
/// come in waits here, one block at most where both run in step; when it runs short, the sound fades out, and
/// returns by a fade as soon as there is enough. When more waits than is ever needed, the surplus is skipped.
/// Never allocates or waits.
class InputBridge
{
public:
    /// [OFF] Empty and silent.
    void reset(double rate) noexcept;

    /// [RT] Of the stream that comes in.
    void push(const float* left, const float* right, int frames) noexcept;
    /// [RT] Of the stream that goes out. False, with nothing written, for silence.
    bool pull(float* left, float* right, int frames) noexcept;

private:
    enum State {
        Waiting, ///< until enough has come in
        Playing,
        Skipping, ///< fading out to throw the surplus away
    };
    void fade(StereoFrame* frames, int count, bool out) noexcept;

    Ring<StereoFrame> ring_{32768};
    std::atomic<bool> overflowed_{false}; ///< something didn't fit: what waits is old
    State state_ = Waiting;
    int margin_ = 0;      ///< frames that are to be left after a block; grows when the sound has run short
    int least_ = 0;       ///< fewest frames that were left since `sinceLeast_`
    int sinceLeast_ = 0;  ///< frames
    int watchFrames_ = 0; ///< how long the surplus is watched
    int fadeFrames_ = 1;
    int level_ = 0; ///< 0..fadeFrames_
    StereoFrame last_;
};

} // namespace hvaudio
