#pragma once

#include "platform/common/settings/settingsconnection.h"
#include "platform/common/settings/settingsfile.h"

#include <QString>

namespace mem {

/// The settings on the disk: the file that is ours, the connection to it, what is rescued when it is damaged,
/// and the last good copy beside it.
class SettingsDatabase
{
public:
    enum class Opened {
        Yes,        ///< values() is what the file holds
        Busy,       ///< another unit holds the file
        Unwritable, ///< values() is what could be read
    };

    SettingsDatabase() = default;
    ~SettingsDatabase();
    SettingsDatabase(const SettingsDatabase&) = delete;
    SettingsDatabase& operator=(const SettingsDatabase&) = delete;

    /// message: sentences for the user, empty when there is nothing to say.
    Opened open(const QString& path, QString* message);
    /// Lets the file go. Closing a closed one is harmless.
    void close();
    bool isOpen() const { return m_connection.isOpen(); }

    /// What the file held when it was opened. A row that isn't what its type says comes as long long, double
    /// or QByteArray, which are no types of settings.
    const SettingsMap& values() const { return m_values; }
    /// One durable transaction, see writeRows(); a real one also without changes. False when nothing was
    /// written. Wiping takes the last good copy away first.
    bool write(const SettingsMap& changes, bool wipe);
    /// Why the last transaction wasn't written, empty when it was.
    QString problem() const { return m_connection.problem(); }
    /// Replaces the last good copy, whole or not at all, where it is another one than what is in the file.
    /// Does nothing after a start that found the file damaged: what was rescued isn't as good. False with a
    /// reason when it couldn't be written.
    bool keepGoodCopy(QString* reason);

private:
    SettingsConnection::State connectToHeldFile(QString* reason);
    bool repair(const QString& damage, QString* message);

    SettingsFile m_file;
    SettingsConnection m_connection;
    SettingsMap m_values;
    bool m_wasDamaged = false;
};

} // namespace mem
