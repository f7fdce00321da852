#include "headunit/remote/listenaddress.h"

#include <QtTest>

using namespace headunit;

class TestListenAddress : public QObject
{
    Q_OBJECT
private slots:
    void addressIsReadAndWrittenAgain_data();
    void addressIsReadAndWrittenAgain();
    void nothingElseIsRead_data();
    void nothingElseIsRead();
};

void TestListenAddress::addressIsReadAndWrittenAgain_data()
{
    QTest::addColumn<QString>("written");
    QTest::addColumn<bool>("isLoopback");
    QTest::newRow("127.0.0.1:0") << "127.0.0.1:0" << true;
    QTest::newRow("localhost:8080") << "127.0.0.1:8080" << true;
    QTest::newRow("127.1.2.3:65535") << "127.1.2.3:65535" << true;
    QTest::newRow("[::1]:1") << "[::1]:1" << true;
    QTest::newRow("0.0.0.0:8443") << "0.0.0.0:8443" << false;
    QTest::newRow("[::]:8443") << "[::]:8443" << false;
    QTest::newRow("192.168.1.2:1") << "192.168.1.2:1" << false;
}

void TestListenAddress::addressIsReadAndWrittenAgain()
{
    QFETCH(bool, isLoopback);
    const auto address = readListenAddress(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(address);
    QTEST(textOf(*address), "written");
    QCOMPARE(address->isLoopback(), isLoopback);
}

void TestListenAddress::nothingElseIsRead_data()
{
    QTest::addColumn<QString>("text");
    for (const char* text : {"",
                             ":",
                             "8080",
                             ":8080",
                             "127.0.0.1",
                             "127.0.0.1:",
                             "127.0.0.1:65536",
                             "127.0.0.1:-1",
                             "127.0.0.1:80a",
                             "127.0.0.1:+80",
                             "256.0.0.1:1",
                             "1.2.3:1",
                             "::1:80",
                             "[::1]",
                             "[::1:80",
                             "[127.0.0.1]x:1",
                             "[g::1]:1",
                             "unit:80",
                             "127.0.0.1:80\n",
                             " 127.0.0.1:80",
                             "127.0.0.1:000080"})
        QTest::newRow(text) << QString::fromLatin1(text);
}

void TestListenAddress::nothingElseIsRead()
{
    QFETCH(QString, text);
    QVERIFY(!readListenAddress(text));
}

QTEST_GUILESS_MAIN(TestListenAddress)
#include "tst_listenaddress.moc"
