#include "common/basewindow.h"
#include "common/keyevent.h"
#include "common/transferstation.h"
#include "platform/common/framework/journal.h"

#include <QWidget>
#include <QtTest>

using cm::BaseWindow;
using cm::R9TransferStation;

class TestBaseWindow : public QObject
{
    Q_OBJECT
private slots:
    void hasNoWidgetBeforeOneIsHandedOut();
    void keepsWidgetAndId();
    void forgetsAWidgetThatIsDestroyed();
    void deletesAWidgetThatNoShellHasTaken();
    void leavesAWidgetThatAShellHasTaken();
    void aSecondWidgetReplacesTheFirst();
    void survivesANullWidget();
    void keys_data();
    void keys();
    void survivesANullKeyEvent();
    void leavesBackToTheShell();
    void slotOrderIsTheInterfaces();
    void reportsItsLifeCycle();
};

void TestBaseWindow::hasNoWidgetBeforeOneIsHandedOut()
{
    const BaseWindow window;
    QVERIFY(!window.mainWidget());
    QCOMPARE(window.mainWidgetId(), 0);
}

void TestBaseWindow::keepsWidgetAndId()
{
    BaseWindow window;
    auto* const widget = new QWidget;
    window.setMainWidget(widget, 33);
    QCOMPARE(window.mainWidget(), widget);
    QCOMPARE(window.mainWidgetId(), 33);
}

void TestBaseWindow::forgetsAWidgetThatIsDestroyed()
{
    BaseWindow window;
    auto* const widget = new QWidget;
    window.setMainWidget(widget, 33);
    delete widget;
    QVERIFY(!window.mainWidget());
}

void TestBaseWindow::deletesAWidgetThatNoShellHasTaken()
{
    QPointer<QWidget> widget(new QWidget);
    {
        BaseWindow window;
        window.setMainWidget(widget, 33);
    }
    QVERIFY(!widget);
}

void TestBaseWindow::leavesAWidgetThatAShellHasTaken()
{
    QWidget screen;
    QPointer<QWidget> widget(new QWidget);
    {
        BaseWindow window;
        window.setMainWidget(widget, 33);
        widget->setParent(&screen);
    }
    QVERIFY(widget);
}

void TestBaseWindow::aSecondWidgetReplacesTheFirst()
{
    BaseWindow window;
    QPointer<QWidget> first(new QWidget);
    auto* const second = new QWidget;
    window.setMainWidget(first, 33);
    window.setMainWidget(second, 34);
    QVERIFY(!first);
    QCOMPARE(window.mainWidget(), second);
    window.setMainWidget(second, 35);
    QCOMPARE(window.mainWidget(), second);
    QCOMPARE(window.mainWidgetId(), 35);
}

void TestBaseWindow::survivesANullWidget()
{
    BaseWindow window;
    QTest::ignoreMessage(QtWarningMsg, "BaseWindow: window 33 hands out no root widget");
    window.setMainWidget(nullptr, 33);
    QVERIFY(!window.mainWidget());
}

void TestBaseWindow::keys_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("action");
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("next");
    QTest::addColumn<int>("previous");
    // clang-format off
    QTest::newRow("next page pages")              << int(KeyEvent::Key_NextPage) << int(KeyEvent::Press)     << 1 << 1 << 0;
    QTest::newRow("previous page pages")          << int(KeyEvent::Key_PrevPage) << int(KeyEvent::Press)     << 1 << 0 << 1;
    QTest::newRow("its release doesn't page")     << int(KeyEvent::Key_NextPage) << int(KeyEvent::Release)   << 1 << 0 << 0;
    QTest::newRow("holding it doesn't page")      << int(KeyEvent::Key_PrevPage) << int(KeyEvent::LongPress) << 1 << 0 << 0;
    QTest::newRow("home is the shell's")          << int(KeyEvent::Key_Home)     << int(KeyEvent::Press)     << 0 << 0 << 0;
    QTest::newRow("back is the shell's")          << int(KeyEvent::Key_Back)     << int(KeyEvent::Press)     << 0 << 0 << 0;
    QTest::newRow("volume is the shell's")        << int(KeyEvent::Key_VolumeUp) << int(KeyEvent::Press)     << 0 << 0 << 0;
    QTest::newRow("an unknown key is the shell's") << 4711                       << int(KeyEvent::Press)     << 0 << 0 << 0;
    // clang-format on
}

void TestBaseWindow::keys()
{
    QFETCH(int, key);
    QFETCH(int, action);
    R9TransferStation* const station = cm::TransferFunction::instance()->getTS();
    QSignalSpy next(station, &R9TransferStation::setupNextPage);
    QSignalSpy previous(station, &R9TransferStation::setupPrevPage);
    BaseWindow window;
    KeyEvent event(key, static_cast<KeyEvent::Action>(action));
    QTEST(window.keyEvent(&event), "result");
    QTEST(next.size(), "next");
    QTEST(previous.size(), "previous");
}

void TestBaseWindow::survivesANullKeyEvent()
{
    BaseWindow window;
    QTest::ignoreMessage(QtWarningMsg, "BaseWindow: a key event that is none");
    QCOMPARE(window.keyEvent(nullptr), 0);
}

void TestBaseWindow::leavesBackToTheShell()
{
    BaseWindow window;
    QCOMPARE(window.backEvent(), 0);
    QVERIFY(window.name().isEmpty());
}

void TestBaseWindow::slotOrderIsTheInterfaces()
{
    // The virtual table's order is the contract with applications that were built earlier; a window that
    // overrides all nine and is driven through WindowInterface shows that each arrives where it should.
    class Window : public BaseWindow
    {
    public:
        QStringList calls;
        void onCreate() override { calls << QStringLiteral("onCreate"); }
        void onDestroy() override { calls << QStringLiteral("onDestroy"); }
        void onShow() override { calls << QStringLiteral("onShow"); }
        void onHide() override { calls << QStringLiteral("onHide"); }
        void onEnter() override { calls << QStringLiteral("onEnter"); }
        void onExit() override { calls << QStringLiteral("onExit"); }
        int backEvent() override { return 1; }
        int keyEvent(KeyEvent* event) override { return BaseWindow::keyEvent(event); }
        QString name() override { return QStringLiteral("W"); }
    } window;
    WindowInterface* const interface = &window;
    interface->onCreate();
    interface->onShow();
    interface->onEnter();
    interface->onExit();
    interface->onHide();
    interface->onDestroy();
    QCOMPARE(window.calls.join(QLatin1Char(' ')),
             QStringLiteral("onCreate onShow onEnter onExit onHide onDestroy"));
    QCOMPARE(interface->backEvent(), 1);
    QCOMPARE(interface->name(), QStringLiteral("W"));
    QVERIFY(!interface->mainWidget());
}

void TestBaseWindow::reportsItsLifeCycle()
{
    QStringList reported;
    const QMetaObject::Connection connection = connect(
        cm::Journal::instance(), &cm::Journal::recorded, this, [&reported](const cm::Journal::Entry& entry) {
            reported << entry.subsystem + QLatin1Char('.') + entry.operation;
        });
    BaseWindow window;
    window.setMainWidget(new QWidget, 33);
    window.onCreate();
    window.onShow();
    window.onEnter();
    KeyEvent event(KeyEvent::Key_Mute, KeyEvent::Press);
    window.keyEvent(&event);
    window.backEvent();
    window.onExit();
    window.onHide();
    window.onDestroy();
    disconnect(connection);
    QCOMPARE(reported,
             QStringList({QStringLiteral("BaseWindow.setMainWidget(QWidget, 33)"),
                          QStringLiteral("BaseWindow.onCreate()"), QStringLiteral("BaseWindow.onShow()"),
                          QStringLiteral("BaseWindow.onEnter()"), QStringLiteral("BaseWindow.keyEvent(6)"),
                          QStringLiteral("BaseWindow.backEvent()"), QStringLiteral("BaseWindow.onExit()"),
                          QStringLiteral("BaseWindow.onHide()"), QStringLiteral("BaseWindow.onDestroy()")}));
}

QTEST_MAIN(TestBaseWindow)
#include "tst_basewindow.moc"
