#pragma once

#include <QObject>

#include <csignal>

namespace headunit {

/// Takes SIGINT, SIGTERM and SIGHUP, so that the exit is an orderly one: as a signal of the event loop, and
/// for work without an event loop by asking. SIGHUP is left ignored where it is (nohup). One at a time.
/// Thread: GUI.
///
/// The exit has five seconds, whatever its thread does; then the process ends by the signal. A second signal
/// leaves it two, or one while the event loop hasn't taken the first: enough for an exit in good order when a
/// terminal and the script that started the unit both pass a signal on. Nothing that was committed is lost.
class StopSignals : public QObject
{
    Q_OBJECT
public:
    explicit StopSignals(QObject* parent = nullptr);
    /// The signals are ignored from then on, and nothing is ended by force any more: what they ask for is
    /// done.
    ~StopSignals() override;

    /// The last one that came since this object was made; 0 for none. From any thread.
    static int received();
    /// Ends the process by this signal, as if it had not been taken: a shell that runs a script ends the
    /// script on Ctrl-C only when it sees that. number: a signal that ends a process.
    [[noreturn]] static void dieBy(int number);

signals:
    void stopRequested();

private:
    void onReadable();
};

} // namespace headunit
