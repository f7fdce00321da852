#include "common/settings.h"
#include "platform/common/framework/journal.h"
#include "platform/common/settings/settingsstore.h"
#include "tests/support/messagelog.h"

#include <QtTest>

#include <limits>

using mem::SettingsExe;
using mem::SettingsFunc;
using mem::SettingsStore;

/// What pages and hosts see of the store; how it lies on the disk is tst_settingsdatabase's.
class TestSettingsStore : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup() { store()->close(); }
    void defaultPathFollowsXdgDataHome();
    void worksFromMemoryBeforeItIsOpened();
    void anAbsentKeyReadsAsTheDefault();
    void valuesKeepTheirTypeAcrossRestart_data();
    void valuesKeepTheirTypeAcrossRestart();
    void anotherTypeReadsAsTheDefaultAndIsLoggedOnce_data();
    void anotherTypeReadsAsTheDefaultAndIsLoggedOnce();
    void aWriteEndsTheComplaint();
    void refusesWhatIsNoSetting();
    void bothFacesReachTheSameStore();
    void changesAreToldOnceAndOnlyWhenReal();
    void anEditIsToldAfterItsChangeAndIsDurable();
    void everyWriteIsToldButARefusedOne();
    void openingTellsWhatIsDifferent();
    void openingReadOnlyLeavesTheFileAlone();
    void openingReadOnlyWithoutAFileGivesTheFactorySettings();
    void whatCantBeReadLeavesTheStoreAsItWas();
    void closingKeepsTheValuesReadable();
    void removingAKeyLasts();
    void factorySettingsForgetEverything();
    void readsAndWritesAreReported();

private:
    QTemporaryDir m_folder;
    QString m_path;

    SettingsStore* store() { return SettingsStore::instance(); }
    SettingsFunc* func() { return SettingsFunc::instance(); }
    void restart()
    {
        store()->close();
        QCOMPARE(store()->open(m_path), SettingsStore::Opened::Durable);
    }
};

void TestSettingsStore::init()
{
    static int number = 0;
    m_path = m_folder.filePath(QStringLiteral("%1/settings.db").arg(++number));
    QString message = QStringLiteral("untouched");
    QCOMPARE(store()->open(m_path, &message), SettingsStore::Opened::Durable);
    QVERIFY(message.isEmpty());
    QVERIFY(store()->values().isEmpty());
}

void TestSettingsStore::defaultPathFollowsXdgDataHome()
{
    const QByteArray before = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", m_folder.path().toUtf8());
    const QString path = SettingsStore::defaultPath();
    const bool set = !before.isEmpty();
    set ? qputenv("XDG_DATA_HOME", before) : qunsetenv("XDG_DATA_HOME");
    QCOMPARE(path, m_folder.path() + QStringLiteral("/audiosetting/settings.db"));
}

void TestSettingsStore::worksFromMemoryBeforeItIsOpened()
{
    store()->close();
    QVERIFY(!store()->isDurable());
    func()->setValue(QStringLiteral("k"), 0, 5, true);
    QCOMPARE(func()->getValue(QStringLiteral("k"), 0), 5);
    QVERIFY(!store()->commit());
    QVERIFY(!store()->problem().isEmpty());
}

void TestSettingsStore::anAbsentKeyReadsAsTheDefault()
{
    QCOMPARE(func()->getValue(QStringLiteral("k"), 25), 25);
    QCOMPARE(func()->getValue(QStringLiteral("k"), true), true);
    QCOMPARE(func()->getValue(QStringLiteral("k"), QStringLiteral("0;0")), QStringLiteral("0;0"));
    QVERIFY(!store()->value(QStringLiteral("k")).isValid());
}

void TestSettingsStore::valuesKeepTheirTypeAcrossRestart_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("zero") << QVariant(0);
    QTest::newRow("largest int") << QVariant(std::numeric_limits<int>::max());
    QTest::newRow("smallest int") << QVariant(std::numeric_limits<int>::min());
    QTest::newRow("one is no bool") << QVariant(1);
    QTest::newRow("true") << QVariant(true);
    QTest::newRow("false") << QVariant(false);
    QTest::newRow("empty text") << QVariant(QString(QLatin1String("")));
    QTest::newRow("digits stay text") << QVariant(QStringLiteral("42"));
    QTest::newRow("serialised map") << QVariant(QStringLiteral("0;0;1;0;2;6"));
    QTest::newRow("every script") << QVariant(QString::fromUtf8("Größe Размер 大きさ حجم 😀"));
    QTest::newRow("quotes and line ends") << QVariant(QStringLiteral("'; DROP TABLE settings; --\n\"\r\n"));
    QTest::newRow("NUL inside") << QVariant(QString::fromLatin1("a\0b", 3));
    QTest::newRow("a mebibyte of text") << QVariant(QString(1 << 20, QLatin1Char('x')));
}

void TestSettingsStore::valuesKeepTheirTypeAcrossRestart()
{
    QFETCH(QVariant, value);
    const QString key = QStringLiteral("k");
    func()->setValue(key, QVariant(), value, true);
    QVERIFY(store()->value(key) == value && store()->value(key).type() == value.type());
    restart();
    QCOMPARE(store()->value(key).type(), value.type());
    QVERIFY(store()->value(key) == value);
}

void TestSettingsStore::anotherTypeReadsAsTheDefaultAndIsLoggedOnce_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<QVariant>("defaultValue");
    QTest::newRow("text where an int is expected") << QVariant(QStringLiteral("7")) << QVariant(3);
    QTest::newRow("text where a bool is expected") << QVariant(QStringLiteral("true")) << QVariant(false);
    QTest::newRow("bool where an int is expected") << QVariant(true) << QVariant(3);
    QTest::newRow("int where a bool is expected") << QVariant(1) << QVariant(false);
    QTest::newRow("int where text is expected") << QVariant(5) << QVariant(QStringLiteral("x"));
}

void TestSettingsStore::anotherTypeReadsAsTheDefaultAndIsLoggedOnce()
{
    QFETCH(QVariant, stored);
    QFETCH(QVariant, defaultValue);
    const QString key = QStringLiteral("someKey");
    func()->setValue(key, stored, stored, true);
    const MessageLog log;
    for (int i = 0; i < 3; ++i) {
        switch (static_cast<QMetaType::Type>(defaultValue.type())) {
        case QMetaType::Int:
            QCOMPARE(func()->getValue(key, defaultValue.toInt()), defaultValue.toInt());
            break;
        case QMetaType::Bool:
            QCOMPARE(func()->getValue(key, defaultValue.toBool()), defaultValue.toBool());
            break;
        default:
            QCOMPARE(func()->getValue(key, defaultValue.toString()), defaultValue.toString());
        }
    }
    QCOMPARE(log.lines().size(), 1);
    QCOMPARE(log.count(key), 1);
    // What is stored stays until it is written.
    QCOMPARE(store()->value(key).type(), stored.type());
}

void TestSettingsStore::aWriteEndsTheComplaint()
{
    const QString key = QStringLiteral("k");
    const MessageLog log;
    func()->setValue(key, 0, QStringLiteral("bad"), true);
    QCOMPARE(func()->getValue(key, 3), 3);
    func()->setValue(key, 0, 4, true);
    QCOMPARE(func()->getValue(key, 3), 4);
    func()->setValue(key, 0, QStringLiteral("bad again"), true);
    QCOMPARE(func()->getValue(key, 3), 3);
    QCOMPARE(log.lines().size(), 2);
}

void TestSettingsStore::refusesWhatIsNoSetting()
{
    const MessageLog log;
    func()->setValue(QStringLiteral("k"), 0, 1, true);
    QVERIFY(!store()->setValue(QStringLiteral("k"), 1.5, true));
    QVERIFY(!store()->setValue(QStringLiteral("k"), QVariant(), true));
    QVERIFY(!store()->setValue(QStringLiteral("k"), QStringList({QStringLiteral("a")}), true));
    QVERIFY(!store()->setValue(QStringLiteral("k"), QVariant::fromValue<qlonglong>(1), true));
    QVERIFY(!store()->setValue(QString(), 1, true));
    QCOMPARE(log.count(QStringLiteral("refused")), 5);
    QCOMPARE(store()->values().size(), 1);
    QCOMPARE(func()->getValue(QStringLiteral("k"), 0), 1);
}

void TestSettingsStore::bothFacesReachTheSameStore()
{
    QObject page;
    auto* const exe = new SettingsExe(&page);
    QCOMPARE(exe->parent(), &page);
    exe->setValue(QStringLiteral("i"), 0, 11, true);
    QCOMPARE(func()->getValue(QStringLiteral("i"), 0), 11);
    func()->setValue(QStringLiteral("b"), false, true, true);
    QCOMPARE(exe->getValue(QStringLiteral("b"), false), true);
    QCOMPARE(SettingsExe(nullptr).getValue(QStringLiteral("i"), 0), 11);
}

void TestSettingsStore::changesAreToldOnceAndOnlyWhenReal()
{
    QSignalSpy changes(store(), &SettingsStore::valueChanged);
    func()->setValue(QStringLiteral("k"), 0, 1, true);
    func()->setValue(QStringLiteral("k"), 0, 1, false);
    QCOMPARE(changes.size(), 1);
    func()->setValue(QStringLiteral("k"), 0, true, false); // another type is a change
    QCOMPARE(changes.size(), 2);
    QCOMPARE(changes.last().at(0).toString(), QStringLiteral("k"));
    QCOMPARE(changes.last().at(1).value<QVariant>(), QVariant(true));
    store()->remove(QStringLiteral("k"));
    store()->remove(QStringLiteral("k"));
    QCOMPARE(changes.size(), 3);
    QVERIFY(!changes.last().at(1).value<QVariant>().isValid());
}

void TestSettingsStore::anEditIsToldAfterItsChangeAndIsDurable()
{
    QStringList told;
    const QObject listener;
    connect(store(), &SettingsStore::valueChanged, &listener,
            [&told](const QString& key, const QVariant& value) {
                told << key + QLatin1Char('=') + value.toString();
            });
    connect(store(), &SettingsStore::edited, &listener, [&told](const QString& key) { told << key; });
    QVERIFY(store()->edit(QStringLiteral("k"), 1));
    QCOMPARE(told, QStringList({QStringLiteral("k=1"), QStringLiteral("k")}));
    // An owner may have gone on without keeping it: the same value is an edit, too.
    told.clear();
    QVERIFY(store()->edit(QStringLiteral("k"), 1));
    QCOMPARE(told, QStringList({QStringLiteral("k")}));
    told.clear();
    QVERIFY(!store()->edit(QStringLiteral("k"), 1.5));
    func()->setValue(QStringLiteral("other"), 0, 2, true);
    QCOMPARE(told, QStringList({QStringLiteral("other=2")}));
    told.clear();
    QVERIFY(store()->edit(QStringLiteral("other"), QVariant()));
    QCOMPARE(told, QStringList({QStringLiteral("other="), QStringLiteral("other")}));
    // Durable when the call returns, either way: a second view of the file as it lies there.
    const QString copy = m_path + QStringLiteral(".copy");
    QVERIFY(QFile::copy(m_path, copy));
    QFile::copy(m_path + QStringLiteral("-wal"), copy + QStringLiteral("-wal"));
    store()->close();
    QCOMPARE(store()->open(copy), SettingsStore::Opened::Durable);
    QCOMPARE(store()->values().keys(), QStringList({QStringLiteral("k")}));
}

void TestSettingsStore::everyWriteIsToldButARefusedOne()
{
    QSignalSpy written(store(), &SettingsStore::written);
    store()->setValue("page", 3, false);
    store()->setValue("page", 3, true);
    store()->edit("page", 4);
    QCOMPARE(written.count(), 3);
    QCOMPARE(written.last().first().toString(), QStringLiteral("page"));
    QVERIFY(!store()->setValue("page", 0.5, true));
    store()->remove("page");
    QCOMPARE(written.count(), 3);
}

void TestSettingsStore::openingTellsWhatIsDifferent()
{
    func()->setValue(QStringLiteral("same"), 0, 1, true);
    func()->setValue(QStringLiteral("other"), 0, 1, true);
    store()->close();
    func()->setValue(QStringLiteral("other"), 0, 2, true);
    func()->setValue(QStringLiteral("gone"), 0, 3, true);
    QSignalSpy changes(store(), &SettingsStore::valueChanged);
    restart();
    QStringList keys;
    for (const QList<QVariant>& change : changes)
        keys.append(change.at(0).toString());
    QCOMPARE(keys, QStringList({QStringLiteral("gone"), QStringLiteral("other")}));
    QCOMPARE(func()->getValue(QStringLiteral("other"), 0), 1);
}

void TestSettingsStore::openingReadOnlyLeavesTheFileAlone()
{
    func()->setValue(QStringLiteral("k"), 0, 1, true);
    const QString copy = m_path + QStringLiteral(".copy");
    QVERIFY(QFile::copy(m_path, copy));
    QVERIFY(QFile::copy(m_path + QStringLiteral("-wal"), copy + QStringLiteral("-wal")));
    QVERIFY(QFile::setPermissions(copy + QStringLiteral("-wal"), QFile::ReadOwner));
    QVERIFY(QFile::setPermissions(copy, QFile::ReadOwner));
    store()->clear();
    const QDir folder = QFileInfo(copy).dir();

    QString reason;
    QVERIFY2(store()->openReadOnly(copy, &reason), qPrintable(reason));
    QCOMPARE(store()->path(), copy);
    QVERIFY(!store()->isDurable() && !store()->commit());
    // From the log beside it, which had not been brought into the file.
    QCOMPARE(func()->getValue(QStringLiteral("k"), 0), 1);
    func()->setValue(QStringLiteral("k"), 0, 2, true);
    QCOMPARE(func()->getValue(QStringLiteral("k"), 0), 2);
    store()->close();
    QVERIFY(store()->openReadOnly(copy, &reason));
    QCOMPARE(func()->getValue(QStringLiteral("k"), 0), 1);
    QCOMPARE(folder.entryList({QStringLiteral("*.copy*")}, QDir::Files).size(), 2);
}

void TestSettingsStore::openingReadOnlyWithoutAFileGivesTheFactorySettings()
{
    func()->setValue(QStringLiteral("k"), 0, 1, true);
    const QByteArray before = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", m_folder.filePath(QStringLiteral("nobody's")).toUtf8());
    QString reason;
    const bool opened = store()->openReadOnly(QString(), &reason);
    const bool made = QFileInfo::exists(m_folder.filePath(QStringLiteral("nobody's")));
    before.isEmpty() ? qunsetenv("XDG_DATA_HOME") : qputenv("XDG_DATA_HOME", before);
    QVERIFY2(opened, qPrintable(reason));
    QVERIFY(store()->values().isEmpty());
    QVERIFY(!made);
}

void TestSettingsStore::whatCantBeReadLeavesTheStoreAsItWas()
{
    func()->setValue(QStringLiteral("k"), 0, 1, true);
    QFile text(m_folder.filePath(QStringLiteral("text")));
    QVERIFY(text.open(QIODevice::WriteOnly) && text.write("no settings at all") > 0);
    text.close();
    for (const QString& path :
         {text.fileName(), m_folder.path(), m_folder.filePath(QStringLiteral("gone"))}) {
        QString reason;
        QVERIFY(!store()->openReadOnly(path, &reason));
        QVERIFY(!reason.isEmpty());
        QCOMPARE(store()->path(), m_path);
        QVERIFY(store()->isDurable());
        QCOMPARE(func()->getValue(QStringLiteral("k"), 0), 1);
    }
}

void TestSettingsStore::closingKeepsTheValuesReadable()
{
    func()->setValue(QStringLiteral("k"), 0, 1, false);
    store()->close();
    QVERIFY(!store()->isDurable());
    QCOMPARE(func()->getValue(QStringLiteral("k"), 0), 1);
    restart();
    QCOMPARE(func()->getValue(QStringLiteral("k"), 0), 1);
}

void TestSettingsStore::removingAKeyLasts()
{
    func()->setValue(QStringLiteral("a"), 0, 1, true);
    func()->setValue(QStringLiteral("b"), 0, 2, true);
    store()->remove(QStringLiteral("a"));
    QVERIFY(store()->commit());
    restart();
    QCOMPARE(store()->values().keys(), QStringList({QStringLiteral("b")}));
}

void TestSettingsStore::factorySettingsForgetEverything()
{
    func()->setValue(QStringLiteral("a"), 0, 1, true);
    func()->setValue(QStringLiteral("b"), 0, 2, false);
    QSignalSpy changes(store(), &SettingsStore::valueChanged);
    store()->clear();
    QVERIFY(store()->values().isEmpty());
    QCOMPARE(changes.size(), 2);
    func()->setValue(QStringLiteral("c"), 0, 3, true);
    restart();
    QCOMPARE(store()->values().keys(), QStringList({QStringLiteral("c")}));
}

void TestSettingsStore::readsAndWritesAreReported()
{
    QStringList reported;
    const QMetaObject::Connection connection = connect(
        cm::Journal::instance(), &cm::Journal::recorded, this, [&reported](const cm::Journal::Entry& entry) {
            reported << entry.subsystem + QLatin1Char('.') + entry.operation;
        });
    SettingsExe exe(nullptr);
    func()->getValue(QStringLiteral("eq10"), 0);
    func()->setValue(QStringLiteral("map"), QStringLiteral("0;0"), QStringLiteral("0;1"), true);
    exe.getValue(QStringLiteral("hpfState"), false);
    exe.setValue(QStringLiteral("hpfFreq"), 4, 5, true);
    disconnect(connection);
    QCOMPARE(reported, QStringList({QStringLiteral("SettingsFunc.getValue(\"eq10\", 0)"),
                                    QStringLiteral("SettingsFunc.setValue(\"map\", \"0;0\", \"0;1\", true)"),
                                    QStringLiteral("SettingsExe.getValue(\"hpfState\", false)"),
                                    QStringLiteral("SettingsExe.setValue(\"hpfFreq\", 4, 5, true)")}));
}

QTEST_GUILESS_MAIN(TestSettingsStore)
#include "tst_settingsstore.moc"
