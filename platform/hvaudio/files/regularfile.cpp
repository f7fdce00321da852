#include "platform/hvaudio/files/regularfile.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace hvaudio {

namespace {

Descriptor openRegular(const std::string& path, int flags, const char* verb, std::string& error)
{
    const auto refusal = [&](const char* why) {
        error = std::string("can't ") + verb + " '" + path + "': " + why;
        return Descriptor();
    };
    const auto kind = [](const struct stat& is) {
        const char* const other = otherThanRegular(is.st_mode);
        return other ? std::string("it is ") + other : std::string();
    };
    // Looked at by its name first: whoever waits at the other end of a pipe would be woken by opening it.
    struct stat is = {};
    if (stat(path.c_str(), &is) == 0 && otherThanRegular(is.st_mode))
        return refusal(kind(is).c_str());
    // And again once it is open, since another file may have taken the name meanwhile. O_NONBLOCK means
    // nothing to a regular file.
    Descriptor file(open(path.c_str(), flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666));
    if (!file || fstat(file.get(), &is) != 0)
        return refusal(std::strerror(errno));
    if (otherThanRegular(is.st_mode))
        return refusal(kind(is).c_str());
    return file;
}

} // namespace

Descriptor::~Descriptor()
{
    if (m_fd >= 0)
        close(m_fd);
}

const char* otherThanRegular(mode_t mode) noexcept
{
    // clang-format off
    switch (mode & S_IFMT) {
    case S_IFREG:  return nullptr;
    case S_IFDIR:  return "a folder";
    case S_IFIFO:  return "a pipe";
    case S_IFSOCK: return "a socket";
    case S_IFCHR:
    case S_IFBLK:  return "a device";
    default:       return "no regular file";
    }
    // clang-format on
}

Descriptor openForReading(const std::string& path, std::string& error)
{
    return openRegular(path, O_RDONLY, "read", error);
}

Descriptor openForWriting(const std::string& path, std::string& error)
{
    Descriptor file = openRegular(path, O_WRONLY | O_CREAT, "write", error);
    // Not by O_TRUNC: only what has been looked at is emptied.
    if (file && ftruncate(file.get(), 0) != 0) {
        error = "can't write '" + path + "': " + std::strerror(errno);
        return Descriptor();
    }
    return file;
}

} // namespace hvaudio
