#include "headunit/sound/soundnames.h"

#include "common/translator.h"

#include <iterator>

namespace headunit {

// clang-format off
constexpr UnitSource unitSources[] = {
    {HVAudio_source_Radio,        "Radio",        mem::settingOf("Headunit_Source_Radio")},
    {HVAudio_source_Usb,          "USB",          mem::settingOf("Headunit_Source_USB")},
    {HVAudio_source_BtAudio,      "BT_Audio",     mem::settingOf("Headunit_Source_BT_Audio")},
    {HVAudio_source_AvIn,         "AUX",          mem::settingOf("Headunit_Source_AUX")},
    {HVAudio_source_Carplay,      "Carplay",      mem::settingOf("Headunit_Source_Carplay")},
    {HVAudio_source_AndroidAuto,  "Android_Auto", mem::settingOf("Headunit_Source_Android_Auto")},
    {HVAudio_source_Dab,          "DAB",          mem::settingOf("Headunit_Source_DAB")},
};

const SourceKindName sourceKinds[] = {
    {SourceKind::Input,     "Other programs", "input"},
    {SourceKind::File,      "File",           "file"},
    {SourceKind::PinkNoise, "Pink noise",     "pink"},
    {SourceKind::Sweep,     "Sweep",          "sweep"},
    {SourceKind::Silence,   "Silence",        "silence"},
};

const PromptKey promptKeys[] = {
    {hvaudio::dsp::Navi,  "prompt_navi",  "Navigation prompt", false},
    {hvaudio::dsp::Ring,  "prompt_ring",  "Ring tone",         true},
    {hvaudio::dsp::Call,  "prompt_call",  "Call",              true},
    {hvaudio::dsp::Voice, "prompt_voice", "Voice",             false},
};
// clang-format on
static_assert(std::size(unitSources) == unitSourceCount, "one row a source");
static_assert(std::size(sourceKinds) == sourceKindCount, "one row a kind");
static_assert(std::size(promptKeys) == promptKeyCount, "one row a prompt");

QString nameOf(const UnitSource& source)
{
    const hvaudio::AudioSource* const row = hvaudio::audioSourceOf(source.id);
    return row->nameId ? Translator::translate(row->nameId) : QString::fromLatin1(row->fixedName);
}

QString nameOf(SourceKind kind)
{
    for (const SourceKindName& row : sourceKinds) {
        if (row.kind == kind)
            return QString::fromLatin1(row.text);
    }
    return QString();
}

} // namespace headunit
