#pragma once

#include "common/export.h"

#include <QMap>
#include <QObject>
#include <QString>
#include <QVariant>

namespace mem {

class SettingsStorePrivate;

/// What SettingsFunc and SettingsExe stand on, for the host: where the store lies, all its values, orderly
/// exit. One process-wide object; before open() and when the folder can't be written it works from memory.
/// Thread: GUI.
class COMMON_EXPORT SettingsStore : public QObject
{
    Q_OBJECT
public:
    enum class Opened {
        Durable, ///< the file is ours; writes reach it
        Memory,  ///< nothing can be written there; one log line was given; everything works until power-off
        Refused, ///< another process holds the file; nothing was touched
    };

    static SettingsStore* instance();

    /// $XDG_DATA_HOME/audiosetting/settings.db
    static QString defaultPath();
    /// Opens the file at path (empty: defaultPath()), mode 0600, making its folder. A damaged file is moved
    /// aside as
    /// "<name>.damaged-<date>" and the store starts empty. message: what to tell the user, for every outcome
    /// but a plain Durable.
    Opened open(const QString& path, QString* message = nullptr);
    /// Commits what is pending and lets the file go. The values stay readable.
    void close();
    /// Makes every write so far durable. Returns false when that failed (logged; the values stay in memory
    /// and are tried again).
    bool commit();
    /// Forgets all values, in memory and in the file: factory settings.
    void clear();

    QString path() const;
    bool isDurable() const;
    QMap<QString, QVariant> values() const;
    QVariant value(const QString& key) const;
    /// As SettingsFunc::setValue. Refuses (false, logged) what is not int, bool or QString.
    bool setValue(const QString& key, const QVariant& value, bool commit);
    void remove(const QString& key);

signals:
    /// After the value really changed; an invalid variant: the key was removed.
    void valueChanged(const QString& key, const QVariant& value);

private:
    SettingsStore();
    ~SettingsStore() override;
    SettingsStorePrivate* d;
    Q_DISABLE_COPY(SettingsStore)
};

} // namespace mem
