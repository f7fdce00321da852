#include "headunit/remote/gate.h"

#include <QtTest>

using namespace headunit;

class TestGate : public QObject
{
    Q_OBJECT
private slots:
    void tokenHas128BitsOfItsOwn();
    void onlyTheWholeTokenIsAdmitted();
    void hostIsAnAddressOrANameOfTheCertificate_data();
    void hostIsAnAddressOrANameOfTheCertificate();
    void originIsTheServersOwn_data();
    void originIsTheServersOwn();
};

void TestGate::tokenHas128BitsOfItsOwn()
{
    QSet<QByteArray> tokens;
    for (int i = 0; i < 100; ++i) {
        const Gate gate(false);
        QVERIFY(QRegularExpression("\\A[0-9a-f]{32}\\z").match(gate.token()).hasMatch());
        tokens.insert(gate.token());
    }
    QCOMPARE(tokens.size(), 100);
}

void TestGate::onlyTheWholeTokenIsAdmitted()
{
    const Gate gate(false);
    const QByteArray token = gate.token();
    QVERIFY(gate.admitsToken(token));
    for (int i = 0; i < token.size(); ++i) {
        QByteArray wrong = token;
        wrong[i] = wrong[i] == '0' ? '1' : '0';
        QVERIFY2(!gate.admitsToken(wrong), wrong);
    }
    for (const QByteArray& wrong :
         {QByteArray(), token.left(31), token + '0', token.toUpper() + ' ', token + token})
        QVERIFY2(!gate.admitsToken(wrong), wrong);
}

void TestGate::hostIsAnAddressOrANameOfTheCertificate_data()
{
    QTest::addColumn<bool>("isAdmitted");
    for (const char* host : {"127.0.0.1", "127.0.0.1:8080", "localhost:1", "LocalHost", "[::1]:8080",
                             "192.168.1.2:8443", "car.example:8443", "CAR.example", "a.fleet.example:1"})
        QTest::newRow(host) << true;
    for (const char* host :
         {"", ":80", "evil.example", "localhost.evil.example", "127.0.0.1.evil.example",
          "evil.example:127.0.0.1", "car.example.evil.example", "fleet.example", "a.b.fleet.example", "[::1",
          "[evil]", "::1", "127.0.0.1 evil.example", "127.0.0.1/evil", "user@127.0.0.1", "999.0.0.1",
          "127.0.0.1:", "127.0.0.1:123456", "127.0.0.1; connect-src *"})
        QTest::newRow(host) << false;
}

void TestGate::hostIsAnAddressOrANameOfTheCertificate()
{
    const Gate gate(true, {"car.example", "*.fleet.example"});
    QTEST(gate.admitsHost(QTest::currentDataTag()), "isAdmitted");
}

void TestGate::originIsTheServersOwn_data()
{
    QTest::addColumn<bool>("tls");
    QTest::addColumn<bool>("isAdmitted");
    QTest::newRow("http://127.0.0.1:8080") << false << true;
    QTest::newRow("HTTP://127.0.0.1:8080") << false << true;
    QTest::newRow("https://127.0.0.1:8080") << false << false;
    QTest::newRow("http://127.0.0.1:8081") << false << false;
    QTest::newRow("http://localhost:8080") << false << false;
    QTest::newRow("http://127.0.0.1:8080/") << false << false;
    QTest::newRow("null") << false << false;
    QTest::newRow("") << false << false;
    QTest::newRow("https://127.0.0.1:8080 ") << true << false;
    QTest::newRow("https://127.0.0.1:8080.") << true << false;
}

void TestGate::originIsTheServersOwn()
{
    QFETCH(bool, tls);
    QTEST(Gate(tls).admitsOrigin(QTest::currentDataTag(), "127.0.0.1:8080"), "isAdmitted");
    QVERIFY(Gate(true).admitsOrigin("https://127.0.0.1:8080", "127.0.0.1:8080"));
    QVERIFY(!Gate(tls).admitsOrigin("http://", ""));
}

QTEST_GUILESS_MAIN(TestGate)
#include "tst_gate.moc"
