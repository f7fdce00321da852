#include "common/transferstation.h"
#include "platform/common/framework/journal.h"

#include <QtTest>

using cm::R9TransferStation;
using cm::TransferFunction;

class TestTransferStation : public QObject
{
    Q_OBJECT
private slots:
    void thereIsOneStation();
    void anOperationReachesEveryListener();
    void oldStyleConnectionsWork();
    void operationsAreReported();
};

void TestTransferStation::thereIsOneStation()
{
    QVERIFY(TransferFunction::instance()->getTS());
    QCOMPARE(TransferFunction::instance()->getTS(), TransferFunction::instance()->getTS());
}

void TestTransferStation::anOperationReachesEveryListener()
{
    R9TransferStation* const station = TransferFunction::instance()->getTS();
    QSignalSpy nextA(station, &R9TransferStation::setupNextPage);
    QSignalSpy nextB(station, &R9TransferStation::setupNextPage);
    QSignalSpy previous(station, &R9TransferStation::setupPrevPage);
    station->setupNextPage();
    QCOMPARE(nextA.size(), 1);
    QCOMPARE(nextB.size(), 1);
    QCOMPARE(previous.size(), 0);
    station->setupPrevPage();
    QCOMPARE(nextA.size(), 1);
    QCOMPARE(previous.size(), 1);
}

void TestTransferStation::oldStyleConnectionsWork()
{
    R9TransferStation own;
    QSignalSpy next(&own, SIGNAL(setupNextPage()));
    QSignalSpy previous(&own, SIGNAL(setupPrevPage()));
    own.setupNextPage();
    own.setupPrevPage();
    QCOMPARE(next.size(), 1);
    QCOMPARE(previous.size(), 1);
}

void TestTransferStation::operationsAreReported()
{
    TransferFunction::instance()->getTS()->setupPrevPage();
    const cm::Journal::Entry entry = cm::Journal::instance()->entries().last();
    QCOMPARE(entry.subsystem, QStringLiteral("R9TransferStation"));
    QCOMPARE(entry.operation, QStringLiteral("setupPrevPage()"));
}

QTEST_GUILESS_MAIN(TestTransferStation)
#include "tst_transferstation.moc"
