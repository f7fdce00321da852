#include "headunit/shell/audiopages.h"

namespace headunit {

// clang-format off
const AudioPage audioPages[] = {
    {"key_EQ_setting",        "page-0-equalizer"},
    {"key_balance_setting",   "page-1-audio-levels"},
    {"key_crossover_setting", "page-2-crossover"},
    {"key_time_alignment",    "page-3-time-alignment"},
    {"key_eq_preset",         "page-4-eq-presets"},
    {"key_audio_level",       "page-5-volume-levels"},
};
// clang-format on
static_assert(sizeof(audioPages) / sizeof(audioPages[0]) == audioPageCount, "one row a page");

} // namespace headunit
