#include "headunit/shell/frameworkevents.h"

#include "common/events.h"

#include <QCoreApplication>

namespace headunit {

FrameworkEvents::FrameworkEvents(QObject* parent)
    : QObject(parent)
{
    QCoreApplication::instance()->installEventFilter(this);
}

bool FrameworkEvents::eventFilter(QObject* watched, QEvent* event)
{
    // As a filter of the application object this sees the events of all objects.
    if (watched != QCoreApplication::instance())
        return false;
    switch (static_cast<int>(event->type())) {
    case Qx::EventType_Touch: {
        const Qx::Touch code = static_cast<TouchEvent*>(event)->value();
        if (code == Qx::Touch_Back)
            emit backRequested();
        else
            qWarning("touch request %d is not known", static_cast<int>(code));
        return true;
    }
    case Qx::EventType_StatusBarHide:
        emit statusBarHideRequested(static_cast<StatusBarHideEvent*>(event)->value());
        return true;
    default:
        return false;
    }
}

} // namespace headunit
