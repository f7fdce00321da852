#include "platform/common/settings/settingsconnection.h"

#include "platform/common/settings/settingsfile.h"

#include <QFile>
#include <QFileInfo>

#include <sqlite3.h>

namespace mem {

namespace {

// How long a start waits for a tool that looks into the file. Later nobody waits: the GUI thread would.
constexpr int waitForToolMs = 1500;

// "ASET", so that a look at the file's head tells what it is.
constexpr int applicationId = 0x41534554;
constexpr int schemaVersion = 1;
constexpr const char* schema = "CREATE TABLE settings(key TEXT PRIMARY KEY NOT NULL, "
                               "type TEXT NOT NULL, value NOT NULL) WITHOUT ROWID";

// Where SQLite's header names the least version that may write the file, and the one that may read it.
constexpr int formatsOffset = 18;
constexpr char knownFormat = 2;

/// What is wrong with the file at a glance, null when nothing is. SQLite finds most of that out too, but not
/// before it has deleted a log or a journal that doesn't fit.
const char* faultOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return nullptr; // missing: a new one is made; unreadable: SQLite says why
    const QByteArray head = file.read(formatsOffset + 2);
    if (head.isEmpty())
        return QFileInfo(path + QStringLiteral("-wal")).size() > 0 ? "it is empty" : nullptr;
    QFile journal(path + QStringLiteral("-journal"));
    if (journal.open(QIODevice::ReadOnly) && journal.read(8) == "\xd9\xd5\x05\xf9\x20\xa1\x63\xd7")
        return nullptr; // the power failed while the file was made; SQLite takes that back
    if (!head.startsWith(QByteArray("SQLite format 3", 16)) || head.size() < formatsOffset + 2)
        return "not a database";
    if (head[formatsOffset] > knownFormat || head[formatsOffset + 1] > knownFormat)
        return "of a format that can only be read";
    return nullptr;
}

} // namespace

SettingsConnection::~SettingsConnection()
{
    close();
}

SettingsConnection::State SettingsConnection::open(const QString& path, Access access, QString* reason)
{
    close();
    m_values.clear();
    m_problem.clear();
    if (const char* fault = faultOf(path)) {
        *reason = QLatin1String(fault);
        return State::Damaged;
    }
    const int code = sqlite3_open_v2(QFile::encodeName(path).constData(), &m_connection,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE,
                                     access == Access::Unlocked ? "unix-none" : nullptr);
    State state = stateOf(code, reason);
    if (state == State::Good) {
        sqlite3_extended_result_codes(m_connection, 1);
        sqlite3_busy_timeout(m_connection, waitForToolMs);
        // The log of a file that turns out to be damaged may hold what the file lacks: it stays beside it.
        sqlite3_db_config(m_connection, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
        // EXTRA is FULL for a write-ahead log; for the rollback journal, which a file system may force on us,
        // it also syncs the folder after each commit.
        state =
            stateOf(execute(m_connection, access == Access::Shared
                                              ? "PRAGMA synchronous=EXTRA"
                                              : "PRAGMA locking_mode=EXCLUSIVE; PRAGMA synchronous=EXTRA"),
                    reason);
    }
    bool isNew = false;
    if (state == State::Good)
        state = check(&isNew, reason);
    if (state == State::Good)
        state = makeDurable(isNew, access, reason);
    if (state == State::Good) {
        sqlite3_busy_timeout(m_connection, 0);
        sqlite3_db_config(m_connection, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
    } else {
        close();
        m_values.clear();
    }
    return state;
}

void SettingsConnection::close()
{
    // Brings the log into the database and removes it.
    sqlite3_close(m_connection);
    m_connection = nullptr;
}

SettingsConnection::State SettingsConnection::stateOf(int code, QString* reason) const
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

SettingsConnection::State SettingsConnection::check(bool* isNew, QString* reason)
{
    QByteArray tables, application, version, soundness;
    int code =
        query(m_connection, "SELECT count(*) || ';' || coalesce(max(sql), '') FROM sqlite_schema", &tables);
    if (code == SQLITE_OK)
        code = query(m_connection, "PRAGMA application_id", &application);
    if (code == SQLITE_OK)
        code = query(m_connection, "PRAGMA user_version", &version);
    if (code == SQLITE_OK)
        code = query(m_connection, "PRAGMA quick_check(1)", &soundness);
    if (code != SQLITE_OK)
        return stateOf(code, reason);
    if (soundness != "ok") {
        *reason = QString::fromUtf8(soundness).simplified();
        return State::Damaged;
    }
    *isNew = tables == "0;" && application == "0" && version == "0";
    if (*isNew)
        return State::Good;
    if (tables != QByteArray("1;") + schema || application.toInt() != applicationId ||
        version.toInt() != schemaVersion) {
        *reason = QStringLiteral("a database of another kind");
        return State::Damaged;
    }
    return stateOf(readRows(m_connection, false, &m_values), reason);
}

SettingsConnection::State SettingsConnection::makeDurable(bool isNew, Access access, QString* reason)
{
    if (sqlite3_db_readonly(m_connection, "main") != 0) {
        *reason = QStringLiteral("it can only be read");
        return State::Failed;
    }
    int code = execute(m_connection, "PRAGMA journal_mode=WAL");
    // A program that looks into the file may keep the mode from being changed; any mode is durable.
    if (code != SQLITE_OK && access != Access::Shared)
        return stateOf(code, reason);
    if (isNew) {
        const QString sql =
            QStringLiteral("BEGIN IMMEDIATE; %1; PRAGMA application_id=%2; PRAGMA user_version=%3; COMMIT")
                .arg(QLatin1String(schema))
                .arg(applicationId)
                .arg(schemaVersion);
        code = execute(m_connection, sql.toUtf8().constData());
        // File and log have their names in the folder now.
        SettingsFile::syncFolder(QString::fromUtf8(sqlite3_db_filename(m_connection, "main")));
        return stateOf(code, reason);
    }
    // Only a write shows whether the file can be written.
    code = writeNothing();
    switch (code & 0xff) {
    case SQLITE_FULL:
    case SQLITE_IOERR:
    case SQLITE_BUSY: // whom it waits for will let go some day
        m_problem = QString::fromUtf8(sqlite3_errmsg(m_connection));
        return State::Good;
    default:
        return stateOf(code, reason);
    }
}

int SettingsConnection::writeNothing() const
{
    const QByteArray sql = "PRAGMA user_version=" + QByteArray::number(schemaVersion);
    return execute(m_connection, sql.constData());
}

bool SettingsConnection::write(const SettingsMap& changes, bool wipe)
{
    const bool nothing = changes.isEmpty() && !wipe;
    const int code = nothing ? writeNothing() : writeRows(m_connection, changes, wipe);
    m_problem = code == SQLITE_OK ? QString() : QString::fromUtf8(sqlite3_errstr(code));
    return code == SQLITE_OK;
}

bool SettingsConnection::copyTo(const QString& path, QString* reason) const
{
    sqlite3* copy = nullptr;
    int code =
        sqlite3_open_v2(QFile::encodeName(path).constData(), &copy, SQLITE_OPEN_READWRITE, "unix-none");
    if (code == SQLITE_OK)
        code = execute(copy, "PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF");
    if (code == SQLITE_OK) {
        sqlite3_backup* const backup = sqlite3_backup_init(copy, "main", m_connection, "main");
        // Finishing alone would call a copy that had to stop halfway a good one.
        const int step = sqlite3_backup_step(backup, -1);
        sqlite3_backup_finish(backup);
        code = step == SQLITE_DONE ? SQLITE_OK : step;
    }
    if (code != SQLITE_OK)
        *reason = QString::fromUtf8(sqlite3_errstr(code));
    sqlite3_close(copy);
    return code == SQLITE_OK;
}

} // namespace mem
