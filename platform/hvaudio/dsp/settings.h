#pragma once

#include <array>
#include <string>

/// What the listener asked for, in the units of the pages: plain values, no coefficient, no thread.
///
/// A `Settings` is written by the audio service, turned into gains and coefficients by `design.h`, and handed
/// to the audio thread by `Engine::set`. Values outside the ranges given here are brought into them by
/// `clampToRange`, which says what it changed; the engine calls it itself, so nothing bad can reach the
/// sound.
namespace hvaudio::dsp {

/// The five outputs, in the order of every array in this library.
enum Speaker { FrontLeft, FrontRight, RearLeft, RearRight, Subwoofer };
constexpr int speakerCount = 5;
/// The four speakers that have a high-pass, a low-pass and a place in the balance/fader field.
constexpr int cabinSpeakerCount = 4;

/// What is mixed in behind the equalizer, in the order of `Settings::promptVolume` and `Block::prompt`.
/// The service's channel numbers are 1, 2, 4 and 5 in this order (0 is the main programme, 3 is not used).
enum Prompt { Ring, Call, Voice, Navi };
constexpr int promptCount = 4;
/// Service channel number to prompt; -1 for the main programme and for numbers that have no prompt.
constexpr int promptOfChannel(int channel)
{
    return channel == 1 ? Ring : channel == 2 ? Call : channel == 4 ? Voice : channel == 5 ? Navi : -1;
}

constexpr int bandCount = 13;
/// Centres of the equalizer bands in Hz.
constexpr std::array<double, bandCount> bandHz = {32,   63,   125,   250,   500,   1000, 2000,
                                                  4000, 8000, 10000, 12000, 14000, 16000};

/// Which list a frequency index points into. Index 0 is "off" in all of them.
enum class CrossoverTables {
    SpeakerPage,    ///< 30 40 60 80 100 120 160 250 Hz for all filters
    StandAlonePage, ///< high-pass 20 60 80 160 250, low-pass 2k 8k 10k 16k 20k, subwoofer 50 80 120 160 Hz
};

/// One Butterworth filter of a cabin speaker.
struct FilterSettings
{
    int frequency = 0; ///< index into the table; 0 = off; the last entry stands for indexes beyond it
    int slope = 3;     ///< 0..3 = 6, 12, 18, 24 dB/octave
};

struct CabinSpeakerSettings
{
    FilterSettings highPass;
    FilterSettings lowPass; ///< only the stand-alone page sets it
    int attenuation = 0;    ///< 0..12 dB
    bool inverted = false;
    double delayMs = 0; ///< 0..10 ms, any fraction
};

struct SubwooferSettings
{
    int filter = 7;       ///< 0 = silent, 1 = no filter, n = entry n - 1 of the table
    int attenuation = 11; ///< 0..60 dB
    int slope = 3;        ///< 0..3 = 6, 12, 18, 24 dB/octave
    bool inverted = false;
    double delayMs = 0; ///< 0..10 ms, any fraction
};

struct Settings
{
    bool power = false; ///< off ramps every output to silence, prompts and beeps too
    bool mute = false;  ///< ramps the main programme to silence; prompts and beeps still sound
    int source = 18;    ///< which source plays; a change fades out, waits for the new source, fades in
    int sourceGain = 5; ///< 0..15 = -5..+10 dB, of that source
    int mainVolume = 0; ///< 0 = silent, 50 = 0 dB
    std::array<int, promptCount> promptVolume = {40, 40, 40, 40}; ///< 0..50, order of `Prompt`

    std::array<int, bandCount> equalizer = {}; ///< -10..+10, one step = 1 dB
    bool loudness = false;

    int balance = 0; ///< -15 = left only, 15 = right only
    int fader = 0;   ///< -15 = rear only, 15 = front only

    CrossoverTables tables = CrossoverTables::SpeakerPage;
    std::array<CabinSpeakerSettings, cabinSpeakerCount> cabin; ///< order of `Speaker`
    SubwooferSettings subwoofer;
};

/// Brings every value into its range. A number that is not finite becomes 0. Returns one readable clause for
/// each value that was changed, "balance 17 -> 15, fader ...", empty when all were in range. Allocates only
/// then.
std::string clampToRange(Settings& settings);

} // namespace hvaudio::dsp
