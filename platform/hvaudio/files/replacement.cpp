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
    made->name_ = path;
    made->target_ = target.string();
    std::random_device random;
    do {
        const std::string name = "unfinished-" + std::to_string(random()) + ".wav";
        made->unfinished_ = (target.parent_path() / name).string();
        // Opened with the mode that any new file gets: only so the kernel subtracts the mask itself.
        made->file_ = Descriptor(
            open(made->unfinished_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, exists ? 0600 : 0666));
    } while (!made->file_ && errno == EEXIST);
    if (!made->file_) {
        const int why = errno;
        made->unfinished_.clear();
        return refusal(std::strerror(why));
    }
    if (exists && fchmod(made->file_.get(), old.st_mode & 0777) != 0)
        return refusal(std::strerror(errno));
    return made;
}

Replacement::~Replacement()
{
    if (!unfinished_.empty())
        std::remove(unfinished_.c_str());
}

bool Replacement::finish(std::string& error)
{
    if (std::rename(unfinished_.c_str(), target_.c_str()) != 0) {
        error = "can't write '" + name_ + "': " + std::strerror(errno);
        return false;
    }
    unfinished_.clear();
    return true;
}

} // namespace hvaudio
