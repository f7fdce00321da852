#pragma once

#include <QLatin1String>

namespace headunit {

/// What --page and --tour touch of the audio settings. The shell has no header of that application, so these
/// are names, as a test robot would know them.
struct AudioPage
{
    const char* key;     ///< object name of the tab bar's key
    const char* picture; ///< file name of the tour's picture, without ending
};

constexpr int audioPageCount = 6;
/// By page index.
extern const AudioPage audioPages[audioPageCount];

/// Window id of the audio settings.
constexpr int audioWindowId = 33;
/// Where the application keeps the index of its last page.
const QLatin1String audioPageSetting("AudioSetting_Page");

} // namespace headunit
