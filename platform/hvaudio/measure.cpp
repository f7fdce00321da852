#include "hvaudio/measure.h"

#include "hvaudio/engine.h"

#include <cmath>
#include <complex>

namespace hvaudio::dsp {

namespace {

/// Far below the limiter, whatever the gains are.
constexpr float level = 1e-4f;
/// Longer than the lowest filter rings and the longest delay.
constexpr double seconds = 1;

} // namespace

MeasuredResponses measureResponses(const Settings& settings, double rate, const std::vector<double>& hz)
{
    MeasuredResponses responses;
    responses.fill(std::vector<double>(hz.size(), 0.0));
    Engine engine;
    if (!engine.prepare(rate))
        return responses;
    engine.set(settings);
    engine.settle();

    const int frames = int(seconds * rate);
    std::vector<float> impulse(std::size_t(frames), 0.0f);
    impulse[0] = level;
    std::array<std::vector<float>, speakerCount> answer;
    answer.fill(std::vector<float>(std::size_t(frames)));
    const float* const in[2] = {impulse.data(), impulse.data()};
    float* out[speakerCount];
    for (int i = 0; i < speakerCount; ++i)
        out[i] = answer[std::size_t(i)].data();
    engine.process(in, out, frames);

    constexpr double turn = 2 * 3.14159265358979323846;
    for (std::size_t f = 0; f < hz.size(); ++f) {
        const std::complex<double> step = std::polar(1.0, -turn * hz[f] / rate);
        std::complex<double> phase = 1, sum[speakerCount];
        for (int n = 0; n < frames; ++n) {
            for (int i = 0; i < speakerCount; ++i)
                sum[i] += phase * double(out[i][n]);
            phase *= step;
        }
        for (int i = 0; i < speakerCount; ++i)
            responses[std::size_t(i)][f] = std::abs(sum[i]) / double(level);
    }
    return responses;
}

} // namespace hvaudio::dsp
