#pragma once

#include "common/settingstable.h"
#include "hvaudio/audioservice.h"

#include <iterator>

/// The sources that have an input gain, in the one table that the volume page, the audio service and the
/// shell read.
namespace hvaudio {

struct AudioSource
{
    HVAudio_source_id_e id;
    int nameId;               ///< id of its name at the translator; 0 where it has the same in every language
    const char* fixedName;    ///< that one
    const mem::Setting& gain; ///< where its input gain is kept
};

/// The gain that is 0 dB; each step is 1 dB.
constexpr int gainOfZeroDb = 5;

/// In the order of the volume page.
// clang-format off
constexpr AudioSource audioSources[] = {
    {HVAudio_source_Radio,       366, "",    mem::settingOf("Setup_Input_Gain_Type_Radio")},
    {HVAudio_source_Usb,         18,  "",    mem::settingOf("Setup_Input_Gain_Type_USB")},
    {HVAudio_source_BtAudio,     369, "",    mem::settingOf("Setup_Input_Gain_Type_BT_Audio")},
    {HVAudio_source_AvIn,        368, "",    mem::settingOf("Setup_Input_Gain_Type_AUX")},
    {HVAudio_source_Carplay,     443, "",    mem::settingOf("Setup_Input_Gain_Type_Carplay")},
    {HVAudio_source_AndroidAuto, 17,  "",    mem::settingOf("Setup_Input_Gain_Type_Android_Auto")},
    {HVAudio_source_Dab,         0,   "DAB", mem::settingOf("Setup_Input_Gain_Type_DAB")},
};
// clang-format on
static_assert(std::size(audioSources) == 7, "one row a source");

/// The row of a source; null for any other number.
constexpr const AudioSource* audioSourceOf(int id)
{
    for (const AudioSource& row : audioSources) {
        if (row.id == id)
            return &row;
    }
    return nullptr;
}

} // namespace hvaudio
