#include "platform/hvaudio/outputs/pipewire/inputbridge.h"

#include "platform/hvaudio/sources/smoothstep.h"

#include <algorithm>

namespace hvaudio {

namespace {

constexpr int pieceFrames = 256;

} // namespace

void InputBridge::reset(double rate) noexcept
{
    m_ring.read(nullptr, m_ring.readable());
    m_overflowed = false;
    m_pushCycle = 0;
    m_pushFrames = 0;
    m_state = Waiting;
    m_block = m_reserve = m_least = m_watched = m_level = 0;
    m_second = int(rate);
    m_sinceShort = 10 * m_second;
    m_fadeFrames = std::max(1, int(0.003 * rate));
    m_last = {};
}

void InputBridge::push(std::uint64_t cycle, const float* left, const float* right, int frames) noexcept
{
    StereoFrame piece[pieceFrames];
    int done = 0;
    while (done < frames) {
        const int count = std::min(frames - done, pieceFrames);
        for (int n = 0; n < count; ++n)
            piece[n] = {left ? left[done + n] : 0, right ? right[done + n] : 0};
        const int taken = m_ring.write(piece, count);
        done += taken;
        if (taken < count) {
            m_overflowed.store(true, std::memory_order_release); // nobody pulls
            break;
        }
    }
    const bool same = m_pushCycle.load(std::memory_order_relaxed) == cycle;
    m_pushFrames.store(done + (same ? m_pushFrames.load(std::memory_order_relaxed) : 0),
                       std::memory_order_relaxed);
    m_pushCycle.store(cycle, std::memory_order_release);
}

void InputBridge::begin(std::uint64_t cycle, int frames) noexcept
{
    if (m_overflowed.exchange(false, std::memory_order_acquire)) {
        m_ring.read(nullptr, m_ring.readable());
        m_state = Waiting;
    }
    const bool alreadyCame = m_pushCycle.load(std::memory_order_acquire) == cycle;
    const int ready = std::max(0, m_ring.readable() - (alreadyCame ? m_pushFrames.load() : 0));
    m_block = frames;
    m_sinceShort = std::min(m_sinceShort + frames, 30 * m_second);
    if (m_sinceShort == 30 * m_second)
        m_reserve = 0;
    const bool enough = ready > 0 && ready >= frames + m_reserve;
    if (m_level == 0 && m_state != Playing && enough) {
        // What has gathered meanwhile is old: only the newest is played.
        m_ring.read(nullptr, ready - frames - m_reserve);
        m_state = Playing;
        m_watched = 0;
    } else if (m_state == Playing) {
        watch(ready - frames);
    }
}

/// Two clocks that drift apart, or blocks that have become smaller, leave more behind than is needed.
void InputBridge::watch(int spare) noexcept
{
    m_least = m_watched == 0 ? spare : std::min(m_least, spare);
    m_watched += m_block;
    if (m_watched < m_second)
        return;
    m_watched = 0;
    if (m_least > m_reserve + m_block / 4)
        m_state = Skipping;
}

void InputBridge::runShort() noexcept
{
    m_state = Waiting;
    if (m_sinceShort < 10 * m_second)
        m_reserve = std::min(m_reserve + m_block / 2, 4 * m_block);
    m_sinceShort = 0;
}

bool InputBridge::pull(float* left, float* right, int frames) noexcept
{
    if (m_state != Playing && m_level == 0)
        return false;
    for (int done = 0; done < frames;) {
        StereoFrame piece[pieceFrames];
        const int count = std::min(frames - done, pieceFrames);
        const int got = m_state == Waiting ? 0 : m_ring.read(piece, count);
        if (got > 0)
            m_last = piece[got - 1];
        // Where frames are missing the last one is held and faded: softer than a step to silence.
        std::fill(piece + got, piece + count, m_last);
        for (int n = 0; n < count; ++n) {
            if (n == got && m_state != Waiting)
                runShort();
            m_level = std::clamp(m_level + (m_state == Playing ? 1 : -1), 0, m_fadeFrames);
            const float factor = smoothStep(float(m_level) / float(m_fadeFrames));
            left[done + n] = piece[n].left * factor;
            right[done + n] = piece[n].right * factor;
        }
        done += count;
    }
    return true;
}

} // namespace hvaudio
