// To be loaded before the C library (LD_PRELOAD): does what the library does, and notes each operation that
// changes a file of the watched folder, or makes a change durable, in the order in which the program asks for
// it.

#include "tests/faults/filerecord.h"

#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

class Recorder
{
public:
    Recorder()
    {
        const char* const folder = std::getenv(recordedFolderVariable);
        const char* const record = std::getenv(recordVariable);
        if (!folder || !record)
            return;
        m_folder = folder;
        m_record = static_cast<int>(
            ::syscall(SYS_openat, AT_FDCWD, record, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    }

    bool watches(const std::string& path) const
    {
        return m_record >= 0 && (path == m_folder || path.rfind(m_folder + '/', 0) == 0);
    }

    void opened(int descriptor, const std::string& path)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_paths[descriptor] = path;
    }
    void closed(int descriptor)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_paths.erase(descriptor);
    }
    /// Empty for a file that isn't watched.
    std::string pathOf(int descriptor)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto path = m_paths.find(descriptor);
        return path == m_paths.end() ? std::string() : path->second;
    }

    void note(FileRecord::Kind kind, const std::string& path, std::uint64_t offset = 0,
              const void* data = nullptr, std::size_t size = 0)
    {
        const FileRecord head = {kind, static_cast<std::uint32_t>(path.size()), offset, size};
        std::string record(reinterpret_cast<const char*>(&head), sizeof(head));
        record += path;
        record.append(static_cast<const char*>(data), size);
        // A file that takes no more shows as a record that ends in the middle.
        ::syscall(SYS_write, m_record, record.data(), record.size());
    }

private:
    std::string m_folder;
    int m_record = -1;
    std::mutex m_mutex;
    std::map<int, std::string> m_paths;
};

Recorder& recorder()
{
    static Recorder theRecorder;
    return theRecorder;
}

int openFile(const char* path, int flags, mode_t mode)
{
    const bool watched = recorder().watches(path);
    const bool existed = watched && ::syscall(SYS_faccessat, AT_FDCWD, path, F_OK) == 0;
    const int descriptor = static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
    if (watched && descriptor >= 0) {
        recorder().opened(descriptor, path);
        if (!existed)
            recorder().note(FileRecord::Create, path);
        else if (flags & O_TRUNC)
            recorder().note(FileRecord::Truncate, path);
    }
    return descriptor;
}

ssize_t writeFile(int descriptor, const void* data, std::size_t size, off_t offset)
{
    const std::string path = recorder().pathOf(descriptor);
    const auto written = static_cast<ssize_t>(::syscall(SYS_pwrite64, descriptor, data, size, offset));
    if (!path.empty() && written > 0)
        recorder().note(FileRecord::Write, path, static_cast<std::uint64_t>(offset), data,
                        static_cast<std::size_t>(written));
    return written;
}

int truncateFile(int descriptor, off_t length)
{
    const std::string path = recorder().pathOf(descriptor);
    const auto result = static_cast<int>(::syscall(SYS_ftruncate, descriptor, length));
    if (!path.empty() && result == 0)
        recorder().note(FileRecord::Truncate, path, static_cast<std::uint64_t>(length));
    return result;
}

/// Not done: a recorded process needs no durability, and its order is what counts.
int syncFile(int descriptor, long number)
{
    const std::string path = recorder().pathOf(descriptor);
    if (path.empty())
        return static_cast<int>(::syscall(number, descriptor));
    recorder().note(FileRecord::Sync, path);
    return 0;
}

mode_t modeOf(int flags, va_list arguments)
{
    return flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
}

} // namespace

#pragma GCC visibility push(default)
extern "C" {

/// The program's own remarks between its operations.
void recordMark(int number)
{
    recorder().note(FileRecord::Mark, std::string(), static_cast<std::uint64_t>(number));
}

int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    return openFile(path, flags, mode);
}

int open64(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    return openFile(path, flags, mode);
}

int close(int descriptor)
{
    recorder().closed(descriptor);
    return static_cast<int>(::syscall(SYS_close, descriptor));
}

ssize_t write(int descriptor, const void* data, std::size_t size)
{
    const std::string path = recorder().pathOf(descriptor);
    const off_t offset = path.empty() ? 0 : static_cast<off_t>(::syscall(SYS_lseek, descriptor, 0, SEEK_CUR));
    const auto written = static_cast<ssize_t>(::syscall(SYS_write, descriptor, data, size));
    if (!path.empty() && written > 0)
        recorder().note(FileRecord::Write, path, static_cast<std::uint64_t>(offset), data,
                        static_cast<std::size_t>(written));
    return written;
}

ssize_t pwrite(int descriptor, const void* data, std::size_t size, off_t offset)
{
    return writeFile(descriptor, data, size, offset);
}

ssize_t pwrite64(int descriptor, const void* data, std::size_t size, off64_t offset)
{
    return writeFile(descriptor, data, size, offset);
}

int ftruncate(int descriptor, off_t length) noexcept
{
    return truncateFile(descriptor, length);
}

int ftruncate64(int descriptor, off64_t length) noexcept
{
    return truncateFile(descriptor, length);
}

int fsync(int descriptor)
{
    return syncFile(descriptor, SYS_fsync);
}

int fdatasync(int descriptor)
{
    return syncFile(descriptor, SYS_fdatasync);
}

int rename(const char* from, const char* to) noexcept
{
    const auto result = static_cast<int>(::syscall(SYS_renameat, AT_FDCWD, from, AT_FDCWD, to));
    if (result == 0 && recorder().watches(from))
        recorder().note(FileRecord::Rename, from, 0, to, std::strlen(to));
    return result;
}

int unlink(const char* path) noexcept
{
    const auto result = static_cast<int>(::syscall(SYS_unlinkat, AT_FDCWD, path, 0));
    if (result == 0 && recorder().watches(path))
        recorder().note(FileRecord::Unlink, path);
    return result;
}
}
#pragma GCC visibility pop
