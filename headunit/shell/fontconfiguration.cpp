#include "headunit/shell/fontconfiguration.h"

#include <QtGlobal>

#include <memory>

#include <fontconfig/fontconfig.h>

namespace headunit {

namespace {

// The cache folders are those of the common distributions: where none has been filled by an installer,
// fontconfig reads every font once and keeps what it found in the user's.
constexpr char rules[] = R"(<?xml version="1.0"?>
<fontconfig>
  <dir>/usr/share/fonts</dir>
  <dir>/usr/local/share/fonts</dir>
  <dir prefix="xdg">fonts</dir>
  <dir>~/.fonts</dir>
  <cachedir>/var/cache/fontconfig</cachedir>
  <cachedir>/usr/lib/fontconfig/cache</cachedir>
  <cachedir prefix="xdg">fontconfig</cachedir>
  <selectfont>
    <rejectfont><pattern><patelt name="scalable"><bool>false</bool></patelt></pattern></rejectfont>
  </selectfont>
  <match target="pattern">
    <edit name="antialias" mode="append"><bool>true</bool></edit>
    <edit name="hintstyle" mode="append"><const>hintslight</const></edit>
    <edit name="lcdfilter" mode="append"><const>lcddefault</const></edit>
  </match>
  <alias><family>sans-serif</family><prefer><family>Noto Sans</family></prefer></alias>
  <alias><family>serif</family><prefer><family>Noto Serif</family></prefer></alias>
  <alias>
    <family>monospace</family>
    <prefer><family>Noto Sans Mono</family><family>DejaVu Sans Mono</family></prefer>
  </alias>
</fontconfig>
)";

} // namespace

void readFontConfiguration()
{
    if (qEnvironmentVariableIsSet("FONTCONFIG_FILE") || qEnvironmentVariableIsSet("FONTCONFIG_PATH"))
        return;
    const std::unique_ptr<FcConfig, decltype(&FcConfigDestroy)> own(FcConfigCreate(), &FcConfigDestroy);
    if (FcConfigParseAndLoadFromMemory(own.get(), reinterpret_cast<const FcChar8*>(rules), FcTrue))
        FcConfigSetCurrent(own.get()); // which finds the fonts and keeps a reference
}

} // namespace headunit
