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
        slots_[writing_].value = value;
        writing_ = middle_.exchange(writing_ | fresh, std::memory_order_acq_rel) & index;
    }

    /// Reader thread: takes the newest value; true when there was one since the last call.
    bool update() noexcept
    {
        if (!(middle_.load(std::memory_order_relaxed) & fresh))
            return false;
        reading_ = middle_.exchange(reading_, std::memory_order_acq_rel) & index;
        return true;
    }
    /// Reader thread: the value that the last `update` took; stays valid and unchanged until the next one.
    const T& value() const noexcept { return slots_[reading_].value; }

private:
    static constexpr unsigned index = 3, fresh = 4;
    struct alignas(64) Slot
    {
        T value{};
    };
    Slot slots_[3];
    unsigned writing_ = 0;             ///< writer's
    alignas(64) unsigned reading_ = 1; ///< reader's
    alignas(64) std::atomic<unsigned> middle_{2};
};

} // namespace hvaudio::dsp
