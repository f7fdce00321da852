#include "headunit/shell/shell.h"

#include "tests/headunit/shell/shellfixture.h"
#include "tests/headunit/sound/fakesound.h"

using namespace headunit;

/// What an application or a sound file that fails does to the unit.
class TestShellFaults : public ShellFixture
{
    Q_OBJECT
private slots:
    void init() { startUnit(); }
    void cleanup() { endUnit(); }
    void startIsMarkedWhileItLasts();
    void applicationThatTookTheUnitDownIsLeftOutOnce();
    void applicationThatThrowsIsNamedAndCanBeTriedAgain();
    void sourceThatTookTheUnitDownIsLeftOutOnce();
    void retryTileSpeaksTheUnitsLanguage();
    void windowThatThrowsTakesNothingWithIt_data();
    void windowThatThrowsTakesNothingWithIt();

private:
    QAbstractButton* retryTile(const QString& what)
    {
        return screen()->launcher()->findChild<QAbstractButton*>("retry_" + what);
    }
    /// A folder with the application that does what HEADUNIT_TEST_TROUBLE says, under its window id 9.
    QString troublesomeFolder();
};

QString TestShellFaults::troublesomeFolder()
{
    if (!QFile::copy(TEST_PLUGINS "/troublesome.so", m_folder->filePath("troublesome.so")))
        qFatal("no troublesome.so among the test plug-ins");
    return m_folder->path();
}

void TestShellFaults::startIsMarkedWhileItLasts()
{
    QVariantList marks;
    connect(store(), &mem::SettingsStore::valueChanged, this, [&](const QString& key, const QVariant& value) {
        if (key == QLatin1String("Headunit_Starting"))
            marks.append(value);
    });
    QCOMPARE(m_shell->loadApplications(troublesomeFolder()), 2);
    disconnect(store(), nullptr, this, nullptr);
    QCOMPARE(marks, (QVariantList{"troublesome.so", QVariant()}));
    QVERIFY(!retryTile("troublesome.so"));
    m_shell.reset(); // before its windows
}

void TestShellFaults::applicationThatTookTheUnitDownIsLeftOutOnce()
{
    const QString folder = troublesomeFolder();
    store()->setValue("Headunit_Starting", "troublesome.so", true);
    start();
    QVERIFY(!store()->value("Headunit_Starting").isValid());
    QCOMPARE(m_shell->loadApplications(folder), 1);
    QVERIFY(!m_shell->host(9));
    auto* retry = retryTile("troublesome.so");
    QVERIFY(retry);
    QCOMPARE(retry->text(), QStringLiteral("troublesome.so"));
    QVERIFY(screen()->rect().contains(QRect(retry->mapTo(screen(), QPoint()), retry->size())));
    QVERIFY(!retry->geometry().intersects(tile(33)->geometry()));
    QTest::mouseClick(retry, Qt::LeftButton);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!retryTile("troublesome.so"));
    QVERIFY(m_shell->host(9));
    QCOMPARE(tile(9)->text(), QStringLiteral("Trouble"));
    // The next start is a normal one.
    start();
    QCOMPARE(m_shell->loadApplications(folder), 2);
    m_shell.reset();
}

void TestShellFaults::applicationThatThrowsIsNamedAndCanBeTriedAgain()
{
    qputenv("HEADUNIT_TEST_TROUBLE", "throws in windowInterfaceID");
    const MessageLog messages;
    QCOMPARE(m_shell->loadApplications(troublesomeFolder()), 1);
    QCOMPARE(MessageLog::count("troublesome.so threw: no vehicle bus"), 1);
    QVERIFY(retryTile("troublesome.so"));
    QTest::mouseClick(retryTile("troublesome.so"), Qt::LeftButton); // in vain
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(retryTile("troublesome.so"));
    qunsetenv("HEADUNIT_TEST_TROUBLE");
    QTest::mouseClick(retryTile("troublesome.so"), Qt::LeftButton);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!retryTile("troublesome.so"));
    QVERIFY(m_shell->openWindow(9));
    QVERIFY(!store()->value("Headunit_Starting").isValid());
    m_shell.reset();
}

void TestShellFaults::sourceThatTookTheUnitDownIsLeftOutOnce()
{
    store()->setValue("Headunit_Source_USB", "file:/stick/song.mp3", true);
    store()->setValue("Headunit_Source_AUX", "file:/stick/noise.wav", true);
    store()->setValue("Headunit_Starting", "Headunit_Source_USB", true);
    m_shell.reset();
    FakeSound sound;
    QStringList marked; // what was marked when a file was opened
    sound.onSetSource = [&] { marked.append(store()->value("Headunit_Starting").toString()); };
    m_shell.reset(new Shell(true, &sound));
    m_shell->unit()->show();
    QCOMPARE(sound.source(HVAudio_source_Usb).kind, SourceKind::Silence);
    QCOMPARE(sound.source(HVAudio_source_AvIn).path, QStringLiteral("/stick/noise.wav"));
    QCOMPARE(marked, (QStringList{QString(), "Headunit_Source_AUX"}));
    QVERIFY(!store()->value("Headunit_Starting").isValid());
    QCOMPARE(store()->value("Headunit_Source_USB"), QVariant("file:/stick/song.mp3"));

    auto* retry = retryTile("Headunit_Source_USB");
    QVERIFY(retry);
    QCOMPARE(retry->text(), QStringLiteral("USB"));
    QTest::mouseClick(retry, Qt::LeftButton);
    QCOMPARE(sound.source(HVAudio_source_Usb).path, QStringLiteral("/stick/song.mp3"));
    QCOMPARE(marked.last(), QStringLiteral("Headunit_Source_USB"));
    m_shell.reset();
}

void TestShellFaults::retryTileSpeaksTheUnitsLanguage()
{
    store()->setValue("Headunit_Starting", "troublesome.so", true);
    start();
    m_shell->loadApplications(troublesomeFolder());
    auto* retry = retryTile("troublesome.so");
    QVERIFY(retry);
    QSet<QByteArray> pictures;
    const QStringList codes = cm::Language::codes();
    for (const QString& code : codes) {
        m_shell->setLanguage(code);
        const QImage picture = retry->grab().toImage();
        pictures.insert(
            QByteArray(reinterpret_cast<const char*>(picture.constBits()), int(picture.sizeInBytes())));
    }
    QCOMPARE(pictures.size(), codes.size());
}

void TestShellFaults::windowThatThrowsTakesNothingWithIt_data()
{
    QTest::addColumn<QByteArray>("call");
    QTest::addColumn<bool>("opens");
    QTest::newRow("onCreate") << QByteArray("onCreate") << false;
    QTest::newRow("onShow") << QByteArray("onShow") << false;
    QTest::newRow("onEnter") << QByteArray("onEnter") << false;
    QTest::newRow("onExit") << QByteArray("onExit") << true;
    QTest::newRow("onHide") << QByteArray("onHide") << true;
    QTest::newRow("keyEvent") << QByteArray("keyEvent") << true;
    QTest::newRow("backEvent") << QByteArray("backEvent") << true;
    QTest::newRow("name") << QByteArray("name") << true;
}

void TestShellFaults::windowThatThrowsTakesNothingWithIt()
{
    QFETCH(QByteArray, call);
    QFETCH(bool, opens);
    QCOMPARE(m_shell->loadApplications(troublesomeFolder()), 2);
    qputenv("HEADUNIT_TEST_TROUBLE", "throws in " + call);
    const MessageLog messages;
    QCOMPARE(m_shell->openWindow(9), opens);
    QCOMPARE(m_shell->front() != nullptr, opens);
    press(KeyEvent::Key_VolumeUp);
    press(KeyEvent::Key_Back);
    QVERIFY(!m_shell->front());
    m_shell->setLanguage("de");
    QCOMPARE(tile(9)->text(), QStringLiteral("Trouble")); // as it was when it could be told
    qunsetenv("HEADUNIT_TEST_TROUBLE");
    QVERIFY(MessageLog::count("window 9, " + call + " threw: no vehicle bus") >= 1);
    QVERIFY(m_shell->openWindow(9));
    QVERIFY(m_shell->openWindow(33));
    m_shell.reset();
}

QTEST_MAIN(TestShellFaults)
#include "tst_shell_faults.moc"
