#include "platform/common/settings/settingsrows.h"

#include <limits>
#include <sqlite3.h>

namespace mem {

namespace {

constexpr const char* typeInt = "int";
constexpr const char* typeBool = "bool";
constexpr const char* typeString = "string";

struct FinalizeStatement
{
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

Statement prepareStatement(sqlite3* connection, const char* sql)
{
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(connection, sql, -1, &statement, nullptr);
    return Statement(statement);
}

QByteArray bytesOf(sqlite3_stmt* statement, int column)
{
    const void* const data = sqlite3_column_blob(statement, column);
    return QByteArray(static_cast<const char*>(data), sqlite3_column_bytes(statement, column));
}

/// With its length: the overload for byte arrays ends at the first NUL.
QString textOf(const QByteArray& utf8)
{
    return QString::fromUtf8(utf8.constData(), utf8.size());
}

int bindText(sqlite3_stmt* statement, int index, const QByteArray& text)
{
    return sqlite3_bind_text(statement, index, text.constData(), text.size(), SQLITE_TRANSIENT);
}

int bindSetting(sqlite3_stmt* statement, const QString& key, const QVariant& value)
{
    bindText(statement, 1, key.toUtf8());
    switch (static_cast<QMetaType::Type>(value.type())) {
    case QMetaType::Int:
        sqlite3_bind_text(statement, 2, typeInt, -1, SQLITE_STATIC);
        return sqlite3_bind_int(statement, 3, value.toInt());
    case QMetaType::Bool:
        sqlite3_bind_text(statement, 2, typeBool, -1, SQLITE_STATIC);
        return sqlite3_bind_int(statement, 3, value.toBool() ? 1 : 0);
    default:
        sqlite3_bind_text(statement, 2, typeString, -1, SQLITE_STATIC);
        return bindText(statement, 3, value.toString().toUtf8());
    }
}

/// The value as its type says; where it isn't that, as it lies there, in a type that no setting has.
QVariant settingOf(sqlite3_stmt* statement)
{
    const QByteArray type = bytesOf(statement, 1);
    switch (sqlite3_column_type(statement, 2)) {
    case SQLITE_INTEGER: {
        const qlonglong number = sqlite3_column_int64(statement, 2);
        if (type == typeInt && number >= std::numeric_limits<int>::min() &&
            number <= std::numeric_limits<int>::max())
            return static_cast<int>(number);
        if (type == typeBool && (number == 0 || number == 1))
            return number == 1;
        return number;
    }
    case SQLITE_FLOAT:
        return sqlite3_column_double(statement, 2);
    case SQLITE_TEXT: {
        const QByteArray text = bytesOf(statement, 2);
        if (type == typeString)
            return textOf(text);
        return text;
    }
    default:
        return bytesOf(statement, 2);
    }
}

int writeChanges(sqlite3* connection, const SettingsMap& changes)
{
    const Statement upsert = prepareStatement(
        connection, "INSERT INTO settings(key, type, value) VALUES(?1, ?2, ?3) "
                    "ON CONFLICT(key) DO UPDATE SET type = excluded.type, value = excluded.value");
    const Statement remove = prepareStatement(connection, "DELETE FROM settings WHERE key = ?1");
    if (!upsert || !remove)
        return sqlite3_extended_errcode(connection);
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        sqlite3_stmt* const statement = change->isValid() ? upsert.get() : remove.get();
        int code = change->isValid() ? bindSetting(statement, change.key(), change.value())
                                     : bindText(statement, 1, change.key().toUtf8());
        if (code == SQLITE_OK)
            code = sqlite3_step(statement);
        sqlite3_reset(statement);
        if (code != SQLITE_DONE)
            return code;
    }
    return SQLITE_OK;
}

} // namespace

bool isSettingType(const QVariant& value)
{
    switch (static_cast<QMetaType::Type>(value.type())) {
    case QMetaType::Int:
    case QMetaType::Bool:
    case QMetaType::QString:
        return true;
    default:
        return false;
    }
}

bool sameSetting(const QVariant& a, const QVariant& b)
{
    return a.userType() == b.userType() && a == b;
}

int execute(sqlite3* connection, const char* sql)
{
    return sqlite3_exec(connection, sql, nullptr, nullptr, nullptr);
}

int query(sqlite3* connection, const char* sql, QByteArray* result)
{
    const Statement statement = prepareStatement(connection, sql);
    if (!statement)
        return sqlite3_extended_errcode(connection);
    const int code = sqlite3_step(statement.get());
    if (code == SQLITE_ROW)
        *result = bytesOf(statement.get(), 0);
    return code == SQLITE_ROW || code == SQLITE_DONE ? SQLITE_OK : code;
}

int readRows(sqlite3* connection, bool backwards, SettingsMap* values)
{
    const Statement rows =
        prepareStatement(connection, backwards ? "SELECT key, type, value FROM settings ORDER BY key DESC"
                                               : "SELECT key, type, value FROM settings ORDER BY key");
    if (!rows)
        return sqlite3_extended_errcode(connection);
    int code = SQLITE_OK;
    while ((code = sqlite3_step(rows.get())) == SQLITE_ROW) {
        const QString key = textOf(bytesOf(rows.get(), 0));
        if (!values->contains(key))
            values->insert(key, settingOf(rows.get()));
    }
    return code == SQLITE_DONE ? SQLITE_OK : code;
}

int writeRows(sqlite3* connection, const SettingsMap& changes, bool wipe)
{
    int code = execute(connection, "BEGIN IMMEDIATE");
    if (code == SQLITE_OK && wipe)
        code = execute(connection, "DELETE FROM settings");
    if (code == SQLITE_OK)
        code = writeChanges(connection, changes);
    if (code == SQLITE_OK)
        code = execute(connection, "COMMIT");
    if (code != SQLITE_OK && !sqlite3_get_autocommit(connection))
        execute(connection, "ROLLBACK");
    return code;
}

} // namespace mem
