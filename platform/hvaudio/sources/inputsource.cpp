#include "platform/hvaudio/sources/inputsource.h"

#include "platform/hvaudio/dsp/samples.h"

#include <algorithm>

namespace hvaudio {

namespace {

class Input final : public Source
{
public:
    bool render(const float* const in[2], float* left, float* right, int frames) noexcept override
    {
        const auto silent = [frames](const float* side) { return !side || dsp::allZero(side, frames); };
        if (silent(in[0]) && silent(in[1]))
            return false;
        float* const out[2] = {left, right};
        for (int s = 0; s < 2; ++s) {
            if (in[s])
                std::copy(in[s], in[s] + frames, out[s]);
            else
                std::fill(out[s], out[s] + frames, 0.0f);
        }
        return true;
    }
};

} // namespace

std::unique_ptr<Source> makeInput()
{
    return std::make_unique<Input>();
}

} // namespace hvaudio
