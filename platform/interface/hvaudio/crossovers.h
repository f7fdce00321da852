#pragma once

#include <iterator>

/// The crossovers' frequencies and slopes, in the one table that pages show and the audio service plays from.
/// The service's calls carry indexes into these lists.
namespace hvaudio {

/// The hub's crossover page: all groups choose from one list, in Hz; 0 = off.
constexpr int groupCrossoverHz[] = {0, 30, 40, 60, 80, 100, 120, 160, 250};

/// Slope indexes 0..3, in dB per octave: filters of order 1..4.
constexpr int crossoverSlopes[] = {6, 12, 18, 24};
constexpr int dbAnOrder = crossoverSlopes[0];

/// Whether the audio service turns the subwoofer round against the cabin's speakers, for the cabin's
/// high-pass slope (row) and the subwoofer's low-pass slope (column): whatever makes the sum at a common
/// corner the larger. There the high-pass leads and the low-pass lags by 45 degrees an order, so the two are
/// 45 degrees times the sum of their orders apart, and beyond a right angle they would cancel; at a right
/// angle both ways sum alike, and nothing is turned. With equal slopes the sum is flat at every frequency.
/// The listener's phase switch turns it round once more.
// clang-format off
constexpr bool subwooferTurned[std::size(crossoverSlopes)][std::size(crossoverSlopes)] = {
    //  6     12     18     24 dB/octave of the subwoofer
    {false, true,  true,  true },  // cabin 6 dB/octave
    {true,  true,  true,  false},  // 12
    {true,  true,  false, false},  // 18
    {true,  false, false, false},  // 24
};
// clang-format on

/// Levels of the hub's pages are attenuations of 0 ... this, in dB.
constexpr int largestAttenuation = 12;

/// Level of the subwoofer on the stand-alone page that is 0 dB; each step below is 1 dB.
constexpr int loudestMainSubwoofer = 14;

/// Bit of a frequency's index that marks the rear pair.
constexpr int rearPairMark = 0x80;

struct CrossoverFrequency
{
    int hz;           ///< 0 = off
    const char* text; ///< as the page writes it, the same in every language
};

/// The stand-alone crossover page, which has three slopes and a list for each column. Units are written in
/// more than one way there.
// clang-format off
constexpr CrossoverFrequency mainHighPass[] = {
    {0,     "OFF"},
    {20,    "20Hz"},
    {60,    "60Hz"},
    {80,    "80Hz"},
    {160,   "160Hz"},
    {250,   "250Hz"},
};
constexpr CrossoverFrequency mainLowPass[] = {
    {0,     "OFF"},
    {2000,  "2kHz"},
    {8000,  "8KHz"},
    {10000, "10KHz"},
    {16000, "16KHz"},
    {20000, "20KHz"},
};
/// A subwoofer that is off is silent; AP, all pass, plays everything. The last four are what the hub's page stores; no
/// key of the stand-alone page reaches them, and they sound as its nearest entry.
constexpr CrossoverFrequency mainSubwoofer[] = {
    {0,     "OFF"},
    {0,     "AP"},
    {50,    "50Hz"},
    {80,    "80Hz"},
    {120,   "120Hz"},
    {160,   "160Hz"},
    {120,   "100Hz"},
    {120,   "120Hz"},
    {160,   "160Hz"},
    {160,   "250Hz"},
};
// clang-format on
static_assert(std::size(mainHighPass) == std::size(mainLowPass), "both columns count alike");
static_assert(std::size(mainSubwoofer) == std::size(groupCrossoverHz) + 1,
              "the hub's list behind \"silent\" fits the indexes of the stand-alone list");

} // namespace hvaudio
