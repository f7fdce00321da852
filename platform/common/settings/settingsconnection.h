#pragma once

#include "platform/common/settings/settingsrows.h"

#include <QString>

struct sqlite3;

namespace mem {

/// SQLite's view of one settings file: opened once, read once, written in whole transactions.
///
/// Write-ahead log and synchronous=EXTRA: a commit appends to one file and syncs it once, where a rollback
/// journal syncs three times and wears the flash accordingly. The log survives a power cut at any byte.
///
/// Here, in SettingsDatabase, SettingsFile and settingsreader.h: one thread at a time; places for a reason or
/// a message are never null, and a reason counts only where something failed.
class SettingsConnection
{
public:
    enum class State {
        Good,
        Busy,    ///< somebody else has locked the file
        Damaged, ///< not a settings file, or no longer one
        Failed,  ///< the file system or SQLite refuses
    };
    enum class Access {
        /// Nobody else gets at the file for our whole life, and no shared-memory file is needed.
        Exclusive,
        /// Beside programs that only look into the file and don't let go of it.
        Shared,
        /// For a file system that has no locks, and for a file that nobody else knows of.
        Unlocked,
    };

    SettingsConnection() = default;
    ~SettingsConnection();
    SettingsConnection(const SettingsConnection&) = delete;
    SettingsConnection& operator=(const SettingsConnection&) = delete;

    /// Makes a settings file of one that is missing or empty. Good only when every row could be read and a
    /// transaction could be written, or failed in a way that may pass (a full disk), which problem() then
    /// tells. A file that isn't good is left as it is, with its log.
    State open(const QString& path, Access access, QString* reason);
    /// Closing a closed one is harmless. values() stay.
    void close();
    bool isOpen() const { return m_connection != nullptr; }

    /// What the file held when it was opened, rows that aren't what their type says included.
    const SettingsMap& values() const { return m_values; }
    /// One durable transaction, see writeRows(). False when nothing was written.
    bool write(const SettingsMap& changes, bool wipe);
    /// Why the last transaction wasn't written, empty when it was.
    QString problem() const { return m_problem; }
    /// Writes all that is committed to the empty file at path, which is no settings file before this returns
    /// true; the caller syncs it.
    bool copyTo(const QString& path, QString* reason) const;

private:
    State check(bool* isNew, QString* reason);
    State makeDurable(bool isNew, Access access, QString* reason);
    State stateOf(int code, QString* reason) const;
    /// A transaction that changes nothing, written all the same.
    int writeNothing() const;

    sqlite3* m_connection = nullptr;
    SettingsMap m_values;
    QString m_problem;
};

} // namespace mem
