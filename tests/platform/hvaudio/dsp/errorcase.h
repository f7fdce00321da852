#pragma once

#include "tests/platform/hvaudio/dsp/reference.h"

#include "platform/hvaudio/dsp/kernel/kernel.h"

#include <random>

namespace sound {

/// Settings and a sound for which the processor's error is measured: what the error search tries
/// (bench/hvaudio/error_search.cpp) and whose worst the tests keep.
struct ErrorCase
{
    Settings settings;
    double rate = 48000;
    double hz = 1000; ///< 0 = pink noise
    bool oneSide = false;
};

/// A case that stands for a row of numbers, on every machine the same: the first draws everything, each other
/// one something of it anew.
using Lineage = std::vector<unsigned>;

inline ErrorCase errorCase(const Lineage& lineage)
{
    ErrorCase c;
    Settings& s = c.settings;
    s.power = true;
    for (size_t generation = 0; generation < lineage.size(); ++generation) {
        std::mt19937 random(lineage[generation]);
        const auto upTo = [&](int n) { return int(random() % unsigned(n + 1)); };
        const auto between = [&](double low, double high) {
            return low * std::pow(high / low, double(random()) / 4294967295.0);
        };
        const auto filter = [&](FilterSettings& f) {
            f = {upTo(3) == 0 ? 0 : between(10, upTo(2) == 0 ? 20000 : 300), 1 + upTo(3)};
        };
        const int only = generation == 0 ? -1 : upTo(9); // 0..9: what is drawn anew
        const auto draws = [&](int what) { return only < 0 || only == what; };
        if (draws(0)) {
            const double rates[] = {44100, 48000, 96000, 192000};
            c.rate = rates[upTo(3)];
        }
        if (draws(1) || draws(2))
            c.hz = upTo(15) == 0 ? 0 : between(10, 20000);
        if (draws(3)) {
            s.mainDb = -1.2 * upTo(49);
            s.loudness = upTo(2) > 0;
            s.sourceDb = upTo(15) - 5;
        }
        if (draws(4))
            for (int& band : s.equalizer)
                band = upTo(2) == 0 ? 20 * upTo(1) - 10 : upTo(20) - 10;
        if (only == 5)
            s.equalizer[size_t(upTo(bandCount - 1))] = upTo(20) - 10;
        for (int i = 0; i < cabinSpeakerCount; ++i)
            if (only < 0 || (only == 6 && upTo(1) == 0)) {
                filter(s.cabin[i].highPass);
                filter(s.cabin[i].lowPass);
                s.cabin[i].attenuation = upTo(12);
                s.cabin[i].delayMs = 0.1 * upTo(100);
            }
        if (draws(7)) {
            filter(s.subwoofer.lowPass);
            s.subwoofer.attenuation = upTo(60);
            s.subwoofer.delayMs = 0.1 * upTo(100);
        }
        if (draws(8)) {
            s.balance = upTo(2) == 0 ? upTo(30) / 15.0 - 1 : 0;
            s.fader = upTo(2) == 0 ? upTo(30) / 15.0 - 1 : 0;
        }
        if (draws(9))
            c.oneSide = upTo(7) == 0;
    }
    return c;
}

/// What is left of the error: dB between signal and error where they are closest, and where that is.
struct Clean
{
    double db = 999;
    Path path = Path::Scalar;
    int speaker = 0;
    int part = 0;
};

/// Plays the case on every path, from rest, and compares each speaker in each third of it. A speaker that
/// keeps less than a millionth of its input is measured as if it kept that: there is nothing to hear.
inline Clean cleanOf(const ErrorCase& c, int frames = 9000)
{
    constexpr int parts = 3;
    constexpr double least = 1e-12;
    const Signal left = c.hz > 0 ? sine(c.hz, 0.01, frames, c.rate) : pinkNoise(0.01, frames, 1);
    const Signal right = c.oneSide ? silence(frames) : left;
    const auto reference = playReference(c.settings, c.rate, left, right);
    Clean worst;
    for (Path path : allPaths) {
        if (!kernelOf(path))
            continue;
        Rig rig(c.settings, c.rate, path);
        Signal in[2] = {left, right};
        for (Signal& side : in)
            side.resize(size_t(frames + rig.latency()));
        const Speakers out = rig.play(in[0], in[1]);
        for (int i = 0; i < speakerCount; ++i)
            for (int part = 0; part < parts; ++part) {
                Exact signal = 0, error = 0, input = 0;
                for (int n = part * frames / parts; n < (part + 1) * frames / parts; ++n) {
                    const Exact wanted = reference[size_t(i)][size_t(n)];
                    const Exact off = out[size_t(i)][size_t(n + rig.latency())] - wanted;
                    signal += wanted * wanted;
                    error += off * off;
                    input += Exact(left[size_t(n)]) * left[size_t(n)];
                }
                if (error == 0)
                    continue;
                const double db = double(10 * std::log10(std::max<Exact>(signal, least * input) / error));
                if (db < worst.db)
                    worst = {db, path, i, part};
            }
    }
    return worst;
}

} // namespace sound
