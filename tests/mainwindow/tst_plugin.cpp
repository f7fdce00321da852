#include "mainwindow/plugin.h"

#include "common/windowinterface.h"
#include "mainwindow/mainwindow.h"
#include "tests/support/platform_double/platform_double.h"

#include <QtTest>

using namespace audiosetting;

class TestPlugin : public QObject
{
    Q_OBJECT
private slots:
    void init() { platform_double::reset(); }
    void derivesFromQObjectFirst();
    void createDoesNothing();
    void offersWindow33AndNoSource();
    void window33IsMadeOnceAndStaysThePlugins();
    void anyOtherWindowIdYieldsNothing_data();
    void anyOtherWindowIdYieldsNothing();
    void noSourceIsEverHandedOut();
};

void TestPlugin::derivesFromQObjectFirst()
{
    Plugin plugin;
    QCOMPARE(static_cast<void*>(static_cast<QObject*>(&plugin)), static_cast<void*>(&plugin));
    QCOMPARE(qobject_cast<AppPlugin*>(&plugin), static_cast<AppPlugin*>(&plugin));
}

void TestPlugin::createDoesNothing()
{
    Plugin plugin;
    plugin.create();
    QCOMPARE(platform_double::takeCalls(platform_double::All), QStringList());
    QVERIFY(plugin.children().isEmpty());
}

void TestPlugin::offersWindow33AndNoSource()
{
    Plugin plugin;
    QCOMPARE(plugin.windowInterfaceID(), QList<int>{33});
    QCOMPARE(plugin.sourceInterfaceID(), QList<int>());
}

void TestPlugin::window33IsMadeOnceAndStaysThePlugins()
{
    Plugin plugin;
    WindowInterface* first = plugin.requestWindowInterface(33);
    QVERIFY(first);
    QCOMPARE(plugin.requestWindowInterface(33), first);
    QCOMPARE(plugin.children().size(), 1);
    auto* window = qobject_cast<MainWindow*>(plugin.children().first());
    QVERIFY(window);
    QCOMPARE(static_cast<WindowInterface*>(window), first);
    QCOMPARE(first->name(), QStringLiteral("EQ"));
}

void TestPlugin::anyOtherWindowIdYieldsNothing_data()
{
    QTest::addColumn<int>("id");
    QTest::newRow("zero") << 0;
    QTest::newRow("below") << 32;
    QTest::newRow("above") << 34;
    QTest::newRow("negative") << -33;
}

void TestPlugin::anyOtherWindowIdYieldsNothing()
{
    QFETCH(int, id);
    Plugin plugin;
    QVERIFY(!plugin.requestWindowInterface(id));
    QVERIFY(plugin.children().isEmpty());
}

void TestPlugin::noSourceIsEverHandedOut()
{
    Plugin plugin;
    for (int id : {0, 1, 18, 33, -1})
        QVERIFY(!plugin.requestSourceInterface(id));
}

QTEST_MAIN(TestPlugin)
#include "tst_plugin.moc"
