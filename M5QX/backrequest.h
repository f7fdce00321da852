#pragma once

#include "common/events.h"

#include <QCoreApplication>

namespace audiosetting {

/// Asks the framework to leave this application. Posted, so that the framework acts after the caller has
/// returned. Thread: GUI.
inline void postBackRequest()
{
    QCoreApplication::postEvent(QCoreApplication::instance(), new TouchEvent(Qx::Touch_Back, -1, -1));
}

} // namespace audiosetting
