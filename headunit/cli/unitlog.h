#pragma once

namespace headunit {

/// Sets up what is printed to standard error. Where a line comes from stands before it; Qt's own variables
/// QT_LOGGING_RULES and QT_MESSAGE_PATTERN go before. all: false leaves out the applications' diagnostic
/// lines, one for each touch, and what Qt has to say of their forms and connections: they are for those who
/// work on an application. Thread: GUI, before there is an application object.
void setUpLog(bool all);

/// Qt aborts when it finds no display. While this object lives, for the making of the application object, the
/// process then ends with this exit code and a sentence instead. One at a time, after setUpLog(). Thread:
/// GUI.
class DisplayGuard
{
public:
    explicit DisplayGuard(int exitCode);
    ~DisplayGuard();
    DisplayGuard(const DisplayGuard&) = delete;
    DisplayGuard& operator=(const DisplayGuard&) = delete;
};

} // namespace headunit
