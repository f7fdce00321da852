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
        : fd_(fd)
    {
    }
    Descriptor(Descriptor&& other) noexcept
        : fd_(std::exchange(other.fd_, -1))
    {
    }
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~Descriptor();

    int get() const noexcept { return fd_; }
    explicit operator bool() const noexcept { return fd_ >= 0; }

private:
    int fd_;
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
