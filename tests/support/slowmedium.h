#pragma once

#include <condition_variable>
#include <cstdarg>
#include <mutex>
#include <string>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

// For the one source file of a test executable: files on a medium that doesn't answer, as a server that has
// gone or a stick that is broken. Whoever opens one waits until the medium answers; `open` of this process is
// this one.
namespace slowmedium {

inline std::mutex mutex;
inline std::condition_variable changed;
inline std::string hangs; ///< part of a path
inline int opening = 0;

/// From now on files with this in their path don't open.
inline void hang(const std::string& part)
{
    const std::lock_guard<std::mutex> lock(mutex);
    hangs = part;
}
/// Files open again, and so do those that are waited for.
inline void answer()
{
    hang({});
    changed.notify_all();
}
/// How many wait to open a file.
inline int waiting()
{
    const std::lock_guard<std::mutex> lock(mutex);
    return opening;
}

} // namespace slowmedium

extern "C" __attribute__((visibility("default"))) int open(const char* path, int flags, ...)
{
    std::va_list more;
    va_start(more, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(more, mode_t) : 0;
    va_end(more);
    {
        using namespace slowmedium;
        std::unique_lock<std::mutex> lock(mutex);
        const auto answers = [path] {
            return hangs.empty() || std::string(path).find(hangs) == std::string::npos;
        };
        if (!answers()) {
            ++opening;
            changed.wait(lock, answers);
            --opening;
        }
    }
    return int(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}
