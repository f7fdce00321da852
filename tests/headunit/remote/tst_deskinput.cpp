#include "headunit/front/hardkey.h"
#include "headunit/front/screen.h"
#include "headunit/front/unitwindow.h"
#include "headunit/remote/desk.h"
#include "headunit/remote/deskinput.h"
#include "headunit/sound/mastervolume.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <QtTest>

using namespace headunit;
using Acts = QVector<QPair<int, int>>;

/// Touches and keys from afar, as the windows take them.
class TestDeskInput : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void keyOfTheFrontGoesDownAndUp();
    void fingerIsHeldUntilItIsLifted();
    void touchOffTheDeskDoesNothing();
    void secondWindowTakesTouchesWhereItIsShown();
    void listOpensAndClosesByTouches();
    void twoQuickTouchesAreADoubleOne();
    void wheelTurnsTheKnob();
    void keysAreTyped();
    void shortcutsWork();
    void modalDialogKeepsTouchesOffOthers();
    void windowThatVanishesUnderTheFinger();
    void whatIsHeldIsLetGo();

private:
    void pointer(DeskEvent::Kind kind, const QPoint& pos)
    {
        DeskEvent event;
        event.kind = kind;
        event.pos = pos;
        m_input->deliver(event);
    }
    void click(const QPoint& pos)
    {
        pointer(DeskEvent::Kind::PointerDown, pos);
        pointer(DeskEvent::Kind::PointerUp, pos);
    }
    void key(int code, const QString& text = QString())
    {
        DeskEvent event;
        event.key = code;
        event.text = text;
        for (const auto kind : {DeskEvent::Kind::KeyDown, DeskEvent::Kind::KeyUp}) {
            event.kind = kind;
            m_input->deliver(event);
        }
    }
    QPoint middleOf(KeyEvent::Key key) const
    {
        return m_unit->findChild<HardKey*>("hardkey_" + QString::number(key))->geometry().center();
    }

    MasterVolume m_volume;
    QScopedPointer<UnitWindow> m_unit;
    QScopedPointer<Desk> m_desk;
    QScopedPointer<DeskInput> m_input;
    Acts m_acts;
};

void TestDeskInput::init()
{
    m_input.reset();
    m_desk.reset();
    m_unit.reset(new UnitWindow(&m_volume, true));
    connect(m_unit.data(), &UnitWindow::hardKey, this, [this](KeyEvent::Key key, KeyEvent::Action action) {
        m_acts.append({key, action});
    });
    m_unit->show();
    QVERIFY(QTest::qWaitForWindowActive(m_unit.data()));
    m_desk.reset(new Desk(m_unit.data()));
    m_input.reset(new DeskInput(m_desk.data()));
    m_acts.clear();
}

void TestDeskInput::keyOfTheFrontGoesDownAndUp()
{
    const QPoint home = middleOf(KeyEvent::Key_Home);
    pointer(DeskEvent::Kind::PointerDown, home);
    QCOMPARE(m_acts, (Acts{{KeyEvent::Key_Home, KeyEvent::Press}}));
    pointer(DeskEvent::Kind::PointerDown, home); // it is down
    QCOMPARE(m_acts.size(), 1);
    pointer(DeskEvent::Kind::PointerUp, home);
    pointer(DeskEvent::Kind::PointerUp, home);
    QCOMPARE(m_acts, (Acts{{KeyEvent::Key_Home, KeyEvent::Press}, {KeyEvent::Key_Home, KeyEvent::Release}}));
}

void TestDeskInput::fingerIsHeldUntilItIsLifted()
{
    struct Pad : QWidget
    {
        using QWidget::QWidget;
        QVector<QPoint> at;
        void mousePressEvent(QMouseEvent* event) override { at.append(event->pos()); }
        void mouseMoveEvent(QMouseEvent* event) override { at.append(event->pos()); }
        void mouseReleaseEvent(QMouseEvent* event) override { at.append(event->pos()); }
    };
    auto* pad = new Pad(m_unit->screen());
    pad->setGeometry(100, 100, 50, 50);
    pad->show();
    const QPoint corner = m_unit->screen()->pos() + pad->pos();
    pointer(DeskEvent::Kind::PointerDown, corner + QPoint(5, 6));
    pointer(DeskEvent::Kind::PointerMove, corner + QPoint(20, 200));
    pointer(DeskEvent::Kind::PointerMove, QPoint(-50, -50));
    pointer(DeskEvent::Kind::PointerUp, corner + QPoint(7, 8));
    pointer(DeskEvent::Kind::PointerMove, corner + QPoint(9, 9)); // nothing is held
    // The way to where it is lifted is a move of its own.
    QCOMPARE(pad->at, (QVector<QPoint>{{5, 6}, {20, 200}, QPoint(-50, -50) - corner, {7, 8}, {7, 8}}));
}

void TestDeskInput::touchOffTheDeskDoesNothing()
{
    click(QPoint(-1, -1));
    click(QPoint(5000, 5000));
    QVERIFY(m_acts.isEmpty());
}

void TestDeskInput::secondWindowTakesTouchesWhereItIsShown()
{
    QPushButton button;
    button.setGeometry(20, 20, 100, 60); // over the unit
    QSignalSpy clicked(&button, &QPushButton::clicked);
    button.show();
    QVERIFY(QTest::qWaitForWindowExposed(&button));
    click(QPoint(50, 50));
    QCOMPARE(clicked.size(), 0);
    click(QPoint(m_unit->width() + 50, 30));
    QCOMPARE(clicked.size(), 1);
}

void TestDeskInput::listOpensAndClosesByTouches()
{
    QWidget window;
    window.setGeometry(100, 100, 300, 300);
    QComboBox box(&window);
    box.addItems({"one", "two", "three"});
    box.setGeometry(10, 10, 150, 30);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QPoint corner(m_unit->width(), 0);
    click(corner + QPoint(50, 25));
    QVERIFY(QTest::qWaitFor([] { return QApplication::activePopupWidget() != nullptr; }));
    click(corner + QPoint(250, 250)); // beside it
    QVERIFY(QTest::qWaitFor([] { return QApplication::activePopupWidget() == nullptr; }));
    QCOMPARE(box.currentIndex(), 0);
}

void TestDeskInput::twoQuickTouchesAreADoubleOne()
{
    struct Counter : QWidget
    {
        using QWidget::QWidget;
        int doubles = 0;
        void mouseDoubleClickEvent(QMouseEvent*) override { ++doubles; }
    };
    auto* counter = new Counter(m_unit->screen());
    counter->setGeometry(100, 100, 50, 50);
    counter->show();
    const QPoint pos = m_unit->screen()->pos() + QPoint(120, 120);
    click(pos);
    click(pos);
    QCOMPARE(counter->doubles, 1);
}

void TestDeskInput::wheelTurnsTheKnob()
{
    DeskEvent wheel;
    wheel.kind = DeskEvent::Kind::Wheel;
    wheel.pos = QPoint(47, 463);
    wheel.turn = 240;
    m_input->deliver(wheel);
    QCOMPARE(m_acts.size(), 4);
    QCOMPARE(m_acts.first().first, int(KeyEvent::Key_VolumeUp));
    wheel.pos = QPoint(-10, 0);
    m_input->deliver(wheel);
    QCOMPARE(m_acts.size(), 4);
}

void TestDeskInput::keysAreTyped()
{
    QLineEdit edit(m_unit->screen());
    edit.setGeometry(0, 0, 100, 30);
    edit.show();
    edit.setFocus();
    key(Qt::Key_A, "a");
    key(0xc4, QString::fromUtf8("ä"));
    key(0); // unknown to the unit
    QCOMPARE(edit.text(), QString::fromUtf8("aä"));
    key(Qt::Key_Backspace);
    QCOMPARE(edit.text(), QStringLiteral("a"));
    edit.clearFocus();
    key(Qt::Key_Escape);
    QCOMPARE(m_acts, (Acts{{KeyEvent::Key_Back, KeyEvent::Press}, {KeyEvent::Key_Back, KeyEvent::Release}}));
}

void TestDeskInput::shortcutsWork()
{
    QShortcut shortcut(QKeySequence(Qt::Key_F12), m_unit.data());
    QSignalSpy activated(&shortcut, &QShortcut::activated);
    key(Qt::Key_F12);
    QCOMPARE(activated.size(), 1);
}

void TestDeskInput::modalDialogKeepsTouchesOffOthers()
{
    QWidget dialog(m_unit.data(), Qt::Dialog);
    dialog.setWindowModality(Qt::ApplicationModal);
    dialog.setGeometry(300, 300, 100, 100);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    click(middleOf(KeyEvent::Key_Home));
    QVERIFY(m_acts.isEmpty());
}

void TestDeskInput::windowThatVanishesUnderTheFinger()
{
    auto* window = new QPushButton;
    window->setGeometry(20, 20, 100, 60);
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window));
    const QPoint pos(m_unit->width() + 50, 30);
    pointer(DeskEvent::Kind::PointerDown, pos);
    delete window;
    pointer(DeskEvent::Kind::PointerMove, pos);
    pointer(DeskEvent::Kind::PointerUp, pos);
    click(middleOf(KeyEvent::Key_Home));
    QCOMPARE(m_acts.size(), 2);
}

void TestDeskInput::whatIsHeldIsLetGo()
{
    pointer(DeskEvent::Kind::PointerDown, middleOf(KeyEvent::Key_Home));
    DeskEvent down;
    down.kind = DeskEvent::Kind::KeyDown;
    down.key = Qt::Key_Escape;
    m_input->deliver(down);
    m_input->letGo();
    QCOMPARE(m_acts, (Acts{{KeyEvent::Key_Home, KeyEvent::Press},
                           {KeyEvent::Key_Back, KeyEvent::Press},
                           {KeyEvent::Key_Home, KeyEvent::Release},
                           {KeyEvent::Key_Back, KeyEvent::Release}}));
    m_input->letGo();
    QCOMPARE(m_acts.size(), 4);
}

QTEST_MAIN(TestDeskInput)
#include "tst_deskinput.moc"
