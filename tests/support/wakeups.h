#pragma once

#include <QDir>
#include <QFile>
#include <QTest>

#include <unistd.h>

/// How often threads of this process but the calling one have gone to sleep so far.
inline long sleeps()
{
    long count = 0;
    const QString own = QString::number(gettid());
    for (const QString& thread : QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile status("/proc/self/task/" + thread + "/status");
        if (thread == own || !status.open(QIODevice::ReadOnly))
            continue;
        const QByteArray all = status.readAll();
        count +=
            all.mid(all.indexOf("\nvoluntary_ctxt_switches:") + 25).simplified().split(' ').first().toLong();
    }
    return count;
}

/// True when there comes a second, within half a minute, in which no thread of this process but the calling
/// one wakes up.
inline bool nothingWakesUp()
{
    return QTest::qWaitFor(
        [] {
            const long before = sleeps();
            QTest::qSleep(1000);
            return sleeps() == before;
        },
        30000);
}
