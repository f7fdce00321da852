#pragma once

#include <QColor>

/// The unit's colours for code that paints. The picture library draws with the same values
/// (platform/icons/palette.cmake); a change is made in both, and a test compares them.
namespace cm::palette {

// clang-format off
inline constexpr QRgb page         = 0xff10131a; ///< ground of every page
inline constexpr QRgb well         = 0xff090b10; ///< ground of a field that shows a curve or a list
inline constexpr QRgb panel        = 0xff262933; ///< value fields, keys that have no picture
inline constexpr QRgb line         = 0xff1f2531; ///< grid lines: seen, not read
inline constexpr QRgb lineStrong   = 0xff39414f; ///< tracks, separators
inline constexpr QRgb ink          = 0xffeeeeec; ///< text; 7:1 and more on page, well and panel
inline constexpr QRgb inkDim       = 0xffa7afbf; ///< secondary and disabled text; 4.5:1 and more there
inline constexpr QRgb accent       = 0xff0094dd; ///< the one accent
inline constexpr QRgb accentBright = 0xff5cc8ff; ///< focus ring, what a finger holds
inline constexpr QRgb accentDeep   = 0xff0b4a70; ///< ground of a key that is down or checked
// clang-format on

/// Part of its full strength with which a disabled key's picture is painted: dimmed at a glance, still read.
inline constexpr qreal disabledOpacity = 0.45;

} // namespace cm::palette
