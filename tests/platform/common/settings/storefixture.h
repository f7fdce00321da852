#pragma once

#include "common/settings.h"
#include "platform/common/settings/settingsstore.h"
#include "tests/support/messagelog.h"
#include "tests/support/process.h"

#include <QtTest>

#include <sqlite3.h>
#include <sys/stat.h>

using mem::SettingsFunc;
using mem::SettingsStore;

// Far beyond what anything here takes; only a hang reaches it.
constexpr int patienceMs = 30000;

/// Runs SQL on the file as a foreign tool would. The unit must not have it open.
inline bool runSql(const QString& path, const QByteArray& sql)
{
    sqlite3* connection = nullptr;
    bool done = sqlite3_open(QFile::encodeName(path).constData(), &connection) == SQLITE_OK;
    done = done && sqlite3_exec(connection, sql.constData(), nullptr, nullptr, nullptr) == SQLITE_OK;
    return sqlite3_close(connection) == SQLITE_OK && done;
}

inline QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline void setContent(const QString& path, const QByteArray& content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), static_cast<qint64>(content.size()));
}

inline unsigned modeOf(const QString& path)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777U : ~0U;
}

/// A second unit, see settings_child.cpp.
class Child
{
public:
    Child(const QString& path, const QStringList& command)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QCoreApplication::applicationDirPath() + QStringLiteral("/settings_child"),
                        QStringList{path} + command);
    }
    ~Child() { kill(); }
    QByteArray line()
    {
        while (!m_process.canReadLine() && m_process.waitForReadyRead(patienceMs))
            continue;
        return m_process.readLine().trimmed();
    }
    void kill()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        sendSignal(m_process, SIGKILL);
        m_process.waitForFinished(patienceMs);
    }
    bool say(const QByteArray& words)
    {
        m_process.write(words + '\n');
        return m_process.waitForBytesWritten(patienceMs);
    }
    bool finished() { return m_process.waitForFinished(patienceMs); }

private:
    QProcess m_process;
};

/// A store whose file lies in a new folder for each test function.
class StoreFixture : public QObject
{
    Q_OBJECT
protected:
    QTemporaryDir m_folder;
    QString m_path;

    SettingsStore* store() { return SettingsStore::instance(); }
    void set(const char* key, int value, bool commit = true)
    {
        SettingsFunc::instance()->setValue(QLatin1String(key), 0, value, commit);
    }
    int get(const char* key) { return SettingsFunc::instance()->getValue(QLatin1String(key), -1); }
    void makeFileWith(const char* key, int value)
    {
        QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
        set(key, value);
        store()->close();
    }
    QStringList movedAside()
    {
        const QFileInfo file(m_path);
        return file.dir().entryList({file.fileName() + QStringLiteral(".damaged-*")}, QDir::Files,
                                    QDir::Name);
    }

private slots:
    void init()
    {
        static int number = 0;
        m_path = m_folder.filePath(QStringLiteral("%1/settings.db").arg(++number));
        QVERIFY(QDir().mkpath(QFileInfo(m_path).path()));
    }
    void cleanup() { store()->close(); }
};
