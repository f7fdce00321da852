#include "headunit/shell/quitsignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace headunit {

namespace {

constexpr int quitSignals[] = {SIGINT, SIGTERM, SIGHUP};

/// [0] is written by the handler, [1] read by the event loop.
int sockets[2] = {-1, -1};

extern "C" void onQuitSignal(int)
{
    // Only write() is allowed here. A full socket means that the loop has been told already.
    const char byte = 1;
    const ssize_t ignored = write(sockets[0], &byte, 1);
    static_cast<void>(ignored);
}

} // namespace

QuitSignals::QuitSignals(QObject* parent)
    : QObject(parent)
{
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, sockets) != 0) {
        qWarning("no socket pair for signals; Ctrl-C ends the unit at once");
        return;
    }
    m_notifier = new QSocketNotifier(sockets[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &QuitSignals::onReadable);

    struct sigaction action = {};
    action.sa_handler = onQuitSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int number : quitSignals)
        sigaction(number, &action, nullptr);
}

QuitSignals::~QuitSignals()
{
    if (!m_notifier)
        return;
    for (const int number : quitSignals)
        std::signal(number, SIG_IGN);
    delete m_notifier;
    for (int& socket : sockets) {
        close(socket);
        socket = -1;
    }
}

void QuitSignals::onReadable()
{
    char bytes[16];
    while (read(sockets[1], bytes, sizeof(bytes)) > 0) {
    }
    emit quitRequested();
}

} // namespace headunit
