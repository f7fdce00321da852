#include "platform/hvaudio/files/replacement.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>

#include <fcntl.h>
#include <unistd.h>

namespace hvaudio {

namespace fs = std::filesystem;

namespace {

constexpr int mostLinks = 40; // as the kernel

/// Where the links lead, whether there is a file or not; empty when they go round in a circle.
fs::path followed(fs::path path)
{
    std::error_code fault;
    for (int links = 0; fs::is_symlink(fs::symlink_status(path, fault)); ++links) {
        const fs::path next = fs::read_symlink(path, fault);
        if (fault || links == mostLinks)
            return {};
        path = path.parent_path() / next;
    }
    return path;
}

} // namespace

std::unique_ptr<Replacement> Replacement::create(const std::string& path, std::string& error)
{
    const auto refusal = [&](const std::string& why) {
        error = "can't write '" + path + "': " + why;
        return nullptr;
    };
    struct stat old = {};
    const bool exists = stat(path.c_str(), &old) == 0;
    if (const char* const other = exists ? otherThanRegular(old.st_mode) : nullptr)
        return refusal(std::string("it is ") + other);
    // A file that may not be written isn't replaced either, though its folder would allow it.
    if (exists && faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0)
        return refusal(std::strerror(errno));
    const fs::path target = followed(path);
    if (target.empty() && !path.empty())
        return refusal(std::strerror(ELOOP));
    if (target.filename().empty())
        return refusal("it is no file name");
    // The names below /proc/self/fd needn't lead to what they stand for.
    std::error_code fault;
    if (exists && !fs::equivalent(path, target, fault))
        return refusal("its links can't be followed");

    std::unique_ptr<Replacement> made(new Replacement);
    made->m_name = path;
    made->m_target = target.string();
    std::random_device random;
    do {
        const std::string name = "unfinished-" + std::to_string(random()) + ".wav";
        made->m_unfinished = (target.parent_path() / name).string();
        // Opened with the mode that any new file gets: only so the kernel subtracts the mask itself.
        made->m_file = Descriptor(
            open(made->m_unfinished.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, exists ? 0600 : 0666));
    } while (!made->m_file && errno == EEXIST);
    if (!made->m_file) {
        const int why = errno;
        made->m_unfinished.clear();
        return refusal(std::strerror(why));
    }
    if (exists && fchmod(made->m_file.get(), old.st_mode & 0777) != 0)
        return refusal(std::strerror(errno));
    return made;
}

Replacement::~Replacement()
{
    if (!m_unfinished.empty())
        std::remove(m_unfinished.c_str());
}

bool Replacement::finish(std::string& error)
{
    // The contents first: after a power cut a name that came first would lead to an empty file.
    if (fsync(m_file.get()) != 0 || std::rename(m_unfinished.c_str(), m_target.c_str()) != 0) {
        error = "can't write '" + m_name + "': " + std::strerror(errno);
        return false;
    }
    m_unfinished.clear();
    // Without this the old file may be back after a power cut, which is whole as well; so where the folder
    // can't be synced nothing has failed.
    const std::string folder = fs::path(m_target).parent_path().string();
    if (const Descriptor held(
            open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        held)
        fsync(held.get());
    return true;
}

} // namespace hvaudio
