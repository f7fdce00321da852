#pragma once

#include <QMap>
#include <QString>
#include <QVariant>

/// What the writer does to the store and the simulator expects of it: each step is one commit.
namespace powercut {

constexpr int steps = 10;
constexpr int wipingStep = 8;
/// The store is closed and opened again before these, and a last good copy is written.
constexpr int reopeningSteps[] = {4, 9};

/// Marks of the record: a step's commit is asked for, and has returned.
constexpr int begun(int step)
{
    return 2 * step;
}
constexpr int done(int step)
{
    return 2 * step + 1;
}

inline QString keyOf(int number)
{
    return QStringLiteral("Setup_Volume_Type_Of_Some_Length_%1").arg(number);
}

/// All settings after that step. Small and large changes, keys that come and go, rows and texts over several
/// pages.
inline QMap<QString, QVariant> settingsAfter(int step)
{
    QMap<QString, QVariant> settings;
    const int first = step > wipingStep ? wipingStep : 0; // what was wiped stays away
    for (int n = first + 1; n <= step; ++n) {
        if (n == wipingStep)
            continue;
        for (int i = 0; i < 30 * n; ++i)
            settings[keyOf(i)] = 1000 * n + i;
        settings[QStringLiteral("flag%1").arg(n)] = n % 2 == 0;
        settings[QStringLiteral("text")] = QString(n * 900, QLatin1Char(static_cast<char>('a' + n)));
        settings.remove(QStringLiteral("flag%1").arg(n - 2));
    }
    return step == wipingStep ? QMap<QString, QVariant>() : settings;
}

} // namespace powercut
