#pragma once

#include "platform/hvaudio/dsp/engine.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <memory>
#include <random>
#include <vector>

/// Signals, and how they are played and measured, for the tests of the sound processor.
namespace sound {

using namespace hvaudio::dsp;

using Signal = std::vector<float>;
using Speakers = std::array<Signal, speakerCount>;

constexpr double pi = 3.14159265358979323846;

inline double db(double factor)
{
    return 20 * std::log10(std::max(factor, 1e-15));
}

/// Corners in Hz that a listener can choose; 0 = off.
constexpr double corners[] = {0, 30, 40, 60, 80, 100, 120, 160, 250};

/// Steps of a volume knob, 1..50, in dB; 0 is silence.
constexpr double volumeDb(int volume)
{
    return volume > 0 ? 1.2 * (volume - 50) : silentDb;
}

/// Subwoofer with a low-pass at `corners[code - 1]`; 0 is silent.
inline void setSubwoofer(Settings& settings, int code)
{
    settings.subwoofer.silent = code == 0;
    settings.subwoofer.lowPass.hz = corners[code > 0 ? code - 1 : 1];
}

/// Everything on and nothing done: 0 dB from the input to each speaker.
inline Settings flat()
{
    Settings s;
    s.power = true;
    s.mainDb = 0;
    s.subwoofer.lowPass.hz = 0;
    s.subwoofer.attenuation = 0;
    return s;
}

/// A prepared engine that already stands at its settings.
struct Rig
{
    explicit Rig(const Settings& settings = flat(), double rate = 48000, Path path = bestPath())
    {
        engine.prepare(rate);
        engine.setPath(path);
        set(settings);
    }
    /// Without a glide; forgets all sound.
    void set(const Settings& settings)
    {
        engine.set(settings);
        engine.settle();
    }
    Speakers play(const Signal& left, const Signal& right, int blockFrames = 512)
    {
        Speakers out;
        for (Signal& s : out)
            s.resize(left.size());
        for (size_t done = 0; done < left.size(); done += blockFrames) {
            const int frames = int(std::min<size_t>(blockFrames, left.size() - done));
            const float* const in[2] = {&left[done], &right[done]};
            float* const to[speakerCount] = {&out[0][done], &out[1][done], &out[2][done], &out[3][done],
                                             &out[4][done]};
            engine.process(in, to, frames);
        }
        return out;
    }
    Speakers play(const Signal& both, int blockFrames = 512) { return play(both, both, blockFrames); }
    int latency() const { return engine.latencyFrames(); }

    Engine engine;
};

inline Signal silence(int frames)
{
    return Signal(size_t(frames), 0.0f);
}

/// Far below the limiter.
constexpr float impulseLevel = 0.001f;

inline Signal impulse(int frames)
{
    Signal s = silence(frames);
    s[0] = impulseLevel;
    return s;
}

inline Signal sine(double hz, double level, int frames, double rate = 48000)
{
    Signal s(static_cast<size_t>(frames));
    for (int n = 0; n < frames; ++n)
        s[n] = float(level * std::sin(2 * pi * hz * n / rate));
    return s;
}

inline Signal whiteNoise(double level, int frames, unsigned seed)
{
    std::mt19937 random(seed);
    Signal s(static_cast<size_t>(frames));
    for (float& x : s)
        x = float(level * (int32_t(random()) / 2147483648.0));
    return s;
}

/// Paul Kellet's filter on white noise.
inline Signal pinkNoise(double level, int frames, unsigned seed)
{
    Signal s = whiteNoise(1, frames, seed);
    double b[6] = {};
    static const double pole[6] = {0.99886, 0.99332, 0.96900, 0.86650, 0.55000, -0.7616};
    static const double gain[6] = {0.0555179, 0.0750759, 0.1538520, 0.3104856, 0.5329522, -0.0168980};
    for (float& x : s) {
        double sum = x * 0.5362;
        for (int i = 0; i < 6; ++i) {
            b[i] = pole[i] * b[i] + gain[i] * x;
            sum += b[i];
        }
        x = float(level * 0.11 * sum);
    }
    return s;
}

// Sums over whole signals are most of what these tests do, in debug builds too; clang has no such word.
#if defined(__GNUC__) && !defined(__clang__)
#define OPTIMIZED(...) __attribute__((optimize(__VA_ARGS__)))
#else
#define OPTIMIZED(...)
#endif

/// Fourier sum at one frequency.
OPTIMIZED("O3") inline std::complex<double> spectrum(const Signal& s, double hz, double rate = 48000)
{
    const double turn = 2 * pi * hz / rate;
    const double c1 = std::cos(turn), s1 = std::sin(turn);
    double re = 0, im = 0;
    for (size_t start = 0; start < s.size(); start += 1024) {
        // The phasor is set anew often enough to stay exact.
        double c = std::cos(turn * double(start)), d = -std::sin(turn * double(start));
        const size_t end = std::min(start + 1024, s.size());
        for (size_t n = start; n < end; ++n) {
            re += s[n] * c;
            im += s[n] * d;
            const double next = c * c1 + d * s1;
            d = d * c1 - c * s1;
            c = next;
        }
    }
    return {re, im};
}

/// dB of an impulse response at a frequency.
inline double responseDb(const Signal& s, double hz, double rate = 48000)
{
    return db(std::abs(spectrum(s, hz, rate)) / impulseLevel);
}

inline float peak(const Signal& s, size_t from = 0)
{
    float largest = 0;
    for (size_t n = from; n < s.size(); ++n)
        largest = std::max(largest, std::abs(s[n]));
    return largest;
}

inline double power(const Signal& s)
{
    double sum = 0;
    for (float x : s)
        sum += double(x) * x;
    return sum / double(s.size());
}

} // namespace sound
