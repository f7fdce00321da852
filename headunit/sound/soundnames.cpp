#include "headunit/sound/soundnames.h"

#include "common/translator.h"

namespace headunit {

using hvaudio::SourceKind;

// clang-format off
const UnitSource unitSources[] = {
    {HVAudio_source_Radio,       366, nullptr, "Radio"},
    {HVAudio_source_Usb,          18, nullptr, "USB"},
    {HVAudio_source_BtAudio,     369, nullptr, "BT_Audio"},
    {HVAudio_source_AvIn,        368, nullptr, "AUX"},
    {HVAudio_source_Carplay,     443, nullptr, "Carplay"},
    {HVAudio_source_AndroidAuto,  17, nullptr, "Android_Auto"},
    {HVAudio_source_Dab,           0, "DAB",   "DAB"},
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
static_assert(sizeof(unitSources) / sizeof(unitSources[0]) == unitSourceCount, "one row a source");
static_assert(sizeof(sourceKinds) / sizeof(sourceKinds[0]) == sourceKindCount, "one row a kind");
static_assert(sizeof(promptKeys) / sizeof(promptKeys[0]) == promptKeyCount, "one row a prompt");

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
