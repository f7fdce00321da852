#pragma once

#include <QObject>

class QWidget;

namespace headunit {

/// When which step of the start was reached, for --trace-startup and bench/headunit/startup.sh. Thread: GUI.
///
/// Lines on standard output: first "startup-main-at-us <n>", the wall-clock time of main() in microseconds
/// since 1970, so that a script can add what lay between exec and main(); then one line a step, "startup <ms>
/// <step>", milliseconds since main() on the monotonic clock.
class StartupTrace
{
public:
    /// First statement of main().
    static void begin();
    /// true: prints the steps so far and each further one at once; false: forgets them all.
    static void setPrinting(bool on);
    /// step: one of few fixed names without blanks; stays the caller's.
    static void reached(const char* step);
    /// Calls reached(step) when the widget's next paint is over.
    static void reachedWhenPainted(QWidget* widget, const char* step);
};

} // namespace headunit
