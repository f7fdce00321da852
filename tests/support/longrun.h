#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <climits>

/// How many of what a test repeats: `usual`, or the number from 1 that the environment variable says, for a
/// run of hours, which the test library's watchdog then doesn't end. For initTestCase() or earlier.
inline int longRun(const char* variable, int usual)
{
    if (!qEnvironmentVariableIsSet(variable))
        return usual;
    const int given = qEnvironmentVariableIntValue(variable);
    if (given < 1)
        qFatal("%s is no number from 1", variable);
    qputenv("QTEST_FUNCTION_TIMEOUT", QByteArray::number(INT_MAX));
    return given;
}
