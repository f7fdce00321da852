#pragma once

#include "common/settingstable.h"
#include "headunit/sound/soundtypes.h"
#include "hvaudio/audiosources.h"

namespace headunit {

/// One row a source of the unit, in the order of hvaudio::audioSources.
struct UnitSource
{
    HVAudio_source_id_e id;
    const char* word;           ///< in the setting of which source plays
    const mem::Setting& choice; ///< the setting of what plays as this source
};
constexpr int unitSourceCount = std::size(hvaudio::audioSources);
extern const UnitSource unitSources[unitSourceCount];
/// In the unit's current language.
QString nameOf(const UnitSource& source);

/// What can stand in for a source, in the order in which a panel offers it.
struct SourceKindName
{
    SourceKind kind;
    const char* text;
    const char* word; ///< in the settings store
};
constexpr int sourceKindCount = 5;
extern const SourceKindName sourceKinds[sourceKindCount];
QString nameOf(SourceKind kind);

/// The chimes that a panel offers.
struct PromptKey
{
    Prompt prompt;
    const char* objectName;
    const char* text;
    bool repeated; ///< sounds until the key is touched again
};
constexpr int promptKeyCount = promptCount;
extern const PromptKey promptKeys[promptKeyCount];

} // namespace headunit
