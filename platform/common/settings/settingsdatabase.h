#pragma once

#include "platform/common/settings/settingsfile.h"

#include <QMap>
#include <QString>
#include <QVariant>

struct sqlite3;

namespace mem {

using SettingsMap = QMap<QString, QVariant>;

/// The settings on SQLite: one table, opened once, read once, written in whole transactions.
///
/// Write-ahead log with exclusive locking and synchronous=EXTRA: a commit appends to one file and syncs it
/// once, where a rollback journal syncs three times and wears the flash accordingly; exclusive locking keeps
/// a second process out for our whole life and needs no shared-memory file. The log survives a power cut at
/// any byte.
class SettingsDatabase
{
public:
    enum class Opened {
        Yes,        ///< values() is what the file holds
        Busy,       ///< another process holds the file
        Unwritable, ///< values() is what could be read
    };

    SettingsDatabase() = default;
    ~SettingsDatabase();
    SettingsDatabase(const SettingsDatabase&) = delete;
    SettingsDatabase& operator=(const SettingsDatabase&) = delete;

    /// What the file at path holds, without changing or holding it: SQLite can't read a write-ahead log
    /// without writing beside it, so it gets a copy to work on. False with a reason when the file can't be
    /// read.
    static bool read(const QString& path, SettingsMap* values, QString* reason);

    /// message: one sentence for the user, empty when there is nothing to say.
    Opened open(const QString& path, QString* message);
    void close();
    bool isOpen() const { return m_connection != nullptr; }

    /// What the file held when it was opened. A row that isn't what its type says comes as long long, double
    /// or QByteArray, which are no types of settings.
    const SettingsMap& values() const { return m_values; }
    /// One durable transaction: every row goes first when wipe is set, then each change is written; an
    /// invalid variant deletes its row. False with a reason when nothing was written.
    bool write(const SettingsMap& changes, bool wipe, QString* reason);

private:
    enum class State { Good, Busy, Damaged, Failed };

    State connectTo(const QString& path, QString* reason);
    State prepare(QString* reason);
    State load(QString* reason);
    State stateOf(int code, QString* reason) const;
    void disconnectFrom();

    SettingsFile m_file;
    sqlite3* m_connection = nullptr;
    SettingsMap m_values;
};

} // namespace mem
