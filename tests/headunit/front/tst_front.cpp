#include "headunit/front/hardkey.h"
#include "headunit/front/screen.h"
#include "headunit/front/unitwindow.h"
#include "headunit/front/volumeknob.h"
#include "headunit/sound/mastervolume.h"
#include "hvaudio/audioservice.h"

#include <QWheelEvent>
#include <QtTest>

#include <climits>

using namespace headunit;
using Acts = QVector<QPair<int, int>>;

/// The keys and the knob around the screen.
class TestFront : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void keyGoesDownAndUp();
    void heldKeyIsLongOnce();
    void otherButtonsOfAPointerAreNoKey();
    void wheelTurnsTheKnob();
    void fineWheelAddsUp();
    void wheelOutOfRangeTurnsNoFurtherThanTheVolumeGoes();
    void volumeOutOfRangeIsPaintedAsItsEnd();
    void draggingAroundTurnsTheKnob();
    void pressOnTheKnobMutes();
    void dragIsNoPress();
    void keyboardStandsForHardKeys_data();
    void keyboardStandsForHardKeys();
    void heldKeyboardKeyCountsOnceButForTheVolume();
    void otherKeyboardKeysAreNoHardKeys();

private:
    template <typename Widget>
    Widget* part(const char* name)
    {
        auto* found = m_unit->findChild<Widget*>(name);
        if (!found)
            qFatal("the front has no %s", name);
        return found;
    }
    void wheel(int eighths);
    /// Moves the pointer there with its button held; QTest's own move holds none.
    static void drag(QWidget* widget, const QPoint& pos);

    MasterVolume m_volume;
    QScopedPointer<UnitWindow> m_unit;
    Acts m_acts;
};

void TestFront::init()
{
    m_unit.reset(new UnitWindow(&m_volume, true));
    m_acts.clear();
    connect(m_unit.data(), &UnitWindow::hardKey, this, [this](KeyEvent::Key key, KeyEvent::Action action) {
        m_acts.append({key, action});
    });
    m_unit->show();
}

void TestFront::keyGoesDownAndUp()
{
    auto* back = part<HardKey>("hardkey_3");
    QTest::mousePress(back, Qt::LeftButton);
    QCOMPARE(m_acts, (Acts{{KeyEvent::Key_Back, KeyEvent::Press}}));
    QTest::mouseRelease(back, Qt::LeftButton);
    QCOMPARE(m_acts.mid(1), (Acts{{KeyEvent::Key_Back, KeyEvent::Release}}));
}

void TestFront::heldKeyIsLongOnce()
{
    auto* home = part<HardKey>("hardkey_2");
    QTest::mousePress(home, Qt::LeftButton);
    QTRY_COMPARE(m_acts,
                 (Acts{{KeyEvent::Key_Home, KeyEvent::Press}, {KeyEvent::Key_Home, KeyEvent::LongPress}}));
    QTest::mouseRelease(home, Qt::LeftButton);
    QCOMPARE(m_acts.size(), 3);
    QCOMPARE(m_acts.last(), qMakePair(int(KeyEvent::Key_Home), int(KeyEvent::Release)));
}

void TestFront::otherButtonsOfAPointerAreNoKey()
{
    QTest::mouseClick(part<HardKey>("hardkey_3"), Qt::RightButton);
    QVERIFY(m_acts.isEmpty());
}

void TestFront::wheel(int eighths)
{
    auto* knob = part<VolumeKnob>("volume_knob");
    QWheelEvent event(knob->rect().center(), knob->mapToGlobal(knob->rect().center()), QPoint(), {0, eighths},
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(knob, &event);
}

void TestFront::drag(QWidget* widget, const QPoint& pos)
{
    QMouseEvent event(QEvent::MouseMove, pos, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(widget, &event);
}

void TestFront::wheelTurnsTheKnob()
{
    wheel(240);
    const QPair<int, int> press{KeyEvent::Key_VolumeUp, KeyEvent::Press},
        release{KeyEvent::Key_VolumeUp, KeyEvent::Release};
    QCOMPARE(m_acts, (Acts{press, release, press, release}));
    m_acts.clear();
    wheel(-120);
    QCOMPARE(m_acts.size(), 2);
    QCOMPARE(m_acts.first(), qMakePair(int(KeyEvent::Key_VolumeDown), int(KeyEvent::Press)));
}

void TestFront::fineWheelAddsUp()
{
    for (int i = 0; i < 3; ++i)
        wheel(30);
    QVERIFY(m_acts.isEmpty());
    wheel(30);
    QCOMPARE(m_acts.size(), 2);
}

void TestFront::wheelOutOfRangeTurnsNoFurtherThanTheVolumeGoes()
{
    for (int i = 0; i < 3; ++i)
        wheel(INT_MAX);
    QCOMPARE(m_acts.size(), 3 * 2 * MasterVolume::maximum);
    m_acts.clear();
    wheel(INT_MIN);
    QCOMPARE(m_acts.size(), 2 * MasterVolume::maximum);
    QCOMPARE(m_acts.first(), qMakePair(int(KeyEvent::Key_VolumeDown), int(KeyEvent::Press)));
}

void TestFront::volumeOutOfRangeIsPaintedAsItsEnd()
{
    const auto pictureAt = [this](int level) {
        emit hvaudio::AudioService::instance()->audioVolumeChanged(false, level, 0);
        return m_unit->grab().toImage();
    };
    QCOMPARE(pictureAt(2000000000), pictureAt(50));
    QCOMPARE(pictureAt(INT_MIN), pictureAt(0));
    QVERIFY(pictureAt(0) != pictureAt(50));
}

void TestFront::draggingAroundTurnsTheKnob()
{
    auto* knob = part<VolumeKnob>("volume_knob");
    int steps = 0;
    connect(knob, &VolumeKnob::turned, this, [&](int turned) { steps += turned; });
    const QPointF centre = QRectF(knob->rect()).center();
    const auto at = [&](qreal degrees) {
        return (centre +
                30 * QPointF(std::cos(qDegreesToRadians(degrees)), std::sin(qDegreesToRadians(degrees))))
            .toPoint();
    };
    // Clockwise over the seam on the left by forty degrees: three steps and a bit; then back and a bit.
    QTest::mousePress(knob, Qt::LeftButton, {}, at(164));
    for (int degrees = 168; degrees <= 204; degrees += 4)
        drag(knob, at(degrees));
    QCOMPARE(steps, 3);
    for (int degrees = 200; degrees >= 160; degrees -= 4)
        drag(knob, at(degrees));
    QCOMPARE(steps, 0);
    QTest::mouseRelease(knob, Qt::LeftButton, {}, at(164));
}

void TestFront::pressOnTheKnobMutes()
{
    QTest::mouseClick(part<VolumeKnob>("volume_knob"), Qt::LeftButton);
    QCOMPARE(m_acts, (Acts{{KeyEvent::Key_Mute, KeyEvent::Press}, {KeyEvent::Key_Mute, KeyEvent::Release}}));
}

void TestFront::dragIsNoPress()
{
    auto* knob = part<VolumeKnob>("volume_knob");
    QTest::mousePress(knob, Qt::LeftButton, {}, QPoint(43, 5));
    drag(knob, QPoint(80, 43));
    QVERIFY(!m_acts.isEmpty());
    QTest::mouseRelease(knob, Qt::LeftButton, {}, QPoint(80, 43));
    for (const auto& act : std::as_const(m_acts))
        QCOMPARE(act.first, int(KeyEvent::Key_VolumeUp));
}

void TestFront::keyboardStandsForHardKeys_data()
{
    QTest::addColumn<int>("keyboard");
    QTest::addColumn<int>("key");
    QTest::newRow("Escape") << int(Qt::Key_Escape) << int(KeyEvent::Key_Back);
    QTest::newRow("Home") << int(Qt::Key_Home) << int(KeyEvent::Key_Home);
    QTest::newRow("Page Up") << int(Qt::Key_PageUp) << int(KeyEvent::Key_PrevPage);
    QTest::newRow("Page Down") << int(Qt::Key_PageDown) << int(KeyEvent::Key_NextPage);
    QTest::newRow("louder") << int(Qt::Key_VolumeUp) << int(KeyEvent::Key_VolumeUp);
    QTest::newRow("softer") << int(Qt::Key_VolumeDown) << int(KeyEvent::Key_VolumeDown);
    QTest::newRow("mute") << int(Qt::Key_VolumeMute) << int(KeyEvent::Key_Mute);
}

void TestFront::keyboardStandsForHardKeys()
{
    QFETCH(int, keyboard);
    QFETCH(int, key);
    QTest::keyClick(m_unit.data(), Qt::Key(keyboard));
    QCOMPARE(m_acts, (Acts{{key, KeyEvent::Press}, {key, KeyEvent::Release}}));
}

void TestFront::heldKeyboardKeyCountsOnceButForTheVolume()
{
    for (const int keyboard : {int(Qt::Key_Escape), int(Qt::Key_VolumeUp)}) {
        QKeyEvent repeated(QEvent::KeyPress, keyboard, Qt::NoModifier, QString(), true);
        QCoreApplication::sendEvent(m_unit.data(), &repeated);
    }
    QCOMPARE(m_acts, (Acts{{KeyEvent::Key_VolumeUp, KeyEvent::Press}}));
}

void TestFront::otherKeyboardKeysAreNoHardKeys()
{
    QTest::keyClick(m_unit.data(), Qt::Key_A);
    QVERIFY(m_acts.isEmpty());
}

QTEST_MAIN(TestFront)
#include "tst_front.moc"
