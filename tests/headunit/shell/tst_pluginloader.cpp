#include "headunit/shell/pluginloader.h"

#include "tests/support/messagelog.h"

#include "common/appplugin.h"
#include "common/windowinterface.h"

#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace headunit;

class TestPluginLoader : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void goodPluginIsLoadedAndCreatedOnce();
    void refusesEachBrokenFileAndGoesOn_data();
    void refusesEachBrokenFileAndGoesOn();
    void foreignCodeNeverRuns();
    void otherQtVersionIsNamed();
    void refusalReadsMetaData_data();
    void refusalReadsMetaData();
    void platformLibraryIsNoWarning();
    void linkedLibraryIsLoadedOnce();
    void libraryElsewhereIsRefused();
    void whatOthersMayWriteIsRefused_data();
    void whatOthersMayWriteIsRefused();
    void whatItThrowsIsTheReason_data();
    void whatItThrowsIsTheReason();
    void missingFolderIsLoggedAndLoadsNothing();
    void unloadDeletesThePluginObject();

private:
    /// A folder that holds these files of the test plug-ins' folder.
    QString folderWith(const QStringList& files);
    /// Finds what is in a folder and loads all of it.
    static void loadAll(PluginLoader* loader, const QString& folder);
    static QString reasonFor(const PluginLoader& loader, const QString& file);

    QScopedPointer<QTemporaryDir> m_folder;
};

void TestPluginLoader::init()
{
    m_folder.reset(new QTemporaryDir);
    QVERIFY(m_folder->isValid());
    qunsetenv("HEADUNIT_TEST_CREATED");
}

QString TestPluginLoader::folderWith(const QStringList& files)
{
    for (const QString& file : files) {
        if (!QFile::copy(QDir(TEST_PLUGINS).filePath(file), m_folder->filePath(file)))
            qFatal("%s is not where the test plug-ins are", qPrintable(file));
    }
    return m_folder->path();
}

void TestPluginLoader::loadAll(PluginLoader* loader, const QString& folder)
{
    const QStringList files = loader->find(folder);
    for (const QString& file : files)
        loader->load(file);
}

QString TestPluginLoader::reasonFor(const PluginLoader& loader, const QString& file)
{
    for (const PluginLoader::Refused& refused : loader.refused()) {
        if (refused.file == file)
            return refused.reason;
    }
    return QString();
}

void TestPluginLoader::goodPluginIsLoadedAndCreatedOnce()
{
    PluginLoader loader;
    loadAll(&loader, folderWith({"good.so"}));
    QCOMPARE(loader.loaded().size(), 1);
    QCOMPARE(loader.refused().size(), 0);
    QCOMPARE(loader.loaded()[0].file, QStringLiteral("good.so"));
    QCOMPARE(qgetenv("HEADUNIT_TEST_CREATED"), QByteArray("x"));
    QCOMPARE(loader.loaded()[0].plugin->windowInterfaceID(), (QList<int>{7, 8}));
    QCOMPARE(loader.loaded()[0].plugin->requestWindowInterface(7)->name(), QStringLiteral("Window 7"));
}

void TestPluginLoader::refusesEachBrokenFileAndGoesOn_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("reason");
    QTest::newRow("another framework's") << "foreign.so"
                                         << "identifier \"org.example.Qt.foreignPlugin\"";
    QTest::newRow("another class") << "otherclass.so"
                                   << "class is \"Application\"";
    QTest::newRow("no AppPlugin") << "noappplugin.so"
                                  << "does not implement org.headunit.AppPlugin/1.0";
    QTest::newRow("missing symbol") << "missingsymbol.so"
                                    << "functionOfANewerPlatform";
    QTest::newRow("no metadata") << "plainlibrary.so"
                                 << "not a plug-in";
    QTest::newRow("no library at all") << "text.so"
                                       << "not a plug-in";
    QTest::newRow("cut off") << "cutoff.so"
                             << "not a plug-in";
    QTest::newRow("empty") << "empty.so"
                           << "not a plug-in";
}

void TestPluginLoader::refusesEachBrokenFileAndGoesOn()
{
    QFETCH(QString, file);
    QFETCH(QString, reason);
    // Names sort: each is looked at between two good ones.
    const QString folder = folderWith({"good.so"});
    QVERIFY(QFile::rename(m_folder->filePath("good.so"), m_folder->filePath("zz_good.so")));
    QFile broken(m_folder->filePath(file));
    if (!QFile::exists(QDir(TEST_PLUGINS).filePath(file))) {
        QVERIFY(broken.open(QIODevice::WriteOnly));
        if (file == QLatin1String("text.so"))
            broken.write("this is not a library\n");
        if (file == QLatin1String("cutoff.so")) {
            QFile whole(m_folder->filePath("zz_good.so"));
            QVERIFY(whole.open(QIODevice::ReadOnly));
            broken.write(whole.read(whole.size() / 4));
        }
        broken.close();
    } else {
        folderWith({file});
    }

    MessageLog messages;
    PluginLoader loader;
    loadAll(&loader, folder);
    QCOMPARE(loader.refused().size(), 1);
    QVERIFY2(reasonFor(loader, file).contains(reason), qPrintable(reasonFor(loader, file)));
    QVERIFY(messages.count(file) >= 1);
    QCOMPARE(loader.loaded().size(), 1);
    QCOMPARE(loader.loaded()[0].file, QStringLiteral("zz_good.so"));
}

void TestPluginLoader::foreignCodeNeverRuns()
{
    qunsetenv("HEADUNIT_TEST_LOADED_foreign");
    qunsetenv("HEADUNIT_TEST_LOADED_otherclass");
    PluginLoader loader;
    loadAll(&loader, folderWith({"foreign.so", "otherclass.so"}));
    QCOMPARE(loader.refused().size(), 2);
    QVERIFY(!qEnvironmentVariableIsSet("HEADUNIT_TEST_LOADED_foreign"));
    QVERIFY(!qEnvironmentVariableIsSet("HEADUNIT_TEST_LOADED_otherclass"));
}

void TestPluginLoader::otherQtVersionIsNamed()
{
    // The metadata starts with a marker, its own version and Qt's.
    QFile good(QDir(TEST_PLUGINS).filePath("good.so"));
    QVERIFY(good.open(QIODevice::ReadOnly));
    QByteArray bytes = good.readAll();
    const int marker = bytes.indexOf("QTMETADATA !");
    QVERIFY(marker > 0);
    QCOMPARE(int(bytes[marker + 13]), QT_VERSION_MAJOR);
    bytes[marker + 13] = 4;
    QFile old(m_folder->filePath("old.so"));
    QVERIFY(old.open(QIODevice::WriteOnly));
    old.write(bytes);
    old.close();

    MessageLog messages;
    PluginLoader loader;
    loadAll(&loader, m_folder->path());
    QCOMPARE(loader.loaded().size(), 0);
    const QString reason = reasonFor(loader, "old.so");
    QVERIFY2(reason.contains("another Qt version (4."), qPrintable(reason));
}

void TestPluginLoader::refusalReadsMetaData_data()
{
    QTest::addColumn<QString>("identifier");
    QTest::addColumn<QString>("className");
    QTest::addColumn<int>("version");
    QTest::addColumn<bool>("allowed");
    const int here = QT_VERSION & 0xffff00;
    QTest::newRow("right") << "org.headunit.Qt.audiosettingPlugin"
                           << "Plugin" << here << true;
    QTest::newRow("older minor version") << "org.headunit.Qt.aPlugin"
                                         << "Plugin" << 0x050000 << true;
    QTest::newRow("newer minor version") << "org.headunit.Qt.aPlugin"
                                         << "Plugin" << here + 0x100 << false;
    QTest::newRow("older major version") << "org.headunit.Qt.aPlugin"
                                         << "Plugin" << 0x040800 << false;
    QTest::newRow("newer major version") << "org.headunit.Qt.aPlugin"
                                         << "Plugin" << 0x060000 << false;
    QTest::newRow("application without name") << "org.headunit.Qt.Plugin"
                                              << "Plugin" << here << false;
    QTest::newRow("other prefix") << "org.example.Qt.aPlugin"
                                  << "Plugin" << here << false;
    QTest::newRow("other suffix") << "org.headunit.Qt.aApplet"
                                  << "Plugin" << here << false;
    QTest::newRow("prefix and suffix overlap") << "org.headunit.QtPlugin"
                                               << "Plugin" << here << false;
    QTest::newRow("other class") << "org.headunit.Qt.aPlugin"
                                 << "Main" << here << false;
}

void TestPluginLoader::refusalReadsMetaData()
{
    QFETCH(QString, identifier);
    QFETCH(QString, className);
    QFETCH(int, version);
    const QJsonObject metaData{{"IID", identifier}, {"className", className}, {"version", version}};
    QTEST(PluginLoader::refusal(metaData).isEmpty(), "allowed");
}

void TestPluginLoader::platformLibraryIsNoWarning()
{
    static QtMsgType loudest;
    loudest = QtDebugMsg;
    const auto previous =
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString&) {
            if (type != QtInfoMsg)
                loudest = type;
        });
    PluginLoader loader;
    loadAll(&loader, folderWith({"plainlibrary.so"}));
    qInstallMessageHandler(previous);
    QCOMPARE(loader.refused().size(), 1);
    QCOMPARE(loudest, QtDebugMsg);
}

void TestPluginLoader::linkedLibraryIsLoadedOnce()
{
    const QString folder = folderWith({"good.so"});
    QVERIFY(QFile::link(m_folder->filePath("good.so"), m_folder->filePath("good.so.1")));
    QVERIFY(QFile::link(m_folder->filePath("good.so"), m_folder->filePath("link.so")));
    PluginLoader loader;
    loadAll(&loader, folder);
    QCOMPARE(loader.loaded().size(), 1);
    QCOMPARE(loader.refused().size(), 0);
}

void TestPluginLoader::libraryElsewhereIsRefused()
{
    const QTemporaryDir elsewhere;
    QVERIFY(QFile::copy(QDir(TEST_PLUGINS).filePath("good.so"), elsewhere.filePath("far.so")));
    const QString folder = folderWith({"good.so"});
    QVERIFY(QFile::link(elsewhere.filePath("far.so"), m_folder->filePath("near.so")));
    PluginLoader loader;
    QCOMPARE(loader.find(folder), QStringList{QFileInfo(m_folder->filePath("good.so")).canonicalFilePath()});
    QVERIFY2(reasonFor(loader, "near.so").contains("outside the folder"),
             qPrintable(reasonFor(loader, "near.so")));
    // The folder itself may stand behind a link.
    const QString link = elsewhere.filePath("folder");
    QVERIFY(QFile::link(folder, link));
    PluginLoader behindLink;
    QCOMPARE(behindLink.find(link).size(), 1);
}

void TestPluginLoader::whatOthersMayWriteIsRefused_data()
{
    QTest::addColumn<bool>("ofTheFolder");
    QTest::addColumn<uint>("mode");
    QTest::addColumn<uint>("group"); // of the folder or file; this user's own is 0 in a container
    QTest::addColumn<bool>("refused");
    QTest::newRow("folder of its user") << true << 0755u << uint(getegid()) << false;
    QTest::newRow("folder of its user's own group") << true << 0775u << uint(getegid()) << false;
    QTest::newRow("folder of everybody") << true << 0777u << uint(getegid()) << true;
    QTest::newRow("folder of everybody, as the temporary one") << true << 01777u << uint(getegid()) << true;
    QTest::newRow("library of everybody") << false << 0666u << uint(getegid()) << true;
    if (geteuid() == 0) { // only the administrator gives files to another group
        QTest::newRow("folder of another group") << true << 0775u << 1234u << true;
        QTest::newRow("folder that another group reads") << true << 0755u << 1234u << false;
    }
}

void TestPluginLoader::whatOthersMayWriteIsRefused()
{
    QFETCH(bool, ofTheFolder);
    QFETCH(uint, mode);
    QFETCH(uint, group);
    QFETCH(bool, refused);
    const QString folder = folderWith({"good.so"});
    const QByteArray path = QFile::encodeName(ofTheFolder ? folder : folder + "/good.so");
    QCOMPARE(chown(path.constData(), uid_t(-1), gid_t(group)), 0);
    QCOMPARE(chmod(path.constData(), mode_t(mode)), 0);
    qunsetenv("HEADUNIT_TEST_CREATED");
    const MessageLog messages;
    PluginLoader loader;
    loadAll(&loader, folder);
    QCOMPARE(loader.loaded().size(), refused ? 0 : 1);
    QCOMPARE(loader.refused().size(), refused ? 1 : 0);
    QCOMPARE(qEnvironmentVariableIsSet("HEADUNIT_TEST_CREATED"), !refused);
    QCOMPARE(MessageLog::count("others than the unit may write"), refused ? 1 : 0);
}

void TestPluginLoader::whatItThrowsIsTheReason_data()
{
    QTest::addColumn<QByteArray>("trouble");
    QTest::addColumn<QString>("reason");
    QTest::newRow("constructor") << QByteArray("throws in its constructor") << "threw: no vehicle bus";
    QTest::newRow("create()") << QByteArray("throws in create") << "threw: no vehicle bus";
    QTest::newRow("no std::exception") << QByteArray("throws a number in create") << "no std::exception";
}

void TestPluginLoader::whatItThrowsIsTheReason()
{
    QFETCH(QByteArray, trouble);
    QFETCH(QString, reason);
    qputenv("HEADUNIT_TEST_TROUBLE", trouble);
    const MessageLog messages;
    PluginLoader loader;
    const QString folder = folderWith({"good.so", "troublesome.so"});
    loadAll(&loader, folder);
    qunsetenv("HEADUNIT_TEST_TROUBLE");
    QCOMPARE(loader.loaded().size(), 1);
    QVERIFY2(reasonFor(loader, "troublesome.so").contains(reason),
             qPrintable(reasonFor(loader, "troublesome.so")));
    // Tried again when its trouble is over.
    QVERIFY(loader.load(QFileInfo(m_folder->filePath("troublesome.so")).canonicalFilePath()));
    QCOMPARE(loader.loaded().size(), 2);
}

void TestPluginLoader::missingFolderIsLoggedAndLoadsNothing()
{
    MessageLog messages;
    PluginLoader loader;
    loadAll(&loader, m_folder->filePath("nowhere"));
    QCOMPARE(loader.loaded().size(), 0);
    QCOMPARE(messages.count("nowhere does not exist"), 1);
}

void TestPluginLoader::unloadDeletesThePluginObject()
{
    PluginLoader loader;
    loadAll(&loader, folderWith({"good.so"}));
    QCOMPARE(loader.loaded().size(), 1);
    qunsetenv("HEADUNIT_TEST_DELETED_good");
    loader.unload();
    QVERIFY(qEnvironmentVariableIsSet("HEADUNIT_TEST_DELETED_good"));
    QCOMPARE(loader.loaded().size(), 0);
}

QTEST_GUILESS_MAIN(TestPluginLoader)
#include "tst_pluginloader.moc"
