#pragma once

#include <QMouseEvent>
#include <QWidget>

namespace cm {

/// Hands a mouse event of a control that a finger holds and moves to pressed(), moved() or released() of its
/// private part and returns true; a disabled control, and any other event, is left to Qt (false). Thread:
/// GUI.
template <typename Private>
bool passFinger(const QWidget* control, Private* part, QEvent* event)
{
    if (!control->isEnabled())
        return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        part->pressed(static_cast<QMouseEvent*>(event));
        return true;
    case QEvent::MouseMove:
        part->moved(static_cast<QMouseEvent*>(event));
        return true;
    case QEvent::MouseButtonRelease:
        part->released(static_cast<QMouseEvent*>(event));
        return true;
    default:
        return false;
    }
}

} // namespace cm
