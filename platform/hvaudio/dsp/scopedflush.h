#pragma once

#if defined(__SSE2__)
#include <xmmintrin.h>
#endif

namespace hvaudio::dsp {

/// [RT] While it lives, results too small for a normal float are 0 on this thread: a filter that rings out
/// would otherwise run through denormal numbers, which cost a hundred times as much on many processors. The
/// thread's own mode returns afterwards.
class ScopedFlush
{
public:
    ScopedFlush() noexcept
    {
#if defined(__SSE2__)
        m_before = _mm_getcsr();
        _mm_setcsr(m_before | 0x8040); // flush to zero, denormals are zero
#elif defined(__aarch64__)
        asm volatile("mrs %0, fpcr" : "=r"(m_before));
        asm volatile("msr fpcr, %0" : : "r"(m_before | 1u << 24));
#elif defined(__ARM_FP)
        asm volatile("vmrs %0, fpscr" : "=r"(m_before));
        asm volatile("vmsr fpscr, %0" : : "r"(m_before | 1u << 24));
#endif
    }
    ~ScopedFlush()
    {
#if defined(__SSE2__)
        _mm_setcsr(m_before);
#elif defined(__aarch64__)
        asm volatile("msr fpcr, %0" : : "r"(m_before));
#elif defined(__ARM_FP)
        asm volatile("vmsr fpscr, %0" : : "r"(m_before));
#endif
    }
    ScopedFlush(const ScopedFlush&) = delete;
    ScopedFlush& operator=(const ScopedFlush&) = delete;

private:
#if defined(__aarch64__)
    unsigned long long m_before = 0;
#else
    unsigned m_before = 0;
#endif
};

} // namespace hvaudio::dsp
