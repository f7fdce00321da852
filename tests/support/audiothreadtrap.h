#pragma once

#include "tests/support/systemcalltrap.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <poll.h>
#include <pthread.h>
#include <semaphore.h>
#include <string>
#include <sys/types.h>
#include <sys/uio.h>
#include <time.h>

// For the one source file of a test executable. What the audio thread must not do is trapped in this process:
// the allocator, locks, waits, wake-ups, the standard streams and writes count when the calling thread says
// that it is the audio thread; and on a thread that asked for it, every system call. Atomic operations in a
// loop of one's own can't be seen.

namespace {

thread_local bool onAudioThread = false;
std::atomic<int> trapped{0};
/// Of the first that was trapped; a name, or the number of a system call.
std::atomic<const char*> trappedName{nullptr};
std::atomic<long> trappedCall{-1};

void forgetTrapped()
{
    trapped = 0;
    trappedName = nullptr;
    trappedCall = -1;
}

/// What was trapped first.
std::string whatWasTrapped()
{
    if (!trapped)
        return "nothing";
    if (const char* name = trappedName.load())
        return name;
    return "system call " + std::to_string(trappedCall.load());
}

void note(const char* name)
{
    if (onAudioThread && trapped.fetch_add(1) == 0)
        trappedName.store(name);
}

void noteSystemCall(long number)
{
    if (onAudioThread && trapped.fetch_add(1) == 0)
        trappedCall.store(number);
}

/// For the beginning of a thread that is the audio thread from time to time. Without the filter the test
/// would prove less than it says, so it fails where the kernel refuses one.
[[maybe_unused]] bool trapSystemCalls()
{
    if (systemcalls::trapOnThisThread(noteSystemCall))
        return true;
    std::fprintf(stderr,
                 "the kernel refuses a seccomp filter (%s): system calls of the audio thread can't be seen\n",
                 std::strerror(errno));
    return false;
}

template <typename F>
F next(const char* name)
{
    return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

} // namespace

#define EXPORTED extern "C" __attribute__((visibility("default")))

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// The sanitizer's own allocator stays; it tells of each use. One of ours would be called, with its checks,
// before a sanitizer of threads is there to answer them.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*)(const volatile void*, size_t),
                                                         void (*)(const volatile void*));
static void allocated(const volatile void*, size_t)
{
    note("malloc");
}
static void freed(const volatile void*)
{
    note("free");
}
[[maybe_unused]] static const int hooked = __sanitizer_install_malloc_and_free_hooks(allocated, freed);
#else
extern "C" void* __libc_malloc(size_t);
extern "C" void* __libc_calloc(size_t, size_t);
extern "C" void* __libc_realloc(void*, size_t);
extern "C" void* __libc_memalign(size_t, size_t);
extern "C" void __libc_free(void*);
EXPORTED void* malloc(size_t size)
{
    note("malloc");
    return __libc_malloc(size);
}
EXPORTED void* calloc(size_t n, size_t size)
{
    note("calloc");
    return __libc_calloc(n, size);
}
EXPORTED void* realloc(void* p, size_t size)
{
    note("realloc");
    return __libc_realloc(p, size);
}
EXPORTED void* aligned_alloc(size_t alignment, size_t size)
{
    note("aligned_alloc");
    return __libc_memalign(alignment, size);
}
EXPORTED void* memalign(size_t alignment, size_t size)
{
    note("memalign");
    return __libc_memalign(alignment, size);
}
EXPORTED int posix_memalign(void** p, size_t alignment, size_t size)
{
    note("posix_memalign");
    *p = __libc_memalign(alignment, size);
    return *p ? 0 : ENOMEM;
}
EXPORTED void free(void* p)
{
    note("free");
    __libc_free(p);
}
#endif

/// A library function that is noted and then does what it always does.
#define TRAPPED(result, name, parameters, arguments)                                                         \
    EXPORTED result name parameters                                                                          \
    {                                                                                                        \
        note(#name);                                                                                         \
        static const auto real = next<result(*) parameters>(#name);                                          \
        return real arguments;                                                                               \
    }

// clang-format off
TRAPPED(int, pthread_mutex_lock, (pthread_mutex_t* m), (m))
TRAPPED(int, pthread_mutex_trylock, (pthread_mutex_t* m), (m))
TRAPPED(int, pthread_mutex_timedlock, (pthread_mutex_t* m, const timespec* t), (m, t))
TRAPPED(int, pthread_mutex_clocklock, (pthread_mutex_t* m, clockid_t c, const timespec* t), (m, c, t))
TRAPPED(int, pthread_rwlock_rdlock, (pthread_rwlock_t* l), (l))
TRAPPED(int, pthread_rwlock_tryrdlock, (pthread_rwlock_t* l), (l))
TRAPPED(int, pthread_rwlock_wrlock, (pthread_rwlock_t* l), (l))
TRAPPED(int, pthread_rwlock_trywrlock, (pthread_rwlock_t* l), (l))
TRAPPED(int, pthread_spin_lock, (pthread_spinlock_t* l), (l))
TRAPPED(int, pthread_spin_trylock, (pthread_spinlock_t* l), (l))
TRAPPED(int, pthread_cond_wait, (pthread_cond_t* c, pthread_mutex_t* m), (c, m))
TRAPPED(int, pthread_cond_timedwait, (pthread_cond_t* c, pthread_mutex_t* m, const timespec* t), (c, m, t))
TRAPPED(int, pthread_cond_clockwait, (pthread_cond_t* c, pthread_mutex_t* m, clockid_t k, const timespec* t), (c, m, k, t))
TRAPPED(int, pthread_cond_signal, (pthread_cond_t* c), (c))
TRAPPED(int, pthread_cond_broadcast, (pthread_cond_t* c), (c))
TRAPPED(int, sem_wait, (sem_t* s), (s))
TRAPPED(int, sem_trywait, (sem_t* s), (s))
TRAPPED(int, sem_timedwait, (sem_t* s, const timespec* t), (s, t))
TRAPPED(int, sem_post, (sem_t* s), (s))
TRAPPED(int, sched_yield, (), ())
TRAPPED(int, nanosleep, (const timespec* t, timespec* left), (t, left))
TRAPPED(int, clock_nanosleep, (clockid_t c, int flags, const timespec* t, timespec* left), (c, flags, t, left))
TRAPPED(int, usleep, (useconds_t t), (t))
TRAPPED(int, poll, (pollfd* files, nfds_t count, int timeout), (files, count, timeout))
TRAPPED(ssize_t, write, (int file, const void* data, size_t size), (file, data, size))
TRAPPED(ssize_t, writev, (int file, const iovec* parts, int count), (file, parts, count))
// The standard streams lock, also where they only fill their buffer.
TRAPPED(size_t, fwrite, (const void* data, size_t size, size_t n, FILE* file), (data, size, n, file))
TRAPPED(int, fputs, (const char* text, FILE* file), (text, file))
TRAPPED(int, puts, (const char* text), (text))
TRAPPED(int, fputc, (int c, FILE* file), (c, file))
TRAPPED(int, putc, (int c, FILE* file), (c, file))
TRAPPED(int, putchar, (int c), (c))
TRAPPED(int, fflush, (FILE* file), (file))
TRAPPED(int, vfprintf, (FILE* file, const char* format, va_list values), (file, format, values))
TRAPPED(int, vprintf, (const char* format, va_list values), (format, values))
TRAPPED(int, __vfprintf_chk, (FILE* file, int flag, const char* format, va_list values), (file, flag, format, values))
// clang-format on

// What takes any number of values hands them on to its relative.
EXPORTED int fprintf(FILE* file, const char* format, ...)
{
    va_list values;
    va_start(values, format);
    const int printed = vfprintf(file, format, values);
    va_end(values);
    return printed;
}
EXPORTED int printf(const char* format, ...)
{
    va_list values;
    va_start(values, format);
    const int printed = vfprintf(stdout, format, values);
    va_end(values);
    return printed;
}
EXPORTED int __fprintf_chk(FILE* file, int flag, const char* format, ...)
{
    va_list values;
    va_start(values, format);
    const int printed = __vfprintf_chk(file, flag, format, values);
    va_end(values);
    return printed;
}
EXPORTED int __printf_chk(int flag, const char* format, ...)
{
    va_list values;
    va_start(values, format);
    const int printed = __vfprintf_chk(stdout, flag, format, values);
    va_end(values);
    return printed;
}
