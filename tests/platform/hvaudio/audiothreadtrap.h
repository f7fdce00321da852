#pragma once

#include <atomic>
#include <cstdlib>
#include <dlfcn.h>
#include <pthread.h>
#include <sys/types.h>

// For the one source file of a test executable. What the audio thread must not do is trapped in this process:
// the allocator, locks, waits and writes count when the calling thread says that it is the audio thread.

namespace {

thread_local bool onAudioThread = false;
std::atomic<int> trapped{0};
std::atomic<const char*> trappedName{nullptr};

void note(const char* name)
{
    if (onAudioThread) {
        trapped.fetch_add(1);
        trappedName.store(name);
    }
}

template <typename F>
F next(const char* name)
{
    return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

} // namespace

#define EXPORTED extern "C" __attribute__((visibility("default")))

#if defined(__SANITIZE_ADDRESS__)
// The sanitizer's own allocator stays; it tells of each use.
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
EXPORTED void free(void* p)
{
    note("free");
    __libc_free(p);
}
#endif

EXPORTED int pthread_mutex_lock(pthread_mutex_t* mutex)
{
    note("pthread_mutex_lock");
    static const auto real = next<int (*)(pthread_mutex_t*)>("pthread_mutex_lock");
    return real(mutex);
}
EXPORTED int pthread_mutex_trylock(pthread_mutex_t* mutex)
{
    note("pthread_mutex_trylock");
    static const auto real = next<int (*)(pthread_mutex_t*)>("pthread_mutex_trylock");
    return real(mutex);
}
EXPORTED int pthread_rwlock_wrlock(pthread_rwlock_t* lock)
{
    note("pthread_rwlock_wrlock");
    static const auto real = next<int (*)(pthread_rwlock_t*)>("pthread_rwlock_wrlock");
    return real(lock);
}
EXPORTED int sched_yield()
{
    note("sched_yield");
    static const auto real = next<int (*)()>("sched_yield");
    return real();
}
EXPORTED ssize_t write(int file, const void* data, size_t size)
{
    note("write");
    static const auto real = next<ssize_t (*)(int, const void*, size_t)>("write");
    return real(file, data, size);
}
