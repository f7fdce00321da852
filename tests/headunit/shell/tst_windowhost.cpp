#include "headunit/shell/windowhost.h"

#include "tests/headunit/shell/fakewindow.h"
#include "tests/support/messagelog.h"

#include <QtTest>

using namespace headunit;

static const QStringList opening{"onCreate", "onShow", "root shown", "onEnter"};
static const QStringList leaving{"onExit", "root hidden", "onHide"};
static const QStringList destroying{"onDestroy", "root deleted"};

class TestWindowHost : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void openRunsCreateShowEnter();
    void openFillsTheAreaWithTheRootWidget();
    void openTwiceOpensOnce();
    void leaveRunsExitHide();
    void leaveBehindTheFrontDoesNothing();
    void reopeningResumesTheSameRootWidget();
    void destroyInFrontLeavesFirst();
    void destroyAfterLeaveOnlyDestroys();
    void destroyBeforeOpenDoesNothing();
    void afterDestroyOpenTakesANewRootWidget();
    void refreshGoesThroughTheWholeCircle();
    void refreshBehindTheFrontDoesNothing();
    void windowWithoutRootWidgetIsNotInFront();
    void rootWidgetThatVanishesIsTold();
    void leaveAfterTheRootWidgetVanishedStillRunsExitHide();
    void deletingTheHostDestroysTheWindow();

private:
    FakeWindow m_window;
    QScopedPointer<QWidget> m_area;
    QScopedPointer<WindowHost> m_host;
};

void TestWindowHost::init()
{
    m_host.reset();
    m_area.reset(new QWidget);
    m_area->resize(1024, 600);
    m_area->show();
    m_window.handsOutRoot = true;
    m_host.reset(new WindowHost(33, &m_window, m_area.data()));
    m_window.calls.clear();
}

void TestWindowHost::openRunsCreateShowEnter()
{
    QVERIFY(m_host->open());
    QCOMPARE(m_window.takeCalls(), opening);
    QVERIFY(m_host->isInFront());
    QVERIFY(m_host->isCreated());
}

void TestWindowHost::openFillsTheAreaWithTheRootWidget()
{
    m_host->open();
    QCOMPARE(m_host->root(), m_window.root.data());
    QCOMPARE(m_window.root->parentWidget(), m_area.data());
    QCOMPARE(m_window.root->geometry(), QRect(0, 0, 1024, 600));
    QVERIFY(m_window.root->isVisible());
}

void TestWindowHost::openTwiceOpensOnce()
{
    m_host->open();
    m_window.takeCalls();
    QVERIFY(m_host->open());
    QCOMPARE(m_window.takeCalls(), QStringList());
}

void TestWindowHost::leaveRunsExitHide()
{
    m_host->open();
    m_window.takeCalls();
    m_host->leave();
    QCOMPARE(m_window.takeCalls(), leaving);
    QVERIFY(!m_host->isInFront());
    QVERIFY(m_host->isCreated());
}

void TestWindowHost::leaveBehindTheFrontDoesNothing()
{
    m_host->leave();
    QCOMPARE(m_window.takeCalls(), QStringList());
}

void TestWindowHost::reopeningResumesTheSameRootWidget()
{
    m_host->open();
    const QWidget* root = m_host->root();
    m_host->leave();
    m_window.takeCalls();
    QVERIFY(m_host->open());
    QCOMPARE(m_window.takeCalls(), opening);
    QCOMPARE(m_host->root(), root);
}

void TestWindowHost::destroyInFrontLeavesFirst()
{
    m_host->open();
    m_window.takeCalls();
    QSignalSpy vanished(m_host.data(), SIGNAL(rootVanished()));
    m_host->destroy();
    QCOMPARE(m_window.takeCalls(), leaving + destroying);
    QCOMPARE(vanished.count(), 0);
    QVERIFY(!m_host->isCreated());
}

void TestWindowHost::destroyAfterLeaveOnlyDestroys()
{
    m_host->open();
    m_host->leave();
    m_window.takeCalls();
    m_host->destroy();
    QCOMPARE(m_window.takeCalls(), destroying);
    m_host->destroy();
    QCOMPARE(m_window.takeCalls(), QStringList());
}

void TestWindowHost::destroyBeforeOpenDoesNothing()
{
    m_host->destroy();
    QCOMPARE(m_window.takeCalls(), QStringList());
}

void TestWindowHost::afterDestroyOpenTakesANewRootWidget()
{
    m_host->open();
    m_host->destroy();
    m_window.takeCalls();
    QVERIFY(m_host->open());
    QCOMPARE(m_window.takeCalls(), opening);
    QVERIFY(m_window.root);
    QCOMPARE(m_host->root(), m_window.root.data());
}

void TestWindowHost::refreshGoesThroughTheWholeCircle()
{
    m_host->open();
    m_window.takeCalls();
    m_host->refresh();
    QCOMPARE(m_window.takeCalls(), leaving + opening);
    QVERIFY(m_host->isInFront());
}

void TestWindowHost::refreshBehindTheFrontDoesNothing()
{
    m_host->open();
    m_host->leave();
    m_window.takeCalls();
    m_host->refresh();
    QCOMPARE(m_window.takeCalls(), QStringList());
}

void TestWindowHost::windowWithoutRootWidgetIsNotInFront()
{
    m_window.handsOutRoot = false;
    MessageLog messages;
    QVERIFY(!m_host->open());
    QVERIFY(!m_host->isInFront());
    QCOMPARE(m_window.takeCalls(), QStringList{"onCreate"});
    QCOMPARE(messages.count("no root widget"), 1);
    m_host->leave();
    QCOMPARE(m_window.takeCalls(), QStringList());
}

void TestWindowHost::rootWidgetThatVanishesIsTold()
{
    m_host->open();
    QSignalSpy vanished(m_host.data(), SIGNAL(rootVanished()));
    delete m_window.root;
    QCOMPARE(vanished.count(), 1);
    QVERIFY(!m_host->root());
}

void TestWindowHost::leaveAfterTheRootWidgetVanishedStillRunsExitHide()
{
    m_host->open();
    delete m_window.root;
    m_window.takeCalls();
    m_host->leave();
    QCOMPARE(m_window.takeCalls(), (QStringList{"onExit", "onHide"}));
}

void TestWindowHost::deletingTheHostDestroysTheWindow()
{
    m_host->open();
    m_window.takeCalls();
    m_host.reset();
    QCOMPARE(m_window.takeCalls(), leaving + destroying);
}

QTEST_MAIN(TestWindowHost)
#include "tst_windowhost.moc"
