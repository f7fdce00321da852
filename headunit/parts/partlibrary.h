#pragma once

#include <QString>
#include <QtGlobal>

namespace headunit {

/// A function of a part of the unit that is a library of its own ("lib" and this name), which is loaded with
/// the first call and stays: what few starts want brings libraries along that every start would pay for.
/// Null, and a sentence in `error`, when it can't be loaded. Thread: GUI.
QFunctionPointer functionOf(const char* library, const char* name, QString* error);

} // namespace headunit
