#include "headunit/cli/stopsignals.h"

#include <QSocketNotifier>

#include <atomic>
#include <cstdlib>
#include <sys/socket.h>
#include <unistd.h>

namespace headunit {

namespace {

constexpr int stopSignals[] = {SIGINT, SIGTERM, SIGHUP};

std::atomic<int> receivedSignal{0};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may only write what needs no lock");

/// [0] is written by the handler, [1] read by the event loop. Never closed: a handler may be at work.
int sockets[2] = {-1, -1};

extern "C" void onStopSignal(int number)
{
    receivedSignal.store(number);
    // A full socket means that the loop has been told already.
    const char byte = 1;
    const ssize_t ignored = write(sockets[0], &byte, 1);
    static_cast<void>(ignored);
}

} // namespace

StopSignals::StopSignals(QObject* parent)
    : QObject(parent)
{
    receivedSignal.store(0);
    if (sockets[0] < 0 && socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, sockets) != 0) {
        qWarning("no socket pair for signals; Ctrl-C ends the unit at once");
        return;
    }
    auto* notifier = new QSocketNotifier(sockets[1], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &StopSignals::onReadable);

    struct sigaction action = {};
    action.sa_handler = onStopSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int number : stopSignals) {
        struct sigaction before = {};
        sigaction(number, nullptr, &before);
        if (number != SIGHUP || before.sa_handler != SIG_IGN)
            sigaction(number, &action, nullptr);
    }
}

StopSignals::~StopSignals()
{
    for (const int number : stopSignals)
        std::signal(number, SIG_IGN);
}

int StopSignals::received()
{
    return receivedSignal.load();
}

void StopSignals::dieBy(int number)
{
    std::signal(number, SIG_DFL);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, number);
    sigprocmask(SIG_UNBLOCK, &only, nullptr);
    std::raise(number);
    std::_Exit(128 + number); // only reached where the signal can't end a process
}

void StopSignals::onReadable()
{
    char bytes[16];
    while (read(sockets[1], bytes, sizeof(bytes)) > 0) {
    }
    emit stopRequested();
}

} // namespace headunit
