#include "headunit/sound/soundnames.h"

#include "common/translator.h"

#include <iterator>

namespace headunit {

// clang-format off
constexpr UnitSource unitSources[] = {
    {HVAudio_source_Radio,       366, nullptr, "Radio",        mem::settingOf("Headunit_Source_Radio")},
    {HVAudio_source_Usb,          18, nullptr, "USB",          mem::settingOf("Headunit_Source_USB")},
    {HVAudio_source_BtAudio,     369, nullptr, "BT_Audio",     mem::settingOf("Headunit_Source_BT_Audio")},
    {HVAudio_source_AvIn,        368, nullptr, "AUX",          mem::settingOf("Headunit_Source_AUX")},
    {HVAudio_source_Carplay,     443, nullptr, "Carplay",      mem::settingOf("Headunit_Source_Carplay")},
    {HVAudio_source_AndroidAuto,  17, nullptr, "Android_Auto", mem::settingOf("Headunit_Source_Android_Auto")},
    {HVAudio_source_Dab,           0, "DAB",   "DAB",          mem::settingOf("Headunit_Source_DAB")},
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
    return source.textId ? Translator::translate(source.textId) : QString::fromLatin1(source.text);
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
