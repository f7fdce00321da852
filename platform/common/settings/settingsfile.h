#pragma once

#include <QString>

namespace mem {

/// The file that the settings lie in, as a thing of the file system: its folder, its mode, who holds it, and
/// how it is put aside or replaced. Knows nothing of what is in it.
///
/// The hold is a flock() on the file itself. It keeps a second unit away also while a damaged file is being
/// replaced, when the database's own locks are gone; the kernel drops it with the process, however that ends.
class SettingsFile
{
public:
    enum class Hold {
        Held,       ///< exists, writable, ours until release()
        Busy,       ///< another process holds it
        Unwritable, ///< can't be made or written
    };

    SettingsFile() = default;
    ~SettingsFile();
    SettingsFile(const SettingsFile&) = delete;
    SettingsFile& operator=(const SettingsFile&) = delete;

    /// Makes folder (0700) and file (0600) where they are missing. Waits up to waitMs for another holder.
    /// reason: the system's words, for Unwritable.
    Hold hold(const QString& path, int waitMs, QString* reason);
    /// Lets go. Call only when the database is closed: closing any descriptor of a file drops the POSIX locks
    /// that SQLite holds on it.
    void release();

    /// Of the file that is held, links resolved.
    QString path() const { return m_path; }
    /// No other unit has the file, which the file system vouches for.
    bool isOurs() const { return m_locked; }
    /// The file system has the locks that SQLite works with.
    bool hasRecordLocks() const { return m_recordLocks; }
    /// The file was there, without content, where a last good copy says that it had some.
    bool wasEmptied() const { return m_emptied; }
    /// What the file system doesn't give: sentences for the user, empty when it gives all.
    QString shortcomings() const { return m_shortcomings; }

    /// Renames the file and what SQLite keeps beside it to "<name>.damaged-<date>...", puts its successor in
    /// its place, and lets go. Returns the new path, empty with a reason when the folder doesn't allow it. A
    /// power cut in between leaves the successor, which the next hold() puts in place.
    QString moveAside(QString* reason);

    /// Where a new file is prepared that is to replace the one at path.
    static QString successorOf(const QString& path);
    /// Where the last good copy of the file at path lies.
    static QString goodCopyOf(const QString& path);
    /// Durably.
    static void removeGoodCopy(const QString& path);
    /// Makes an empty file, mode 0600, instead of the one at path and of what SQLite keeps beside it.
    static bool makeEmpty(const QString& path, QString* reason);
    /// Renames a finished file to the place of another one: after a power cut it is whole, the one or the
    /// other.
    static bool putInPlace(const QString& finished, const QString& path, QString* reason);
    /// Copies the file and what SQLite keeps beside it to `copy`, for reading: neither is there a wait for
    /// somebody who holds it, nor is the original touched. False with a reason when the file can't be copied.
    static bool copy(const QString& path, const QString& copy, QString* reason);
    /// Makes the entries of the folder that holds path survive a power cut.
    static void syncFolder(const QString& path);

private:
    void noteWhatIsMissing(int mode);

    QString m_path;
    QString m_shortcomings;
    int m_descriptor = -1;
    bool m_locked = false;
    bool m_recordLocks = true;
    bool m_emptied = false;
};

} // namespace mem
