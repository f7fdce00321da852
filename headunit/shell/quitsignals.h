#pragma once

#include <QObject>

class QSocketNotifier;

namespace headunit {

/// Turns SIGINT, SIGTERM and SIGHUP into a signal of the event loop, so that the exit is an orderly one,
/// however often they come: a terminal and the script that started the unit both pass them on. One at a time.
/// Thread: GUI.
class QuitSignals : public QObject
{
    Q_OBJECT
public:
    explicit QuitSignals(QObject* parent = nullptr);
    /// The signals are ignored from then on: what they ask for is under way.
    ~QuitSignals() override;

signals:
    void quitRequested();

private:
    void onReadable();

    QSocketNotifier* m_notifier = nullptr;
    Q_DISABLE_COPY(QuitSignals)
};

} // namespace headunit
