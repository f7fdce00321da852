#include "tests/platform/common/settings/storefixture.h"

#include <cerrno>
#include <cstdarg>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

// A file system that lacks what the store asks of it: these stand before the C library's functions, for the
// store and for SQLite, and fail when a test says so.
namespace {
bool noFlock = false;
bool noRecordLocks = false;
bool noModes = false;
QByteArray readOnlyFile; ///< for SQLite, which opens files by the name with 64

int refuse(int error)
{
    errno = error;
    return -1;
}

int controlFile(int descriptor, int command, void* argument)
{
    const bool locks = command == F_SETLK || command == F_SETLKW || command == F_GETLK;
    if (locks && noRecordLocks)
        return refuse(ENOLCK);
    return static_cast<int>(::syscall(SYS_fcntl, descriptor, command, argument));
}
} // namespace

#pragma GCC visibility push(default)
extern "C" {

int flock(int descriptor, int operation) noexcept
{
    return noFlock ? refuse(ENOLCK) : static_cast<int>(::syscall(SYS_flock, descriptor, operation));
}

int fcntl(int descriptor, int command, ...)
{
    va_list arguments;
    va_start(arguments, command);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    return controlFile(descriptor, command, argument);
}

int fcntl64(int descriptor, int command, ...)
{
    va_list arguments;
    va_start(arguments, command);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    return controlFile(descriptor, command, argument);
}

int open64(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (readOnlyFile == path && (flags & O_ACCMODE) != O_RDONLY)
        return refuse(EROFS);
    return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

int fchmod(int descriptor, mode_t mode) noexcept
{
    return noModes ? refuse(EPERM) : static_cast<int>(::syscall(SYS_fchmod, descriptor, mode));
}
}
#pragma GCC visibility pop

/// A place that lacks something: the unit starts, keeps what can be kept, and says what is missing.
class TestSettingsPlace : public StoreFixture
{
    Q_OBJECT
private slots:
    void everyPlaceThatCanBeWrittenIsKept_data();
    void everyPlaceThatCanBeWrittenIsKept();
    void aFileThatCanOnlyBeReadIsReadAndNotCalledDurable();
    void damageIsRepairedWithoutLocks();
    void aSecondUnitIsRefusedByEitherKindOfLock_data();
    void aSecondUnitIsRefusedByEitherKindOfLock();
};

void TestSettingsPlace::everyPlaceThatCanBeWrittenIsKept_data()
{
    QTest::addColumn<bool>("flocks");
    QTest::addColumn<bool>("recordLocks");
    QTest::addColumn<bool>("modes");
    QTest::addColumn<QString>("says");
    QTest::newRow("all") << true << true << true << QString();
    QTest::newRow("no flock()") << false << true << true << QString();
    QTest::newRow("no locks of SQLite's kind") << true << false << true << QString();
    QTest::newRow("no locks at all") << false << false << true << QStringLiteral("has no locks");
    QTest::newRow("no modes") << true << true << false << QStringLiteral("its mode 0644 can't be changed");
    QTest::newRow("nothing") << false << false << false << QStringLiteral("has no locks");
}

void TestSettingsPlace::everyPlaceThatCanBeWrittenIsKept()
{
    QFETCH(bool, flocks);
    QFETCH(bool, recordLocks);
    QFETCH(bool, modes);
    QFETCH(QString, says);
    // A mode that the store would narrow.
    setContent(m_path, QByteArray());
    QVERIFY(::chmod(QFile::encodeName(m_path).constData(), 0644) == 0);
    noFlock = !flocks;
    noRecordLocks = !recordLocks;
    noModes = !modes;
    QString message;
    for (int start = 0; start < 3; ++start) {
        QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
        if (!modes || start == 0)
            QVERIFY2(message.contains(says) && message.isEmpty() == says.isEmpty(), qPrintable(message));
        QVERIFY(store()->isDurable());
        QCOMPARE(get("k"), start == 0 ? -1 : start - 1);
        set("k", start);
        QVERIFY(store()->isDurable());
        store()->close();
    }
    noFlock = noRecordLocks = noModes = false;
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    QCOMPARE(get("k"), 2);
}

void TestSettingsPlace::aFileThatCanOnlyBeReadIsReadAndNotCalledDurable()
{
    makeFileWith("k", 5);
    // Without a log, which SQLite would have to write to even for reading.
    QVERIFY(runSql(m_path, "PRAGMA journal_mode=DELETE"));
    readOnlyFile = QFile::encodeName(m_path);
    QString message;
    const SettingsStore::Opened opened = store()->open(m_path, &message);
    readOnlyFile.clear();
    QCOMPARE(opened, SettingsStore::Opened::Memory);
    QVERIFY2(message.contains(QStringLiteral("it can only be read")), qPrintable(message));
    QVERIFY(!store()->isDurable() && !store()->commit());
    QCOMPARE(get("k"), 5);
    QVERIFY(movedAside().isEmpty());
}

void TestSettingsPlace::damageIsRepairedWithoutLocks()
{
    makeFileWith("k", 5);
    setContent(m_path, contentOf(m_path).replace(0, 100, QByteArray(100, '\0')));
    QString message;
    noFlock = noRecordLocks = true;
    const SettingsStore::Opened opened = store()->open(m_path, &message);
    noFlock = noRecordLocks = false;
    QCOMPARE(opened, SettingsStore::Opened::Durable);
    QCOMPARE(get("k"), 5);
    QCOMPARE(movedAside().size(), 1);
}

void TestSettingsPlace::aSecondUnitIsRefusedByEitherKindOfLock_data()
{
    QTest::addColumn<bool>("flocks");
    QTest::newRow("flock()") << true;
    QTest::newRow("SQLite's") << false;
}

void TestSettingsPlace::aSecondUnitIsRefusedByEitherKindOfLock()
{
    QFETCH(bool, flocks);
    Child child(m_path, {QStringLiteral("hold")});
    QCOMPARE(child.line(), QByteArray("durable"));
    noFlock = !flocks;
    QString message;
    const SettingsStore::Opened opened = store()->open(m_path, &message);
    noFlock = false;
    QCOMPARE(opened, SettingsStore::Opened::Refused);
}

QTEST_GUILESS_MAIN(TestSettingsPlace)
#include "tst_settingsplace.moc"
