#pragma once

#include <string>
#include <utility>

#include <sys/stat.h>

namespace hvaudio {

/// Owns a file descriptor; -1 is none. One thread at a time.
class Descriptor
{
public:
    explicit Descriptor(int fd = -1) noexcept
        : m_fd(fd)
    {
    }
    Descriptor(Descriptor&& other) noexcept
        : m_fd(std::exchange(other.m_fd, -1))
    {
    }
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    ~Descriptor();

    /// Stays owned here.
    int get() const noexcept { return m_fd; }
    explicit operator bool() const noexcept { return m_fd >= 0; }

private:
    int m_fd;
};

/// "a folder", "a pipe", ... for what `stat` says; null for a regular file.
const char* otherThanRegular(mode_t mode) noexcept;

/// Opens what can be read from any place: a regular file, or a symbolic link to one. Pipes, devices, sockets
/// and folders are refused, and never waited for: a pipe would block its reader until somebody writes. None,
/// and one readable sentence in `error`, when that is the case or the file can't be opened.
Descriptor openForReading(const std::string& path, std::string& error);
/// Likewise for writing; the file is made where there is none, and emptied where there is one.
Descriptor openForWriting(const std::string& path, std::string& error);

} // namespace hvaudio
