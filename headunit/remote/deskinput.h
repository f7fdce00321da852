#pragma once

#include "headunit/remote/clientmessage.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QWindow>

namespace headunit {

class Desk;

/// Touches and keys from afar, handed to the program's windows as a display hands them over: what lies on top
/// gets a touch and keeps it until the finger is lifted, lists close when something beside them is touched, a
/// quick second touch is a double one. Thread: GUI.
class DeskInput : public QObject
{
    Q_OBJECT
public:
    /// desk: outlives this object.
    explicit DeskInput(const Desk* desk);

public slots:
    /// event: within its ranges, as readClientMessage() gives it.
    void deliver(const headunit::DeskEvent& event);
    /// Lifts what is held down: there is nobody any more who would.
    void letGo();

private:
    void deliverPointer(const DeskEvent& event);
    void deliverWheel(const DeskEvent& event);
    void deliverKey(const DeskEvent& event);

    const Desk* const m_desk;
    QElapsedTimer m_clock;
    QPointer<QWindow> m_touched; ///< has the finger over it, or holds it
    QPoint m_corner;             ///< its upper left one, on the desk
    QPoint m_pos;                ///< of the finger, on the desk
    bool m_down = false;
    QSet<int> m_keys; ///< held down
};

} // namespace headunit
