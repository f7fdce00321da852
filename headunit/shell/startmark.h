#pragma once

#include <QString>

namespace headunit {

/// Keeps in the store what is being started while it is: an application's library or a remembered sound file
/// may take the unit down with it, and would do so at every start. What was marked when the unit went down is
/// left out once. Stands on an open store; without a durable one it remembers nothing. Thread: GUI.
class StartMark
{
public:
    /// Takes over what is marked, and forgets it in the store with the next commit.
    StartMark();

    /// Marks what is started next, durably; what: a name of its own, stays the same from start to start.
    /// False, once, when it was marked when the unit went down: then it is not to be started now.
    bool begin(const QString& what);
    /// It is up, or was refused in good order. Durable when it returns.
    void end();

private:
    QString m_left; ///< to be left out; empty: nothing
    Q_DISABLE_COPY(StartMark)
};

} // namespace headunit
