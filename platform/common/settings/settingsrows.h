#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QVariant>

#include <memory>

struct sqlite3;
struct sqlite3_stmt;

/// The settings as rows of SQLite's one table, `settings(key, type, value)`. Codes are SQLite's, extended.
/// No pointer may be null; a connection is one thread's at a time.
namespace mem {

using SettingsMap = QMap<QString, QVariant>;

/// Int, bool or text: what a setting may hold.
bool isSettingType(const QVariant& value);
/// Type and value: QVariant's own comparison finds 1 and true, or 1 and "1", equal.
bool sameSetting(const QVariant& a, const QVariant& b);

/// One or several statements whose rows don't matter.
int execute(sqlite3* connection, const char* sql);
/// First column of the first row, as text; untouched when there is no row.
int query(sqlite3* connection, const char* sql, QByteArray* result);

/// Adds the rows whose keys aren't in `values` yet, up to the first one that can't be read. A row that isn't
/// what its type says comes as long long, double or QByteArray, which are no types of settings. SQLITE_OK
/// when all could be read. backwards: from the last key to the first.
int readRows(sqlite3* connection, bool backwards, SettingsMap* values);
/// One transaction: every row goes first when wipe is set, then each change is written; an invalid variant
/// deletes its row. Nothing is written unless all of it is.
int writeRows(sqlite3* connection, const SettingsMap& changes, bool wipe);

} // namespace mem
