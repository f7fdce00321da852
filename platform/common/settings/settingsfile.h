#pragma once

#include <QString>

namespace mem {

/// The file that the settings lie in, as a thing of the file system: its folder, its mode, who holds it, and
/// how it is put aside. Knows nothing of what is in it.
///
/// The hold is a flock() on the file itself. It keeps a second unit away also while a damaged file is being
/// replaced, when the database's own locks are gone; the kernel drops it with the process, however that ends.
class SettingsFile
{
public:
    enum class Hold {
        Held,       ///< exists, writable, mode 0600, ours until release()
        Busy,       ///< another process holds it
        Unwritable, ///< can't be made or written
    };

    SettingsFile() = default;
    ~SettingsFile();
    SettingsFile(const SettingsFile&) = delete;
    SettingsFile& operator=(const SettingsFile&) = delete;

    /// Makes folder (0700) and file where they are missing. Waits up to waitMs for another holder. reason:
    /// the system's words, for Unwritable.
    Hold hold(const QString& path, int waitMs, QString* reason);
    /// Lets go. Call only when the database is closed: closing any descriptor of a file drops the POSIX locks
    /// that SQLite holds on it.
    void release();
    /// Renames the file and what SQLite keeps beside it to "<name>.damaged-<date>...", and lets go. Returns
    /// the new path, empty with a reason when the folder doesn't allow it.
    QString moveAside(QString* reason);
    /// Makes the entries of the folder that holds path survive a power cut.
    static void syncFolder(const QString& path);
    /// Copies the file and what SQLite keeps beside it to `copy`, for reading: neither is there a wait for
    /// somebody who holds it, nor is the original touched. False with a reason when the file can't be copied.
    static bool copy(const QString& path, const QString& copy, QString* reason);

    /// Of the file that is held, links resolved.
    QString path() const { return m_path; }

private:
    QString m_path;
    int m_descriptor = -1;
};

} // namespace mem
