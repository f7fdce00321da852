#include "tests/M5QX/equalizer/eqsettings.h"
#include "tests/support/randomwalk.h"
#include "tests/support/touch.h"

#include <QRegularExpression>

#include <climits>

using namespace eqsettings;

namespace {

/// Counts events of one kind that reach the widgets that it watches.
class EventCounter : public QObject
{
public:
    explicit EventCounter(QEvent::Type type)
        : m_type(type)
    {
    }
    int count = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == m_type;
        return false;
    }

private:
    QEvent::Type m_type;
};

} // namespace

/// What a finger on the EQ settings page does.
class TestEqSettingsTouches : public EqSettingsFixture
{
    Q_OBJECT
private slots:
    void init() { makePage(); }
    void cleanup() { m_page.reset(); }

    void aTouchAtTheTopOfABarGivesPlus10AndAtTheBottomMinus10();
    void fingerHeightGivesTheValue();
    void aPressSetsTheTypeOnceThenBeeps_data();
    void aPressSetsTheTypeOnceThenBeeps();
    void withAPresetActiveATouchSwitchesToTheLastCustomTypeBeforeEditing();
    void aReleaseSendsExactlyOneCallWithTheValueBeforeTheBand_data();
    void aReleaseSendsExactlyOneCallWithTheValueBeforeTheBand();
    void nothingIsSentDuringADrag();
    void draggingAcrossBarsKeepsEditingTheBandFirstTouched();
    void aDragOffTheBarKeepsTheLastValue();
    void aPressOutsideEveryBarDoesNothing_data();
    void aPressOutsideEveryBarDoesNothing();
    void aTouchFarOffTheScreenDoesNothing();
    void aPressOutsideEveryBarEndsATouchWhoseReleaseWasLost();
    void aTouchOnWhatLiesInABarIsATouchOnTheBar_data();
    void aTouchOnWhatLiesInABarIsATouchOnTheBar();
    void theSecondOfTwoQuickTouchesCounts();
    void otherButtonsAreNoTouch();
    void hidingDuringATouchForgetsIt();

    void bubbleFollowsTheFinger_data();
    void bubbleFollowsTheFinger();
    void bubbleGoesAtRelease();
    void onlyTheTouchedHandleMovesAndIsRepainted();

    void randomTouchesKeepEveryInvariant_data() { RandomWalk::addSeedRow(); }
    void randomTouchesKeepEveryInvariant();
};

void TestEqSettingsTouches::aTouchAtTheTopOfABarGivesPlus10AndAtTheBottomMinus10()
{
    click(QPoint(barLeft[4] + 5, barTop));
    QCOMPARE(takeCalls(), QStringList({"AudioService.setEQType(6, true)", "AudioService.doBeep(0)",
                                       "AudioService.setCustomEq1(10, 4, true)"}));
    QCOMPARE(drawn().at(4), 10);
    click(QPoint(barLeft[4] + 5, barTop + barHeight - 1));
    QCOMPARE(takeCalls(), QStringList({"AudioService.setEQType(6, true)", "AudioService.doBeep(0)",
                                       "AudioService.setCustomEq1(-10, 4, true)"}));
    QCOMPARE(drawn().at(4), -10);
}

void TestEqSettingsTouches::fingerHeightGivesTheValue()
{
    for (int i = 0; i < 21; ++i) {
        const int last = i == 20 ? barHeight - 1 : firstPixel[i + 1] - 1;
        for (const int pixel : {firstPixel[i], last}) {
            click(QPoint(barLeft[0], barTop + pixel));
            QCOMPARE(takeCalls().last(),
                     QStringLiteral("AudioService.setCustomEq1(%1, 0, true)").arg(10 - i));
        }
    }
}

void TestEqSettingsTouches::aPressSetsTheTypeOnceThenBeeps_data()
{
    QTest::addColumn<int>("current");
    QTest::addColumn<int>("set");
    for (int type = 0; type <= 5; ++type)
        QTest::addRow("preset %d, last user type 6", type) << type << 6;
    QTest::newRow("user 1 is current") << 6 << 6;
    QTest::newRow("user 2 is current") << 7 << 7;
    QTest::newRow("type 8") << 8 << 6;
}

void TestEqSettingsTouches::aPressSetsTheTypeOnceThenBeeps()
{
    QFETCH(int, current);
    QFETCH(int, set);
    audio().eqType = current;
    press(onBar(7, 3));
    QCOMPARE(takeCalls(), QStringList({QStringLiteral("AudioService.setEQType(%1, true)").arg(set),
                                       QStringLiteral("AudioService.doBeep(0)")}));
    QCOMPARE(drawn().at(7), 3);
    release(onBar(7, 3));
}

void TestEqSettingsTouches::withAPresetActiveATouchSwitchesToTheLastCustomTypeBeforeEditing()
{
    audio().eqType = 7;
    emitEQType(7);
    audio().eqType = 3;
    emitEQType(3);
    takeCalls(All);
    click(onBar(12, -4));
    QCOMPARE(takeCalls(), QStringList({"AudioService.setEQType(7, true)", "AudioService.doBeep(0)",
                                       "AudioService.setCustomEq2(-4, 12, true)"}));
    QCOMPARE(drawn().at(12), -4);
    m_page->updateEq(6);
    QCOMPARE(drawn(), QVector<int>(13, 0));
}

void TestEqSettingsTouches::aReleaseSendsExactlyOneCallWithTheValueBeforeTheBand_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("call");
    QTest::newRow("user 1") << 6 << "AudioService.setCustomEq1(%1, %2, true)";
    QTest::newRow("user 2") << 7 << "AudioService.setCustomEq2(%1, %2, true)";
}

void TestEqSettingsTouches::aReleaseSendsExactlyOneCallWithTheValueBeforeTheBand()
{
    QFETCH(int, type);
    QFETCH(QString, call);
    audio().eqType = type;
    for (int band = 0; band < bandCount; ++band) {
        press(onBar(band, 0));
        move(onBar(band, band - 6));
        takeCalls(All);
        release(onBar(band, 9)); // where it is lifted doesn't matter, the last move does
        QCOMPARE(takeCalls(), QStringList(call.arg(band - 6).arg(band)));
        release(onBar(band, 9));
        QCOMPARE(takeCalls(), QStringList());
    }
}

void TestEqSettingsTouches::nothingIsSentDuringADrag()
{
    press(onBar(2, 10));
    takeCalls(All);
    for (int y = barTop; y < barTop + barHeight; ++y)
        move(QPoint(barLeft[2] + 10, y));
    QCOMPARE(takeCalls(), QStringList());
    QCOMPARE(drawn().at(2), -10);
    release(onBar(2, -10));
    QCOMPARE(takeCalls(), QStringList("AudioService.setCustomEq1(-10, 2, true)"));
}

void TestEqSettingsTouches::draggingAcrossBarsKeepsEditingTheBandFirstTouched()
{
    press(onBar(5, 2));
    move(onBar(6, -8));
    move(onBar(7, 8));
    QCOMPARE(drawn().at(5), 2);
    QCOMPARE(drawn().at(6), 0);
    move(onBar(5, 4));
    QCOMPARE(drawn().at(5), 4);
    move(onBar(8, 1));
    takeCalls(All);
    release(onBar(8, 1));
    QCOMPARE(takeCalls(), QStringList("AudioService.setCustomEq1(4, 5, true)"));
    QVector<int> expected(13, 0);
    expected[5] = 4;
    QCOMPARE(drawn(), expected);
}

void TestEqSettingsTouches::aDragOffTheBarKeepsTheLastValue()
{
    press(onBar(0, 5));
    move(onBar(0, 6));
    const QRect before = bubble()->geometry();
    for (const QPoint& off : {QPoint(barLeft[0] + 30, barTop - 1),
                              QPoint(barLeft[0] + 30, barTop + barHeight), QPoint(barLeft[0] - 1, 300),
                              QPoint(barLeft[0] + 60, 300), QPoint(-500, -500), QPoint(5000, 5000)}) {
        move(off);
        QCOMPARE(drawn().at(0), 6);
        QCOMPARE(bubble()->geometry(), before);
    }
    takeCalls(All);
    release(QPoint(5000, 5000));
    QCOMPARE(takeCalls(), QStringList("AudioService.setCustomEq1(6, 0, true)"));
}

void TestEqSettingsTouches::aPressOutsideEveryBarDoesNothing_data()
{
    QTest::addColumn<QPoint>("point");
    QTest::newRow("above a bar") << QPoint(barLeft[3] + 30, barTop - 1);
    QTest::newRow("below a bar") << QPoint(barLeft[3] + 30, barTop + barHeight);
    QTest::newRow("left of all") << QPoint(barLeft[0] - 1, 300);
    QTest::newRow("right of the first, which is the narrow one") << QPoint(barLeft[0] + 60, 300);
    QTest::newRow("right of the last") << QPoint(barLeft[12] + 62, 300);
    QTest::newRow("between two bars") << QPoint(barLeft[1] + 62, 300);
    QTest::newRow("title") << QPoint(200, 48);
}

void TestEqSettingsTouches::aPressOutsideEveryBarDoesNothing()
{
    QFETCH(QPoint, point);
    audio().eqType = 2;
    press(point);
    move(onBar(4, 4));
    release(onBar(4, 4));
    QCOMPARE(takeCalls(All), QStringList());
    QVERIFY(bubble()->isHidden());
    QCOMPARE(drawn(), QVector<int>(13, 0));
}

void TestEqSettingsTouches::aTouchFarOffTheScreenDoesNothing()
{
    const int far[] = {INT_MIN, INT_MIN + 1, -2000000000, 2000000000, INT_MAX};
    takeCalls();
    for (const int x : far) {
        for (const int y : far) {
            for (const QEvent::Type type :
                 {QEvent::MouseButtonPress, QEvent::MouseMove, QEvent::MouseButtonRelease}) {
                QMouseEvent event(type, QPoint(x, y), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
                QCoreApplication::sendEvent(m_page.data(), &event);
            }
        }
    }
    QCOMPARE(takeCalls(), QStringList());
}

void TestEqSettingsTouches::aPressOutsideEveryBarEndsATouchWhoseReleaseWasLost()
{
    press(onBar(4, 4));
    takeCalls();
    const QPoint outside(barLeft[3] + 30, barTop - 1);
    QTest::mousePress(m_page.data(), Qt::LeftButton, Qt::NoModifier, outside);
    QVERIFY(bubble()->isHidden());
    move(onBar(4, -4));
    QTest::mouseRelease(m_page.data(), Qt::LeftButton, Qt::NoModifier, onBar(4, -4));
    QCOMPARE(takeCalls(), QStringList());
    QCOMPARE(drawn().at(4), 4);
}

void TestEqSettingsTouches::aTouchOnWhatLiesInABarIsATouchOnTheBar_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QPoint>("point");
    QTest::addColumn<int>("value");
    QTest::newRow("handle") << "icon_band_num_9" << QPoint(barLeft[8] + 20, barTop + 170) << 1;
    QTest::newRow("background") << "bkg_band_num_9" << QPoint(barLeft[8] + 20, barTop + 40) << 8;
    QTest::newRow("caption") << "text_band_hz_9" << QPoint(barLeft[8] + 20, barTop + 355) << -10;
    QTest::newRow("panel") << "eq_band_widget9" << QPoint(barLeft[8] + 61, barTop + 40) << 8;
}

void TestEqSettingsTouches::aTouchOnWhatLiesInABarIsATouchOnTheBar()
{
    QFETCH(QPoint, point);
    QFETCH(int, value);
    QTEST(press(point)->objectName(), "name");
    release(point);
    QCOMPARE(takeCalls().last(), QStringLiteral("AudioService.setCustomEq1(%1, 8, true)").arg(value));
}

void TestEqSettingsTouches::theSecondOfTwoQuickTouchesCounts()
{
    // The window system names the second press a double-click.
    click(onBar(1, 5));
    takeCalls(All);
    QTest::mouseDClick(m_page.data(), Qt::LeftButton, Qt::NoModifier, onBar(1, 2));
    QCOMPARE(takeCalls(), QStringList({"AudioService.setEQType(6, true)", "AudioService.doBeep(0)"}));
    QTest::mouseRelease(m_page.data(), Qt::LeftButton, Qt::NoModifier, onBar(1, 2));
    QCOMPARE(takeCalls(), QStringList("AudioService.setCustomEq1(2, 1, true)"));
}

void TestEqSettingsTouches::otherButtonsAreNoTouch()
{
    QTest::mouseClick(m_page.data(), Qt::RightButton, Qt::NoModifier, onBar(1, 2));
    QCOMPARE(takeCalls(), QStringList());
}

void TestEqSettingsTouches::hidingDuringATouchForgetsIt()
{
    press(onBar(6, 6));
    QVERIFY(bubble()->isVisible());
    takeCalls(All);
    m_page->hide();
    QVERIFY(bubble()->isHidden());
    move(onBar(6, -6));
    release(onBar(6, -6));
    QCOMPARE(takeCalls(), QStringList());
    m_page->show();
    QVERIFY(bubble()->isHidden());
}

void TestEqSettingsTouches::bubbleFollowsTheFinger_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("band");
    QTest::addColumn<int>("value");
    QTest::addColumn<QPoint>("place");
    QTest::newRow("first bar at the top") << 6 << 0 << 10 << QPoint(57, 172);
    QTest::newRow("first bar at the bottom is wholly on the page") << 6 << 0 << -10 << QPoint(57, 481);
    QTest::newRow("last bar in the middle") << 6 << 12 << 0 << QPoint(849, 326);
    QTest::newRow("user 2") << 7 << 5 << 3 << QPoint(387, 280);
}

void TestEqSettingsTouches::bubbleFollowsTheFinger()
{
    QFETCH(int, type);
    QFETCH(int, band);
    QFETCH(int, value);
    QFETCH(QPoint, place);
    audio().eqType = type;
    press(onBar(band, value));
    QVERIFY(bubble()->isVisible());
    QCOMPARE(bubble()->geometry(), QRect(place, QSize(164, 29)));
    QVERIFY(m_page->rect().contains(bubble()->geometry()));
    QVERIFY(qAbs(bubble()->geometry().center().x() - (barLeft[band] + 30)) <= 3);
    QCOMPARE(label("text_eq_band_num")->text(), QString::number(value));
    QCOMPARE(m_page->childAt(bubble()->geometry().center()), label("text_eq_band_num"));
    // A move takes it along.
    move(onBar(band, -value));
    QCOMPARE(bubble()->y(), barTop + handleTravel[10 + value] + 31);
    QCOMPARE(label("text_eq_band_num")->text(), QString::number(-value));
    release(onBar(band, -value));
}

void TestEqSettingsTouches::bubbleGoesAtRelease()
{
    click(onBar(6, 1));
    QVERIFY(bubble()->isHidden());
}

void TestEqSettingsTouches::onlyTheTouchedHandleMovesAndIsRepainted()
{
    press(onBar(6, 2));
    QCoreApplication::processEvents();
    EventCounter otherMoves(QEvent::Move);
    EventCounter otherPaints(QEvent::Paint);
    EventCounter ownMoves(QEvent::Move);
    for (int band = 0; band < bandCount; ++band) {
        handle(band)->installEventFilter(band == 6 ? &ownMoves : &otherMoves);
        if (qAbs(band - 6) > 1) // the bubble is wider than its bar
            handle(band)->parentWidget()->installEventFilter(&otherPaints);
    }
    EventCounter titlePaints(QEvent::Paint);
    label("text_title")->installEventFilter(&titlePaints);
    move(onBar(6, -5));
    QCoreApplication::processEvents();
    QCOMPARE(ownMoves.count, 1);
    QCOMPARE(otherMoves.count, 0);
    QCOMPARE(otherPaints.count, 0);
    QCOMPARE(titlePaints.count, 0);
    // A finger that trembles within one step repaints nothing at all.
    EventCounter anyPaints(QEvent::Paint);
    m_page->installEventFilter(&anyPaints);
    move(onBar(6, -5) + QPoint(1, 1));
    QCoreApplication::processEvents();
    QCOMPARE(ownMoves.count, 1);
    QCOMPARE(anyPaints.count, 0);
    release(onBar(6, -5));
}

void TestEqSettingsTouches::randomTouchesKeepEveryInvariant()
{
    QFETCH(quint32, seed);
    const QRegularExpression sent(
        QStringLiteral("^AudioService\\.setCustomEq([12])\\((-?\\d+), (\\d+), true\\)$"));
    RandomWalk walk(m_page.data(), seed);
    // Off the close key: leaving is tested elsewhere, and here only fills the event queue.
    walk.setGround(QRect(0, 0, 930, m_page->height()));
    walk.setAim([&walk] { return QPoint(100 + walk.bounded(830), barTop + walk.bounded(barHeight)); });
    int band = -1;
    QVector<int> before;
    for (int event = 0; event < 20000; ++event) {
        const RandomWalk::Step step = walk.step();
        if (step == RandomWalk::Press) {
            band = m_page->touchIndexByPoint(walk.at());
            QCOMPARE(takeCalls(Audio).size(), band >= 0 ? 2 : 0);
            QCOMPARE(bubble()->isVisible(), band >= 0);
        } else if (step == RandomWalk::Move) {
            QCOMPARE(takeCalls(), QStringList());
        } else {
            const bool onKey = qobject_cast<QPushButton*>(walk.holder());
            const QStringList calls = takeCalls();
            QVERIFY(bubble()->isHidden());
            if (band >= 0) {
                QCOMPARE(calls.size(), 1);
                const auto match = sent.match(calls.first());
                QVERIFY2(match.hasMatch(), qPrintable(calls.first()));
                QCOMPARE(match.captured(1).toInt(), audio().eqType - 5);
                QCOMPARE(match.captured(2).toInt(), before.at(band));
                QCOMPARE(match.captured(3).toInt(), band);
            } else if (!onKey) {
                QCOMPARE(calls, QStringList());
            }
            if (walk.bounded(50) == 0) {
                audio().eqType = walk.bounded(9);
                emitEQType(audio().eqType);
            }
            takeCalls(All);
        }
        before = drawn();
        QCOMPARE(before.size(), bandCount);
        if (event % 500 == 0)
            QCoreApplication::processEvents();
    }
    walk.end();
    takeBackRequests();
    takeLog();
}

QTEST_MAIN(TestEqSettingsTouches)
#include "tst_m5qx_audiosetting_settings_touches.moc"
