#pragma once

#include <QString>

namespace cm {

/// The text of that id in the current language, in English where the current one lacks it, null where both
/// do.
QString languageText(int id);

} // namespace cm
