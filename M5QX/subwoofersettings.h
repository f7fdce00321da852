#pragma once

#include <QLatin1String>

/// The subwoofer's state in the settings store, which three pages share: each key with what its absence
/// means, and the bits of the level.
namespace subwoofer {

constexpr QLatin1String OnKey("subwooferOnOff");
constexpr bool OnDefault = true;
constexpr QLatin1String FreqKey("subwooferFreq");
constexpr int FreqDefault = 7; ///< as the speaker groups' page counts: 120 Hz
constexpr QLatin1String LevelKey("subwooferLevel");
constexpr int LevelDefault = 11;
constexpr int LevelBits = 0x7F;      ///< the level within "subwooferLevel"
constexpr int WrittenWhileOn = 0x80; ///< the flag beside it: written while the subwoofer was on

} // namespace subwoofer
