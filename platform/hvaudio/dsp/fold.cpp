#include "platform/hvaudio/dsp/fold.h"

namespace hvaudio::dsp {

void foldToStereo(const float* const in[speakerCount], float* const out[2], int frames) noexcept
{
    const auto at = [](const float* signal, int n) { return signal ? signal[n] : 0.0f; };
    for (int n = 0; n < frames; ++n) {
        const float sub = subwooferShare * at(in[Subwoofer], n);
        const float left = cabinShare * (at(in[FrontLeft], n) + at(in[RearLeft], n)) + sub;
        const float right = cabinShare * (at(in[FrontRight], n) + at(in[RearRight], n)) + sub;
        out[0][n] = left;
        out[1][n] = right;
    }
}

} // namespace hvaudio::dsp
