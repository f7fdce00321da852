#pragma once

#include <cstring>
#include <string>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

/// Things with a name that are no files, made for the tests in a folder of their own.
namespace nodes {

inline bool pipe(const std::string& path)
{
    return mkfifo(path.c_str(), 0600) == 0;
}

inline bool socket(const std::string& path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path))
        return false;
    std::memcpy(address.sun_path, path.c_str(), path.size());
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    const bool done = bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    close(fd);
    return done; // the name stays
}

/// A device of the number 0, which no driver has. Only the administrator may make one.
inline bool device(const std::string& path)
{
    return mknod(path.c_str(), S_IFCHR | 0600, 0) == 0;
}

/// The S_IF... bits of what stands there itself, a link being a link; 0 for nothing.
inline mode_t kind(const std::string& path)
{
    struct stat is = {};
    return lstat(path.c_str(), &is) == 0 ? is.st_mode & S_IFMT : 0;
}

inline mode_t permissions(const std::string& path)
{
    struct stat is = {};
    return stat(path.c_str(), &is) == 0 ? is.st_mode & 07777 : 0;
}

} // namespace nodes
