#pragma once

#include "common/export.h"

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QVector>

namespace cm {

/// The one place where the reference platform reports what it was asked to do; the inspector shows it live
/// and the shell's --trace prints it. Thread: GUI.
class COMMON_EXPORT Journal : public QObject
{
    Q_OBJECT
public:
    struct Entry
    {
        QDateTime time;
        QString subsystem; ///< class that was called, e.g. "AudioService"
        QString operation; ///< e.g. "setEQType(6, true)"
    };

    /// Never null; stays the library's.
    static Journal* instance();

    /// How many entries are kept, the latest.
    static constexpr int kept = 2000;

    /// Adds an entry.
    void record(const QString& subsystem, const QString& operation);
    /// The latest entries, oldest first.
    QVector<Entry> entries() const;
    /// Prints each entry from now on to standard output, one a line: "subsystem.operation".
    void setPrinting(bool on);

signals:
    /// After the entry was added. A listener may call the platform, which adds further entries.
    void recorded(const cm::Journal::Entry& entry);

private:
    Journal();
    ~Journal() override;
    QVector<Entry> m_entries;
    bool m_printing = false;
};

} // namespace cm
