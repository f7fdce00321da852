#pragma once

#include <QApplication>

namespace headunit {

/// The application object of the unit: what an application throws while it deals with an event is logged and
/// ends there, as at every other call across the seam. Thread: GUI.
class UnitApplication final : public QApplication
{
    Q_OBJECT
public:
    /// As QApplication's; both outlive this object.
    UnitApplication(int& argc, char** argv);

    bool notify(QObject* receiver, QEvent* event) override;
};

} // namespace headunit
