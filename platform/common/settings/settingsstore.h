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
        Durable, ///< the file is ours; writes reach it, at once or, see isDurable(), when what hinders them
                 ///< ends
        Memory,  ///< nothing can be written there; everything works until power-off
        Refused, ///< another unit holds the file; nothing was touched
    };

    /// Never null; stays the library's.
    static SettingsStore* instance();

    /// $XDG_DATA_HOME/audiosetting/settings.db
    static QString defaultPath();
    /// Opens the file at path (empty: defaultPath()), mode 0600, making its folder, writes to it once and
    /// takes over its values. A damaged file is moved aside, with its log, as "<name>.damaged-<date>"; the
    /// store starts on what can be read of it, for other keys on the last good copy. A file that can be read
    /// and not written is read. When another unit holds the file, waits for it for a second and a half, then
    /// refuses and keeps the values as they were. message: what to tell the user, empty for a Durable without
    /// anything to say; without one (null) it is logged.
    Opened open(const QString& path, QString* message = nullptr);
    /// Takes over the values of the file at path without changing or holding it, so that a unit that is
    /// running on it isn't disturbed; writes then stay in memory. An empty path means defaultPath(), and the
    /// factory settings when there is no file. False with a reason (never null) when the file can't be read
    /// or is damaged; the store is then as it was.
    bool openReadOnly(const QString& path, QString* reason);
    /// Commits what is pending and lets the file go. The values stay readable.
    void close();
    /// Makes every write so far durable. False when that failed: the first time is logged, the values stay in
    /// memory, and the write is tried again each second; isDurable() and problem() tell. False without a
    /// file, too. Until the write that is tried again gets through, later ones wait with it.
    bool commit();
    /// Forgets all values, in memory, in the file and in the last good copy: factory settings. As durable as
    /// a commit().
    void clear();
    /// Commits, and writes the last good copy ("<name>.good") where the file was sound when it was opened and
    /// held other values than the copy does. Happens by itself 5 s after opening. False when there is no file
    /// or the copy couldn't be written (logged).
    bool keepGoodCopy();

    /// The file of the last opening, empty before the first.
    QString path() const;
    /// A file is open, and the last write to it reached the disk: what is committed will be there after
    /// power-off.
    bool isDurable() const;
    /// Why isDurable() is false, a sentence in English; empty while it is true.
    QString problem() const;
    /// All of them, also those of which value() says that they are of no setting's type.
    QMap<QString, QVariant> values() const;
    /// Invalid when the key is absent. What the file held under the key and is not an int, bool or text as it
    /// says comes as another type (long long, double, QByteArray), for the host to show.
    QVariant value(const QString& key) const;
    /// The value when it has the type of defaultValue; else defaultValue, logged once for a value that is
    /// there.
    QVariant valueOr(const QString& key, const QVariant& defaultValue) const;
    /// As SettingsFunc::setValue. Refuses (false, logged) what is not int, bool or QString, and an empty key.
    /// A write that cannot be made durable is logged and tried again; it is no refusal.
    bool setValue(const QString& key, const QVariant& value, bool commit);
    /// Does nothing when the key is absent. Durable at the next commit, within 2 s at most.
    void remove(const QString& key);
    /// Changes a setting behind the back of whoever owns it, durably: an invalid value removes the key.
    /// Refuses as setValue() does. Owners that keep what they have read take the value over, when edited()
    /// says so.
    bool edit(const QString& key, const QVariant& value);

signals:
    /// After the value really changed; an invalid variant: the key was removed.
    void valueChanged(const QString& key, const QVariant& value);
    /// After each setValue() and edit() of a value that wasn't refused, whether or not it changed anything.
    void written(const QString& key);
    /// After each edit() that wasn't refused, and after what valueChanged() says of it.
    void edited(const QString& key);
    /// isDurable() has changed.
    void durableChanged(bool durable);

private:
    SettingsStore();
    ~SettingsStore() override;
    void setProblem(const QString& problem);
    void replaceValues(const QMap<QString, QVariant>& after);
    SettingsStorePrivate* d;
};

} // namespace mem
