#pragma once

#include <QString>

#include <functional>

namespace headunit {

/// Calls an application's code: an exception ends here, is logged as an error with what was called, and takes
/// nothing else with it. False when there was one. what: e.g. "window 33, onShow". why: where given, what the
/// exception says. Thread: any.
bool callAcrossSeam(const QString& what, const std::function<void()>& call, QString* why = nullptr);

/// Logs the exception that is being handled, as callAcrossSeam() does, and returns what it says. For within a
/// catch block.
QString logThrown(const QString& what);

} // namespace headunit
