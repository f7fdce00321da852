#include "headunit/remote/clientmessage.h"
#include "headunit/remote/deskchange.h"

#include <QtTest>

using namespace headunit;
using Kind = ClientMessage::Kind;

class TestClientMessage : public QObject
{
    Q_OBJECT
private slots:
    void tokenIsRead();
    void oneWordMessagesAreRead();
    void pointerIsRead();
    void wheelIsRead();
    void keysAreRead_data();
    void keysAreRead();
    void nothingElseIsRead_data();
    void nothingElseIsRead();
};

void TestClientMessage::tokenIsRead()
{
    const auto message = readClientMessage("{\"token\":\"abc\"}");
    QVERIFY(message && message->kind == Kind::Token);
    QCOMPARE(message->token, QByteArray("abc"));
}

void TestClientMessage::oneWordMessagesAreRead()
{
    QCOMPARE(readClientMessage("{\"shown\":true}")->kind, Kind::Shown);
    QCOMPARE(readClientMessage("{\"control\":true}")->kind, Kind::Control);
}

void TestClientMessage::pointerIsRead()
{
    const auto down = readClientMessage("{\"pointer\":\"down\",\"x\":5,\"y\":-7}");
    QVERIFY(down && down->kind == Kind::Event);
    QCOMPARE(down->event.kind, DeskEvent::Kind::PointerDown);
    QCOMPARE(down->event.pos, QPoint(5, -7));
    QCOMPARE(readClientMessage("{\"pointer\":\"move\",\"x\":0,\"y\":0}")->event.kind,
             DeskEvent::Kind::PointerMove);
    QCOMPARE(readClientMessage("{\"pointer\":\"up\",\"x\":0,\"y\":0}")->event.kind,
             DeskEvent::Kind::PointerUp);
}

void TestClientMessage::wheelIsRead()
{
    const auto wheel = readClientMessage("{\"wheel\":-120,\"x\":1,\"y\":2}");
    QVERIFY(wheel);
    QCOMPARE(wheel->event.kind, DeskEvent::Kind::Wheel);
    QCOMPARE(wheel->event.turn, -120);
    QCOMPARE(wheel->event.pos, QPoint(1, 2));
}

void TestClientMessage::keysAreRead_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("text");
    QTest::newRow("named") << "{\"key\":\"Escape\",\"down\":true}" << int(Qt::Key_Escape) << "";
    QTest::newRow("letter") << "{\"key\":\"a\",\"down\":true}" << int(Qt::Key_A) << "a";
    QTest::newRow("capital") << "{\"key\":\"A\",\"down\":true,\"shift\":true}" << int(Qt::Key_A) << "A";
    QTest::newRow("space") << "{\"key\":\" \",\"down\":true}" << int(Qt::Key_Space) << " ";
    QTest::newRow("Tab") << "{\"key\":\"Tab\",\"down\":true}" << int(Qt::Key_Tab) << "";
    QTest::newRow("Tab back") << "{\"key\":\"Tab\",\"down\":true,\"shift\":true}" << int(Qt::Key_Backtab)
                              << "";
    QTest::newRow("Enter") << "{\"key\":\"Enter\",\"down\":true}" << int(Qt::Key_Return) << "";
    QTest::newRow("umlaut") << QString::fromUtf8("{\"key\":\"ä\",\"down\":true}") << 0xc4
                            << QString::fromUtf8("ä");
    QTest::newRow("unknown") << "{\"key\":\"MediaPlay\",\"down\":true}" << 0 << "";
    QTest::newRow("control character") << "{\"key\":\"\\u0007\",\"down\":true}" << 0 << "";
}

void TestClientMessage::keysAreRead()
{
    QFETCH(QString, message);
    QFETCH(int, key);
    QFETCH(QString, text);
    auto read = readClientMessage(message);
    QVERIFY(read);
    QCOMPARE(read->event.kind, DeskEvent::Kind::KeyDown);
    QCOMPARE(read->event.key, key);
    QCOMPARE(read->event.text, text);
    QCOMPARE(read->event.modifiers.testFlag(Qt::ShiftModifier), message.contains("shift"));
    read = readClientMessage(message.replace("true", "false"));
    QCOMPARE(read->event.kind, DeskEvent::Kind::KeyUp);
}

void TestClientMessage::nothingElseIsRead_data()
{
    QTest::addColumn<QString>("text");
    for (const char* text : {"",
                             "{",
                             "[]",
                             "null",
                             "42",
                             "\"token\"",
                             "{}",
                             "{\"x\":1}",
                             "{\"pointer\":\"down\"}",
                             "{\"pointer\":\"down\",\"x\":1}",
                             "{\"pointer\":\"down\",\"x\":\"1\",\"y\":1}",
                             "{\"pointer\":\"down\",\"x\":1.5,\"y\":1}",
                             "{\"pointer\":\"down\",\"x\":1e9,\"y\":1}",
                             "{\"pointer\":\"down\",\"x\":1e999,\"y\":1}",
                             "{\"pointer\":\"down\",\"x\":null,\"y\":1}",
                             "{\"pointer\":\"press\",\"x\":1,\"y\":1}",
                             "{\"pointer\":{},\"x\":1,\"y\":1}",
                             "{\"wheel\":100000,\"x\":1,\"y\":1}",
                             "{\"wheel\":120}",
                             "{\"key\":\"a\"}",
                             "{\"key\":\"a\",\"down\":1}",
                             "{\"key\":\"\",\"down\":true}",
                             "{\"key\":7,\"down\":true}",
                             "{\"token\":\"a\"} x"})
        QTest::newRow(text) << QString::fromLatin1(text);
    const QString beyond = QString::number(2 * maxDeskSize + 1);
    QTest::newRow("beyond the desk") << QString("{\"pointer\":\"move\",\"x\":%1,\"y\":0}").arg(beyond);
    QTest::newRow("nested deeply") << QString(400, '[') + QString(400, ']');
}

void TestClientMessage::nothingElseIsRead()
{
    QFETCH(QString, text);
    QVERIFY(!readClientMessage(text));
}

QTEST_GUILESS_MAIN(TestClientMessage)
#include "tst_clientmessage.moc"
