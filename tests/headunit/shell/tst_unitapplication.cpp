#include "headunit/shell/unitapplication.h"

#include "tests/support/messagelog.h"

#include <QtTest>

#include <stdexcept>

using namespace headunit;

/// Throws at whatever is posted to it.
class Thrower : public QObject
{
    Q_OBJECT
public:
    bool event(QEvent* event) override
    {
        if (event->type() == QEvent::User)
            throw std::runtime_error("no vehicle bus");
        return QObject::event(event);
    }
};

class TestUnitApplication : public QObject
{
    Q_OBJECT
private slots:
    void whatAnEventsReceiverThrowsEndsThere();
};

void TestUnitApplication::whatAnEventsReceiverThrowsEndsThere()
{
    const MessageLog messages;
    Thrower thrower;
    QCoreApplication::postEvent(&thrower, new QEvent(QEvent::User));
    bool laterEventCame = false;
    QTimer::singleShot(0, [&] { laterEventCame = true; });
    QTRY_VERIFY(laterEventCame);
    QCOMPARE(MessageLog::count("Thrower threw: no vehicle bus"), 1);
}

int main(int argc, char** argv)
{
    UnitApplication application(argc, argv);
    TestUnitApplication test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_unitapplication.moc"
