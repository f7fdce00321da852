#pragma once

#include "common/export.h"

#include <QObject>

/// The vehicle's micro-controller. Thread: GUI.
class COMMON_EXPORT McuManager : public QObject
{
    Q_OBJECT
public:
    /// Never null; stays the library's.
    static McuManager* instance();

    /// Sounds the key beep. tone: 0, the only one there is; any other number is logged and sounds as 0.
    void triggerBeep(int tone);

signals:
    /// The beep was asked for; what makes it audible listens here. tone: the one that sounds, 0.
    void beepTriggered(int tone);

private:
    McuManager();
    ~McuManager() override;
    Q_DISABLE_COPY(McuManager)
};
