#pragma once

namespace hvaudio::dsp {

/// Most frames that the chain handles in one go; a block is cut into pieces of at most this.
constexpr int pieceFrames = 256;

/// A factor on a straight line from the last grid point on. `start` is the place of a piece's first frame
/// after it: counted so, a factor doesn't depend on where pieces end.
struct Line
{
    double from = 1, step = 0;
    int start = 0;
    __attribute__((always_inline)) double at(int frame) const { return from + step * double(start + frame); }
};

/// [RT] What may be put into a filter: a sample that is not a number or not finite is 0, and one beyond 64
/// times full scale (36 dB) is held there, so that nothing that comes in can spoil the filters' memory.
/// Always inlined, because it is compiled for several instruction sets; written over the bits, so that it
/// holds where a compiler is told that all numbers are finite.
__attribute__((always_inline)) inline float cleaned(float sample) noexcept
{
    int bits;
    __builtin_memcpy(&bits, &sample, sizeof bits);
    const float finite = (bits & 0x7fffffff) < 0x7f800000 ? sample : 0.0f;
    const float low = finite < -64.0f ? -64.0f : finite;
    return low > 64.0f ? 64.0f : low;
}

/// [RT] Adds cleaned left/right, neither of them null, times a factor and returns the largest absolute sample
/// behind the factor.
double addPairs(const float* left, const float* right, Line factor, double* pairs, int frames) noexcept;
/// [RT] True when every sample is 0; a null signal is.
bool allZero(const float* signal, int frames) noexcept;

} // namespace hvaudio::dsp
