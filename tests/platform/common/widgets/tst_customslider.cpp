#include "common/customslider.h"

#include <QSignalSpy>
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
        window = std::make_unique<QWidget>();
        window->resize(600, 200);
        other = new QWidget(window.get());
        other->setFocusPolicy(Qt::StrongFocus);
        other->setGeometry(0, 150, 50, 40);
        slider = new settings::CustomSlider_2(window.get(), QRect(96, 10, 393, 59), 4);
        slider->setRange(0, 50);
        slider->setValue(25);
        saved = std::make_unique<QSignalSpy>(slider, SIGNAL(valSave(int)));
        window->show();
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
    }

    void cleanup()
    {
        saved.reset();
        window.reset();
    }

    void standsWhereItIsPut()
    {
        QCOMPARE(slider->geometry(), QRect(96, 10, 393, 59));
        QCOMPARE(slider->orientation(), Qt::Horizontal);
    }

    void setValueSavesNothing()
    {
        slider->setValue(30);
        slider->setRange(0, 12);
        slider->setOffset(-5);
        QVERIFY(!saved->wait(600));
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
        slider->setValue(10);
        press(x);
        QCOMPARE(slider->value(), value);
        QCOMPARE(saved->count(), 0);
        release(x);
        QCOMPARE(*saved, QList<QVariantList>({{value}}));
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
        slider->setRange(0, maximum);
        QSet<int> seen;
        int last = 0;
        for (int x = 0; x < slider->width(); ++x) {
            press(x);
            QVERIFY(slider->value() >= last);
            last = slider->value();
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
        QCOMPARE(slider->value(), 50);
        move(279);
        QCOMPARE(saved->count(), 0);
        release(279);
        QCOMPARE(*saved, QList<QVariantList>({{37}}));
        QVERIFY(!saved->wait(600));
    }

    void aTouchThatChangesNothingIsSavedToo()
    {
        press(196);
        release(196);
        QCOMPARE(*saved, QList<QVariantList>({{25}}));
    }

    void theSavedValueIsWithoutTheOffset()
    {
        slider->setRange(0, 15);
        slider->setOffset(-5);
        press(392);
        release(392);
        QCOMPARE(*saved, QList<QVariantList>({{15}}));
    }

    void otherButtonsDoNothing()
    {
        QTest::mouseClick(slider, Qt::RightButton, Qt::NoModifier, QPoint(300, 30));
        QCOMPARE(slider->value(), 25);
        press(279);
        QTest::mouseRelease(slider, Qt::RightButton, Qt::NoModifier, QPoint(300, 30));
        QCOMPARE(saved->count(), 0);
        release(279);
        QCOMPARE(saved->count(), 1);
    }

    void aRefreshUnderTheFingerDoesNotWin()
    {
        press(279);
        slider->setValue(3); // the page reads its store again because something else has changed
        release(279);
        QCOMPARE(*saved, QList<QVariantList>({{37}}));
        QCOMPARE(slider->value(), 37);
    }

    void disablingUnderTheFingerSavesNothing()
    {
        press(279);
        slider->setEnabled(false);
        release(279);
        QCOMPARE(slider->value(), 25);
        QVERIFY(!slider->isSliderDown());
        slider->setEnabled(true);
        move(300);
        release(300);
        QCOMPARE(slider->value(), 25);
        QVERIFY(!saved->wait(600));
    }

    void hidingUnderTheFingerSavesNothing()
    {
        press(279);
        window->hide();
        QCOMPARE(slider->value(), 25);
        QVERIFY(!slider->isSliderDown());
        QVERIFY(!saved->wait(600));
    }

    void aDisabledSliderIgnoresTouchAndKeys()
    {
        slider->setEnabled(false);
        press(279);
        release(279);
        QTest::keyClick(slider, Qt::Key_Right);
        QCOMPARE(slider->value(), 25);
        QVERIFY(!saved->wait(600));
    }

    void keyboardSteppingSavesOnceWhenItPauses()
    {
        slider->setFocus();
        for (int i = 0; i < 5; ++i)
            QTest::keyClick(slider, Qt::Key_Right);
        QTest::keyClick(slider, Qt::Key_Left);
        QCOMPARE(slider->value(), 29);
        QCOMPARE(saved->count(), 0);
        QVERIFY(saved->wait(2000));
        QCOMPARE(*saved, QList<QVariantList>({{29}}));
        QVERIFY(!saved->wait(600));
    }

    void aKeyAtTheEndSavesNothing()
    {
        slider->setValue(50);
        slider->setFocus();
        QTest::keyClick(slider, Qt::Key_Right);
        QVERIFY(!saved->wait(600));
    }

    void steppingIsSavedAtOnceWhenTheFocusLeaves()
    {
        slider->setFocus();
        QTest::keyClick(slider, Qt::Key_Right);
        other->setFocus();
        QCOMPARE(*saved, QList<QVariantList>({{26}}));
        QVERIFY(!saved->wait(600));
    }

    void steppingIsSavedAtOnceWhenThePageIsLeft()
    {
        slider->setFocus();
        QTest::keyClick(slider, Qt::Key_End);
        window->hide();
        QCOMPARE(*saved, QList<QVariantList>({{50}}));
        QVERIFY(!saved->wait(600));
    }

    void steppingSurvivesARefreshOfThePage()
    {
        slider->setFocus();
        QTest::keyClick(slider, Qt::Key_Right);
        slider->setValue(25);
        QVERIFY(saved->wait(2000));
        QCOMPARE(*saved, QList<QVariantList>({{26}}));
        QCOMPARE(slider->value(), 26);
    }

    void steppingIsDroppedWhenTheSliderIsDisabled()
    {
        slider->setFocus();
        QTest::keyClick(slider, Qt::Key_Right);
        slider->setEnabled(false);
        QCOMPARE(slider->value(), 25);
        QVERIFY(!saved->wait(600));
    }

    void aTouchAfterSteppingIsSavedOnce()
    {
        slider->setFocus();
        QTest::keyClick(slider, Qt::Key_Right);
        press(279);
        release(279);
        QVERIFY(!saved->wait(600));
        QCOMPARE(*saved, QList<QVariantList>({{37}}));
    }

    void keysDoNothingUnderTheFinger()
    {
        slider->setFocus();
        press(279);
        QTest::keyClick(slider, Qt::Key_Home);
        QCOMPARE(slider->value(), 37);
        release(279);
        QCOMPARE(*saved, QList<QVariantList>({{37}}));
    }

    void theWheelStepsOnlyWithTheFocus()
    {
        other->setFocus();
        wheel(120);
        QCOMPARE(slider->value(), 25);
        slider->setFocus();
        wheel(120);
        const int stepped = slider->value();
        QVERIFY(stepped > 25);
        QVERIFY(saved->wait(2000));
        QCOMPARE(*saved, QList<QVariantList>({{stepped}}));
    }

    void aTouchTakesNoFocus()
    {
        other->setFocus();
        press(279);
        release(279);
        QVERIFY(other->hasFocus());
    }

    void theNumberShownHasTheOffset()
    {
        slider->setRange(0, 15);
        slider->setValue(5);
        slider->setOffset(-5);
        const QImage shown = slider->grab().toImage();
        slider->setRange(0, 15);
        slider->setOffset(0);
        slider->setValue(5);
        QVERIFY(shown != slider->grab().toImage());
        slider->setRange(-5, 10);
        slider->setValue(0); // same place, same number
        QCOMPARE(slider->grab().toImage(), shown);
    }

    void everyOffsetIsShown()
    {
        slider->setRange(0, 15);
        slider->setValue(15);
        slider->setOffset(std::numeric_limits<int>::max());
        const QImage largest = slider->grab().toImage();
        slider->setOffset(std::numeric_limits<int>::min());
        QVERIFY(slider->grab().toImage() != largest);
    }

    void theBubbleHasTheHintColourWhileDragged()
    {
        const QColor hint(255, 0, 255);
        slider->setHintColor(hint);
        QCOMPARE(pixels(hint), 0);
        press(196);
        QVERIFY(pixels(hint) > 1000);
        release(196);
        QCOMPARE(pixels(hint), 0);
    }

    void anInvalidHintColourIsSaidAndIgnored()
    {
        const QColor hint(255, 0, 255);
        slider->setHintColor(hint);
        QTest::ignoreMessage(QtWarningMsg, "CustomSlider_2: an invalid hint colour is ignored");
        slider->setHintColor(QColor());
        press(196);
        QVERIFY(pixels(hint) > 1000);
        release(196);
    }

    void aMirroredSliderFollowsTheFinger()
    {
        slider->setInvertedAppearance(true);
        press(0);
        QCOMPARE(slider->value(), 50);
        release(392);
        QCOMPARE(slider->value(), 0);
    }

    void aRangeWithoutExtentIsHarmless()
    {
        slider->setRange(7, 7);
        press(300);
        release(300);
        QCOMPARE(*saved, QList<QVariantList>({{7}}));
        slider->resize(10, 10);
        slider->grab();
        press(5);
        release(5);
        QCOMPARE(slider->value(), 7);
    }

private:
    void press(int x) { QTest::mousePress(slider, Qt::LeftButton, Qt::NoModifier, QPoint(x, 30)); }
    void release(int x) { QTest::mouseRelease(slider, Qt::LeftButton, Qt::NoModifier, QPoint(x, 30)); }
    void move(int x)
    {
        QMouseEvent event(QEvent::MouseMove, QPointF(x, 30), slider->mapToGlobal(QPoint(x, 30)), Qt::NoButton,
                          Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(slider, &event);
    }
    void wheel(int delta)
    {
        QWheelEvent event(QPointF(100, 30), slider->mapToGlobal(QPoint(100, 30)), QPoint(), QPoint(0, delta),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(slider, &event);
    }
    int pixels(const QColor& color) const
    {
        const QImage image = slider->grab().toImage();
        int count = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                count += image.pixelColor(x, y).rgb() == color.rgb();
        return count;
    }

    std::unique_ptr<QWidget> window;
    QWidget* other = nullptr;
    settings::CustomSlider_2* slider = nullptr;
    std::unique_ptr<QSignalSpy> saved;
};

QTEST_MAIN(tst_CustomSlider)
#include "tst_customslider.moc"
