#include "platform/common/settings/settingsreader.h"

#include "platform/common/settings/settingsconnection.h"
#include "platform/common/settings/settingsfile.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include <sqlite3.h>

namespace mem {

namespace {

constexpr int pageSize = 4096;
constexpr int pageCountOffset = 28; ///< in the file's header, big-endian

using Access = SettingsConnection::Access;

QString databaseIn(const QTemporaryDir& folder)
{
    return folder.filePath(QStringLiteral("settings.db"));
}

/// The rows from either end up to the first that can't be read.
void salvageRows(const QString& path, SettingsMap* values)
{
    sqlite3* connection = nullptr;
    if (sqlite3_open_v2(QFile::encodeName(path).constData(), &connection, SQLITE_OPEN_READWRITE,
                        "unix-none") == SQLITE_OK) {
        sqlite3_db_config(connection, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        execute(connection, "PRAGMA locking_mode=EXCLUSIVE; PRAGMA cell_size_check=ON");
        SettingsMap rows;
        for (bool backwards : {false, true})
            readRows(connection, backwards, &rows);
        for (auto row = rows.begin(); row != rows.end(); ++row) {
            if (isSettingType(*row) && !values->contains(row.key()))
                values->insert(row.key(), *row);
        }
    }
    sqlite3_close(connection);
}

/// The first page holds the header and the schema, which are the same in all our files but for counters: a
/// new file's stands in for a damaged one.
bool replaceFirstPage(const QString& path)
{
    const QTemporaryDir folder;
    SettingsConnection connection;
    QString reason;
    if (!folder.isValid() ||
        connection.open(databaseIn(folder), Access::Unlocked, &reason) != SettingsConnection::State::Good)
        return false;
    connection.close();
    QFile fresh(databaseIn(folder));
    if (!fresh.open(QIODevice::ReadOnly))
        return false;
    QByteArray page = fresh.read(pageSize);
    QFile file(path);
    if (page.size() != pageSize || !file.open(QIODevice::ReadWrite))
        return false;
    const auto pages = static_cast<quint32>(qMax<qint64>(2, (file.size() + pageSize - 1) / pageSize));
    char count[sizeof(pages)];
    qToBigEndian(pages, count);
    page.replace(pageCountOffset, sizeof(count), count, sizeof(count));
    return file.write(page) == pageSize;
}

} // namespace

bool readSettings(const QString& path, SettingsMap* values, QString* reason)
{
    const QTemporaryDir folder;
    if (!folder.isValid()) {
        *reason = QStringLiteral("can't make a temporary folder: %1").arg(folder.errorString());
        return false;
    }
    if (!SettingsFile::copy(path, databaseIn(folder), reason))
        return false;
    SettingsConnection connection;
    if (connection.open(databaseIn(folder), Access::Unlocked, reason) != SettingsConnection::State::Good) {
        *reason = QStringLiteral("it is damaged or no settings file (%1)").arg(*reason);
        return false;
    }
    *values = connection.values();
    return true;
}

RescuedSettings rescueSettings(const QString& path)
{
    RescuedSettings rescued;
    QString ignored;
    for (bool newFirstPage : {false, true}) {
        // Each time from a new copy: SQLite removes the log of an empty file.
        const QTemporaryDir folder;
        if (rescued.values.isEmpty() && folder.isValid() &&
            SettingsFile::copy(path, databaseIn(folder), &ignored) &&
            (!newFirstPage || replaceFirstPage(databaseIn(folder))))
            salvageRows(databaseIn(folder), &rescued.values);
    }
    rescued.fromFile = rescued.values.size();
    SettingsMap kept;
    if (readSettings(SettingsFile::goodCopyOf(path), &kept, &ignored)) {
        for (auto old = kept.begin(); old != kept.end(); ++old) {
            if (isSettingType(*old) && !rescued.values.contains(old.key()))
                rescued.values.insert(old.key(), *old);
        }
    }
    rescued.fromGoodCopy = rescued.values.size() - rescued.fromFile;
    return rescued;
}

} // namespace mem
