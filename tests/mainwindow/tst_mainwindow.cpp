#include "mainwindow/mainwindow.h"

#include "M5QX/m5qx_mainwidget.h"
#include "common/keyevent.h"
#include "mainwindow/mainwidget.h"
#include "tests/support/platform_double/platform_double.h"

#include <QtTest>

using namespace audiosetting;
using namespace platform_double;

class TestMainWindow : public QObject
{
    Q_OBJECT
private slots:
    void init() { reset(); }
    void isNamedEQ();
    void slotAndOverridesAreComplete();
    void onCreateBuildsTheRootWidgetThenCallsTheBase();
    void onCreateTwiceCreatesOneRootWidgetAndTheSecondCallResumesIt();
    void afterTheRootWidgetWasDestroyedOnCreateBuildsANewOne();
    void lifeCycleCallsOnlyForwardToTheBase();
    void backEventBeforeOnCreateIsNotHandled();
    void backEventAfterOnCreatePostsExactlyOneBackRequest();
    void backEventAfterTheRootWidgetWentIsNotHandled();
    void keyEventReturnsExactlyTheBasesResult_data();
    void keyEventReturnsExactlyTheBasesResult();
    void aKeyEventThatIsNoneIsLeftToTheBase();
    void rootWidgetCarriesItsConstructorsSignatureAsName();
    void rootWidgetIsDeletedWithAWindowThatNoShellTookItFrom();
};

void TestMainWindow::isNamedEQ()
{
    MainWindow window;
    QCOMPARE(window.name(), QStringLiteral("EQ"));
}

void TestMainWindow::slotAndOverridesAreComplete()
{
    const QMetaObject& meta = MainWindow::staticMetaObject;
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 1);
    QCOMPARE(meta.method(meta.methodOffset()).methodSignature(), QByteArray("onDestroyObj()"));
}

void TestMainWindow::onCreateBuildsTheRootWidgetThenCallsTheBase()
{
    MainWindow window;
    QVERIFY(!window.mainWidget());
    window.onCreate();
    QVERIFY(qobject_cast<MainWidget*>(window.mainWidget()));
    QVERIFY(!window.mainWidget()->parent());
    QCOMPARE(window.mainWidgetId(), 33);
    QCOMPARE(takeCalls(Window), QStringList({"BaseWindow.setMainWidget(audiosetting::MainWidget, 33)",
                                             "BaseWindow.onCreate()"}));
}

void TestMainWindow::onCreateTwiceCreatesOneRootWidgetAndTheSecondCallResumesIt()
{
    MainWindow window;
    window.onCreate();
    QWidget* root = window.mainWidget();
    takeCalls();
    setStored(QStringLiteral("AudioSetting_Page"), 3);
    window.onCreate();
    QCOMPARE(window.mainWidget(), root);
    QCOMPARE(takeCalls(Window), QStringList({"BaseWindow.onCreate()"}));
    QCOMPARE(root->findChildren<m5qx_mainwidget*>().size(), 1);
    // Resuming means that the hub reads the page anew and shows it.
    window.onCreate();
    QVERIFY(takeCalls(Actions | Read)
                .startsWith(QStringLiteral("SettingsExe.getValue(\"AudioSetting_Page\", 1)")));
}

void TestMainWindow::afterTheRootWidgetWasDestroyedOnCreateBuildsANewOne()
{
    MainWindow window;
    window.onCreate();
    QPointer<QWidget> first = window.mainWidget();
    delete first;
    QVERIFY(!window.mainWidget());
    takeCalls(All);
    window.onCreate();
    QVERIFY(window.mainWidget());
    QCOMPARE(takeCalls(Window).size(), 2);
    QCOMPARE(window.backEvent(), 1);
}

void TestMainWindow::lifeCycleCallsOnlyForwardToTheBase()
{
    MainWindow window;
    window.onShow();
    window.onEnter();
    window.onExit();
    window.onHide();
    window.onDestroy();
    QCOMPARE(takeCalls(All),
             QStringList({"BaseWindow.onShow()", "BaseWindow.onEnter()", "BaseWindow.onExit()",
                          "BaseWindow.onHide()", "BaseWindow.onDestroy()"}));
    QVERIFY(!window.mainWidget());
}

void TestMainWindow::backEventBeforeOnCreateIsNotHandled()
{
    MainWindow window;
    QCOMPARE(window.backEvent(), 0);
    QCOMPARE(takeBackRequests(), 0);
}

void TestMainWindow::backEventAfterOnCreatePostsExactlyOneBackRequest()
{
    MainWindow window;
    window.onCreate();
    takeCalls();
    QCOMPARE(window.backEvent(), 1);
    QCOMPARE(takeBackRequests(), 1);
    QCOMPARE(takeCalls(), QStringList());
}

void TestMainWindow::backEventAfterTheRootWidgetWentIsNotHandled()
{
    MainWindow window;
    window.onCreate();
    delete window.mainWidget();
    QCOMPARE(window.backEvent(), 0);
    QCOMPARE(takeBackRequests(), 0);
}

void TestMainWindow::keyEventReturnsExactlyTheBasesResult_data()
{
    QTest::addColumn<int>("key");
    for (int key = KeyEvent::Key_Power; key <= KeyEvent::Key_NextPage; ++key)
        QTest::addRow("key %d", key) << key;
    QTest::newRow("a key without name") << 4711;
}

void TestMainWindow::keyEventReturnsExactlyTheBasesResult()
{
    QFETCH(int, key);
    MainWindow window;
    for (int result : {0, 1, 7}) {
        setKeyEventResult(result);
        takeLog();
        KeyEvent event(key, KeyEvent::Press);
        QCOMPARE(window.keyEvent(&event), result);
        const QStringList log = takeLog();
        QCOMPARE(log.size(), 1);
        QVERIFY2(log.first().startsWith("D [DBG] ") &&
                     log.first().contains(QStringLiteral("key: %1 ").arg(key)),
                 qPrintable(log.first()));
    }
    QCOMPARE(takeCalls(All).size(), 3);
}

void TestMainWindow::aKeyEventThatIsNoneIsLeftToTheBase()
{
    MainWindow window;
    setKeyEventResult(0);
    QCOMPARE(window.keyEvent(nullptr), 0);
    QCOMPARE(takeCalls(All).size(), 1);
}

void TestMainWindow::rootWidgetCarriesItsConstructorsSignatureAsName()
{
    MainWindow window;
    window.onCreate();
    QCOMPARE(window.mainWidget()->objectName(),
             QStringLiteral("audiosetting::MainWidget::MainWidget(QWidget*)"));
}

void TestMainWindow::rootWidgetIsDeletedWithAWindowThatNoShellTookItFrom()
{
    QPointer<QWidget> root;
    {
        MainWindow window;
        window.onCreate();
        root = window.mainWidget();
    }
    QVERIFY(!root);
}

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
