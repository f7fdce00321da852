#include "common/pushbutton.h"

#include <QPushButton>
#include <QtTest>

#include <memory>

/// Drives a wrapped key with real mouse and key events.
class tst_PushButton : public QObject
{
    Q_OBJECT
private slots:
    void init()
    {
        m_window = std::make_unique<QWidget>();
        m_window->resize(300, 200);
        m_key = new QPushButton(m_window.get());
        m_key->setGeometry(50, 50, 74, 70);
        m_wrapper = new cm::PushButton(m_key, m_window.get());
        m_shortClicked = std::make_unique<QSignalSpy>(m_wrapper, SIGNAL(shortClicked()));
        m_longPressed = std::make_unique<QSignalSpy>(m_wrapper, SIGNAL(longPressed()));
        m_repeated = std::make_unique<QSignalSpy>(m_wrapper, SIGNAL(longPressedRepeat()));
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }

    void cleanup() { m_window.reset(); }

    void aQuickPressIsOneShortClickOnRelease()
    {
        QTest::mousePress(m_key, Qt::LeftButton);
        QCOMPARE(m_shortClicked->count(), 0);
        QTest::mouseRelease(m_key, Qt::LeftButton);
        QCOMPARE(m_shortClicked->count(), 1);
        QCOMPARE(m_longPressed->count(), 0);
    }

    void aPressHeldForLongIsStillOneShortClick()
    {
        QTest::mousePress(m_key, Qt::LeftButton);
        QTRY_COMPARE(m_repeated->count(), 2);
        QCOMPARE(m_shortClicked->count(), 0);
        QTest::mouseRelease(m_key, Qt::LeftButton);
        QCOMPARE(m_shortClicked->count(), 1);
        QCOMPARE(m_longPressed->count(), 1);
    }

    void longPressComesOnceAndThenRepeats()
    {
        QElapsedTimer clock;
        clock.start();
        QTest::mousePress(m_key, Qt::LeftButton);
        QVERIFY(m_longPressed->wait(5000));
        QVERIFY2(clock.elapsed() >= 795, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(m_repeated->count(), 0);
        clock.restart();
        QTRY_COMPARE(m_repeated->count(), 3);
        QVERIFY2(clock.elapsed() >= 3 * 150 - 10, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(m_longPressed->count(), 1);
        QTest::mouseRelease(m_key, Qt::LeftButton);
    }

    void nothingRepeatsAfterTheRelease()
    {
        QTest::mousePress(m_key, Qt::LeftButton);
        QVERIFY(m_longPressed->wait(5000));
        QTest::mouseRelease(m_key, Qt::LeftButton);
        QVERIFY(!m_repeated->wait(400));
    }

    void aReleaseOutsideTheKeyIsNoClick()
    {
        QTest::mousePress(m_key, Qt::LeftButton);
        moveTo(QPoint(200, 200));
        QTest::mouseRelease(m_key, Qt::LeftButton, Qt::NoModifier, QPoint(200, 200));
        QCOMPARE(m_shortClicked->count(), 0);
        QVERIFY(!m_longPressed->wait(1000));
    }

    void slidingOffAndBackIsTheSamePress()
    {
        QTest::mousePress(m_key, Qt::LeftButton);
        QVERIFY(m_longPressed->wait(5000));
        moveTo(QPoint(200, 200));
        QVERIFY(!m_key->isDown());
        moveTo(QPoint(10, 10));
        QVERIFY(m_key->isDown());
        QVERIFY(m_repeated->wait(700)); // goes on repeating, instead of waiting for a second long press
        QTRY_VERIFY(m_repeated->count() >= 6);
        QCOMPARE(m_longPressed->count(), 1);
        QTest::mouseRelease(m_key, Qt::LeftButton, Qt::NoModifier, QPoint(10, 10));
        QCOMPARE(m_shortClicked->count(), 1);
    }

    void fastTappingCountsEveryPress()
    {
        for (int i = 0; i < 20; ++i) {
            QTest::mouseClick(m_key, Qt::LeftButton);
            QTest::mouseDClick(m_key, Qt::LeftButton); // Qt's name for every second press of a fast finger
            QTest::mouseRelease(m_key, Qt::LeftButton);
        }
        QCOMPARE(m_shortClicked->count(), 40);
        QCOMPARE(m_longPressed->count(), 0);
    }

    void anAutoRepeatingButtonStillClicksOnce()
    {
        m_key->setAutoRepeat(true);
        m_key->setAutoRepeatDelay(10);
        m_key->setAutoRepeatInterval(10);
        QSignalSpy clicked(m_key, SIGNAL(clicked()));
        QTest::mousePress(m_key, Qt::LeftButton);
        QTRY_VERIFY(clicked.count() > 20);
        QVERIFY(m_longPressed->wait(5000));
        QCOMPARE(m_shortClicked->count(), 0);
        QTest::mouseRelease(m_key, Qt::LeftButton);
        QCOMPARE(m_shortClicked->count(), 1);
        QCOMPARE(m_longPressed->count(), 1);
    }

    void theKeyboardClicksToo()
    {
        m_key->setFocus();
        QTest::keyClick(m_key, Qt::Key_Space);
        QCOMPARE(m_shortClicked->count(), 1);
    }

    void aDisabledKeyReportsNothing()
    {
        m_key->setEnabled(false);
        QTest::mouseClick(m_key, Qt::LeftButton);
        QCOMPARE(m_shortClicked->count(), 0);
    }

    void disablingUnderTheFingerEndsThePress()
    {
        QTest::mousePress(m_key, Qt::LeftButton);
        m_key->setEnabled(false);
        QVERIFY(!m_longPressed->wait(1000));
        m_key->setEnabled(true);
        QTest::mouseRelease(m_key, Qt::LeftButton);
        QCOMPARE(m_shortClicked->count(), 0);
    }

    void hidingUnderTheFingerEndsThePress()
    {
        QTest::mousePress(m_key, Qt::LeftButton);
        m_key->hide();
        QVERIFY(!m_longPressed->wait(1000));
    }

    void theButtonMayGoFirst()
    {
        QTest::mousePress(m_key, Qt::LeftButton);
        delete m_key;
        QVERIFY(!m_longPressed->wait(1000));
        QCOMPARE(m_shortClicked->count(), 0);
    }

    void theWrapperMayGoInItsOwnSignal()
    {
        connect(m_wrapper, &cm::PushButton::longPressed, m_wrapper, [this] { delete m_wrapper; });
        QSignalSpy gone(m_wrapper, SIGNAL(destroyed()));
        QTest::mousePress(m_key, Qt::LeftButton);
        QVERIFY(gone.wait(5000));
        QTest::mouseRelease(m_key, Qt::LeftButton);
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
        QMouseEvent move(QEvent::MouseMove, pos, m_key->mapToGlobal(pos), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QApplication::sendEvent(m_key, &move);
    }

    std::unique_ptr<QWidget> m_window;
    QPushButton* m_key = nullptr;
    cm::PushButton* m_wrapper = nullptr;
    std::unique_ptr<QSignalSpy> m_shortClicked, m_longPressed, m_repeated;
};

QTEST_MAIN(tst_PushButton)
#include "tst_pushbutton.moc"
