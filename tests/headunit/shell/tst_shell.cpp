#include "headunit/shell/shell.h"

#include "tests/headunit/shell/shellfixture.h"

#include <QComboBox>

#include <climits>

using namespace headunit;

static const QStringList opening{"onCreate", "onShow", "root shown", "onEnter"};
static const QStringList leaving{"onExit", "root hidden", "onHide"};
static const QStringList destroying{"onDestroy", "root deleted"};

/// The shell on a real store, audio service and screen, with an application that records.
class TestShell : public ShellFixture
{
    Q_OBJECT
private slots:
    void init() { startUnit(); }
    void cleanup() { endUnit(); }
    void screenIs1024By600();
    void frontLiesAroundTheScreen();
    void bareScreenHasNoFront();
    void startsAtTheLauncherWithItsStatusBar();
    void touchingATileOpensTheWindow();
    void unknownWindowIsRefused();
    void windowWithoutRootWidgetLeavesTheLauncherInFront();
    void secondWindowOfTheSameIdIsRefused();
    void openingAnotherWindowLeavesTheFirst();
    void backRequestLeavesForTheLauncher();
    void backRequestAtTheLauncherDoesNothing();
    void statusBarFollowsRequests();
    void reopeningResumes();
    void vanishedRootWidgetBringsTheLauncher();
    void everyHardKeyReachesTheWindowFirst();
    void unknownKeysAreTheWindowsAlone();
    void unhandledBackAsksTheWindowThenTheShell();
    void handledBackWaitsForTheWindowsRequest();
    void homeLeavesEvenWhenTheWindowHandlesIt();
    void volumeKeysTurnTheMainChannel();
    void volumeStopsAtItsEnds();
    void muteComesBackToItsLevel();
    void turningWhileMutedUnmutes();
    void anotherChannelLeavesTheVolumeAlone();
    void powerOffDestroysTheWindowAndDarkensTheScreen();
    void powerOnBringsTheWindowBack();
    void offNothingButPowerWorks();
    void powerOffCommitsTheStore();
    void languageSwitchRenewsTheOpenWindow();
    void languageIsKept();
    void editedSettingMakesTheWindowAnew();
    void editedVolumeIsShown();
    void factoryResetForgetsEverythingAndStartsAtTheLauncher();
    void audioPageIsShownWithoutBeingRemembered_data();
    void audioPageIsShownWithoutBeingRemembered();
    void shutDownRunsTheWholeOrder();
    void inspectorOpensAndCloses();
    void inspectorsLeversMoveTheUnit();

private:
    /// Brings the application to the front; its calls are counted from there.
    void openWindow()
    {
        m_shell->openWindow(33);
        m_window->takeCalls();
    }
    /// Null before F12.
    static QWidget* inspector();
};

void TestShell::screenIs1024By600()
{
    QCOMPARE(screen()->size(), QSize(1024, 600));
    QCOMPARE(screen()->applicationArea()->geometry(), QRect(0, 0, 1024, 600));
}

void TestShell::frontLiesAroundTheScreen()
{
    const auto keys = m_shell->unit()->findChildren<QWidget*>(QRegularExpression("hardkey_|volume_knob"));
    QCOMPARE(keys.size(), 6);
    for (const QWidget* key : keys)
        QVERIFY2(!key->geometry().intersects(screen()->geometry()), qPrintable(key->objectName()));
}

void TestShell::bareScreenHasNoFront()
{
    start(false);
    QCOMPARE(m_shell->unit()->size(), QSize(1024, 600));
    QVERIFY(!m_shell->unit()->findChild<QWidget*>("volume_knob"));
}

void TestShell::startsAtTheLauncherWithItsStatusBar()
{
    QVERIFY(!m_shell->front());
    QVERIFY(screen()->isStatusBarShown());
    QVERIFY(screen()->isLit());
    QVERIFY(tile(33));
    QCOMPARE(tile(33)->text(), QStringLiteral("EQ"));
    QVERIFY(tile(33)->isVisible());
    QVERIFY(m_window->takeCalls().isEmpty());
}

void TestShell::touchingATileOpensTheWindow()
{
    QTest::mouseClick(tile(33), Qt::LeftButton);
    QCOMPARE(m_window->takeCalls(), opening);
    QCOMPARE(m_shell->front(), m_shell->host(33));
    QVERIFY(m_window->root->isVisible());
}

void TestShell::unknownWindowIsRefused()
{
    MessageLog messages;
    QVERIFY(!m_shell->openWindow(34));
    QCOMPARE(messages.count("window 34"), 1);
    QVERIFY(!m_shell->front());
}

void TestShell::windowWithoutRootWidgetLeavesTheLauncherInFront()
{
    m_window->handsOutRoot = false;
    QVERIFY(!m_shell->openWindow(33));
    QVERIFY(!m_shell->front());
    QVERIFY(screen()->applicationArea()->isHidden());
    QVERIFY(tile(33)->isEnabled());
}

void TestShell::secondWindowOfTheSameIdIsRefused()
{
    FakeWindow second;
    MessageLog messages;
    m_shell->addWindow(33, &second);
    QCOMPARE(messages.count("window 33"), 1);
    QCOMPARE(screen()->launcher()->findChildren<LauncherTile*>().size(), 1);
}

void TestShell::openingAnotherWindowLeavesTheFirst()
{
    FakeWindow second(34);
    m_shell->addWindow(34, &second);
    openWindow();
    QVERIFY(m_shell->openWindow(34));
    QCOMPARE(m_window->takeCalls(), leaving);
    QCOMPARE(second.takeCalls(), opening);
    m_shell.reset(); // before the window that it drives
}

void TestShell::backRequestLeavesForTheLauncher()
{
    openWindow();
    QCoreApplication::postEvent(qApp, new TouchEvent(Qx::Touch_Back, -1, -1));
    QCOMPARE(m_window->takeCalls(), QStringList()); // posted, not sent
    QCoreApplication::processEvents();
    QCOMPARE(m_window->takeCalls(), leaving);
    QVERIFY(!m_shell->front());
    QVERIFY(screen()->applicationArea()->isHidden());
}

void TestShell::backRequestAtTheLauncherDoesNothing()
{
    QCoreApplication::postEvent(qApp, new TouchEvent(Qx::Touch_Back, -1, -1));
    QCoreApplication::processEvents();
    QCOMPARE(m_window->takeCalls(), QStringList());
    QVERIFY(screen()->isStatusBarShown());
}

void TestShell::statusBarFollowsRequests()
{
    m_shell->openWindow(33);
    QCoreApplication::processEvents(); // the root widget's own request
    QVERIFY(!screen()->isStatusBarShown());
    QCoreApplication::postEvent(qApp, new StatusBarHideEvent(false));
    QCoreApplication::processEvents();
    QVERIFY(screen()->isStatusBarShown());
    QCoreApplication::postEvent(qApp, new StatusBarHideEvent(true));
    m_shell->leaveApplication();
    QCoreApplication::processEvents();
    QVERIFY(screen()->isStatusBarShown()); // a late request doesn't reach the launcher
}

void TestShell::reopeningResumes()
{
    m_shell->openWindow(33);
    const QWidget* root = m_window->root;
    m_shell->leaveApplication();
    m_window->takeCalls();
    m_shell->openWindow(33);
    QCOMPARE(m_window->takeCalls(), opening);
    QCOMPARE(m_window->root.data(), root);
    QCoreApplication::processEvents();
    QVERIFY(!screen()->isStatusBarShown());
}

void TestShell::vanishedRootWidgetBringsTheLauncher()
{
    m_shell->openWindow(33);
    delete m_window->root;
    QTRY_VERIFY(!m_shell->front());
    QVERIFY(screen()->applicationArea()->isHidden());
    m_window->takeCalls();
    QVERIFY(m_shell->openWindow(33));
    QCOMPARE(m_window->takeCalls(), opening);
}

void TestShell::everyHardKeyReachesTheWindowFirst()
{
    openWindow();
    m_window->handlesBack = 1;
    for (const auto key : {KeyEvent::Key_Back, KeyEvent::Key_VolumeUp, KeyEvent::Key_VolumeDown,
                           KeyEvent::Key_Mute, KeyEvent::Key_PrevPage, KeyEvent::Key_NextPage}) {
        m_shell->onHardKey(key, KeyEvent::Press);
        QCOMPARE(m_window->takeCalls().first(), QStringLiteral("key %1 1001").arg(int(key)));
        m_shell->onHardKey(key, KeyEvent::LongPress);
        QCOMPARE(m_window->takeCalls(), QStringList(QStringLiteral("key %1 1003").arg(int(key))));
        m_shell->onHardKey(key, KeyEvent::Release);
        QCOMPARE(m_window->takeCalls(), QStringList(QStringLiteral("key %1 1002").arg(int(key))));
    }
    m_shell->onHardKey(KeyEvent::Key_Home, KeyEvent::Press);
    QCOMPARE(m_window->takeCalls(), QStringList{"key 2 1001"} + leaving);
}

void TestShell::unknownKeysAreTheWindowsAlone()
{
    openWindow();
    const int before = store()->value("volume0").toInt();
    for (const int key : {0, 9, -1, INT_MAX, INT_MIN}) {
        for (const int action : {int(KeyEvent::Press), 0, INT_MAX}) {
            m_shell->onHardKey(KeyEvent::Key(key), KeyEvent::Action(action));
            QCOMPARE(m_window->takeCalls().size(), 1);
        }
    }
    QVERIFY(m_shell->front());
    QVERIFY(m_shell->isPowered());
    QCOMPARE(store()->value("volume0").toInt(), before);
    // A touch request of another kind, and one with a place far off the screen.
    const MessageLog messages;
    QCoreApplication::postEvent(qApp, new TouchEvent(Qx::Touch(INT_MAX), INT_MIN, INT_MAX));
    QCoreApplication::processEvents();
    QVERIFY(m_shell->front());
    QCOMPARE(MessageLog::count("is not known"), 1);
    QCoreApplication::postEvent(qApp, new TouchEvent(Qx::Touch_Back, INT_MAX, INT_MIN));
    QCoreApplication::processEvents();
    QVERIFY(!m_shell->front());
}

void TestShell::unhandledBackAsksTheWindowThenTheShell()
{
    openWindow();
    m_shell->onHardKey(KeyEvent::Key_Back, KeyEvent::Press);
    QCOMPARE(m_window->takeCalls(), QStringList({"key 3 1001", "backEvent"}) + leaving);
    // A window that takes the key itself is not asked again.
    openWindow();
    m_window->handledKey = KeyEvent::Key_Back;
    m_shell->onHardKey(KeyEvent::Key_Back, KeyEvent::Press);
    QCOMPARE(m_window->takeCalls(), QStringList{"key 3 1001"});
}

void TestShell::handledBackWaitsForTheWindowsRequest()
{
    openWindow();
    m_window->handlesBack = 1;
    m_shell->onHardKey(KeyEvent::Key_Back, KeyEvent::Press);
    QCoreApplication::processEvents();
    QVERIFY(m_shell->front());
    m_window->postsBack = true;
    m_shell->onHardKey(KeyEvent::Key_Back, KeyEvent::Press);
    QVERIFY(m_shell->front());
    QCoreApplication::processEvents();
    QVERIFY(!m_shell->front());
}

void TestShell::homeLeavesEvenWhenTheWindowHandlesIt()
{
    m_window->handledKey = KeyEvent::Key_Home;
    m_shell->openWindow(33);
    press(KeyEvent::Key_Home);
    QVERIFY(!m_shell->front());
}

void TestShell::volumeKeysTurnTheMainChannel()
{
    QSignalSpy changed(hvaudio::AudioService::instance(), SIGNAL(audioVolumeChanged(bool, int, int)));
    const int before = store()->value("volume0").toInt();
    press(KeyEvent::Key_VolumeUp);
    QCOMPARE(store()->value("volume0").toInt(), before + 1);
    press(KeyEvent::Key_VolumeDown);
    press(KeyEvent::Key_VolumeDown);
    QCOMPARE(store()->value("volume0").toInt(), before - 1);
    QCOMPARE(changed.count(), 3);
    QCOMPARE(changed.last().at(2).toInt(), 0);
}

void TestShell::volumeStopsAtItsEnds()
{
    for (int i = 0; i < 60; ++i)
        press(KeyEvent::Key_VolumeUp);
    QCOMPARE(store()->value("volume0").toInt(), 50);
    for (int i = 0; i < 60; ++i)
        press(KeyEvent::Key_VolumeDown);
    QCOMPARE(store()->value("volume0").toInt(), 0);
}

void TestShell::muteComesBackToItsLevel()
{
    const int before = store()->value("volume0").toInt();
    QVERIFY(before > 0);
    press(KeyEvent::Key_Mute);
    QCOMPARE(store()->value("volume0").toInt(), 0);
    press(KeyEvent::Key_Mute);
    QCOMPARE(store()->value("volume0").toInt(), before);
}

void TestShell::turningWhileMutedUnmutes()
{
    const int before = store()->value("volume0").toInt();
    press(KeyEvent::Key_Mute);
    press(KeyEvent::Key_VolumeUp);
    QCOMPARE(store()->value("volume0").toInt(), before + 1);
}

void TestShell::anotherChannelLeavesTheVolumeAlone()
{
    const int before = store()->value("volume0").toInt();
    hvaudio::AudioService::instance()->setVolumeLevel(3, 1);
    press(KeyEvent::Key_VolumeUp);
    QCOMPARE(store()->value("volume0").toInt(), before + 1);
}

void TestShell::powerOffDestroysTheWindowAndDarkensTheScreen()
{
    openWindow();
    press(KeyEvent::Key_Power);
    QCOMPARE(m_window->takeCalls(), QStringList{"key 1 1001"} + leaving + destroying);
    QVERIFY(!m_shell->isPowered());
    QVERIFY(!screen()->isLit());
    QVERIFY(!m_window->root);
    const QImage picture = screen()->grab().toImage();
    for (const QPoint& point : {QPoint(0, 0), QPoint(512, 300), QPoint(1023, 599)})
        QCOMPARE(picture.pixelColor(point), QColor(Qt::black));
}

void TestShell::powerOnBringsTheWindowBack()
{
    m_shell->openWindow(33);
    press(KeyEvent::Key_Power);
    m_window->takeCalls();
    press(KeyEvent::Key_Power);
    QCOMPARE(m_window->takeCalls(), opening + QStringList{"key 1 1002"});
    QVERIFY(screen()->isLit());
    QCOMPARE(m_shell->front(), m_shell->host(33));
    // From the launcher it comes back to the launcher.
    press(KeyEvent::Key_Home);
    press(KeyEvent::Key_Power);
    press(KeyEvent::Key_Power);
    QVERIFY(m_shell->isPowered());
    QVERIFY(!m_shell->front());
}

void TestShell::offNothingButPowerWorks()
{
    press(KeyEvent::Key_Power);
    const QVariant volume = store()->value("volume0");
    press(KeyEvent::Key_VolumeUp);
    press(KeyEvent::Key_Home);
    QVERIFY(!m_shell->openWindow(33));
    QVERIFY(!tile(33)->isEnabled());
    QCOMPARE(store()->value("volume0"), volume);
    QCOMPARE(m_window->takeCalls(), QStringList());
}

void TestShell::powerOffCommitsTheStore()
{
    store()->setValue("a", 5, false);
    press(KeyEvent::Key_Power);
    store()->close();
    QCOMPARE(int(store()->open(m_folder->filePath("settings.db"))), int(mem::SettingsStore::Opened::Durable));
    QCOMPARE(store()->value("a"), QVariant(5));
}

void TestShell::languageSwitchRenewsTheOpenWindow()
{
    openWindow();
    m_window->title = "Klang";
    QVERIFY(m_shell->setLanguage("de"));
    QCOMPARE(m_window->takeCalls(), leaving + opening);
    QCOMPARE(tile(33)->text(), QStringLiteral("Klang"));
    QVERIFY(m_shell->setLanguage("de")); // as it is: nothing to renew
    QCOMPARE(m_window->takeCalls(), QStringList());
    QVERIFY(!m_shell->setLanguage("tlh"));
    QCOMPARE(cm::Language::instance()->current(), QStringLiteral("de"));
}

void TestShell::languageIsKept()
{
    m_shell->setLanguage("fr");
    QCOMPARE(store()->value("Headunit_Language"), QVariant("fr"));
}

void TestShell::editedSettingMakesTheWindowAnew()
{
    openWindow();
    store()->setValue("volume0", 9, true); // as an application does
    QCoreApplication::processEvents();
    QCOMPARE(m_window->takeCalls(), QStringList());
    store()->edit("eq10", 3);
    QCOMPARE(m_window->takeCalls(), QStringList()); // the editor may still be at work
    QCoreApplication::processEvents();
    QCOMPARE(m_window->takeCalls(), leaving + destroying + opening);
    QVERIFY(m_shell->front());
    QVERIFY(!screen()->isStatusBarShown());
    QVERIFY(m_window->root->isVisible());
    // One that waits behind the launcher is made when it is wanted.
    m_shell->leaveApplication();
    m_window->takeCalls();
    store()->edit("eq10", 4);
    QCoreApplication::processEvents();
    QCOMPARE(m_window->takeCalls(), destroying);
    QVERIFY(!m_shell->front());
    store()->edit("eq10", 5);
    QCoreApplication::processEvents();
    QCOMPARE(m_window->takeCalls(), QStringList());
}

void TestShell::editedVolumeIsShown()
{
    store()->edit("volume0", 41);
    press(KeyEvent::Key_VolumeUp);
    QCOMPARE(store()->value("volume0"), QVariant(42));
}

void TestShell::factoryResetForgetsEverythingAndStartsAtTheLauncher()
{
    store()->setValue("subwooferLevel", 3, true);
    store()->setValue("Setup_Main_Volume", 7, true);
    openWindow();
    m_shell->resetToFactory();
    QCOMPARE(m_window->takeCalls(), leaving + destroying);
    QVERIFY(!store()->value("subwooferLevel").isValid());
    QVERIFY(!m_shell->front());
    QVERIFY(m_shell->isPowered());
    QVERIFY(screen()->isLit());
    press(KeyEvent::Key_VolumeUp); // from the default start-up volume
    QCOMPARE(store()->value("volume0").toInt(), 26);
}

void TestShell::audioPageIsShownWithoutBeingRemembered_data()
{
    QTest::addColumn<QVariant>("remembered");
    QTest::newRow("a page was remembered") << QVariant(3);
    QTest::newRow("none was") << QVariant();
}

void TestShell::audioPageIsShownWithoutBeingRemembered()
{
    QFETCH(QVariant, remembered);
    if (remembered.isValid())
        store()->setValue("AudioSetting_Page", remembered, true);
    QVariantList seen;
    connect(store(), &mem::SettingsStore::valueChanged, this, [&](const QString& key, const QVariant& value) {
        if (key == QLatin1String("AudioSetting_Page"))
            seen.append(value);
    });
    QVERIFY(m_shell->openAudioPage(5));
    disconnect(store(), nullptr, this, nullptr);
    QCOMPARE(m_window->takeCalls(), opening);
    QCOMPARE(seen.first(), QVariant(5));
    QCOMPARE(store()->value("AudioSetting_Page"), remembered);
}

void TestShell::shutDownRunsTheWholeOrder()
{
    openWindow();
    m_shell->shutDown();
    QCOMPARE(m_window->takeCalls(), leaving + destroying);
    m_shell->shutDown();
    QCOMPARE(m_window->takeCalls(), QStringList());
}

void TestShell::inspectorOpensAndCloses()
{
    QTest::keyClick(m_shell->unit(), Qt::Key_F12);
    QVERIFY(inspector());
    QVERIFY(inspector()->isVisible());
    QTest::keyClick(m_shell->unit(), Qt::Key_F12);
    QVERIFY(!inspector()->isVisible());
}

QWidget* TestShell::inspector()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        if (window->objectName() == QLatin1String("inspector"))
            return window;
    }
    return nullptr;
}

void TestShell::inspectorsLeversMoveTheUnit()
{
    QTest::keyClick(m_shell->unit(), Qt::Key_F12);
    auto* power = inspector()->findChild<QAbstractButton*>("power");
    QCOMPARE(power->text(), QStringLiteral("Switch off"));
    power->click();
    QVERIFY(!m_shell->isPowered());
    QCOMPARE(power->text(), QStringLiteral("Switch on"));
    power->click();
    QVERIFY(m_shell->isPowered());

    auto* language = inspector()->findChild<QComboBox*>("language");
    emit language->activated(language->findData("de"));
    QCOMPARE(cm::Language::instance()->current(), QStringLiteral("de"));

    store()->setValue("subwooferLevel", 3, true);
    auto* reset = inspector()->findChild<QAbstractButton*>("factory_reset");
    reset->click(); // asks whether it is meant
    QVERIFY(store()->value("subwooferLevel").isValid());
    reset->click();
    QVERIFY(!store()->value("subwooferLevel").isValid());
}

QTEST_MAIN(TestShell)
#include "tst_shell.moc"
