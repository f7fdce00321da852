#pragma once

namespace headunit {

/// Gives fontconfig the unit's own rules in place of the machine's: every outline font that is installed,
/// drawn with grey edges and slight hinting. A text so looks the same on each machine, and the start is
/// spared the rules of a desk, which are a fifth of what it takes. Rules that FONTCONFIG_FILE or
/// FONTCONFIG_PATH names are left to fontconfig. Call once, before the application object. Thread: GUI.
void readFontConfiguration();

} // namespace headunit
