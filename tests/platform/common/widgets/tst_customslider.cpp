#include "common/customslider.h"

#include <QtTest>

#include <limits>
#include <memory>

/// Drives the slider with real mouse, wheel and key events. A row of the volume page: 393 x 59, 0..50.
class tst_CustomSlider : public QObject
{
    Q_OBJECT
private slots:
    void init()
    {
        m_window = std::make_unique<QWidget>();
        m_window->resize(600, 200);
        m_other = new QWidget(m_window.get());
        m_other->setFocusPolicy(Qt::StrongFocus);
        m_other->setGeometry(0, 150, 50, 40);
        m_slider = new settings::CustomSlider_2(m_window.get(), QRect(96, 10, 393, 59), 4);
        m_slider->setRange(0, 50);
        m_slider->setValue(25);
        m_saved = std::make_unique<QSignalSpy>(m_slider, SIGNAL(valSave(int)));
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }

    void cleanup()
    {
        m_saved.reset();
        m_window.reset();
    }

    void standsWhereItIsPut()
    {
        QCOMPARE(m_slider->geometry(), QRect(96, 10, 393, 59));
        QCOMPARE(m_slider->orientation(), Qt::Horizontal);
    }

    void setValueSavesNothing()
    {
        m_slider->setValue(30);
        m_slider->setRange(0, 12);
        m_slider->setOffset(-5);
        QVERIFY(!m_saved->wait(600));
    }

    void aTouchOnTheTrackMovesTheHandleThere_data()
    {
        QTest::addColumn<int>("x");
        QTest::addColumn<int>("value");
        QTest::newRow("left edge") << 0 << 0;
        QTest::newRow("left of the track") << 25 << 0;
        QTest::newRow("middle") << 196 << 25;
        QTest::newRow("three quarters") << 279 << 37;
        QTest::newRow("right edge") << 392 << 50;
    }

    void aTouchOnTheTrackMovesTheHandleThere()
    {
        QFETCH(int, x);
        QFETCH(int, value);
        m_slider->setValue(10);
        press(x);
        QCOMPARE(m_slider->value(), value);
        QCOMPARE(m_saved->count(), 0);
        release(x);
        QCOMPARE(*m_saved, QList<QVariantList>({{value}}));
    }

    void everyValueCanBeTouched_data()
    {
        QTest::addColumn<int>("maximum");
        QTest::newRow("volume") << 50;
        QTest::newRow("source gain") << 15;
        QTest::newRow("subwoofer level") << 12;
    }

    void everyValueCanBeTouched()
    {
        QFETCH(int, maximum);
        m_slider->setRange(0, maximum);
        QSet<int> seen;
        int last = 0;
        for (int x = 0; x < m_slider->width(); ++x) {
            press(x);
            QVERIFY(m_slider->value() >= last);
            last = m_slider->value();
            seen.insert(last);
            release(x);
        }
        QCOMPARE(seen.size(), maximum + 1);
    }

    void aDragSavesOnceOnRelease()
    {
        press(196);
        for (int x = 196; x < 300; x += 4)
            move(x);
        move(5000); // off the slider and the screen
        QCOMPARE(m_slider->value(), 50);
        move(279);
        QCOMPARE(m_saved->count(), 0);
        release(279);
        QCOMPARE(*m_saved, QList<QVariantList>({{37}}));
        QVERIFY(!m_saved->wait(600));
    }

    void aTouchThatChangesNothingIsSavedToo()
    {
        press(196);
        release(196);
        QCOMPARE(*m_saved, QList<QVariantList>({{25}}));
    }

    void theSavedValueIsWithoutTheOffset()
    {
        m_slider->setRange(0, 15);
        m_slider->setOffset(-5);
        press(392);
        release(392);
        QCOMPARE(*m_saved, QList<QVariantList>({{15}}));
    }

    void otherButtonsDoNothing()
    {
        QTest::mouseClick(m_slider, Qt::RightButton, Qt::NoModifier, QPoint(300, 30));
        QCOMPARE(m_slider->value(), 25);
        press(279);
        QTest::mouseRelease(m_slider, Qt::RightButton, Qt::NoModifier, QPoint(300, 30));
        QCOMPARE(m_saved->count(), 0);
        release(279);
        QCOMPARE(m_saved->count(), 1);
    }

    void aRefreshUnderTheFingerDoesNotWin()
    {
        press(279);
        m_slider->setValue(3); // the page reads its store again because something else has changed
        release(279);
        QCOMPARE(*m_saved, QList<QVariantList>({{37}}));
        QCOMPARE(m_slider->value(), 37);
    }

    void disablingUnderTheFingerSavesNothing()
    {
        press(279);
        m_slider->setEnabled(false);
        release(279);
        QCOMPARE(m_slider->value(), 25);
        QVERIFY(!m_slider->isSliderDown());
        m_slider->setEnabled(true);
        move(300);
        release(300);
        QCOMPARE(m_slider->value(), 25);
        QVERIFY(!m_saved->wait(600));
    }

    void hidingUnderTheFingerSavesNothing()
    {
        press(279);
        m_window->hide();
        QCOMPARE(m_slider->value(), 25);
        QVERIFY(!m_slider->isSliderDown());
        QVERIFY(!m_saved->wait(600));
    }

    void aDisabledSliderIgnoresTouchAndKeys()
    {
        m_slider->setEnabled(false);
        press(279);
        release(279);
        QTest::keyClick(m_slider, Qt::Key_Right);
        QCOMPARE(m_slider->value(), 25);
        QVERIFY(!m_saved->wait(600));
    }

    void keyboardSteppingSavesOnceWhenItPauses()
    {
        m_slider->setFocus();
        for (int i = 0; i < 5; ++i)
            QTest::keyClick(m_slider, Qt::Key_Right);
        QTest::keyClick(m_slider, Qt::Key_Left);
        QCOMPARE(m_slider->value(), 29);
        QCOMPARE(m_saved->count(), 0);
        QVERIFY(m_saved->wait(2000));
        QCOMPARE(*m_saved, QList<QVariantList>({{29}}));
        QVERIFY(!m_saved->wait(600));
    }

    void aKeyAtTheEndSavesNothing()
    {
        m_slider->setValue(50);
        m_slider->setFocus();
        QTest::keyClick(m_slider, Qt::Key_Right);
        QVERIFY(!m_saved->wait(600));
    }

    void steppingIsSavedAtOnceWhenTheFocusLeaves()
    {
        m_slider->setFocus();
        QTest::keyClick(m_slider, Qt::Key_Right);
        m_other->setFocus();
        QCOMPARE(*m_saved, QList<QVariantList>({{26}}));
        QVERIFY(!m_saved->wait(600));
    }

    void steppingIsSavedAtOnceWhenThePageIsLeft()
    {
        m_slider->setFocus();
        QTest::keyClick(m_slider, Qt::Key_End);
        m_window->hide();
        QCOMPARE(*m_saved, QList<QVariantList>({{50}}));
        QVERIFY(!m_saved->wait(600));
    }

    void steppingSurvivesARefreshOfThePage()
    {
        m_slider->setFocus();
        QTest::keyClick(m_slider, Qt::Key_Right);
        m_slider->setValue(25);
        QVERIFY(m_saved->wait(2000));
        QCOMPARE(*m_saved, QList<QVariantList>({{26}}));
        QCOMPARE(m_slider->value(), 26);
    }

    void steppingIsDroppedWhenTheSliderIsDisabled()
    {
        m_slider->setFocus();
        QTest::keyClick(m_slider, Qt::Key_Right);
        m_slider->setEnabled(false);
        QCOMPARE(m_slider->value(), 25);
        QVERIFY(!m_saved->wait(600));
    }

    void aTouchAfterSteppingIsSavedOnce()
    {
        m_slider->setFocus();
        QTest::keyClick(m_slider, Qt::Key_Right);
        press(279);
        release(279);
        QVERIFY(!m_saved->wait(600));
        QCOMPARE(*m_saved, QList<QVariantList>({{37}}));
    }

    void keysDoNothingUnderTheFinger()
    {
        m_slider->setFocus();
        press(279);
        QTest::keyClick(m_slider, Qt::Key_Home);
        QCOMPARE(m_slider->value(), 37);
        release(279);
        QCOMPARE(*m_saved, QList<QVariantList>({{37}}));
    }

    void theWheelStepsOnlyWithTheFocus()
    {
        m_other->setFocus();
        wheel(120);
        QCOMPARE(m_slider->value(), 25);
        m_slider->setFocus();
        wheel(120);
        const int stepped = m_slider->value();
        QVERIFY(stepped > 25);
        QVERIFY(m_saved->wait(2000));
        QCOMPARE(*m_saved, QList<QVariantList>({{stepped}}));
    }

    void aTouchTakesNoFocus()
    {
        m_other->setFocus();
        press(279);
        release(279);
        QVERIFY(m_other->hasFocus());
    }

    void theNumberShownHasTheOffset()
    {
        m_slider->setRange(0, 15);
        m_slider->setValue(5);
        m_slider->setOffset(-5);
        const QImage shown = m_slider->grab().toImage();
        m_slider->setRange(0, 15);
        m_slider->setOffset(0);
        m_slider->setValue(5);
        QVERIFY(shown != m_slider->grab().toImage());
        m_slider->setRange(-5, 10);
        m_slider->setValue(0); // same place, same number
        QCOMPARE(m_slider->grab().toImage(), shown);
    }

    void everyOffsetIsShown()
    {
        m_slider->setRange(0, 15);
        m_slider->setValue(15);
        m_slider->setOffset(std::numeric_limits<int>::max());
        const QImage largest = m_slider->grab().toImage();
        m_slider->setOffset(std::numeric_limits<int>::min());
        QVERIFY(m_slider->grab().toImage() != largest);
    }

    void theBubbleHasTheHintColourWhileDragged()
    {
        const QColor hint(255, 0, 255);
        m_slider->setHintColor(hint);
        QCOMPARE(pixels(hint), 0);
        press(196);
        QVERIFY(pixels(hint) > 1000);
        release(196);
        QCOMPARE(pixels(hint), 0);
    }

    void anInvalidHintColourIsSaidAndIgnored()
    {
        const QColor hint(255, 0, 255);
        m_slider->setHintColor(hint);
        QTest::ignoreMessage(QtWarningMsg, "CustomSlider_2: an invalid hint colour is ignored");
        m_slider->setHintColor(QColor());
        press(196);
        QVERIFY(pixels(hint) > 1000);
        release(196);
    }

    void aMirroredSliderFollowsTheFinger()
    {
        m_slider->setInvertedAppearance(true);
        press(0);
        QCOMPARE(m_slider->value(), 50);
        release(392);
        QCOMPARE(m_slider->value(), 0);
    }

    void aRangeWithoutExtentIsHarmless()
    {
        m_slider->setRange(7, 7);
        press(300);
        release(300);
        QCOMPARE(*m_saved, QList<QVariantList>({{7}}));
        m_slider->resize(10, 10);
        m_slider->grab();
        press(5);
        release(5);
        QCOMPARE(m_slider->value(), 7);
    }

private:
    void press(int x) { QTest::mousePress(m_slider, Qt::LeftButton, Qt::NoModifier, QPoint(x, 30)); }
    void release(int x) { QTest::mouseRelease(m_slider, Qt::LeftButton, Qt::NoModifier, QPoint(x, 30)); }
    void move(int x)
    {
        QMouseEvent event(QEvent::MouseMove, QPointF(x, 30), m_slider->mapToGlobal(QPoint(x, 30)),
                          Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(m_slider, &event);
    }
    void wheel(int delta)
    {
        QWheelEvent event(QPointF(100, 30), m_slider->mapToGlobal(QPoint(100, 30)), QPoint(),
                          QPoint(0, delta), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(m_slider, &event);
    }
    int pixels(const QColor& color) const
    {
        const QImage image = m_slider->grab().toImage();
        int count = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                count += image.pixelColor(x, y).rgb() == color.rgb();
        return count;
    }

    std::unique_ptr<QWidget> m_window;
    QWidget* m_other = nullptr;
    settings::CustomSlider_2* m_slider = nullptr;
    std::unique_ptr<QSignalSpy> m_saved;
};

QTEST_MAIN(tst_CustomSlider)
#include "tst_customslider.moc"
