#pragma once

#include "common/export.h"

#include <QString>

/// Texts of the unit by number, in the current language. Thread: GUI.
class COMMON_EXPORT Translator
{
public:
    /// The text of that id, in English where the language lacks it; an id that has no text, of any number,
    /// yields its decimal number and is logged once.
    static QString translate(int id);
};

namespace cm {

/// Text ids of the EQ type names, indexed by EQ type 0..8; the caller checks the index.
COMMON_EXPORT extern const int eqNameStrId[9];

} // namespace cm
