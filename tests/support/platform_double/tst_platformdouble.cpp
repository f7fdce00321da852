#include "common/basewindow.h"
#include "common/customslider.h"
#include "common/pushbutton.h"
#include "common/scroll.h"
#include "common/settings.h"
#include "hvaudio/audioservice.h"
#include "tests/support/platform_double/platform_double.h"
#include "tests/support/touch.h"

#include <QScrollArea>
#include <QtTest>

using namespace platform_double;

/// Does the recording platform keep what the interface's headers promise of odd arguments? A page that leans
/// on such a promise would otherwise fail on the unit alone, or in its test alone.
class TestPlatformDouble : public QObject
{
    Q_OBJECT
private slots:
    void init() { reset(); }

    void aServiceValueOutOfRangeIsLoggedAndChangesNothing();
    void aSettingOfAnotherTypeOrWithoutAKeyIsLoggedAndNotKept();
    void nullIsLoggedAndDoesNothing();
    void aRootWidgetThatNobodyTookGoesWhenAnotherIsHandedOut();
    void aManagerThatWasReplacedScrollsNoMore();
    void aSliderThatIsTakenFromTheFingerShowsItsOldValue_data();
    void aSliderThatIsTakenFromTheFingerShowsItsOldValue();
};

void TestPlatformDouble::aServiceValueOutOfRangeIsLoggedAndChangesNothing()
{
    hvaudio::AudioService* service = hvaudio::AudioService::instance();
    for (const int type : {-1, 9}) {
        service->setEQType(static_cast<AudioEQType>(type), true);
        QCOMPARE(audio().eqType, 0);
    }
    service->setBalanceFader(16, 0, true);
    service->setBalanceFader(0, -16, true);
    QCOMPARE(audio().balance, 0);
    QCOMPARE(audio().fader, 0);
    QCOMPARE(takeLog().filter(QStringLiteral("W AudioService.")).size(), 4);
    service->setBalanceFader(15, -15, true);
    service->setEQType(EQ_Type_Custom, true);
    QCOMPARE(QPoint(audio().balance, audio().fader), QPoint(15, -15));
    QCOMPARE(audio().eqType, 8);
    QCOMPARE(takeLog(), QStringList());
}

void TestPlatformDouble::aSettingOfAnotherTypeOrWithoutAKeyIsLoggedAndNotKept()
{
    mem::SettingsFunc::instance()->setValue(QStringLiteral("key"), 0, 1.5, true);
    mem::SettingsExe(nullptr).setValue(QString(), 0, 1, true);
    QCOMPARE(takeLog().filter(QStringLiteral("W ")).size(), 2);
    QCOMPARE(stored(QStringLiteral("key")), QVariant());
    QCOMPARE(stored(QString()), QVariant());
}

void TestPlatformDouble::nullIsLoggedAndDoesNothing()
{
    cm::BaseWindow window;
    window.setMainWidget(nullptr, 7);
    QVERIFY(!window.mainWidget());
    setKeyEventResult(1);
    QCOMPARE(window.keyEvent(nullptr), 0);
    setKeyEventResult(0);
    const cm::PushButton button(nullptr, nullptr);
    cm::ScrollManage(nullptr, true, false).scrollToPos(QPoint(0, 1), false);
    QCOMPARE(takeLog().filter(QStringLiteral("W ")).size(), 4);
}

void TestPlatformDouble::aRootWidgetThatNobodyTookGoesWhenAnotherIsHandedOut()
{
    cm::BaseWindow window;
    const QPointer<QWidget> first = new QWidget;
    window.setMainWidget(first, 7);
    window.setMainWidget(new QWidget, 7);
    QVERIFY(!first);
}

void TestPlatformDouble::aManagerThatWasReplacedScrollsNoMore()
{
    QScrollArea area;
    area.resize(100, 100);
    auto* contents = new QWidget;
    contents->resize(100, 1000);
    area.setWidget(contents);
    area.show();
    cm::ScrollManage older(&area, false, false);
    cm::ScrollManage newer(&area, true, false);
    older.scrollToPos(QPoint(0, 200), false);
    QCOMPARE(area.verticalScrollBar()->value(), 0);
    newer.scrollToPos(QPoint(0, 200), false);
    QCOMPARE(area.verticalScrollBar()->value(), 200);
}

void TestPlatformDouble::aSliderThatIsTakenFromTheFingerShowsItsOldValue_data()
{
    QTest::addColumn<bool>("hidden");
    QTest::newRow("disabled") << false;
    QTest::newRow("hidden") << true;
}

void TestPlatformDouble::aSliderThatIsTakenFromTheFingerShowsItsOldValue()
{
    QFETCH(bool, hidden);
    QWidget page;
    page.resize(400, 60);
    settings::CustomSlider_2 slider(&page, QRect(0, 0, 400, 60), 4);
    page.show();
    slider.setValue(20);
    const QSignalSpy settled(&slider, SIGNAL(valSave(int)));
    touch::press(&page, QPoint(300, 30));
    QVERIFY(slider.value() != 20);
    hidden ? slider.hide() : slider.setEnabled(false);
    QCOMPARE(slider.value(), 20);
    touch::release(&page, QPoint(300, 30));
    QCOMPARE(slider.value(), 20);
    QVERIFY(settled.isEmpty());
}

QTEST_MAIN(TestPlatformDouble)
#include "tst_platformdouble.moc"
