#include "headunit/cli/stopsignals.h"

#include <QSocketNotifier>

#include <atomic>
#include <cstdlib>
#include <sys/socket.h>
#include <unistd.h>

namespace headunit {

namespace {

constexpr int stopSignals[] = {SIGINT, SIGTERM, SIGHUP};

/// Seconds that an exit has from the first signal on; from a second one on while the loop is at work, and
/// while it hasn't even taken the first.
constexpr unsigned patience = 5, patienceWhenUrged = 2, patienceWhenDeaf = 1;

std::atomic<int> receivedSignal{0}, receivedCount{0};
std::atomic<bool> taken{false}; ///< by the event loop
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free,
              "a signal handler may only write what needs no lock");

/// [0] is written by the handler, [1] read by the event loop. Never closed: a handler may be at work.
int sockets[2] = {-1, -1};

void writeFrom(int descriptor, const char* bytes, std::size_t count)
{
    const ssize_t ignored = write(descriptor, bytes, count);
    static_cast<void>(ignored);
}

extern "C" void onStopSignal(int number)
{
    receivedSignal.store(number);
    const int count = receivedCount.fetch_add(1) + 1;
    if (count == 1)
        alarm(patience);
    else if (count == 2) // a further one doesn't begin the wait anew
        alarm(taken.load() ? patienceWhenUrged : patienceWhenDeaf);
    // A full socket means that the loop has been told already.
    writeFrom(sockets[0], "", 1);
}

extern "C" void onAlarm(int)
{
    constexpr char text[] = "headunit: the orderly exit takes too long; ended without it\n";
    writeFrom(STDERR_FILENO, text, sizeof(text) - 1);
    StopSignals::dieBy(receivedSignal.load());
}

void handle(int number, void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(number, &action, nullptr);
}

} // namespace

StopSignals::StopSignals(QObject* parent)
    : QObject(parent)
{
    receivedSignal.store(0);
    receivedCount.store(0);
    taken.store(false);
    if (sockets[0] < 0 && socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, sockets) != 0) {
        qWarning("no socket pair for signals; Ctrl-C ends the unit at once");
        return;
    }
    auto* notifier = new QSocketNotifier(sockets[1], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &StopSignals::onReadable);

    handle(SIGALRM, onAlarm);
    for (const int number : stopSignals) {
        struct sigaction before = {};
        sigaction(number, nullptr, &before);
        if (number != SIGHUP || before.sa_handler != SIG_IGN)
            handle(number, onStopSignal);
    }
}

StopSignals::~StopSignals()
{
    for (const int number : stopSignals)
        std::signal(number, SIG_IGN);
    alarm(0);
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
    taken.store(true);
    char bytes[16];
    while (read(sockets[1], bytes, sizeof(bytes)) > 0) {
    }
    emit stopRequested();
}

} // namespace headunit
