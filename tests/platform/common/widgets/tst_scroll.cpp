#include "common/customslider.h"
#include "common/scroll.h"

#include <QPushButton>
#include <QScrollArea>
#include <QScroller>
#include <QtTest>

#include <malloc.h>
#include <memory>

/// A page like the volume page: a scroll area of 1035 x 444 over 1028 px of rows, one slider and one key in
/// it.
class tst_Scroll : public QObject
{
    Q_OBJECT
private slots:
    void init()
    {
        m_page = std::make_unique<QWidget>();
        m_page->resize(1024, 510);
        m_area = new QScrollArea(m_page.get());
        m_area->setGeometry(0, 66, 1035, 444);
        m_area->setFrameShape(QFrame::NoFrame);
        m_area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        m_contents = new QWidget;
        m_contents->resize(1024, 1028);
        m_key = new QPushButton(m_contents);
        m_key->setGeometry(889, 60, 63, 59);
        m_slider = new settings::CustomSlider_2(m_contents, QRect(496, 60, 393, 59), 4);
        m_slider->setRange(0, 50);
        m_area->setWidget(m_contents);
        m_page->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_page.get()));
        bar()->setValue(0);
    }

    void cleanup() { m_page.reset(); }

    void aFingerDragsTheContents()
    {
        new cm::ScrollManage(m_area, true, false);
        drag(QPoint(200, 400), QPoint(200, 200));
        QTRY_VERIFY(bar()->value() > 100);
        QCOMPARE(m_area->horizontalScrollBar()->value(), 0);
    }

    void aFlickGoesOnAfterTheFinger()
    {
        new cm::ScrollManage(m_area, true, false);
        drag(QPoint(200, 400), QPoint(200, 250), 5);
        const int left = bar()->value();
        QTRY_VERIFY(bar()->value() > left + 20);
    }

    void onlyTheAllowedDirectionMoves_data()
    {
        QTest::addColumn<bool>("vertical");
        QTest::addColumn<bool>("horizontal");
        QTest::newRow("vertical") << true << false;
        QTest::newRow("horizontal") << false << true;
        QTest::newRow("both") << true << true;
        QTest::newRow("none") << false << false;
    }

    void onlyTheAllowedDirectionMoves()
    {
        QFETCH(bool, vertical);
        QFETCH(bool, horizontal);
        m_contents->resize(2000, 1500);
        m_area->horizontalScrollBar()->setValue(50);
        bar()->setValue(50);
        new cm::ScrollManage(m_area, vertical, horizontal);
        drag(QPoint(400, 400), QPoint(vertical ? 300 : 200, horizontal ? 300 : 200));
        if (vertical)
            QTRY_VERIFY(bar()->value() > 100);
        if (horizontal)
            QTRY_VERIFY(m_area->horizontalScrollBar()->value() > 100);
        QCOMPARE(bar()->value() == 50, !vertical);
        QCOMPARE(m_area->horizontalScrollBar()->value() == 50, !horizontal);
    }

    void aDragThatStartsOnASliderMovesTheSlider()
    {
        new cm::ScrollManage(m_area, true, false);
        QSignalSpy saved(m_slider, SIGNAL(valSave(int)));
        drag(QPoint(700, 100),
             QPoint(760, 2)); // more upwards than sideways: else the page would not take it anyway
        QCOMPARE(bar()->value(), 0);
        QCOMPARE(saved.count(), 1);
        QCOMPARE(saved.at(0).at(0).toInt(), m_slider->value());
        QVERIFY(m_slider->value() > 30);
        QVERIFY(!QScroller::hasScroller(m_area->viewport()) || state() == QScroller::Inactive);
    }

    void aDragThatStartsOnADisabledSliderMovesThePage()
    {
        new cm::ScrollManage(m_area, true, false);
        m_slider->setEnabled(false);
        drag(QPoint(600, 100), QPoint(600, 2));
        QTRY_VERIFY(bar()->value() > 30);
        QCOMPARE(m_slider->value(), 0);
    }

    void aKeyInTheAreaClicksAtOnce()
    {
        new cm::ScrollManage(m_area, true, false);
        QSignalSpy clicked(m_key, SIGNAL(clicked()));
        const QPoint pos = m_contents->mapTo(m_page.get(), m_key->geometry().center());
        QTest::mousePress(m_page->windowHandle(), Qt::LeftButton, Qt::NoModifier, pos);
        QVERIFY(m_key->isDown());
        QTest::mouseRelease(m_page->windowHandle(), Qt::LeftButton, Qt::NoModifier, pos);
        QCOMPARE(clicked.count(), 1);
        QCOMPARE(bar()->value(), 0);
    }

    void aDragThatStartsOnAKeyTakesThePressBack()
    {
        new cm::ScrollManage(m_area, true, false);
        QSignalSpy clicked(m_key, SIGNAL(clicked()));
        drag(m_key->geometry().center(), m_key->geometry().center() - QPoint(0, 85));
        QTRY_VERIFY(bar()->value() > 30);
        QVERIFY(!m_key->isDown());
        QCOMPARE(clicked.count(), 0);
    }

    void aTouchThatStopsAFlickIsNoClick()
    {
        new cm::ScrollManage(m_area, true, false);
        m_key->setGeometry(0, 0, 1024, 1028);
        m_key->raise();
        QSignalSpy pressed(m_key, SIGNAL(pressed()));
        drag(QPoint(200, 400), QPoint(200, 250), 5);
        QTRY_COMPARE(state(), QScroller::Scrolling);
        pressed.clear();
        QTest::mouseClick(m_page->windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(200, 300));
        QCOMPARE(pressed.count(), 0);
        QTRY_COMPARE(state(), QScroller::Inactive);
        QTest::mouseClick(m_page->windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(200, 300));
        QCOMPARE(pressed.count(), 1);
    }

    void aTremblingFingerStillClicks()
    {
        new cm::ScrollManage(m_area, true, false);
        QSignalSpy clicked(m_key, SIGNAL(clicked()));
        drag(m_key->geometry().center(), m_key->geometry().center() + QPoint(2, 3));
        QCOMPARE(clicked.count(), 1);
        QCOMPARE(bar()->value(), 0);
    }

    void scrollToPosClamps_data()
    {
        QTest::addColumn<QPoint>("pos");
        QTest::addColumn<QPoint>("expected");
        QTest::newRow("top") << QPoint(0, 0) << QPoint(0, 0);
        QTest::newRow("inside") << QPoint(0, 100) << QPoint(0, 100);
        QTest::newRow("height of the contents") << QPoint(0, 1028) << QPoint(0, 1028 - 444);
        QTest::newRow("far out") << QPoint(INT_MAX, INT_MAX) << QPoint(0, 1028 - 444);
        QTest::newRow("negative") << QPoint(INT_MIN, INT_MIN) << QPoint(0, 0);
    }

    void scrollToPosClamps()
    {
        QFETCH(QPoint, pos);
        QFETCH(QPoint, expected);
        auto* manager = new cm::ScrollManage(m_area, false, false);
        m_contents->resize(1000, 1028);
        bar()->setValue(200);
        manager->scrollToPos(pos, false);
        QCOMPARE(QPoint(m_area->horizontalScrollBar()->value(), bar()->value()), expected);
        bar()->setValue(200);
        manager->scrollToPos(pos, true);
        QTRY_COMPARE(QPoint(m_area->horizontalScrollBar()->value(), bar()->value()), expected);
    }

    void animatedScrollingGlides()
    {
        auto* manager = new cm::ScrollManage(m_area, true, false);
        QSignalSpy moved(bar(), SIGNAL(valueChanged(int)));
        manager->scrollToPos(QPoint(0, 1028), true);
        QTRY_COMPARE(bar()->value(), bar()->maximum());
        QVERIFY(moved.count() > 2);
        for (int i = 1; i < moved.count(); ++i)
            QVERIFY(moved.at(i).at(0).toInt() > moved.at(i - 1).at(0).toInt());
    }

    void aFingerStopsTheGlide()
    {
        auto* manager = new cm::ScrollManage(m_area, true, false);
        manager->scrollToPos(QPoint(0, 1028), true);
        QTRY_VERIFY(bar()->value() > 10);
        QTest::mousePress(m_page->windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(200, 300));
        const int held = bar()->value();
        QSignalSpy moved(bar(), SIGNAL(valueChanged(int)));
        QVERIFY(!moved.wait(400));
        QCOMPARE(bar()->value(), held);
        QTest::mouseRelease(m_page->windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(200, 300));
    }

    void theNewerManagerTakesOver()
    {
        auto* older = new cm::ScrollManage(m_area, false, false);
        auto* newer = new cm::ScrollManage(m_area, true, false);
        older->scrollToPos(QPoint(0, 300), false);
        QCOMPARE(bar()->value(), 0);
        newer->scrollToPos(QPoint(0, 300), false);
        QCOMPARE(bar()->value(), 300);
        delete older;
        newer->scrollToPos(QPoint(0, 0), false);
        drag(QPoint(200, 400), QPoint(200, 200));
        QTRY_VERIFY(bar()->value() > 100);
    }

    void theOlderManagerIsBackWhenTheNewerGoes()
    {
        auto* older = new cm::ScrollManage(m_area, true, false);
        auto* newer = new cm::ScrollManage(m_area, false, false);
        drag(QPoint(200, 400), QPoint(200, 200));
        QCOMPARE(bar()->value(), 0);
        delete newer;
        drag(QPoint(200, 400), QPoint(200, 200));
        QTRY_VERIFY(bar()->value() > 100);
        older->scrollToPos(QPoint(0, 0), false);
        QCOMPARE(bar()->value(), 0);
    }

    void theAreaIsLeftAsItWasFound()
    {
        delete new cm::ScrollManage(m_area, true, false);
        drag(QPoint(200, 400), QPoint(200, 200));
        QCOMPARE(bar()->value(), 0);
    }

    void hidingThePageUnderTheFingerLetsItGo()
    {
        new cm::ScrollManage(m_area, true, false);
        QSignalSpy clicked(m_key, SIGNAL(clicked()));
        QTest::mousePress(m_page->windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(200, 400));
        for (int y = 400; y > 300; y -= 10)
            QTest::mouseMove(m_page->windowHandle(), QPoint(200, y), 5);
        QCOMPARE(state(), QScroller::Dragging);
        m_area->hide();
        QCOMPARE(state(), QScroller::Inactive);
        QTest::mouseRelease(m_page->windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(200, 300));
        m_area->show();
        bar()->setValue(0);
        QTest::mouseClick(m_page->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                          m_contents->mapTo(m_page.get(), m_key->geometry().center()));
        QCOMPARE(clicked.count(), 1);
    }

    void theManagerGoesWithItsArea()
    {
        QPointer<cm::ScrollManage> first = new cm::ScrollManage(m_area, false, false);
        QPointer<cm::ScrollManage> second = new cm::ScrollManage(m_area, true, false);
        delete m_area;
        QVERIFY(!first);
        QVERIFY(!second);
    }

    void theAreaMayGoUnderTheFinger()
    {
        new cm::ScrollManage(m_area, true, false);
        QTest::mousePress(m_page->windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(200, 400));
        QTest::mouseMove(m_page->windowHandle(), QPoint(200, 300));
        delete m_area;
        QTest::mouseMove(m_page->windowHandle(), QPoint(200, 200));
        QTest::mouseRelease(m_page->windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(200, 200));
    }

    void aMissingAreaIsSaidAndHarmless()
    {
        QTest::ignoreMessage(QtWarningMsg, "ScrollManage: there is no area to manage");
        cm::ScrollManage none(nullptr, true, true);
        none.scrollToPos(QPoint(0, 100), true);
    }

    void tenThousandManagersLeaveNothing()
    {
        const auto cycle = [this](int times) {
            for (int i = 0; i < times; ++i) {
                QScrollArea own(m_page.get());
                auto* widget = new QWidget;
                widget->resize(100, 2000);
                own.setWidget(widget);
                new cm::ScrollManage(&own, false, false); // stays until its area goes
                std::unique_ptr<cm::ScrollManage> second(new cm::ScrollManage(&own, true, false));
                second->scrollToPos(QPoint(0, 50), i % 2);
                if (i % 3 == 0)
                    second.release(); // so does this one now and then
            }
        };
        cycle(500); // caches fill
        const auto before = mallinfo2().uordblks;
        cycle(10000);
        const auto after = mallinfo2().uordblks;
        const qint64 grown = qint64(after) - qint64(before);
        QVERIFY2(grown < 64 * 1024, qPrintable(QString("%1 bytes more after 10,000 cycles").arg(grown)));
        QCOMPARE(m_area->findChildren<cm::ScrollManage*>().size(), 0);
    }

    void theBarKeepsItsPlaceInAnArea()
    {
        const QRect place(978, 160, 16, 237);
        auto* own = new cm::ScrollBar(m_page.get(), place, 0);
        QCOMPARE(own->geometry(), place);
        m_area->setVerticalScrollBar(own);
        QApplication::processEvents();
        QCOMPARE(own->geometry(), place);
        own->setParent(m_page.get());
        own->show();
        m_area->resize(1030, 440);
        m_area->resize(1035, 444);
        QApplication::processEvents();
        QCOMPARE(own->geometry(), place);
        QCOMPARE(m_area->viewport()->width(), 1035); // and takes none of the area's room
        QCOMPARE(own->maximum(), 1028 - 444);
    }

    void theBarAndTheContentsFollowEachOther()
    {
        cm::ScrollBar* own = placedBar();
        QTest::mousePress(own, Qt::LeftButton, Qt::NoModifier, QPoint(8, 20)); // on the handle: no jump
        QCOMPARE(own->value(), 0);
        mouseMove(own, QPoint(8, 500));
        QCOMPARE(own->value(), own->maximum());
        QCOMPARE(m_contents->y(), 444 - 1028);
        mouseMove(own, QPoint(8, -500));
        QCOMPARE(m_contents->y(), 0);
        QTest::mouseRelease(own, Qt::LeftButton);
        QVERIFY(!own->isSliderDown());
        QTest::mouseClick(own, Qt::LeftButton, Qt::NoModifier, QPoint(8, 236)); // beside it: it comes
        QCOMPARE(own->value(), own->maximum());
        QTest::mouseClick(own, Qt::RightButton, Qt::NoModifier, QPoint(8, 5));
        QCOMPARE(own->value(), own->maximum());
    }

    void aBarWithNothingToScrollShowsNothing()
    {
        cm::ScrollBar* own = placedBar();
        const auto painted = [own] {
            QImage image(own->size(), QImage::Format_ARGB32);
            image.fill(Qt::transparent);
            own->render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
            QImage empty(own->size(), QImage::Format_ARGB32);
            empty.fill(Qt::transparent);
            return image != empty;
        };
        QVERIFY(painted());
        m_contents->resize(1024, 100);
        QApplication::processEvents();
        QCOMPARE(own->maximum(), 0);
        QVERIFY(!painted());
        QTest::mouseClick(own, Qt::LeftButton);
    }

    void hidingTheBarUnderTheFingerLetsItGo()
    {
        cm::ScrollBar* own = placedBar();
        QTest::mousePress(own, Qt::LeftButton, Qt::NoModifier, QPoint(8, 20));
        own->hide();
        QVERIFY(!own->isSliderDown());
        own->show();
        mouseMove(own, QPoint(8, 200));
        QCOMPARE(own->value(), 0);
    }

private:
    QScrollBar* bar() const { return m_area->verticalScrollBar(); }
    QScroller::State state() const { return QScroller::scroller(m_area->viewport())->state(); }

    cm::ScrollBar* placedBar()
    {
        auto* own = new cm::ScrollBar(m_page.get(), QRect(978, 160, 16, 237), 0);
        m_area->setVerticalScrollBar(own);
        own->setParent(m_page.get());
        own->raise();
        own->show();
        QApplication::processEvents();
        return own;
    }

    static void mouseMove(QWidget* widget, const QPoint& pos)
    {
        QMouseEvent event(QEvent::MouseMove, pos, widget->mapToGlobal(pos), Qt::NoButton, Qt::LeftButton,
                          Qt::NoModifier);
        QApplication::sendEvent(widget, &event);
    }

    /// A finger from and to a place of the contents as first shown, through the window, in small steps.
    void drag(const QPoint& from, const QPoint& to, int stepMs = 12)
    {
        const QPoint origin = m_area->viewport()->mapTo(m_page.get(), QPoint());
        QWindow* window = m_page->windowHandle();
        QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, origin + from);
        for (int i = 1; i <= 20; ++i)
            QTest::mouseMove(window, origin + from + (to - from) * i / 20, stepMs);
        QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, origin + to);
    }

    std::unique_ptr<QWidget> m_page;
    QScrollArea* m_area = nullptr;
    QWidget* m_contents = nullptr;
    QPushButton* m_key = nullptr;
    settings::CustomSlider_2* m_slider = nullptr;
};

QTEST_MAIN(tst_Scroll)
#include "tst_scroll.moc"
