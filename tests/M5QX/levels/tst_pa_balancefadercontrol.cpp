#include "M5QX/pa_balancefadercontrol.h"
#include "tests/M5QX/formcheck.h"
#include "tests/support/platform_double/platform_double.h"
#include "tests/support/randomwalk.h"
#include "tests/support/touch.h"

#include <QPainter>
#include <QtTest>

#include <limits>

using audiosetting::balanceFaderControl;
using namespace platform_double;

class TestBalanceFaderControl : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void startsAtZeroInItsRectangle();
    void declaresOneSignal();
    void aPressIsRoundedToTheNearestStep_data();
    void aPressIsRoundedToTheNearestStep();
    void everyPixelFollowsTheTouchScale();
    void pressAndDragEmitOncePerEventAndSendNothing();
    void onlyTheReleaseSendsAndWithItsOwnPosition();
    void aSecondQuickPressIsAPress();
    void aTouchAloneDoesNotMoveTheLocator();
    void theLocatorStandsAtTheValues_data();
    void theLocatorStandsAtTheValues();
    void theConstructorsLocatorStandsOnePixelToTheLeft();
    void settersMoveTheLocatorDrawnAndNothingElse();
    void paintsTheLocatorAlone();
    void valuesFarOutsideAreShownOffThePad();
    void randomTouchesKeepTheValuesInRange_data() { RandomWalk::addSeedRow(); }
    void randomTouchesKeepTheValuesInRange();

private:
    // Where the locator's picture has been drawn: the rectangle of pixels that differ from an empty pad.
    QRect drawn();
    QScopedPointer<QWidget> m_host;
    balanceFaderControl* m_pad = nullptr;
};

namespace {
const QRect place(0, 0, 253, 253);
constexpr int centre = 126;

QRect differing(const QImage& a, const QImage& b)
{
    QRect result;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (a.pixel(x, y) != b.pixel(x, y))
                result |= QRect(x, y, 1, 1);
        }
    }
    return result;
}
} // namespace

void TestBalanceFaderControl::init()
{
    reset();
    m_host.reset(new QWidget);
    m_host->resize(place.size());
    m_pad = new balanceFaderControl(m_host.data(), place);
}

QRect TestBalanceFaderControl::drawn()
{
    const QImage with = m_host->grab().toImage();
    QWidget empty;
    empty.resize(place.size());
    return differing(with, empty.grab().toImage());
}

void TestBalanceFaderControl::startsAtZeroInItsRectangle()
{
    const QRect rect(30, 40, 101, 203);
    balanceFaderControl pad(m_host.data(), rect);
    QCOMPARE(pad.geometry(), rect);
    QCOMPARE(pad.getValueX(), 0);
    QCOMPARE(pad.getValueY(), 0);
    QCOMPARE(takeCalls(All), QStringList());
    // The centre is that of the rectangle's size, wherever it lies.
    pad.updateValue(QPoint(50, 101));
    QCOMPARE(QPoint(pad.getValueX(), pad.getValueY()), QPoint(0, 0));
    pad.updateValue(QPoint(54, 97));
    QCOMPARE(QPoint(pad.getValueX(), pad.getValueY()), QPoint(1, 1));
}

void TestBalanceFaderControl::declaresOneSignal()
{
    QCOMPARE(formcheck::ownMethods(m_pad->metaObject(), QMetaMethod::Signal),
             QStringList{QStringLiteral("balanceFaderChanged(int,int)")});
    QCOMPARE(formcheck::ownMethods(m_pad->metaObject(), QMetaMethod::Slot), QStringList());
}

void TestBalanceFaderControl::aPressIsRoundedToTheNearestStep_data()
{
    QTest::addColumn<QPoint>("offset"); // from the centre, y downwards
    QTest::addColumn<QPoint>("value");
    // clang-format off
    QTest::newRow("exactly on the centre")  << QPoint(0, 0)       << QPoint(0, 0);
    QTest::newRow("3 px right is still 0")  << QPoint(3, 0)       << QPoint(0, 0);
    QTest::newRow("4 px right is 1")        << QPoint(4, 0)       << QPoint(1, 0);
    QTest::newRow("3 px left is still 0")   << QPoint(-3, 0)      << QPoint(0, 0);
    QTest::newRow("4 px left is -1")        << QPoint(-4, 0)      << QPoint(-1, 0);
    QTest::newRow("4 px up is fader 1")     << QPoint(0, -4)      << QPoint(0, 1);
    QTest::newRow("4 px down is fader -1")  << QPoint(0, 4)       << QPoint(0, -1);
    QTest::newRow("101 px right is 14")     << QPoint(101, 0)     << QPoint(14, 0);
    QTest::newRow("102 px right is 15")     << QPoint(102, 0)     << QPoint(15, 0);
    QTest::newRow("112 px is 15 at most")   << QPoint(112, -112)  << QPoint(15, 15);
    QTest::newRow("-102 px is -15")         << QPoint(-102, 102)  << QPoint(-15, -15);
    QTest::newRow("200 px up-left")         << QPoint(-200, -200) << QPoint(-15, 15);
    QTest::newRow("200 px down-right")      << QPoint(200, 200)   << QPoint(15, -15);
    // clang-format on
}

void TestBalanceFaderControl::aPressIsRoundedToTheNearestStep()
{
    QFETCH(QPoint, offset);
    QFETCH(QPoint, value);
    const QSignalSpy changed(m_pad, SIGNAL(balanceFaderChanged(int, int)));
    const QPoint at = QPoint(centre, centre) + offset;
    QMouseEvent press(QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(m_pad, &press);
    QCOMPARE(QPoint(m_pad->getValueX(), m_pad->getValueY()), value);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.first(), (QVariantList{value.x(), value.y()}));
}

void TestBalanceFaderControl::everyPixelFollowsTheTouchScale()
{
    for (int d = -1000; d <= 1000; ++d) {
        m_pad->updateValue(QPoint(centre + d, centre - d));
        // Round half away from zero is round to nearest here: seven has no half.
        const int expected = qBound(-15, qRound(d / 7.0), 15);
        QCOMPARE(m_pad->getValueX(), expected);
        QCOMPARE(m_pad->getValueY(), expected);
    }
}

void TestBalanceFaderControl::pressAndDragEmitOncePerEventAndSendNothing()
{
    QSignalSpy changed(m_pad, SIGNAL(balanceFaderChanged(int, int)));
    touch::press(m_host.data(), QPoint(centre + 7, centre));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.takeFirst(), (QVariantList{1, 0}));
    QCOMPARE(takeCalls(), QStringList{QStringLiteral("McuManager.triggerBeep(0)")});
    touch::move(m_host.data(), QPoint(centre + 7, centre)); // the same value again is still an event
    touch::move(m_host.data(), QPoint(centre - 70, centre - 70));
    touch::move(m_host.data(), QPoint(5000, -5000));
    QCOMPARE(changed.count(), 3);
    QCOMPARE(changed.at(0), (QVariantList{1, 0}));
    QCOMPARE(changed.at(1), (QVariantList{-10, 10}));
    QCOMPARE(changed.at(2), (QVariantList{15, 15}));
    QCOMPARE(takeCalls(All), QStringList());
    touch::release(m_host.data(), QPoint(centre, centre));
}

void TestBalanceFaderControl::onlyTheReleaseSendsAndWithItsOwnPosition()
{
    touch::press(m_host.data(), QPoint(centre + 7, centre));
    touch::move(m_host.data(), QPoint(centre + 14, centre));
    QSignalSpy changed(m_pad, SIGNAL(balanceFaderChanged(int, int)));
    takeCalls();
    touch::release(m_host.data(), QPoint(centre - 21, centre + 28));
    QCOMPARE(takeCalls(All), QStringList{QStringLiteral("AudioService.setBalanceFader(-3, -4, true)")});
    QCOMPARE(changed.count(), 0);
    QCOMPARE(QPoint(m_pad->getValueX(), m_pad->getValueY()), QPoint(-3, -4));
}

void TestBalanceFaderControl::aSecondQuickPressIsAPress()
{
    // The window system tells the second press of two quick ones as a double click.
    touch::click(m_host.data(), QPoint(centre, centre));
    takeCalls();
    const QSignalSpy changed(m_pad, SIGNAL(balanceFaderChanged(int, int)));
    QMouseEvent second(QEvent::MouseButtonDblClick, QPoint(centre + 7, centre), Qt::LeftButton,
                       Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(m_pad, &second);
    QCOMPARE(takeCalls(), QStringList{QStringLiteral("McuManager.triggerBeep(0)")});
    QCOMPARE(changed.count(), 1);
}

void TestBalanceFaderControl::aTouchAloneDoesNotMoveTheLocator()
{
    m_pad->updatePos();
    const QRect before = drawn();
    touch::press(m_host.data(), QPoint(20, 20));
    touch::move(m_host.data(), QPoint(30, 30));
    QCOMPARE(drawn(), before);
    touch::release(m_host.data(), QPoint(30, 30));
    QCOMPARE(drawn(), before);
    QVERIFY(!before.isEmpty());
}

void TestBalanceFaderControl::theLocatorStandsAtTheValues_data()
{
    QTest::addColumn<QPoint>("value");
    QTest::addColumn<QPoint>("locator");
    // clang-format off
    QTest::newRow("centre")                << QPoint(0, 0)     << QPoint(126, 126);
    QTest::newRow("15, -15 on 253")        << QPoint(15, -15)  << QPoint(238, 238);
    QTest::newRow("-15, 15 on 253")        << QPoint(-15, 15)  << QPoint(14, 14);
    QTest::newRow("1, 1 truncates to 7")   << QPoint(1, 1)     << QPoint(133, 119);
    QTest::newRow("-1, -1 towards zero")   << QPoint(-1, -1)   << QPoint(119, 133);
    QTest::newRow("2, -2: 14.9 is 14")     << QPoint(2, -2)    << QPoint(140, 140);
    // clang-format on
}

void TestBalanceFaderControl::theLocatorStandsAtTheValues()
{
    QFETCH(QPoint, value);
    QFETCH(QPoint, locator);
    m_pad->setValueX(value.x());
    m_pad->setValueY(value.y());
    m_pad->updatePos();
    const QPixmap picture(QStringLiteral(":/vexa_m5qx_settingicon_ext/locator.png"));
    QVERIFY(!picture.isNull());
    // Against the same picture drawn by hand at its place.
    QWidget empty;
    empty.resize(place.size());
    QImage expected = empty.grab().toImage();
    QPainter painter(&expected);
    painter.drawPixmap(locator.x() - picture.width() / 2 + 1, locator.y() - picture.height() / 2, picture);
    painter.end();
    QCOMPARE(m_host->grab().toImage(), expected);
}

void TestBalanceFaderControl::theConstructorsLocatorStandsOnePixelToTheLeft()
{
    const QRect first = drawn();
    m_pad->updatePos();
    QCOMPARE(first.translated(1, 0), drawn());
}

void TestBalanceFaderControl::settersMoveTheLocatorDrawnAndNothingElse()
{
    m_pad->setcircleX(10);
    m_pad->setcircleY(20);
    m_pad->setVlineX(3); // an empty picture: nothing to see
    m_pad->setHlineY(4);
    const QRect first = drawn();
    m_pad->setcircleX(15);
    m_pad->setcircleY(18);
    QCOMPARE(drawn(), first.translated(5, -2));
    QCOMPARE(QPoint(m_pad->getValueX(), m_pad->getValueY()), QPoint(0, 0));
}

void TestBalanceFaderControl::paintsTheLocatorAlone()
{
    m_pad->updatePos();
    const QSize size = QPixmap(QStringLiteral(":/vexa_m5qx_settingicon_ext/locator.png")).size();
    const QRect locator(QPoint(centre - size.width() / 2 + 1, centre - size.height() / 2), size);
    QVERIFY(locator.contains(drawn()));
}

void TestBalanceFaderControl::valuesFarOutsideAreShownOffThePad()
{
    for (const int value : {std::numeric_limits<int>::max(), std::numeric_limits<int>::min(), 1000, -1000}) {
        m_pad->setValueX(value);
        m_pad->setValueY(value);
        m_pad->updatePos();
        QVERIFY(drawn().isEmpty());
        QCOMPARE(m_pad->getValueX(), value);
    }
    m_pad->updateValue(QPoint(std::numeric_limits<int>::min(), std::numeric_limits<int>::min()));
    QCOMPARE(QPoint(m_pad->getValueX(), m_pad->getValueY()), QPoint(-15, 15));
}

void TestBalanceFaderControl::randomTouchesKeepTheValuesInRange()
{
    QFETCH(quint32, seed);
    RandomWalk walk(m_host.data(), seed);
    int releases = 0;
    for (int i = 0; i < 20000; ++i) {
        switch (walk.step()) {
        case RandomWalk::Press:
            QCOMPARE(takeCalls(), QStringList{QStringLiteral("McuManager.triggerBeep(0)")});
            break;
        case RandomWalk::Move:
            QCOMPARE(takeCalls(All), QStringList());
            break;
        case RandomWalk::Release:
            ++releases;
            QCOMPARE(takeCalls(), QStringList{QStringLiteral("AudioService.setBalanceFader(%1, %2, true)")
                                                  .arg(m_pad->getValueX())
                                                  .arg(m_pad->getValueY())});
        }
        QVERIFY(qAbs(m_pad->getValueX()) <= 15 && qAbs(m_pad->getValueY()) <= 15);
    }
    QVERIFY(releases > 1000);
    walk.end();
}

QTEST_MAIN(TestBalanceFaderControl)
#include "tst_pa_balancefadercontrol.moc"
