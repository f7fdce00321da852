#include "headunit/shell/unitapplication.h"

#include "headunit/shell/seam.h"

namespace headunit {

UnitApplication::UnitApplication(int& argc, char** argv)
    : QApplication(argc, argv)
{
}

bool UnitApplication::notify(QObject* receiver, QEvent* event)
{
    // Taken now: the receiver may delete itself.
    const char* receiverClass = receiver->metaObject()->className();
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        logThrown(QLatin1String(receiverClass));
        return false;
    }
}

} // namespace headunit
