#include "tests/platform/common/settings/storefixture.h"

#include <functional>
#include <sys/resource.h>

using Damage = std::function<QByteArray(QByteArray)>;
Q_DECLARE_METATYPE(Damage)

/// What is in the file: that it survives, and what becomes of a damaged one.
class TestSettingsDatabase : public StoreFixture
{
    Q_OBJECT
private slots:
    void aCommittedWriteSurvivesKill();
    void aDelayedWriteIsDurableWithinTwoSeconds();
    void aDelayedWriteGoesWithTheNextCommit();
    void anOrderlyExitKeepsDelayedWrites();
    void killedBetweenManyWritesTheFileIsWhole();
    void aDamagedFileIsMovedAside_data();
    void aDamagedFileIsMovedAside();
    void aStrayLogIsNoDanger();
    void aRowThatIsNotWhatItSaysReadsAsTheDefault();
    void theRestOfTheRowsStays();
    void aFullDiskLosesNothing();
    void aDiskThatIsFullAtTheStartIsToldAndWaitedFor();
};

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

void TestSettingsDatabase::aDamagedFileIsMovedAside_data()
{
    QTest::addColumn<Damage>("damage");
    QTest::addColumn<QByteArray>("sql");
    QTest::addColumn<bool>("readable");
    const auto row = [](const char* name, const Damage& damage) {
        QTest::newRow(name) << damage << QByteArray() << false;
    };
    const auto readableRow = [](const char* name, const Damage& damage) {
        QTest::newRow(name) << damage << QByteArray() << true;
    };
    const auto sqlRow = [](const char* name, const char* sql, bool readable) {
        QTest::newRow(name) << Damage([](QByteArray content) { return content; }) << QByteArray(sql)
                            << readable;
    };
    row("a text file", [](const QByteArray&) { return QByteArray(5000, 'x'); });
    row("ten bytes", [](const QByteArray&) { return QByteArray("0123456789"); });
    readableRow("a zeroed header",
                [](QByteArray content) { return content.replace(0, 100, QByteArray(100, '\0')); });
    row("all zeroes", [](const QByteArray& content) { return QByteArray(content.size(), '\0'); });
    row("cut in the middle of a page", [](const QByteArray& content) { return content.left(4096 + 17); });
    row("one page left", [](const QByteArray& content) { return content.left(4096); });
    row("a page of noise", [](QByteArray content) {
        QByteArray noise(4096, '\0');
        for (int i = 0; i < noise.size(); ++i)
            noise[i] = static_cast<char>(i * 7919 % 251);
        return content.replace(4096, 4096, noise);
    });
    readableRow("a format that can only be read",
                [](QByteArray content) { return content.replace(18, 1, "\3"); });
    readableRow("a format that can't be read",
                [](QByteArray content) { return content.replace(18, 2, "\3\3"); });
    readableRow("a schema of noise",
                [](QByteArray content) { return content.replace(3900, 196, QByteArray(196, 'x')); });
    sqlRow("a database of another kind", "DROP TABLE settings; CREATE TABLE other(a, b)", false);
    sqlRow("a table of other columns", "DROP TABLE settings; CREATE TABLE settings(key TEXT, value TEXT)",
           false);
    sqlRow("a later version", "PRAGMA user_version=2", true);
    sqlRow("another application's", "PRAGMA application_id=77", true);
    sqlRow("a trigger that nobody made here",
           "CREATE TRIGGER t AFTER INSERT ON settings BEGIN DELETE FROM settings; END", true);
}

void TestSettingsDatabase::aDamagedFileIsMovedAside()
{
    QFETCH(Damage, damage);
    QFETCH(QByteArray, sql);
    QFETCH(bool, readable);
    makeFileWith("k", 5);
    if (!sql.isEmpty())
        QVERIFY(runSql(m_path, sql));
    setContent(m_path, damage(contentOf(m_path)));
    const QByteArray damaged = contentOf(m_path);

    const MessageLog log;
    QString message;
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QCOMPARE(store()->values().isEmpty(), !readable);
    QCOMPARE(get("k"), readable ? 5 : -1);
    const QStringList aside = movedAside().filter(QRegularExpression(QStringLiteral("-\\d\\d$")));
    QCOMPARE(aside.size(), 1);
    QVERIFY2(message.contains(aside.first()), qPrintable(message));
    QVERIFY(message.contains(QDate::currentDate().toString(Qt::ISODate)));
    QCOMPARE(log.lines(), QStringList());
    QVERIFY(store()->isDurable());
    QCOMPARE(contentOf(QFileInfo(m_path).dir().filePath(aside.first())), damaged);

    set("k", 6);
    store()->close();
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QVERIFY(message.isEmpty());
    QCOMPARE(get("k"), 6);
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
    QSignalSpy durable(store(), &SettingsStore::durableChanged);
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
    QVERIFY(!store()->isDurable());
    QCOMPARE(durable.size(), 1);
    QCOMPARE(QStringList(store()->problem()), lines);
    QVERIFY2(lines.first().contains(m_path), qPrintable(lines.first()));
    QCOMPARE(get("before"), 1);
    QCOMPARE(get("during"), 3);

    // With room again, the timer's next try is enough.
    const MessageLog log;
    QTRY_COMPARE_WITH_TIMEOUT(log.count(QStringLiteral("kept again")), 1, patienceMs);
    QVERIFY(store()->isDurable());
    QCOMPARE(store()->problem(), QString());
    QCOMPARE(durable.size(), 2);
    store()->close();
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    QCOMPARE(get("before"), 1);
    QCOMPARE(get("during"), 3);
}

void TestSettingsDatabase::aDiskThatIsFullAtTheStartIsToldAndWaitedFor()
{
    makeFileWith("k", 5);
    const auto previous = std::signal(SIGXFSZ, SIG_IGN);
    rlimit unlimited = {};
    QVERIFY(::getrlimit(RLIMIT_FSIZE, &unlimited) == 0);
    rlimit full = unlimited;
    full.rlim_cur = 0;
    QVERIFY(::setrlimit(RLIMIT_FSIZE, &full) == 0);
    QString message;
    const SettingsStore::Opened opened = store()->open(m_path, &message);
    const bool durable = store()->isDurable();
    set("k", 6, false);
    QVERIFY(::setrlimit(RLIMIT_FSIZE, &unlimited) == 0);
    std::signal(SIGXFSZ, previous);
    QCOMPARE(opened, SettingsStore::Opened::Durable);
    QVERIFY(!durable);
    QVERIFY2(message.contains(QStringLiteral("tried again")), qPrintable(message));
    const MessageLog log;
    QTRY_VERIFY_WITH_TIMEOUT(store()->isDurable(), patienceMs);
    store()->close();
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    QCOMPARE(get("k"), 6);
}

QTEST_GUILESS_MAIN(TestSettingsDatabase)
#include "tst_settingsdatabase.moc"
