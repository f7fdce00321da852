#include "platform/common/settings/settingsdatabase.h"

#include <QFile>
#include <QTemporaryDir>

#include <limits>
#include <memory>
#include <sqlite3.h>

namespace mem {

namespace {

// How long a start waits for a unit that is just ending, and for a tool that looks into the file.
constexpr int waitForHolderMs = 1500;

// "ASET", so that a look at the file's head tells what it is.
constexpr int applicationId = 0x41534554;
constexpr int schemaVersion = 1;
constexpr const char* schema = "CREATE TABLE settings(key TEXT PRIMARY KEY NOT NULL, "
                               "type TEXT NOT NULL, value NOT NULL) WITHOUT ROWID";

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

int execute(sqlite3* connection, const char* sql)
{
    return sqlite3_exec(connection, sql, nullptr, nullptr, nullptr);
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

/// First column of the first row, as text.
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

/// SQLite finds that out too, but not before it has deleted a journal that doesn't fit.
bool isDatabaseOrEmpty(const QString& path)
{
    QFile file(path);
    const QByteArray magic("SQLite format 3", 16);
    return file.open(QIODevice::ReadOnly) && (file.size() == 0 || file.read(magic.size()) == magic);
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

} // namespace

SettingsDatabase::~SettingsDatabase()
{
    close();
}

bool SettingsDatabase::read(const QString& path, SettingsMap* values, QString* reason)
{
    const QTemporaryDir folder;
    if (!folder.isValid()) {
        *reason = QStringLiteral("can't make a temporary folder: %1").arg(folder.errorString());
        return false;
    }
    const QString copy = folder.filePath(QStringLiteral("settings.db"));
    if (!SettingsFile::copy(path, copy, reason))
        return false;
    SettingsDatabase database;
    if (database.connectTo(copy, reason) != State::Good) {
        *reason = QStringLiteral("it is damaged or no settings file (%1)").arg(*reason);
        return false;
    }
    *values = database.m_values;
    return true;
}

SettingsDatabase::Opened SettingsDatabase::open(const QString& path, QString* message)
{
    close();
    message->clear();
    m_values.clear();
    const auto unwritable = [&](const QString& reason) {
        disconnectFrom();
        m_file.release();
        m_values.clear();
        QString unreadable;
        read(path, &m_values, &unreadable); // otherwise the unit starts on its defaults
        *message =
            QStringLiteral("Settings can't be kept in %1 (%2); the unit works from memory until power-off.")
                .arg(path, reason);
        return Opened::Unwritable;
    };
    const auto busy = [&] {
        disconnectFrom();
        m_file.release();
        *message = QStringLiteral("The settings in %1 are in use by another process.").arg(path);
        return Opened::Busy;
    };

    // The second round follows a damaged file that was put aside.
    for (int round = 0; round < 2; ++round) {
        QString reason;
        switch (m_file.hold(path, waitForHolderMs, &reason)) {
        case SettingsFile::Hold::Held:
            break;
        case SettingsFile::Hold::Busy:
            return busy();
        case SettingsFile::Hold::Unwritable:
            return unwritable(reason);
        }
        switch (connectTo(m_file.path(), &reason)) {
        case State::Good:
            return Opened::Yes;
        case State::Busy:
            return busy();
        case State::Failed:
            return unwritable(reason);
        case State::Damaged:
            break;
        }
        disconnectFrom();
        QString refused;
        const QString aside = m_file.moveAside(&refused);
        if (aside.isEmpty())
            return unwritable(QStringLiteral("damaged: %1; not moved aside: %2").arg(reason, refused));
        *message =
            QStringLiteral("The settings in %1 are damaged (%2). They were moved to %3; the unit starts on "
                           "its defaults.")
                .arg(path, reason, aside);
    }
    return unwritable(QStringLiteral("a new file is damaged too"));
}

void SettingsDatabase::close()
{
    disconnectFrom();
    m_file.release();
}

void SettingsDatabase::disconnectFrom()
{
    // Brings the log into the database and removes it.
    sqlite3_close(m_connection);
    m_connection = nullptr;
}

SettingsDatabase::State SettingsDatabase::stateOf(int code, QString* reason) const
{
    *reason = QString::fromUtf8(m_connection ? sqlite3_errmsg(m_connection) : sqlite3_errstr(code));
    switch (code & 0xff) {
    case SQLITE_OK:
        return State::Good;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return State::Busy;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_ERROR: // a query that our schema answers
        return State::Damaged;
    default:
        return State::Failed;
    }
}

SettingsDatabase::State SettingsDatabase::connectTo(const QString& path, QString* reason)
{
    m_values.clear();
    if (!isDatabaseOrEmpty(path)) {
        *reason = QStringLiteral("not a database");
        return State::Damaged;
    }
    const int code = sqlite3_open_v2(QFile::encodeName(path).constData(), &m_connection,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    if (code != SQLITE_OK)
        return stateOf(code, reason);
    sqlite3_extended_result_codes(m_connection, 1);
    sqlite3_busy_timeout(m_connection, waitForHolderMs);
    const State prepared = prepare(reason);
    return prepared == State::Good ? load(reason) : prepared;
}

SettingsDatabase::State SettingsDatabase::prepare(QString* reason)
{
    // EXTRA is FULL for a write-ahead log; for the rollback journal, which a file system may force on us, it
    // also syncs the folder after each commit.
    int code = execute(m_connection, "PRAGMA locking_mode=EXCLUSIVE; PRAGMA synchronous=EXTRA");
    QByteArray tables, application, version;
    if (code == SQLITE_OK)
        code = query(m_connection, "SELECT count(*) || ';' || coalesce(max(sql), '') FROM sqlite_schema",
                     &tables);
    if (code == SQLITE_OK)
        code = query(m_connection, "PRAGMA application_id", &application);
    if (code == SQLITE_OK)
        code = query(m_connection, "PRAGMA user_version", &version);
    if (code == SQLITE_OK)
        code = execute(m_connection, "PRAGMA journal_mode=WAL");
    if (code != SQLITE_OK)
        return stateOf(code, reason);

    if (tables == "0;" && application == "0" && version == "0") {
        const QString sql =
            QStringLiteral("BEGIN IMMEDIATE; %1; PRAGMA application_id=%2; PRAGMA user_version=%3; COMMIT")
                .arg(QLatin1String(schema))
                .arg(applicationId)
                .arg(schemaVersion);
        code = execute(m_connection, sql.toUtf8().constData());
        // File and log have their names in the folder now.
        SettingsFile::syncFolder(m_file.path());
        return stateOf(code, reason);
    }
    if (tables != QByteArray("1;") + schema || application.toInt() != applicationId ||
        version.toInt() != schemaVersion) {
        *reason = QStringLiteral("a database of another kind");
        return State::Damaged;
    }
    return State::Good;
}

SettingsDatabase::State SettingsDatabase::load(QString* reason)
{
    QByteArray check;
    int code = query(m_connection, "PRAGMA quick_check(1)", &check);
    if (code != SQLITE_OK)
        return stateOf(code, reason);
    if (check != "ok") {
        *reason = QString::fromUtf8(check).simplified();
        return State::Damaged;
    }
    const Statement rows = prepareStatement(m_connection, "SELECT key, type, value FROM settings");
    if (!rows)
        return stateOf(sqlite3_extended_errcode(m_connection), reason);
    while ((code = sqlite3_step(rows.get())) == SQLITE_ROW)
        m_values.insert(textOf(bytesOf(rows.get(), 0)), settingOf(rows.get()));
    return code == SQLITE_DONE ? State::Good : stateOf(code, reason);
}

bool SettingsDatabase::write(const SettingsMap& changes, bool wipe, QString* reason)
{
    const auto run = [&] {
        int code = execute(m_connection, "BEGIN IMMEDIATE");
        if (code == SQLITE_OK && wipe)
            code = execute(m_connection, "DELETE FROM settings");
        const Statement upsert = prepareStatement(
            m_connection, "INSERT INTO settings(key, type, value) VALUES(?1, ?2, ?3) "
                          "ON CONFLICT(key) DO UPDATE SET type = excluded.type, value = excluded.value");
        const Statement remove = prepareStatement(m_connection, "DELETE FROM settings WHERE key = ?1");
        if (code == SQLITE_OK && (!upsert || !remove))
            code = SQLITE_ERROR;
        for (auto change = changes.begin(); code == SQLITE_OK && change != changes.end(); ++change) {
            sqlite3_stmt* const statement = change->isValid() ? upsert.get() : remove.get();
            code = change->isValid() ? bindSetting(statement, change.key(), change.value())
                                     : bindText(statement, 1, change.key().toUtf8());
            if (code == SQLITE_OK) {
                const int step = sqlite3_step(statement);
                code = step == SQLITE_DONE ? SQLITE_OK : step;
            }
            sqlite3_reset(statement);
        }
        return code == SQLITE_OK ? execute(m_connection, "COMMIT") : code;
    };
    const int code = run();
    if (code == SQLITE_OK)
        return true;
    *reason = QString::fromUtf8(sqlite3_errmsg(m_connection));
    if (!sqlite3_get_autocommit(m_connection))
        execute(m_connection, "ROLLBACK");
    return false;
}

} // namespace mem
