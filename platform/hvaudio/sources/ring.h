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
    /// [OFF] The capacity, above 0, is rounded up to a power of two.
    explicit Ring(int capacity)
    {
        int size = 1;
        while (size < capacity)
            size *= 2;
        m_values.resize(size);
    }

    int capacity() const noexcept { return int(m_values.size()); }
    /// Reader: exact or too small. Writer: exact or too large.
    int readable() const noexcept
    {
        return int(m_written.load(std::memory_order_acquire) - m_read.load(std::memory_order_acquire));
    }
    /// Writer: exact or too small.
    int writable() const noexcept { return capacity() - readable(); }

    /// Writer: returns how many of `count`, 0 or more, were taken.
    int write(const T* values, int count) noexcept
    {
        const unsigned start = m_written.load(std::memory_order_relaxed);
        count = std::min(count, writable());
        copy(values, values + count, start,
             [this](const T* from, const T* to, unsigned at) { std::copy(from, to, m_values.begin() + at); });
        m_written.store(start + unsigned(count), std::memory_order_release);
        return count;
    }

    /// Reader: takes up to `count`, 0 or more, and returns how many there were. A null pointer drops them.
    int read(T* values, int count) noexcept
    {
        const unsigned start = m_read.load(std::memory_order_relaxed);
        count = std::min(count, readable());
        if (values)
            copy(values, values + count, start, [this](T* to, T* end, unsigned at) {
                std::copy(m_values.begin() + at, m_values.begin() + at + (end - to), to);
            });
        m_read.store(start + unsigned(count), std::memory_order_release);
        return count;
    }

private:
    /// Runs over one or two straight pieces of the ring.
    template <typename P, typename F>
    void copy(P from, P to, unsigned start, F each) noexcept
    {
        const unsigned mask = unsigned(m_values.size()) - 1;
        while (from != to) {
            const unsigned at = start & mask;
            const auto run = std::min<std::ptrdiff_t>(to - from, std::ptrdiff_t(m_values.size() - at));
            each(from, from + run, at);
            from += run;
            start += unsigned(run);
        }
    }

    std::vector<T> m_values;
    alignas(64) std::atomic<unsigned> m_written{0};
    alignas(64) std::atomic<unsigned> m_read{0};
};

} // namespace hvaudio
