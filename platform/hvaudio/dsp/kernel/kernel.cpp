#include "platform/hvaudio/dsp/kernel/kernel.h"

#include "platform/hvaudio/dsp/kernel/kernel_paths.h"

namespace hvaudio::dsp {

const Kernel* kernelOf(Path path) noexcept
{
    switch (path) {
    case Path::Scalar:
        return &scalarKernel;
    case Path::Vector4:
        return vector4Kernel;
    case Path::Vector8:
#if defined(__x86_64__)
        if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("fma"))
            return nullptr;
#endif
        return vector8Kernel;
    }
    return nullptr;
}

Path bestPath() noexcept
{
    for (Path path : {Path::Vector8, Path::Vector4})
        if (kernelOf(path))
            return path;
    return Path::Scalar;
}

} // namespace hvaudio::dsp
