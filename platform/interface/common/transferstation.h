#pragma once

#include "common/export.h"

#include <QObject>

namespace cm {

/// A broadcaster: calling one of its operations emits the signal of that name to every listener. Any number
/// of pages may listen; each decides for itself whether it is meant. Thread: GUI.
class COMMON_EXPORT R9TransferStation : public QObject
{
    Q_OBJECT
public:
    /// The parent owns the station; without one (null) the caller does.
    explicit R9TransferStation(QObject* parent = nullptr);
    ~R9TransferStation() override;

signals:
    /// Asks the visible setup page to move on by a page.
    void setupNextPage();
    /// Asks the visible setup page to move back by a page.
    void setupPrevPage();
};

/// Holder of the process-wide transfer station. Thread: GUI.
class COMMON_EXPORT TransferFunction
{
public:
    /// Never null; stays the library's.
    static TransferFunction* instance();
    /// Never null, always the same; stays the holder's.
    R9TransferStation* getTS();

private:
    TransferFunction();
    ~TransferFunction();
    R9TransferStation* m_station;
    Q_DISABLE_COPY(TransferFunction)
};

} // namespace cm
