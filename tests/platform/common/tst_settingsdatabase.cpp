#include "common/settings.h"
#include "common/settingsstore.h"
#include "messagelog.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <fcntl.h>
#include <functional>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using mem::SettingsFunc;
using mem::SettingsStore;

using Damage = std::function<QByteArray(QByteArray)>;
Q_DECLARE_METATYPE(Damage)

namespace {

// Far beyond what anything here takes; only a hang reaches it.
constexpr int patienceMs = 30000;
constexpr uid_t nobody = 65534;

/// Runs SQL on the file as a foreign tool would. The unit must not have it open.
bool runSql(const QString& path, const QByteArray& sql)
{
    sqlite3* connection = nullptr;
    bool done = sqlite3_open(QFile::encodeName(path).constData(), &connection) == SQLITE_OK;
    done = done && sqlite3_exec(connection, sql.constData(), nullptr, nullptr, nullptr) == SQLITE_OK;
    return sqlite3_close(connection) == SQLITE_OK && done;
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void setContent(const QString& path, const QByteArray& content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), static_cast<qint64>(content.size()));
}

unsigned modeOf(const QString& path)
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
        ::kill(static_cast<pid_t>(m_process.processId()), SIGKILL);
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

} // namespace

/// How the store lies on the disk: durability, damage, other processes, places that can't be written.
class TestSettingsDatabase : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void aCommittedWriteSurvivesKill();
    void aDelayedWriteIsDurableWithinTwoSeconds();
    void aDelayedWriteGoesWithTheNextCommit();
    void anOrderlyExitKeepsDelayedWrites();
    void killedBetweenManyWritesTheFileIsWhole();
    void aSecondProcessIsRefused();
    void aSecondProcessWaitsForOneThatIsEnding();
    void aHolderIsRespectedWhileItHasNoDatabaseOpen();
    void aKilledProcessLeavesNoLock();
    void aDamagedFileIsMovedAside_data();
    void aDamagedFileIsMovedAside();
    void twoDamagedFilesGetTwoNames();
    void anEmptyFileIsAFreshOne();
    void aStrayLogIsNoDanger();
    void aRowThatIsNotWhatItSaysReadsAsTheDefault();
    void theRestOfTheRowsStays();
    void aPlaceThatCantBeWrittenGivesOneLine_data();
    void aPlaceThatCantBeWrittenGivesOneLine();
    void aFolderWithoutPermissionStillGivesItsValues();
    void aFullDiskLosesNothing();
    void fileModeIs0600_data();
    void fileModeIs0600();
    void aWiderModeIsNarrowed();
    void aLinkIsFollowed();

private:
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
};

void TestSettingsDatabase::init()
{
    static int number = 0;
    m_path = m_folder.filePath(QStringLiteral("%1/settings.db").arg(++number));
    QVERIFY(QDir().mkpath(QFileInfo(m_path).path()));
}

void TestSettingsDatabase::cleanup()
{
    store()->close();
}

void TestSettingsDatabase::aCommittedWriteSurvivesKill()
{
    Child child(m_path, {QStringLiteral("set"), QStringLiteral("AudioSetting_Page"), QStringLiteral("4"),
                         QStringLiteral("true")});
    QCOMPARE(child.line(), QByteArray("durable"));
    QCOMPARE(child.line(), QByteArray("written"));
    child.kill();
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    QCOMPARE(get("AudioSetting_Page"), 4);
}

void TestSettingsDatabase::aDelayedWriteIsDurableWithinTwoSeconds()
{
    Child child(m_path,
                {QStringLiteral("set"), QStringLiteral("k"), QStringLiteral("4"), QStringLiteral("false")});
    QCOMPARE(child.line(), QByteArray("durable"));
    const QString log = m_path + QStringLiteral("-wal");
    const qint64 before = QFileInfo(log).size();
    QCOMPARE(child.line(), QByteArray("written"));
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(log).size() > before, 2000);
    child.kill();
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    QCOMPARE(get("k"), 4);
}

void TestSettingsDatabase::aDelayedWriteGoesWithTheNextCommit()
{
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    const QString log = m_path + QStringLiteral("-wal");
    const qint64 before = QFileInfo(log).size();
    set("late", 1, false);
    QCOMPARE(get("late"), 1);
    QCOMPARE(QFileInfo(log).size(), before);
    set("now", 2, true);
    QVERIFY(QFileInfo(log).size() > before);
    // A copy is what a power cut would leave.
    const QString copy = m_folder.filePath(QStringLiteral("copy.db"));
    store()->close();
    QVERIFY(QFile::copy(m_path, copy));
    QCOMPARE(store()->open(copy), SettingsStore::Opened::Durable);
    QCOMPARE(get("late"), 1);
    QCOMPARE(get("now"), 2);
}

void TestSettingsDatabase::anOrderlyExitKeepsDelayedWrites()
{
    Child child(m_path, {QStringLiteral("leave"), QStringLiteral("k"), QStringLiteral("9")});
    QVERIFY(child.finished());
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    QCOMPARE(get("k"), 9);
}

void TestSettingsDatabase::killedBetweenManyWritesTheFileIsWhole()
{
    for (int round = 0; round < 20; ++round) {
        Child child(m_path, {QStringLiteral("set"), QStringLiteral("k%1").arg(round), QString::number(round),
                             QStringLiteral("true")});
        QCOMPARE(child.line(), QByteArray("durable"));
        // Some are killed after the write, some while it is under way.
        if (round % 2 == 0)
            QCOMPARE(child.line(), QByteArray("written"));
        child.kill();
    }
    QString message;
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QCOMPARE(message, QString());
    for (int round = 0; round < 20; round += 2)
        QCOMPARE(get(qPrintable(QStringLiteral("k%1").arg(round))), round);
    QVERIFY(movedAside().isEmpty());
}

void TestSettingsDatabase::aSecondProcessIsRefused()
{
    Child child(m_path, {QStringLiteral("hold")});
    QCOMPARE(child.line(), QByteArray("durable"));
    QCOMPARE(child.line(), QByteArray("held"));
    const MessageLog log;
    QString message;
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Refused);
    QVERIFY2(message.contains(m_path) && message.contains(QStringLiteral("another process")),
             qPrintable(message));
    QCOMPARE(log.lines(), QStringList(message));
    QVERIFY(!store()->isDurable());
    QVERIFY(movedAside().isEmpty());
}

void TestSettingsDatabase::aSecondProcessWaitsForOneThatIsEnding()
{
    Child first(m_path, {QStringLiteral("hold-until-line")});
    QCOMPARE(first.line(), QByteArray("durable"));
    QCOMPARE(first.line(), QByteArray("held"));
    Child second(m_path, {QStringLiteral("hold")});
    QVERIFY(first.say("end"));
    QCOMPARE(second.line(), QByteArray("durable"));
}

void TestSettingsDatabase::aHolderIsRespectedWhileItHasNoDatabaseOpen()
{
    // That is how a unit stands that is just replacing a damaged file.
    setContent(m_path, "damaged");
    const int descriptor = ::open(QFile::encodeName(m_path).constData(), O_RDWR | O_CLOEXEC);
    QVERIFY(descriptor >= 0 && ::flock(descriptor, LOCK_EX | LOCK_NB) == 0);
    const MessageLog log;
    const SettingsStore::Opened refused = store()->open(m_path);
    ::close(descriptor);
    QCOMPARE(refused, SettingsStore::Opened::Refused);
    QVERIFY(movedAside().isEmpty());
    QCOMPARE(contentOf(m_path), QByteArray("damaged"));
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
}

void TestSettingsDatabase::aKilledProcessLeavesNoLock()
{
    Child child(m_path, {QStringLiteral("hold")});
    QCOMPARE(child.line(), QByteArray("durable"));
    child.kill();
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
}

void TestSettingsDatabase::aDamagedFileIsMovedAside_data()
{
    QTest::addColumn<Damage>("damage");
    QTest::addColumn<QByteArray>("sql");
    const auto row = [](const char* name, const Damage& damage) {
        QTest::newRow(name) << damage << QByteArray();
    };
    const auto sqlRow = [](const char* name, const char* sql) {
        QTest::newRow(name) << Damage([](QByteArray content) { return content; }) << QByteArray(sql);
    };
    row("a text file", [](const QByteArray&) { return QByteArray(5000, 'x'); });
    row("ten bytes", [](const QByteArray&) { return QByteArray("0123456789"); });
    row("a zeroed header", [](QByteArray content) { return content.replace(0, 100, QByteArray(100, '\0')); });
    row("all zeroes", [](const QByteArray& content) { return QByteArray(content.size(), '\0'); });
    row("cut in the middle of a page", [](const QByteArray& content) { return content.left(4096 + 17); });
    row("one page left", [](const QByteArray& content) { return content.left(4096); });
    row("a page of noise", [](QByteArray content) {
        QByteArray noise(4096, '\0');
        for (int i = 0; i < noise.size(); ++i)
            noise[i] = static_cast<char>(i * 7919 % 251);
        return content.replace(4096, 4096, noise);
    });
    sqlRow("a database of another kind", "DROP TABLE settings; CREATE TABLE other(a, b)");
    sqlRow("a table of other columns", "DROP TABLE settings; CREATE TABLE settings(key TEXT, value TEXT)");
    sqlRow("a later version", "PRAGMA user_version=2");
    sqlRow("another application's", "PRAGMA application_id=77");
    sqlRow("a trigger that nobody made here",
           "CREATE TRIGGER t AFTER INSERT ON settings BEGIN DELETE FROM settings; END");
}

void TestSettingsDatabase::aDamagedFileIsMovedAside()
{
    QFETCH(Damage, damage);
    QFETCH(QByteArray, sql);
    makeFileWith("k", 5);
    if (!sql.isEmpty())
        QVERIFY(runSql(m_path, sql));
    setContent(m_path, damage(contentOf(m_path)));
    const QByteArray damaged = contentOf(m_path);

    const MessageLog log;
    QString message;
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QVERIFY(store()->values().isEmpty());
    const QStringList aside = movedAside().filter(QRegularExpression(QStringLiteral("-\\d\\d$")));
    QCOMPARE(aside.size(), 1);
    QVERIFY2(message.contains(aside.first()), qPrintable(message));
    QVERIFY(message.contains(QDate::currentDate().toString(Qt::ISODate)));
    QCOMPARE(log.lines(), QStringList(message));
    QCOMPARE(contentOf(QFileInfo(m_path).dir().filePath(aside.first())), damaged);

    set("k", 6);
    store()->close();
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QVERIFY(message.isEmpty());
    QCOMPARE(get("k"), 6);
}

void TestSettingsDatabase::twoDamagedFilesGetTwoNames()
{
    const MessageLog log;
    for (int i = 0; i < 3; ++i) {
        setContent(m_path, QByteArray(3000, static_cast<char>('a' + i)));
        setContent(m_path + QStringLiteral("-journal"), "no journal");
        QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
        store()->close();
    }
    QCOMPARE(movedAside().filter(QStringLiteral("-journal")).size(), 3);
    QCOMPARE(movedAside().size(), 6);
}

void TestSettingsDatabase::anEmptyFileIsAFreshOne()
{
    setContent(m_path, QByteArray());
    QString message;
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QVERIFY(message.isEmpty());
    QVERIFY(movedAside().isEmpty());
}

void TestSettingsDatabase::aStrayLogIsNoDanger()
{
    makeFileWith("k", 5);
    setContent(m_path + QStringLiteral("-wal"), QByteArray(9000, 'x'));
    QString message;
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QVERIFY(message.isEmpty());
    QCOMPARE(get("k"), 5);
}

void TestSettingsDatabase::aRowThatIsNotWhatItSaysReadsAsTheDefault()
{
    makeFileWith("fine", 5);
    QVERIFY(runSql(m_path, "INSERT INTO settings VALUES('int too large', 'int', 9223372036854775807), "
                           "('int of letters', 'int', 'abc'), ('int of nothing', 'int', ''), "
                           "('int of a fraction', 'int', 1.5), ('int of bytes', 'int', x'00ff'), "
                           "('bool of two', 'bool', 2), ('unknown type', 'float', 1)"));
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    SettingsFunc* const func = SettingsFunc::instance();
    const MessageLog log;
    for (int i = 0; i < 2; ++i) {
        for (const char* key : {"int too large", "int of letters", "int of nothing", "int of a fraction",
                                "int of bytes", "unknown type"})
            QCOMPARE(func->getValue(QLatin1String(key), 42), 42);
        QCOMPARE(func->getValue(QStringLiteral("bool of two"), true), true);
    }
    QCOMPARE(log.lines().size(), 7);
    QCOMPARE(func->getValue(QStringLiteral("fine"), 0), 5);
}

void TestSettingsDatabase::theRestOfTheRowsStays()
{
    makeFileWith("fine", 5);
    QVERIFY(runSql(m_path, "INSERT INTO settings VALUES('odd', 'int', 'abc')"));
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    set("new", 1);
    store()->close();
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    QCOMPARE(store()->values().keys(),
             QStringList({QStringLiteral("fine"), QStringLiteral("new"), QStringLiteral("odd")}));
    QCOMPARE(store()->value(QStringLiteral("odd")).toByteArray(), QByteArray("abc"));
}

void TestSettingsDatabase::aPlaceThatCantBeWrittenGivesOneLine_data()
{
    QTest::addColumn<QString>("place");
    const QString file = m_folder.filePath(QStringLiteral("a file"));
    setContent(file, "x");
    QVERIFY(QDir().mkpath(m_folder.filePath(QStringLiteral("a folder"))));
    const QString fifo = m_folder.filePath(QStringLiteral("a fifo"));
    QVERIFY(::mkfifo(QFile::encodeName(fifo).constData(), 0600) == 0);
    QTest::newRow("below a regular file") << file + QStringLiteral("/below/settings.db");
    QTest::newRow("a folder that nobody can make") << QStringLiteral("/proc/no/settings.db");
    QTest::newRow("a folder itself") << m_folder.filePath(QStringLiteral("a folder"));
    QTest::newRow("a pipe") << fifo;
    QTest::newRow("a device") << QStringLiteral("/dev/null");
}

void TestSettingsDatabase::aPlaceThatCantBeWrittenGivesOneLine()
{
    QFETCH(QString, place);
    const MessageLog log;
    QString message;
    QCOMPARE(store()->open(place, &message), SettingsStore::Opened::Memory);
    QVERIFY2(message.contains(place) && message.contains(QStringLiteral("memory")), qPrintable(message));
    set("k", 3);
    set("l", 4, false);
    QVERIFY(store()->commit());
    QCOMPARE(get("k"), 3);
    QCOMPARE(get("l"), 4);
    store()->close();
    QCOMPARE(log.lines(), QStringList(message));
}

void TestSettingsDatabase::aFolderWithoutPermissionStillGivesItsValues()
{
    makeFileWith("k", 5);
    const QString folder = QFileInfo(m_path).path();
    // Nothing binds root but being somebody else for a while.
    const bool root = ::geteuid() == 0;
    QVERIFY(::chmod(QFile::encodeName(m_folder.path()).constData(), 0755) == 0);
    QVERIFY(::chmod(QFile::encodeName(folder).constData(), 0555) == 0);
    QVERIFY(::chmod(QFile::encodeName(m_path).constData(), 0444) == 0);
    QVERIFY(!root || ::seteuid(nobody) == 0);
    SettingsStore::Opened opened = SettingsStore::Opened::Refused;
    int lines = 0;
    {
        const MessageLog log;
        opened = store()->open(m_path);
        lines = log.lines().size();
    }
    QVERIFY(!root || ::seteuid(0) == 0);
    QVERIFY(::chmod(QFile::encodeName(folder).constData(), 0755) == 0);
    QCOMPARE(opened, SettingsStore::Opened::Memory);
    QCOMPARE(lines, 1);
    QCOMPARE(get("k"), 5);
    set("k", 6);
    QCOMPARE(get("k"), 6);
    QVERIFY(movedAside().isEmpty());
}

void TestSettingsDatabase::aFullDiskLosesNothing()
{
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    set("before", 1);
    // A limit on file size stands in for the full disk: it binds root too.
    const auto previous = std::signal(SIGXFSZ, SIG_IGN);
    rlimit unlimited = {};
    QVERIFY(::getrlimit(RLIMIT_FSIZE, &unlimited) == 0);
    rlimit full = unlimited;
    full.rlim_cur = static_cast<rlim_t>(QFileInfo(m_path + QStringLiteral("-wal")).size());
    QVERIFY(::setrlimit(RLIMIT_FSIZE, &full) == 0);
    QStringList lines;
    bool committed = true;
    {
        const MessageLog log;
        set("during", 2);
        set("during", 3);
        committed = store()->commit();
        lines = log.lines();
    }
    QVERIFY(::setrlimit(RLIMIT_FSIZE, &unlimited) == 0);
    std::signal(SIGXFSZ, previous);
    QVERIFY(!committed);
    QCOMPARE(lines.size(), 1);
    QVERIFY2(lines.first().contains(m_path), qPrintable(lines.first()));
    QCOMPARE(get("before"), 1);
    QCOMPARE(get("during"), 3);

    // With room again, the timer's next try is enough.
    const MessageLog log;
    QTRY_COMPARE_WITH_TIMEOUT(log.count(QStringLiteral("kept again")), 1, patienceMs);
    store()->close();
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    QCOMPARE(get("before"), 1);
    QCOMPARE(get("during"), 3);
}

void TestSettingsDatabase::fileModeIs0600_data()
{
    QTest::addColumn<uint>("mask");
    QTest::newRow("umask 000") << 0000U;
    QTest::newRow("umask 022") << 0022U;
    QTest::newRow("umask 077") << 0077U;
    QTest::newRow("umask 0277") << 0277U;
}

void TestSettingsDatabase::fileModeIs0600()
{
    QFETCH(uint, mask);
    const mode_t before = ::umask(static_cast<mode_t>(mask));
    const SettingsStore::Opened opened = store()->open(m_path);
    set("k", 1);
    ::umask(before);
    QCOMPARE(opened, SettingsStore::Opened::Durable);
    QCOMPARE(modeOf(m_path), 0600U);
    QCOMPARE(modeOf(m_path + QStringLiteral("-wal")), 0600U);
}

void TestSettingsDatabase::aWiderModeIsNarrowed()
{
    makeFileWith("k", 5);
    QVERIFY(::chmod(QFile::encodeName(m_path).constData(), 0644) == 0);
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    QCOMPARE(modeOf(m_path), 0600U);
    QCOMPARE(get("k"), 5);
}

void TestSettingsDatabase::aLinkIsFollowed()
{
    const QString link = m_folder.filePath(QStringLiteral("link.db"));
    makeFileWith("k", 5);
    QVERIFY(QFile::link(m_path, link));
    QCOMPARE(store()->open(link), SettingsStore::Opened::Durable);
    QCOMPARE(get("k"), 5);
    store()->close();
    setContent(m_path, "damaged beyond repair");
    const MessageLog log;
    QCOMPARE(store()->open(link), SettingsStore::Opened::Durable);
    QVERIFY(QFileInfo(link).isSymLink());
    QCOMPARE(movedAside().size(), 1);
}

QTEST_GUILESS_MAIN(TestSettingsDatabase)
#include "tst_settingsdatabase.moc"
