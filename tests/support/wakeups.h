#pragma once

#include <QDir>
#include <QFile>
#include <QMap>
#include <QTest>

#include <unistd.h>

#if defined(__SANITIZE_THREAD__)
/// The sanitizer has a thread of its own, which wakes up now and then.
constexpr int wakingThreads = 1;
#else
constexpr int wakingThreads = 0;
#endif

/// How often each thread of this process but the calling one has gone to sleep so far.
inline QMap<QString, long> sleeps()
{
    QMap<QString, long> counts;
    const QString own = QString::number(gettid());
    for (const QString& thread : QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile status("/proc/self/task/" + thread + "/status");
        if (thread == own || !status.open(QIODevice::ReadOnly))
            continue;
        const QByteArray all = status.readAll();
        counts[thread] =
            all.mid(all.indexOf("\nvoluntary_ctxt_switches:") + 25).simplified().split(' ').first().toLong();
    }
    return counts;
}

/// True when there comes a second, within half a minute, in which no thread of this process but the calling
/// one wakes up, begins or ends.
inline bool nothingWakesUp()
{
    return QTest::qWaitFor(
        [] {
            const QMap<QString, long> before = sleeps();
            QTest::qSleep(1000);
            const QMap<QString, long> after = sleeps();
            int woken = 0;
            for (auto thread = after.begin(); thread != after.end(); ++thread)
                woken += thread.value() != before.value(thread.key(), -1);
            return before.size() == after.size() && woken <= wakingThreads;
        },
        30000);
}
