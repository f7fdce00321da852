#pragma once

#include "platform/hvaudio/dsp/settings.h"

/// What a test expects the sound processor to be asked for.

/// Steps of a volume, 1..50, in dB; 0 is silence.
constexpr double dbOf(int volume)
{
    return volume > 0 ? 1.2 * (volume - 50) : hvaudio::dsp::silentDb;
}

/// Whether the subwoofer sounds up to that frequency; 0 = all of it.
inline bool hears(const hvaudio::dsp::Settings& settings, double hz)
{
    return !settings.subwoofer.silent && settings.subwoofer.lowPass.hz == hz;
}
