#include "tests/platform/common/settings/storefixture.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {
constexpr uid_t nobody = 65534;
} // namespace

/// The file as a thing of the file system: who holds it, where it can lie, its mode, its being moved aside.
class TestSettingsFile : public StoreFixture
{
    Q_OBJECT
private slots:
    void aSecondProcessIsRefused();
    void aSecondProcessWaitsForOneThatIsEnding();
    void aHolderIsRespectedWhileItHasNoDatabaseOpen();
    void aKilledProcessLeavesNoLock();
    void aProgramThatOnlyLooksIntoTheFileHindersNobody();
    void aProgramThatWritesToTheFileIsWaitedFor();
    void aFileThatAnotherProgramHasLockedStillGivesItsValues();
    void twoDamagedFilesGetTwoNames();
    void anEmptyFileIsAFreshOne();
    void aPlaceThatCantBeWrittenGivesOneLine_data();
    void aPlaceThatCantBeWrittenGivesOneLine();
    void aFolderWithoutPermissionStillGivesItsValues();
    void fileModeIs0600_data();
    void fileModeIs0600();
    void aWiderModeIsNarrowed();
    void aLinkIsFollowed();
};

void TestSettingsFile::aSecondProcessIsRefused()
{
    Child child(m_path, {QStringLiteral("hold")});
    QCOMPARE(child.line(), QByteArray("durable"));
    QCOMPARE(child.line(), QByteArray("held"));
    const MessageLog log;
    QString message;
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Refused);
    QVERIFY2(message.contains(m_path) && message.contains(QStringLiteral("another process")),
             qPrintable(message));
    QCOMPARE(log.lines(), QStringList()); // who asks for the message says it
    QVERIFY(!store()->isDurable());
    QCOMPARE(store()->problem(), message);
    QVERIFY(movedAside().isEmpty());
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Refused);
    QCOMPARE(log.lines(), QStringList(message));
}

void TestSettingsFile::aSecondProcessWaitsForOneThatIsEnding()
{
    Child first(m_path, {QStringLiteral("hold-until-line")});
    QCOMPARE(first.line(), QByteArray("durable"));
    QCOMPARE(first.line(), QByteArray("held"));
    Child second(m_path, {QStringLiteral("hold")});
    QVERIFY(first.say("end"));
    QCOMPARE(second.line(), QByteArray("durable"));
}

void TestSettingsFile::aHolderIsRespectedWhileItHasNoDatabaseOpen()
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

void TestSettingsFile::aKilledProcessLeavesNoLock()
{
    Child child(m_path, {QStringLiteral("hold")});
    QCOMPARE(child.line(), QByteArray("durable"));
    child.kill();
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
}

void TestSettingsFile::aProgramThatOnlyLooksIntoTheFileHindersNobody()
{
    makeFileWith("k", 5);
    Child child(m_path, {QStringLiteral("sql"), QStringLiteral("BEGIN; SELECT * FROM settings")});
    QCOMPARE(child.line(), QByteArray("held"));
    QString message;
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QCOMPARE(message, QString());
    QCOMPARE(get("k"), 5);
    set("k", 6);
    QVERIFY(store()->isDurable());
    store()->close();
    child.kill();
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    QCOMPARE(get("k"), 6);
}

void TestSettingsFile::aProgramThatWritesToTheFileIsWaitedFor()
{
    makeFileWith("k", 5);
    Child child(m_path, {QStringLiteral("sql"), QStringLiteral("BEGIN IMMEDIATE; SELECT * FROM settings")});
    QCOMPARE(child.line(), QByteArray("held"));
    QSignalSpy changes(store(), &SettingsStore::durableChanged);
    QString message;
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QVERIFY2(message.contains(QStringLiteral("tried again")), qPrintable(message));
    QVERIFY(!store()->isDurable());
    QCOMPARE(get("k"), 5);
    set("k", 6);
    QVERIFY(!store()->isDurable());
    const MessageLog log;
    child.kill();
    QTRY_VERIFY_WITH_TIMEOUT(store()->isDurable(), patienceMs);
    QCOMPARE(changes.size(), 1);
    QCOMPARE(changes.first().first().toBool(), true);
    store()->close();
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    QCOMPARE(get("k"), 6);
}

void TestSettingsFile::aFileThatAnotherProgramHasLockedStillGivesItsValues()
{
    makeFileWith("k", 5);
    Child child(m_path,
                {QStringLiteral("sql"),
                 QStringLiteral("PRAGMA locking_mode=EXCLUSIVE; BEGIN EXCLUSIVE; DELETE FROM settings")});
    QCOMPARE(child.line(), QByteArray("held"));
    QString message;
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Memory);
    QVERIFY2(message.contains(QStringLiteral("another program")), qPrintable(message));
    QVERIFY(!store()->isDurable());
    QCOMPARE(get("k"), 5);
}

void TestSettingsFile::twoDamagedFilesGetTwoNames()
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

void TestSettingsFile::anEmptyFileIsAFreshOne()
{
    setContent(m_path, QByteArray());
    QString message;
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QVERIFY(message.isEmpty());
    QVERIFY(movedAside().isEmpty());
}

void TestSettingsFile::aPlaceThatCantBeWrittenGivesOneLine_data()
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

void TestSettingsFile::aPlaceThatCantBeWrittenGivesOneLine()
{
    QFETCH(QString, place);
    const MessageLog log;
    QString message;
    QCOMPARE(store()->open(place, &message), SettingsStore::Opened::Memory);
    QVERIFY2(message.contains(place) && message.contains(QStringLiteral("memory")), qPrintable(message));
    set("k", 3);
    set("l", 4, false);
    QVERIFY(!store()->commit());
    QVERIFY(!store()->isDurable());
    QCOMPARE(store()->problem(), message);
    QCOMPARE(get("k"), 3);
    QCOMPARE(get("l"), 4);
    store()->close();
    QCOMPARE(log.lines(), QStringList());
}

void TestSettingsFile::aFolderWithoutPermissionStillGivesItsValues()
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

void TestSettingsFile::fileModeIs0600_data()
{
    QTest::addColumn<uint>("mask");
    QTest::newRow("umask 000") << 0000U;
    QTest::newRow("umask 022") << 0022U;
    QTest::newRow("umask 077") << 0077U;
    QTest::newRow("umask 0277") << 0277U;
}

void TestSettingsFile::fileModeIs0600()
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

void TestSettingsFile::aWiderModeIsNarrowed()
{
    makeFileWith("k", 5);
    QVERIFY(::chmod(QFile::encodeName(m_path).constData(), 0644) == 0);
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    QCOMPARE(modeOf(m_path), 0600U);
    QCOMPARE(get("k"), 5);
}

void TestSettingsFile::aLinkIsFollowed()
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

QTEST_GUILESS_MAIN(TestSettingsFile)
#include "tst_settingsfile.moc"
