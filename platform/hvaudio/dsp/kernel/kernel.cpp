#include "platform/hvaudio/dsp/kernel/kernel.h"

namespace hvaudio::dsp {

namespace {

/// Calls `change` with each section's p and q, or ic1 and ic2, and its g.
template <int lanes, typename Change>
void changeForm(SectionMemory<lanes>& memory, const StateTable<lanes>& c, Change change)
{
    for (int i = 0; i < lanes; ++i)
        change(memory.first[i], memory.second[i], c[B3][i] / c[B2][i]);
}

} // namespace

void toStateForm(FilterMemory& memory, const Filters& filters) noexcept
{
    const auto change = [](double& first, double& second, double g) {
        const double p = first, q = second;
        first = g * (p - q) / 2;
        second = (p + q) / -2;
    };
    changeForm(memory.cascade, filters.cascade, change);
    changeForm(memory.high, filters.high, change);
}

void toDirectForm(FilterMemory& memory, const Filters& filters) noexcept
{
    const auto change = [](double& first, double& second, double g) {
        const double ic1 = first, ic2 = second;
        first = ic1 / g - ic2;
        second = -ic1 / g - ic2;
    };
    changeForm(memory.cascade, filters.cascade, change);
    changeForm(memory.high, filters.high, change);
}

const Kernel* kernelOf(Path path) noexcept
{
    switch (path) {
    case Path::Scalar:
        return &scalarKernel;
    case Path::Vector2:
        return vector2Kernel;
    case Path::Vector4:
#if defined(__x86_64__)
        if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("fma"))
            return nullptr;
#endif
        return vector4Kernel;
    case Path::Vector8:
#if defined(__x86_64__)
        if (!__builtin_cpu_supports("avx512f") || !__builtin_cpu_supports("avx512dq") ||
            !__builtin_cpu_supports("avx512vl") || !kernelOf(Path::Vector4))
            return nullptr;
#endif
        return vector8Kernel;
    }
    return nullptr;
}

Path bestPath() noexcept
{
    Path best = Path::Scalar;
    for (Path path : allPaths)
        if (kernelOf(path))
            best = path;
    return best;
}

} // namespace hvaudio::dsp
