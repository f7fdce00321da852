#pragma once

#include <atomic>

namespace hvaudio::dsp {

/// Hands the newest value of one writer thread to one reader thread; neither ever waits. Values in between
/// are lost, which is what a snapshot of settings wants. Three slots: one belongs to the writer, one to the
/// reader, and the third is exchanged through one atomic word with acquire-release order, so a value that is
/// read is whole.
template <typename T>
class TripleBuffer
{
public:
    /// One writer thread at a time. Copies the value in.
    void write(const T& value) noexcept
    {
        m_slots[m_writing].value = value;
        m_writing = m_middle.exchange(m_writing | fresh, std::memory_order_acq_rel) & index;
    }

    /// Reader thread: takes the newest value; true when there was one since the last call.
    bool update() noexcept
    {
        if (!(m_middle.load(std::memory_order_relaxed) & fresh))
            return false;
        m_reading = m_middle.exchange(m_reading, std::memory_order_acq_rel) & index;
        return true;
    }
    /// Reader thread: the value that the last `update` took; stays valid and unchanged until the next one.
    const T& value() const noexcept { return m_slots[m_reading].value; }

private:
    static constexpr unsigned index = 3, fresh = 4;
    struct alignas(64) Slot
    {
        T value{};
    };
    Slot m_slots[3];
    unsigned m_writing = 0;             ///< writer's
    alignas(64) unsigned m_reading = 1; ///< reader's
    alignas(64) std::atomic<unsigned> m_middle{2};
};

} // namespace hvaudio::dsp
