#include "headunit/remote/httphead.h"

#include <QtTest>

using namespace headunit;

class TestHttpHead : public QObject
{
    Q_OBJECT
private slots:
    void requestIsRead();
    void endIsFound();
    void whatOthersMightReadDifferentlyIsRefused_data();
    void whatOthersMightReadDifferentlyIsRefused();
    void anyBytesAreReadOrRefused();
};

void TestHttpHead::requestIsRead()
{
    const auto head =
        HttpHead::read("GET /?a=b HTTP/1.1\r\nHost: 127.0.0.1:80\r\nORIGIN:http://x \t\r\nEmpty:\r\n\r\n");
    QVERIFY(head);
    QCOMPARE(head->method(), QByteArray("GET"));
    QCOMPARE(head->target(), QByteArray("/?a=b"));
    QCOMPARE(head->header("host"), QByteArray("127.0.0.1:80"));
    QCOMPARE(head->header("origin"), QByteArray("http://x"));
    QCOMPARE(head->header("empty"), QByteArray());
    QCOMPARE(head->header("cookie"), QByteArray());
}

void TestHttpHead::endIsFound()
{
    const QByteArray head = "GET / HTTP/1.1\r\nHost: a\r\n\r\n";
    for (int size = 0; size < head.size(); ++size)
        QCOMPARE(HttpHead::sizeIn(head.left(size)), 0);
    QCOMPARE(HttpHead::sizeIn(head), head.size());
    QCOMPARE(HttpHead::sizeIn(head + "body\r\n\r\n"), head.size());
}

void TestHttpHead::whatOthersMightReadDifferentlyIsRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray end = "\r\n\r\n", request = "GET / HTTP/1.1\r\n";
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("no end") << request;
    QTest::newRow("end alone") << end;
    QTest::newRow("empty request line") << "\r\nHost: a" + end;
    QTest::newRow("HTTP/1.0") << "GET / HTTP/1.0" + end;
    QTest::newRow("HTTP/2") << "PRI * HTTP/2.0" + end;
    QTest::newRow("no version") << "GET /" + end;
    QTest::newRow("address for a proxy") << "GET http://a/ HTTP/1.1" + end;
    QTest::newRow("two spaces") << "GET  / HTTP/1.1" + end;
    QTest::newRow("small letters") << "get / HTTP/1.1" + end;
    QTest::newRow("line feed alone") << "GET / HTTP/1.1\nHost: a" + end;
    QTest::newRow("folded line") << request + "Host: a\r\n b" + end;
    QTest::newRow("space before the colon") << request + "Host : a" + end;
    QTest::newRow("no colon") << request + "Host" + end;
    QTest::newRow("no name") << request + ": a" + end;
    QTest::newRow("two hosts") << request + "Host: a\r\nhost: b" + end;
    QTest::newRow("zero byte") << request + QByteArray("Host: a\0b", 9) + end;
    QTest::newRow("escape") << request + "Host: \033[31m" + end;
    QTest::newRow("TLS") << QByteArray::fromHex("160301020001000100fc0303") + end;
    QTest::newRow("too long") << request + "A: " + QByteArray(HttpHead::maxSize, 'a') + end;
}

void TestHttpHead::whatOthersMightReadDifferentlyIsRefused()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(!HttpHead::read(bytes));
}

void TestHttpHead::anyBytesAreReadOrRefused()
{
    QRandomGenerator random(1);
    const QByteArray good = "GET / HTTP/1.1\r\nHost: 127.0.0.1\r\nOrigin: http://127.0.0.1\r\n\r\n";
    int readable = 0;
    for (int round = 0; round < 20000; ++round) {
        QByteArray bytes = good;
        for (int faults = random.bounded(4); faults >= 0; --faults)
            bytes[random.bounded(bytes.size())] = char(random.bounded(256));
        readable += HttpHead::read(bytes).has_value();
    }
    QVERIFY(readable > 0 && readable < 20000);
}

QTEST_GUILESS_MAIN(TestHttpHead)
#include "tst_httphead.moc"
