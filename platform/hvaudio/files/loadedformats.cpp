#include "platform/hvaudio/files/fileformats.h"

#include <dlfcn.h>

namespace hvaudio {

namespace {

/// The folder of this library, with a slash at its end.
std::string ownFolder()
{
    Dl_info about;
    if (!dladdr(reinterpret_cast<const void*>(&ownFolder), &about))
        return std::string();
    const std::string path = about.dli_fname;
    return path.substr(0, path.rfind('/') + 1);
}

} // namespace

const FileFormats* fileFormats(std::string& error)
{
    // Never closed: what it makes lives as long as anybody likes.
    static void* const library = dlopen((ownFolder() + "libhvaudiofiles.so").c_str(), RTLD_NOW | RTLD_LOCAL);
    static const auto* const formats =
        library ? static_cast<const FileFormats*>(dlsym(library, "hvaudioFileFormats")) : nullptr;
    if (!formats)
        error = "sound files can't be used: libhvaudiofiles.so can't be loaded";
    return formats;
}

} // namespace hvaudio
