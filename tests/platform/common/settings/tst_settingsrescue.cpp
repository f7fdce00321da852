#include "tests/platform/common/settings/storefixture.h"

/// What is left of a damaged file: its own rows, its log, the last good copy.
class TestSettingsRescue : public StoreFixture
{
    Q_OBJECT
private slots:
    void theLogOfADamagedFileStaysAndIsRead_data();
    void theLogOfADamagedFileStaysAndIsRead();
    void theLastGoodCopyGivesWhatTheFileDoesNot();
    void whatTheFileGivesGoesBeforeTheGoodCopy();
    void rowsOnEitherSideOfADamagedPageAreRead();
    void aFlippedBitCostsNoSettingButItsOwn();
    void aGoodCopyIsWrittenAfterAStart();
    void aGoodCopyIsNotWrittenTwice();
    void aRescuedFileLeavesTheGoodCopyAlone();
    void forgettingEverythingForgetsTheGoodCopy();
    void anEmptiedFileIsFilledFromTheGoodCopy();
    void anEmptiedFileIsFilledFromItsLog();
    void aFileThatWasTakenAwayMeansFactorySettings();
    void aTornFirstWriteIsNoDamage();
    void aDamagedFileThatCantBeReplacedIsReadAllTheSame();

private:
    QString copyPath() const { return m_path + QStringLiteral(".good"); }
    /// A sound file with these settings, and its last good copy.
    void makeFileWithCopy(int count)
    {
        QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
        for (int i = 0; i < count; ++i)
            set(qPrintable(keyOf(i)), i, false);
        store()->close();
        QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
        QVERIFY(store()->keepGoodCopy());
        store()->close();
    }
    static QString keyOf(int number) { return QStringLiteral("Setup_Input_Gain_Type_%1").arg(number); }
    QString message;
};

void TestSettingsRescue::theLogOfADamagedFileStaysAndIsRead_data()
{
    QTest::addColumn<int>("from");
    QTest::newRow("a header that is seen at a glance") << 0;
    QTest::newRow("a page that SQLite has to look at") << 2 * 4096;
}

void TestSettingsRescue::theLogOfADamagedFileStaysAndIsRead()
{
    QFETCH(int, from);
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    SettingsFunc::instance()->setValue(QStringLiteral("text"), QString(), QString(9000, QLatin1Char('t')),
                                       false);
    set("early", 5);
    store()->close();
    {
        Child child(m_path, {QStringLiteral("set"), QStringLiteral("late"), QStringLiteral("6"),
                             QStringLiteral("true")});
        QCOMPARE(child.line(), QByteArray("durable"));
        QCOMPARE(child.line(), QByteArray("written"));
    }
    const QByteArray log = contentOf(m_path + QStringLiteral("-wal"));
    QVERIFY(log.size() > 4096);
    setContent(m_path, contentOf(m_path).replace(from, 16, QByteArray(16, 'x')));

    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QVERIFY(!message.isEmpty());
    const QStringList logs = movedAside().filter(QStringLiteral("-wal"));
    QCOMPARE(logs.size(), 1);
    QCOMPARE(contentOf(QFileInfo(m_path).dir().filePath(logs.first())), log);
    QCOMPARE(get("early"), 5);
    QCOMPARE(get("late"), 6);
}

void TestSettingsRescue::theLastGoodCopyGivesWhatTheFileDoesNot()
{
    makeFileWithCopy(3);
    QCOMPARE(modeOf(copyPath()), 0600U);
    setContent(m_path, QByteArray(9000, 'x'));
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QVERIFY2(
        message.contains(QStringLiteral("0 of them could be read there, 3 come from the last good copy")),
        qPrintable(message));
    store()->close();
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QCOMPARE(message, QString());
    for (int i = 0; i < 3; ++i)
        QCOMPARE(get(qPrintable(keyOf(i))), i);
}

void TestSettingsRescue::whatTheFileGivesGoesBeforeTheGoodCopy()
{
    makeFileWithCopy(3);
    makeFileWith(qPrintable(keyOf(1)), 77);
    setContent(m_path, contentOf(m_path).replace(0, 100, QByteArray(100, '\0')));
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QVERIFY2(message.contains(QStringLiteral("3 of them could be read there, 0 come")), qPrintable(message));
    QCOMPARE(get(qPrintable(keyOf(1))), 77);
}

void TestSettingsRescue::rowsOnEitherSideOfADamagedPageAreRead()
{
    constexpr int count = 400;
    constexpr int pageSize = 4096;
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    for (int i = 1000; i < 1000 + count; ++i)
        set(qPrintable(keyOf(i)), i, false);
    store()->close();
    // The page of rows in the middle: the first two pages are the schema's and the one above the rows.
    QByteArray content = contentOf(m_path);
    int damaged = 0;
    for (int page = 2; page * pageSize < content.size(); ++page) {
        if (content.mid(page * pageSize, pageSize).contains(keyOf(1000 + count / 2).toLatin1()))
            damaged = page;
    }
    QVERIFY(damaged > 2);
    setContent(m_path, content.replace(damaged * pageSize, 8, QByteArray(8, 'x')));
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QVERIFY(store()->values().size() < count);
    QVERIFY2(store()->values().size() > count / 2, qPrintable(message));
    QCOMPARE(get(qPrintable(keyOf(1000))), 1000);
    QCOMPARE(get(qPrintable(keyOf(1000 + count - 1))), 1000 + count - 1);
}

void TestSettingsRescue::aFlippedBitCostsNoSettingButItsOwn()
{
    constexpr int count = 150; // three pages of rows under a page of their own
    makeFileWithCopy(count);
    const QByteArray sound = contentOf(m_path);
    const int bits = sound.size() * 8;
    constexpr int tries = 200;
    const MessageLog hushed;
    int damaged = 0;
    for (int i = 0; i < tries; ++i) {
        const int bit = static_cast<int>(static_cast<qint64>(bits) * i / tries) + i % 8;
        QByteArray content = sound;
        content[bit / 8] = static_cast<char>(content[bit / 8] ^ (1 << bit % 8));
        setContent(m_path, content);
        QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
        damaged += message.isEmpty() ? 0 : 1;
        int lost = 0;
        for (int key = 0; key < count; ++key)
            lost += get(qPrintable(keyOf(key))) == key ? 0 : 1;
        QVERIFY2(lost <= 1,
                 qPrintable(QStringLiteral("bit %1: %2 lost; %3").arg(bit).arg(lost).arg(message)));
        store()->close();
        for (const QString& name : movedAside())
            QVERIFY(QFileInfo(m_path).dir().remove(name));
    }
    QVERIFY(damaged > 0);
}

void TestSettingsRescue::aGoodCopyIsWrittenAfterAStart()
{
    makeFileWith("k", 5);
    QVERIFY(!QFileInfo::exists(copyPath()));
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    QVERIFY(!QFileInfo::exists(copyPath()));
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(copyPath()), patienceMs);
    store()->close();
    QCOMPARE(store()->open(copyPath()), SettingsStore::Opened::Durable);
    QCOMPARE(get("k"), 5);
}

void TestSettingsRescue::aGoodCopyIsNotWrittenTwice()
{
    makeFileWithCopy(3);
    const auto inodeOf = [](const QString& path) {
        struct stat status = {};
        return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_ino : 0;
    };
    const ino_t before = inodeOf(copyPath());
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    QVERIFY(store()->keepGoodCopy());
    QCOMPARE(inodeOf(copyPath()), before);
    set("new", 1);
    store()->close();
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    QVERIFY(store()->keepGoodCopy());
    QVERIFY(inodeOf(copyPath()) != before);
    QString reason;
    QVERIFY(store()->openReadOnly(copyPath(), &reason));
    QCOMPARE(store()->values().size(), 4);
}

void TestSettingsRescue::aRescuedFileLeavesTheGoodCopyAlone()
{
    makeFileWithCopy(3);
    const QByteArray copy = contentOf(copyPath());
    makeFileWith(qPrintable(keyOf(1)), 77);
    setContent(m_path, contentOf(m_path).replace(0, 100, QByteArray(100, '\0')));
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QCOMPARE(get(qPrintable(keyOf(1))), 77);
    QVERIFY(store()->keepGoodCopy());
    QCOMPARE(contentOf(copyPath()), copy);
}

void TestSettingsRescue::forgettingEverythingForgetsTheGoodCopy()
{
    makeFileWithCopy(3);
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    store()->clear();
    QVERIFY(!QFileInfo::exists(copyPath()));
    store()->close();
    setContent(m_path, "damaged");
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QVERIFY2(message.contains(QStringLiteral("defaults")), qPrintable(message));
    QVERIFY(store()->values().isEmpty());
}

void TestSettingsRescue::anEmptiedFileIsFilledFromTheGoodCopy()
{
    makeFileWithCopy(3);
    setContent(m_path, QByteArray());
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QVERIFY(!message.isEmpty());
    QCOMPARE(store()->values().size(), 3);
}

void TestSettingsRescue::anEmptiedFileIsFilledFromItsLog()
{
    {
        Child child(m_path, {QStringLiteral("set"), QStringLiteral("k"), QStringLiteral("6"),
                             QStringLiteral("true")});
        QCOMPARE(child.line(), QByteArray("durable"));
        QCOMPARE(child.line(), QByteArray("written"));
    }
    setContent(m_path, QByteArray());
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QVERIFY(!message.isEmpty());
    QCOMPARE(get("k"), 6);
}

void TestSettingsRescue::aFileThatWasTakenAwayMeansFactorySettings()
{
    makeFileWithCopy(3);
    QVERIFY(QFile::remove(m_path));
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QCOMPARE(message, QString());
    QVERIFY(store()->values().isEmpty());
}

void TestSettingsRescue::aTornFirstWriteIsNoDamage()
{
    // The head of a journal of a file that had no pages before: the power failed while its first was written.
    QByteArray journal = QByteArray::fromHex("d9d505f920a163d7"
                                             "00000000123456780000000000000200"
                                             "00001000");
    journal.append(QByteArray(512 - journal.size(), '\0'));
    setContent(m_path, QByteArray("SQLite form").leftJustified(1024, '\0'));
    setContent(m_path + QStringLiteral("-journal"), journal);
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QCOMPARE(message, QString());
    QVERIFY(movedAside().isEmpty());
    set("k", 1);
    store()->close();
    QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    QCOMPARE(get("k"), 1);
}

void TestSettingsRescue::aDamagedFileThatCantBeReplacedIsReadAllTheSame()
{
    makeFileWithCopy(3);
    setContent(m_path, contentOf(m_path).replace(0, 100, QByteArray(100, '\0')));
    // Where the successor would be made stands a folder that isn't empty.
    QVERIFY(QDir().mkpath(m_path + QStringLiteral(".new/full")));
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Memory);
    QVERIFY2(message.contains(QStringLiteral("not moved aside")), qPrintable(message));
    QVERIFY(!store()->isDurable());
    QCOMPARE(store()->values().size(), 3);
    QVERIFY(movedAside().isEmpty());
}

QTEST_GUILESS_MAIN(TestSettingsRescue)
#include "tst_settingsrescue.moc"
