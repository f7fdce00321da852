#include "common/pushbutton.h"

#include <QElapsedTimer>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

/// Drives a wrapped key with real mouse and key events.
class tst_PushButton : public QObject
{
    Q_OBJECT
private slots:
    void init()
    {
        window = std::make_unique<QWidget>();
        window->resize(300, 200);
        key = new QPushButton(window.get());
        key->setGeometry(50, 50, 74, 70);
        wrapper = new cm::PushButton(key, window.get());
        shortClicked = std::make_unique<QSignalSpy>(wrapper, SIGNAL(shortClicked()));
        longPressed = std::make_unique<QSignalSpy>(wrapper, SIGNAL(longPressed()));
        repeated = std::make_unique<QSignalSpy>(wrapper, SIGNAL(longPressedRepeat()));
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    }

    void cleanup() { window.reset(); }

    void aQuickPressIsOneShortClickOnRelease()
    {
        QTest::mousePress(key, Qt::LeftButton);
        QCOMPARE(shortClicked->count(), 0);
        QTest::mouseRelease(key, Qt::LeftButton);
        QCOMPARE(shortClicked->count(), 1);
        QCOMPARE(longPressed->count(), 0);
    }

    void aPressHeldForLongIsStillOneShortClick()
    {
        QTest::mousePress(key, Qt::LeftButton);
        QTRY_COMPARE(repeated->count(), 2);
        QCOMPARE(shortClicked->count(), 0);
        QTest::mouseRelease(key, Qt::LeftButton);
        QCOMPARE(shortClicked->count(), 1);
        QCOMPARE(longPressed->count(), 1);
    }

    void longPressComesOnceAndThenRepeats()
    {
        QElapsedTimer clock;
        clock.start();
        QTest::mousePress(key, Qt::LeftButton);
        QVERIFY(longPressed->wait(5000));
        QVERIFY2(clock.elapsed() >= 795, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(repeated->count(), 0);
        clock.restart();
        QTRY_COMPARE(repeated->count(), 3);
        QVERIFY2(clock.elapsed() >= 3 * 150 - 10, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(longPressed->count(), 1);
        QTest::mouseRelease(key, Qt::LeftButton);
    }

    void nothingRepeatsAfterTheRelease()
    {
        QTest::mousePress(key, Qt::LeftButton);
        QVERIFY(longPressed->wait(5000));
        QTest::mouseRelease(key, Qt::LeftButton);
        QVERIFY(!repeated->wait(400));
    }

    void aReleaseOutsideTheKeyIsNoClick()
    {
        QTest::mousePress(key, Qt::LeftButton);
        moveTo(QPoint(200, 200));
        QTest::mouseRelease(key, Qt::LeftButton, Qt::NoModifier, QPoint(200, 200));
        QCOMPARE(shortClicked->count(), 0);
        QVERIFY(!longPressed->wait(1000));
    }

    void slidingOffAndBackIsTheSamePress()
    {
        QTest::mousePress(key, Qt::LeftButton);
        QVERIFY(longPressed->wait(5000));
        moveTo(QPoint(200, 200));
        QVERIFY(!key->isDown());
        moveTo(QPoint(10, 10));
        QVERIFY(key->isDown());
        QVERIFY(repeated->wait(700)); // goes on repeating, instead of waiting for a second long press
        QTRY_VERIFY(repeated->count() >= 6);
        QCOMPARE(longPressed->count(), 1);
        QTest::mouseRelease(key, Qt::LeftButton, Qt::NoModifier, QPoint(10, 10));
        QCOMPARE(shortClicked->count(), 1);
    }

    void fastTappingCountsEveryPress()
    {
        for (int i = 0; i < 20; ++i) {
            QTest::mouseClick(key, Qt::LeftButton);
            QTest::mouseDClick(key, Qt::LeftButton); // Qt's name for every second press of a fast finger
            QTest::mouseRelease(key, Qt::LeftButton);
        }
        QCOMPARE(shortClicked->count(), 40);
        QCOMPARE(longPressed->count(), 0);
    }

    void anAutoRepeatingButtonStillClicksOnce()
    {
        key->setAutoRepeat(true);
        key->setAutoRepeatDelay(10);
        key->setAutoRepeatInterval(10);
        QSignalSpy clicked(key, SIGNAL(clicked()));
        QTest::mousePress(key, Qt::LeftButton);
        QTRY_VERIFY(clicked.count() > 20);
        QVERIFY(longPressed->wait(5000));
        QCOMPARE(shortClicked->count(), 0);
        QTest::mouseRelease(key, Qt::LeftButton);
        QCOMPARE(shortClicked->count(), 1);
        QCOMPARE(longPressed->count(), 1);
    }

    void theKeyboardClicksToo()
    {
        key->setFocus();
        QTest::keyClick(key, Qt::Key_Space);
        QCOMPARE(shortClicked->count(), 1);
    }

    void aDisabledKeyReportsNothing()
    {
        key->setEnabled(false);
        QTest::mouseClick(key, Qt::LeftButton);
        QCOMPARE(shortClicked->count(), 0);
    }

    void disablingUnderTheFingerEndsThePress()
    {
        QTest::mousePress(key, Qt::LeftButton);
        key->setEnabled(false);
        QVERIFY(!longPressed->wait(1000));
        key->setEnabled(true);
        QTest::mouseRelease(key, Qt::LeftButton);
        QCOMPARE(shortClicked->count(), 0);
    }

    void hidingUnderTheFingerEndsThePress()
    {
        QTest::mousePress(key, Qt::LeftButton);
        key->hide();
        QVERIFY(!longPressed->wait(1000));
    }

    void theButtonMayGoFirst()
    {
        QTest::mousePress(key, Qt::LeftButton);
        delete key;
        QVERIFY(!longPressed->wait(1000));
        QCOMPARE(shortClicked->count(), 0);
    }

    void theWrapperMayGoInItsOwnSignal()
    {
        connect(wrapper, &cm::PushButton::longPressed, wrapper, [this] { delete wrapper; });
        QSignalSpy gone(wrapper, SIGNAL(destroyed()));
        QTest::mousePress(key, Qt::LeftButton);
        QVERIFY(gone.wait(5000));
        QTest::mouseRelease(key, Qt::LeftButton);
    }

    void aMissingButtonIsSaidAndHarmless()
    {
        QTest::ignoreMessage(QtWarningMsg,
                             "PushButton: there is no button to wrap; no press will be reported");
        cm::PushButton none(nullptr, nullptr);
    }

private:
    void moveTo(const QPoint& pos)
    {
        QMouseEvent move(QEvent::MouseMove, pos, key->mapToGlobal(pos), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QApplication::sendEvent(key, &move);
    }

    std::unique_ptr<QWidget> window;
    QPushButton* key = nullptr;
    cm::PushButton* wrapper = nullptr;
    std::unique_ptr<QSignalSpy> shortClicked, longPressed, repeated;
};

QTEST_MAIN(tst_PushButton)
#include "tst_pushbutton.moc"
