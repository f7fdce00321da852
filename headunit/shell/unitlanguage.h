#pragma once

#include <QString>

namespace headunit {

/// Sets the unit's language: the one asked for, else the one kept in the store, else the system's when the
/// unit speaks it, else English. asked: one of cm::Language::codes(), or empty. Needs an open store. Thread:
/// GUI.
void chooseLanguage(const QString& asked);

/// Keeps the current language in the store for the next start.
void keepLanguage();

} // namespace headunit
