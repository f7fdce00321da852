#pragma once

#include <QDebug>

#include <sys/syscall.h>
#include <unistd.h>

// The diagnostic line of the unit: tag, kernel thread id, full signature, source line, "--", then free text
// and values. Log collectors parse these fields in this order. A macro, since signature and line are the
// caller's.
#define AS_DIAGNOSTIC(logger, tag)                                                                           \
    logger() << tag << static_cast<long>(::syscall(SYS_gettid)) << Q_FUNC_INFO << __LINE__ << "--"
#define AS_DEBUG() AS_DIAGNOSTIC(qDebug, "[DBG]")
#define AS_ERROR() AS_DIAGNOSTIC(qCritical, "[ERR]")
