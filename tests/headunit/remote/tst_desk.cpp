#include "headunit/front/hardkey.h"
#include "headunit/front/screen.h"
#include "headunit/front/unitwindow.h"
#include "headunit/remote/desk.h"
#include "headunit/sound/mastervolume.h"

#include <QPainter>
#include <QtTest>

using namespace headunit;

/// The windows as one picture, as it is told to who watches.
class TestDesk : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void firstChangeIsTheWholePicture();
    void laterChangesAreWhatHasChanged();
    void nothingIsToldUnlessItIsWanted();
    void whatLooksTheSameIsNoChange();
    void scrolledPixelsAreSeen();
    void whileNobodyWatchesNothingIsDone();
    void secondWindowStandsBesideTheUnit();
    void dialogAndListLieOverTheirWindow();
    void layoutNamesTheKeys();
    void bareScreenHasNoKeys();

private:
    /// Lets the windows paint and the desk look.
    static void settle()
    {
        for (int i = 0; i < 5; ++i)
            QCoreApplication::processEvents();
    }
    void apply(const DeskChange& change);
    /// Wants a change and waits for it.
    bool changes()
    {
        const int before = m_changes;
        m_desk->want();
        return QTest::qWaitFor([&] { return m_changes > before; }, 2000);
    }

    /// Begins to watch and waits for the first change.
    bool watches()
    {
        m_desk->watch(true);
        return changes();
    }

    MasterVolume m_volume;
    QScopedPointer<UnitWindow> m_unit;
    QScopedPointer<Desk> m_desk;
    QImage m_shown; ///< all changes so far
    DeskLayout m_layout;
    QRegion m_last;
    int m_changes = 0;
};

/// A window of one colour that counts how often it paints.
class Plain : public QWidget
{
public:
    using QWidget::QWidget;
    QColor colour = Qt::red;
    int painted = 0;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        ++painted;
        QPainter(this).fillRect(event->rect(), colour);
    }
};

void TestDesk::apply(const DeskChange& change)
{
    ++m_changes;
    m_layout = change.layout;
    m_last = QRegion();
    if (m_shown.size() != change.layout.size)
        m_shown = QImage(change.layout.size, QImage::Format_RGB32);
    QPainter painter(&m_shown);
    for (const DeskChange::Patch& patch : change.patches) {
        painter.drawImage(patch.pos, patch.picture);
        m_last += QRect(patch.pos, patch.picture.size());
    }
}

void TestDesk::init()
{
    m_unit.reset(new UnitWindow(&m_volume, true));
    m_unit->show();
    m_desk.reset(new Desk(m_unit.data()));
    connect(m_desk.data(), &Desk::changed, this, &TestDesk::apply);
    m_changes = 0;
    m_shown = QImage();
    settle();
}

void TestDesk::cleanup()
{
    m_desk.reset();
    m_unit.reset();
}

void TestDesk::firstChangeIsTheWholePicture()
{
    QVERIFY(watches());
    QCOMPARE(m_layout.size, m_unit->size());
    QCOMPARE(m_last, QRegion(m_unit->rect()));
    QImage wanted(m_unit->size(), QImage::Format_RGB32);
    m_unit->render(&wanted);
    QCOMPARE(m_shown.copy(m_unit->screen()->geometry()), wanted.copy(m_unit->screen()->geometry()));
}

void TestDesk::laterChangesAreWhatHasChanged()
{
    auto* mark = new Plain(m_unit->screen());
    mark->setGeometry(500, 300, 20, 10);
    QVERIFY(watches());
    mark->show();
    QVERIFY(changes());
    const QRect place = mark->geometry().translated(m_unit->screen()->pos());
    QVERIFY(m_last.contains(place));
    QVERIFY(m_last.boundingRect().width() <= 64 && m_last.boundingRect().height() <= 48);
    QCOMPARE(m_shown.pixelColor(place.center()), QColor(Qt::red));
}

void TestDesk::nothingIsToldUnlessItIsWanted()
{
    auto* mark = new Plain(m_unit->screen());
    mark->setGeometry(500, 300, 20, 10);
    mark->show();
    m_desk->watch(true);
    settle();
    QCOMPARE(m_changes, 0);
    QVERIFY(changes());
    for (const Qt::GlobalColor colour : {Qt::green, Qt::blue, Qt::yellow}) {
        mark->colour = colour;
        mark->repaint();
        settle();
    }
    QCOMPARE(m_changes, 1);
    QVERIFY(changes()); // all three at once
    QCOMPARE(m_shown.pixelColor(104 + 510, 32 + 305), QColor(Qt::yellow));
    m_desk->want();
    settle();
    QCOMPARE(m_changes, 2);
}

void TestDesk::whatLooksTheSameIsNoChange()
{
    QVERIFY(watches());
    m_desk->want();
    m_unit->repaint();
    settle();
    QCOMPARE(m_changes, 1);
}

void TestDesk::scrolledPixelsAreSeen()
{
    auto* area = new Plain(m_unit->screen());
    area->setAttribute(Qt::WA_OpaquePaintEvent);
    area->setGeometry(100, 100, 200, 200);
    area->show();
    settle();
    QVERIFY(watches());
    area->colour = Qt::blue;
    area->update(0, 0, 200, 20);
    QVERIFY(changes());
    area->scroll(0, 100); // moves pixels that are there
    QVERIFY(changes());
    QCOMPARE(m_shown.pixelColor(104 + 200, 32 + 210), QColor(Qt::blue));
    QCOMPARE(m_shown.pixelColor(104 + 200, 32 + 250), QColor(Qt::red));
}

void TestDesk::whileNobodyWatchesNothingIsDone()
{
    m_desk->want();
    m_unit->repaint();
    settle();
    QCOMPARE(m_changes, 0);
    QVERIFY(watches());
    m_desk->watch(false);
    m_unit->setLit(false);
    m_desk->want();
    settle();
    QCOMPARE(m_changes, 1);
    // Nothing is painted for those who look.
    Plain window;
    window.resize(100, 100);
    window.show();
    settle();
    const int painted = window.painted;
    QVERIFY(watches());
    QCOMPARE(window.painted, painted);
}

void TestDesk::secondWindowStandsBesideTheUnit()
{
    QVERIFY(watches());
    Plain window;
    window.setGeometry(300, 50, 80, 700); // over the unit, and higher than it
    window.show();
    QVERIFY(changes());
    QCOMPARE(m_layout.size, QSize(m_unit->width() + 80, 700));
    QCOMPARE(m_shown.pixelColor(m_unit->width() + 40, 20), QColor(Qt::red));
    QVERIFY(m_shown.pixelColor(340, 20) != QColor(Qt::red));
    QCOMPARE(m_desk->at(QPoint(m_unit->width() + 1, 1)).window, static_cast<QWidget*>(&window));
    QCOMPARE(m_desk->at(QPoint(m_unit->width() + 1, 1)).pos, QPoint(m_unit->width(), 0));
    QCOMPARE(m_desk->at(QPoint(340, 100)).window, static_cast<QWidget*>(m_unit.data()));
    QCOMPARE(m_desk->at(QPoint(10, 690)).window, nullptr);
    window.hide();
    QVERIFY(changes());
    QCOMPARE(m_layout.size, m_unit->size());
}

void TestDesk::dialogAndListLieOverTheirWindow()
{
    Plain window;
    window.setGeometry(300, 50, 400, 400);
    window.show();
    Plain dialog(&window, Qt::Dialog), list(&dialog, Qt::Popup), hint(&window, Qt::ToolTip);
    dialog.colour = Qt::green;
    list.colour = Qt::blue;
    hint.colour = Qt::yellow;
    dialog.setGeometry(310, 60, 200, 200);
    list.setGeometry(320, 70, 50, 50);
    hint.setGeometry(650, 60, 200, 20); // reaches beyond the desk
    for (QWidget* shown :
         {static_cast<QWidget*>(&dialog), static_cast<QWidget*>(&list), static_cast<QWidget*>(&hint)})
        shown->show();
    settle();
    QVERIFY(watches());
    const QPoint corner(m_unit->width(), 0);
    QCOMPARE(m_layout.size, QSize(m_unit->width() + 400, m_unit->height()));
    QCOMPARE(m_shown.pixelColor(corner + QPoint(5, 5)), QColor(Qt::red));
    QCOMPARE(m_shown.pixelColor(corner + QPoint(15, 15)), QColor(Qt::green));
    QCOMPARE(m_shown.pixelColor(corner + QPoint(30, 30)), QColor(Qt::blue));
    QCOMPARE(m_shown.pixelColor(corner + QPoint(360, 15)), QColor(Qt::yellow));
    QCOMPARE(m_desk->at(corner + QPoint(30, 30)).window, static_cast<QWidget*>(&list));
    QCOMPARE(m_desk->at(corner + QPoint(15, 15)).window, static_cast<QWidget*>(&dialog));
    QCOMPARE(m_desk->at(corner + QPoint(360, 15)).window,
             static_cast<QWidget*>(&window)); // hints take no touch
}

void TestDesk::layoutNamesTheKeys()
{
    QVERIFY(watches());
    QCOMPARE(m_layout.unit, QRect(QPoint(), m_unit->size()));
    QCOMPARE(m_layout.screen, m_unit->screen()->geometry());
    QStringList names;
    for (const DeskKey& key : std::as_const(m_layout.keys))
        names.append(key.name);
    QCOMPARE(names, QStringList({"Power", "Home", "Back", "Previous page", "Next page", "Volume"}));
    const auto* home = m_unit->findChild<HardKey*>("hardkey_" + QString::number(KeyEvent::Key_Home));
    QVERIFY(home);
    QCOMPARE(m_layout.keys.at(1).place, home->geometry());
}

void TestDesk::bareScreenHasNoKeys()
{
    m_desk.reset();
    m_unit.reset(new UnitWindow(&m_volume, false));
    m_unit->show();
    m_desk.reset(new Desk(m_unit.data()));
    connect(m_desk.data(), &Desk::changed, this, &TestDesk::apply);
    settle();
    QVERIFY(watches());
    QVERIFY(m_layout.keys.isEmpty());
    QCOMPARE(m_layout.screen, m_layout.unit);
}

QTEST_MAIN(TestDesk)
#include "tst_desk.moc"
