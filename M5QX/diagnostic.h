#pragma once

// What every source file of the plug-in carries, for whoever looks into a unit in the field.

#include <QDebug>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <execinfo.h>
#include <iterator>
#include <sys/syscall.h>
#include <unistd.h>

// The diagnostic line of the unit: tag, kernel thread id, full signature, source line, "--", then free text
// and values. Log collectors parse these fields in this order. A macro, since signature and line are the
// caller's.
#define AS_DIAGNOSTIC(logger, tag)                                                                           \
    logger() << tag << static_cast<long>(::syscall(SYS_gettid)) << Q_FUNC_INFO << __LINE__ << "--"
#define AS_DEBUG() AS_DIAGNOSTIC(qDebug, "[DBG]")
#define AS_ERROR() AS_DIAGNOSTIC(qCritical, "[ERR]")

// Three helpers of each file's own, so that a debugger finds them in whichever file it has stopped. Written
// once here; internal linkage gives each file its own.
namespace {

/// Names of the seven equalizer settings for a debugger's watch window; no behaviour reads them (what the
/// driver sees comes from the translator).
// clang-format off
[[maybe_unused]] const char* const eqNames[] = {
    "Off",
    "R&B",
    "Rock",
    "Pop",
    "HipHop",
    "Jazz",
    "Custom",
};
// clang-format on
static_assert(std::size(eqNames) == 7, "seven equalizer names");

/// The monotonic clock in milliseconds.
[[maybe_unused]] long long monotonicMs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<long long>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

/// Prints the calling thread's stack, 100 frames at most, to standard output. Exits with status 1 when the
/// symbols can't be obtained: whoever asks for a trace is already past saving the process.
[[maybe_unused]] void printTrace()
{
    constexpr int maxFrames = 100;
    void* frames[maxFrames];
    const int count = backtrace(frames, maxFrames);
    std::printf("\n ********* print_trace *********\n");
    char** symbols = backtrace_symbols(frames, count);
    if (!symbols) {
        std::perror("backtrace_symbols");
        std::exit(EXIT_FAILURE);
    }
    for (int i = 0; i < count; ++i)
        std::printf("%s\n", symbols[i]);
    std::free(symbols);
    std::printf(" ********* print_trace end *********\n\n");
}

} // namespace
