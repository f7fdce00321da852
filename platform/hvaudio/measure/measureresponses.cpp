#include "platform/hvaudio/measure/measureresponses.h"

#include "platform/hvaudio/dsp/engine.h"

#include <cmath>
#include <complex>

namespace hvaudio::dsp {

namespace {

/// Far below the limiter, whatever the gains are.
constexpr float level = 1e-4f;
/// Longer than the lowest filter rings and the longest delay.
constexpr double seconds = 1;

} // namespace

OfEachSpeaker measureResponses(const Settings& settings, double rate, const OfEachSpeaker& hz)
{
    OfEachSpeaker responses;
    for (std::size_t i = 0; i < hz.size(); ++i)
        responses[i].assign(hz[i].size(), 0.0);
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
    for (std::size_t i = 0; i < hz.size(); ++i)
        for (std::size_t f = 0; f < hz[i].size(); ++f) {
            const std::complex<double> step = std::polar(1.0, -turn * hz[i][f] / rate);
            std::complex<double> phase = 1, sum = 0;
            for (const float sample : answer[i]) {
                sum += phase * double(sample);
                phase *= step;
            }
            responses[i][f] = std::abs(sum) / double(level);
        }
    return responses;
}

} // namespace hvaudio::dsp
