#pragma once

#include <algorithm>
#include <atomic>
#include <vector>

namespace hvaudio {

/// Hands values from one writer thread to one reader thread in order; neither ever waits or allocates. What
/// doesn't fit isn't taken, and the writer is told.
template <typename T>
class Ring
{
public:
    /// [OFF] The capacity is rounded up to a power of two.
    explicit Ring(int capacity)
    {
        int size = 1;
        while (size < capacity)
            size *= 2;
        values_.resize(size);
    }

    int capacity() const noexcept { return int(values_.size()); }
    /// Reader: exact or too small. Writer: exact or too large.
    int readable() const noexcept
    {
        return int(written_.load(std::memory_order_acquire) - read_.load(std::memory_order_acquire));
    }
    /// Writer: exact or too small.
    int writable() const noexcept { return capacity() - readable(); }

    /// Writer: returns how many were taken.
    int write(const T* values, int count) noexcept
    {
        const unsigned start = written_.load(std::memory_order_relaxed);
        count = std::min(count, writable());
        copy(values, values + count, start,
             [this](const T* from, const T* to, unsigned at) { std::copy(from, to, values_.begin() + at); });
        written_.store(start + unsigned(count), std::memory_order_release);
        return count;
    }

    /// Reader: returns how many there were. A null pointer drops them.
    int read(T* values, int count) noexcept
    {
        const unsigned start = read_.load(std::memory_order_relaxed);
        count = std::min(count, readable());
        if (values)
            copy(values, values + count, start, [this](T* to, T* end, unsigned at) {
                std::copy(values_.begin() + at, values_.begin() + at + (end - to), to);
            });
        read_.store(start + unsigned(count), std::memory_order_release);
        return count;
    }

private:
    /// Runs over one or two straight pieces of the ring.
    template <typename P, typename F>
    void copy(P from, P to, unsigned start, F each) noexcept
    {
        const unsigned mask = unsigned(values_.size()) - 1;
        while (from != to) {
            const unsigned at = start & mask;
            const auto run = std::min<std::ptrdiff_t>(to - from, std::ptrdiff_t(values_.size() - at));
            each(from, from + run, at);
            from += run;
            start += unsigned(run);
        }
    }

    std::vector<T> values_;
    alignas(64) std::atomic<unsigned> written_{0};
    alignas(64) std::atomic<unsigned> read_{0};
};

/// One moment of a stereo signal.
struct StereoFrame
{
    float left = 0, right = 0;
};

/// A rise from 0 to 1 without a kink at either end, for fades: x in 0..1.
inline float smoothStep(float x) noexcept
{
    return x * x * (3 - 2 * x);
}

} // namespace hvaudio
