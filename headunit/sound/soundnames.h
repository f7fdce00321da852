#pragma once

#include "hvaudio/audioservice.h"
#include "platform/hvaudio/player.h"

#include <QString>

namespace headunit {

/// One row a source of the unit, as the volume page counts them.
struct UnitSource
{
    HVAudio_source_id_e id;
    int textId;       ///< of the translator; 0: the fixed text
    const char* text; ///< where there is no text id
    const char* word; ///< in the settings store
};
constexpr int unitSourceCount = 7;
extern const UnitSource unitSources[unitSourceCount];
/// In the unit's current language.
QString nameOf(const UnitSource& source);

/// What can stand in for a source, in the order in which a panel offers it.
struct SourceKindName
{
    hvaudio::SourceKind kind;
    const char* text;
    const char* word; ///< in the settings store
};
constexpr int sourceKindCount = 5;
extern const SourceKindName sourceKinds[sourceKindCount];
QString nameOf(hvaudio::SourceKind kind);

/// The chimes that a panel offers.
struct PromptKey
{
    hvaudio::dsp::Prompt prompt;
    const char* objectName;
    const char* text;
    bool repeated; ///< sounds until the key is touched again
};
constexpr int promptKeyCount = hvaudio::dsp::promptCount;
extern const PromptKey promptKeys[promptKeyCount];

} // namespace headunit
