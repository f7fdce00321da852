#include "common/events.h"
#include "common/keyevent.h"

#include <QtTest>

#include <cstring>

class TestEvents : public QObject
{
    Q_OBJECT
private slots:
    void touchEventCarriesItsFourNumbers();
    void statusBarEventCarriesItsFlagAndNoPayload();
    void postedEventsArriveWhole();
    void keyEventTellsKeyAndAction();
    void noTwoEventTypesAreEqual();
};

void TestEvents::touchEventCarriesItsFourNumbers()
{
    const TouchEvent event(Qx::Touch_Back, -1, -1);
    QCOMPARE(static_cast<int>(event.type()), 1008);
    QCOMPARE(static_cast<int>(event.value()), 15);
    qint32 words[4] = {};
    QCOMPARE(event.payload().size(), static_cast<int>(sizeof(words)));
    std::memcpy(words, event.payload().constData(), sizeof(words));
    QCOMPARE(words[0], 1008);
    QCOMPARE(words[1], 15);
    QCOMPARE(words[2], -1);
    QCOMPARE(words[3], -1);
}

void TestEvents::statusBarEventCarriesItsFlagAndNoPayload()
{
    const StatusBarHideEvent hide(true);
    const StatusBarHideEvent show(false);
    QCOMPARE(static_cast<int>(hide.type()), 1016);
    QVERIFY(hide.value());
    QVERIFY(!show.value());
    QVERIFY(hide.payload().isEmpty());
}

void TestEvents::postedEventsArriveWhole()
{
    class Receiver : public QObject
    {
    public:
        int x = 0;
        bool event(QEvent* event) override
        {
            if (static_cast<int>(event->type()) != Qx::EventType_Touch)
                return QObject::event(event);
            qint32 words[4] = {};
            std::memcpy(words, static_cast<TouchEvent*>(event)->payload().constData(), sizeof(words));
            x = words[2];
            return true;
        }
    } receiver;
    QCoreApplication::postEvent(&receiver, new TouchEvent(Qx::Touch_Back, 123, 45));
    QCOMPARE(receiver.x, 0);
    QCoreApplication::sendPostedEvents(&receiver);
    QCOMPARE(receiver.x, 123);
}

void TestEvents::keyEventTellsKeyAndAction()
{
    const KeyEvent event(KeyEvent::Key_NextPage, KeyEvent::LongPress);
    QCOMPARE(event.key(), static_cast<int>(KeyEvent::Key_NextPage));
    QCOMPARE(static_cast<int>(event.type()), static_cast<int>(KeyEvent::LongPress));
    const KeyEvent unknown(4711, KeyEvent::Press);
    QCOMPARE(unknown.key(), 4711);
}

void TestEvents::noTwoEventTypesAreEqual()
{
    const QSet<int> types = {Qx::EventType_Touch, Qx::EventType_StatusBarHide, KeyEvent::Press,
                             KeyEvent::Release, KeyEvent::LongPress};
    QCOMPARE(types.size(), 5);
    for (int type : types)
        QVERIFY(type > QEvent::User && type < QEvent::MaxUser);
}

QTEST_GUILESS_MAIN(TestEvents)
#include "tst_events.moc"
