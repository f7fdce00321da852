#pragma once

#include "platform/hvaudio/export.h"

#include <array>
#include <limits>
#include <string>

/// What the listener asked for, in physical units: plain values, no coefficient, no thread.
///
/// A `Settings` is written by whoever serves the listener (audioservice.h), turned into gains and
/// coefficients by `design.h`, and handed to the audio thread by `Engine::set`. Values outside the ranges
/// given here are brought into them by `clampToRange`, which says what it changed; the engine calls it
/// itself, so nothing bad can reach the sound.
namespace hvaudio::dsp {

/// The five outputs, in the order of every array in this library.
enum Speaker { FrontLeft, FrontRight, RearLeft, RearRight, Subwoofer };
constexpr int speakerCount = 5;
/// The four speakers that have a high-pass, a low-pass and a place in the balance/fader field.
constexpr int cabinSpeakerCount = 4;

/// What is mixed in behind the equalizer, in the order of `Settings::promptDb` and `Block::prompt`.
enum Prompt { Ring, Call, Voice, Navi };
constexpr int promptCount = 4;

constexpr int bandCount = 13;
/// Centres of the equalizer bands in Hz.
constexpr std::array<double, bandCount> bandHz = {32,   63,   125,   250,   500,   1000, 2000,
                                                  4000, 8000, 10000, 12000, 14000, 16000};

/// The level of what is turned down to nothing, in dB.
constexpr double silentDb = -std::numeric_limits<double>::infinity();

/// One filter of a crossover, see `crossoverHighPass`.
struct FilterSettings
{
    double hz = 0; ///< corner, 10..20000; 0 = off, everything passes
    int order = 4; ///< 1..4 = 6, 12, 18, 24 dB/octave
};

struct CabinSpeakerSettings
{
    FilterSettings highPass;
    FilterSettings lowPass;
    int attenuation = 0; ///< 0..12 dB
    bool inverted = false;
    double delayMs = 0; ///< 0..10 ms, any fraction
};

struct SubwooferSettings
{
    bool silent = false;               ///< ramps it to silence; its filter stays as it is
    FilterSettings lowPass = {120, 4}; ///< off: it plays everything
    int attenuation = 11;              ///< 0..60 dB
    bool inverted = false;
    double delayMs = 0; ///< 0..10 ms, any fraction
};

struct Settings
{
    bool power = false;  ///< off ramps every output to silence, prompts and beeps too
    bool mute = false;   ///< ramps the main programme to silence; prompts and beeps still sound
    int source = 0;      ///< which source plays, any number; another one fades out, waits for it, fades in
    double sourceDb = 0; ///< -20..20 dB, of that source
    double mainDb = silentDb; ///< level of the main programme, up to 0 dB
    std::array<double, promptCount> promptDb = {-12, -12, -12, -12}; ///< up to 0 dB, order of `Prompt`

    std::array<int, bandCount> equalizer = {}; ///< -10..+10 dB
    bool loudness = false;

    double balance = 0; ///< -1 = left only, 1 = right only
    double fader = 0;   ///< -1 = rear only, 1 = front only

    std::array<CabinSpeakerSettings, cabinSpeakerCount> cabin; ///< order of `Speaker`
    SubwooferSettings subwoofer;
};

/// Brings every value into its range. What is no finite number becomes 0; a level that is no number becomes
/// `silentDb`. Returns one readable clause for each value that was changed, "subwoofer attenuation 70 -> 60,
/// ...", empty when all were in range. Allocates only then.
HVAUDIO_EXPORT std::string clampToRange(Settings& settings);

} // namespace hvaudio::dsp
