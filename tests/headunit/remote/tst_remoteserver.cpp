#include "tests/headunit/remote/framereader.h"

#include "headunit/remote/client.h"
#include "headunit/remote/remoteserver.h"
#include "headunit/remote/visitor.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpSocket>
#include <QWebSocket>

using namespace headunit;

/// What connects to the port, friend or not. The unit's side is played by the test.
class TestRemoteServer : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup() { m_server.reset(); }
    void pageIsHandedOut();
    void requestIsRefused_data();
    void requestIsRefused();
    void handshakeThatIsNoneEndsTheConnection_data();
    void handshakeThatIsNoneEndsTheConnection();
    void tokenComesFirst_data();
    void tokenComesFirst();
    void whoIsSlowIsLetGo();
    void crowdAtTheDoorKeepsNobodyOut();
    void firstControlsAndOthersLook();
    void controlIsHandedOver();
    void ninthIsRefusedUntilOneLeaves();
    void onlyWhatHasChangedIsSent();
    void deskThatGrowsIsSentAnew();
    void slowClientGetsFewerFramesAndHoldsNobodyUp();
    void nothingIsSentWhileNothingChanges();
    void unitIsToldWhetherAnybodyLooks();
    void hostileFramesEndTheConnection_data();
    void hostileFramesEndTheConnection();
    void randomBytesEndOrWait();
    void floodEndsTheConnection();
    void endIsSaidToAll();

private:
    /// A page, as far as the server can tell.
    struct Page
    {
        explicit Page(const QString& origin)
            : socket(origin)
        {
        }
        QWebSocket socket;
        QVector<QJsonObject> told;
        QVector<QByteArray> frames;
        bool controls() const
        {
            bool last = false;
            for (const QJsonObject& message : told)
                last = message.value("controls").toBool(last);
            return last;
        }
        void say(const char* text) { socket.sendTextMessage(QString::fromLatin1(text)); }
    };
    using PagePointer = QSharedPointer<Page>;

    QByteArray host() const { return "127.0.0.1:" + QByteArray::number(m_server->serverPort()); }
    PagePointer connectPage(const QByteArray& origin = QByteArray());
    /// Connected, with the right token said.
    PagePointer openPage();
    static bool isRefused(const PagePointer& page, int code);
    /// What comes back for these bytes until the server ends the connection.
    QByteArray answer(const QByteArray& bytes);
    static QByteArray upgrade(const QByteArray& host, const QByteArray& origin);
    QScopedPointer<QTcpSocket> knock(const QByteArray& bytes = QByteArray());
    /// The unit paints this; the whole picture for an empty rectangle.
    void paint(const QColor& color, const QRect& rect = QRect(), const QSize& size = QSize(200, 100));
    static QImage shownBy(const PagePointer& page);

    QScopedPointer<Gate> m_gate;
    QScopedPointer<RemoteServer> m_server;
    QVector<DeskEvent> m_events;
    QVector<bool> m_watched;
    int m_wanted = 0;
    int m_lettingsGo = 0;
};

void TestRemoteServer::init()
{
    m_gate.reset(new Gate(false));
    m_server.reset(new RemoteServer(*m_gate, std::nullopt));
    QVERIFY(m_server->listen(QHostAddress::LocalHost));
    m_events.clear();
    m_watched.clear();
    m_wanted = m_lettingsGo = 0;
    connect(m_server.data(), &RemoteServer::acted, this,
            [this](const DeskEvent& event) { m_events.append(event); });
    connect(m_server.data(), &RemoteServer::watched, this, [this](bool on) { m_watched.append(on); });
    connect(m_server.data(), &RemoteServer::frameWanted, this, [this] { ++m_wanted; });
    connect(m_server.data(), &RemoteServer::letGo, this, [this] { ++m_lettingsGo; });
}

TestRemoteServer::PagePointer TestRemoteServer::connectPage(const QByteArray& origin)
{
    PagePointer page(new Page(QString::fromLatin1(origin.isNull() ? "http://" + host() : origin)));
    Page* raw = page.data();
    connect(&page->socket, &QWebSocket::textMessageReceived, this, [raw](const QString& text) {
        raw->told.append(QJsonDocument::fromJson(text.toUtf8()).object());
    });
    connect(&page->socket, &QWebSocket::binaryMessageReceived, this,
            [raw](const QByteArray& frame) { raw->frames.append(frame); });
    page->socket.open(QUrl("ws://" + QString::fromLatin1(host()) + "/"));
    if (!QTest::qWaitFor([raw] { return raw->socket.state() == QAbstractSocket::ConnectedState; }))
        return PagePointer();
    return page;
}

TestRemoteServer::PagePointer TestRemoteServer::openPage()
{
    PagePointer page = connectPage();
    if (!page)
        return page;
    page->socket.sendTextMessage("{\"token\":\"" + QString::fromLatin1(m_gate->token()) + "\"}");
    if (!QTest::qWaitFor([&page] { return !page->told.isEmpty(); }))
        return PagePointer();
    return page;
}

bool TestRemoteServer::isRefused(const PagePointer& page, int code)
{
    return QTest::qWaitFor([&page] { return page->socket.state() == QAbstractSocket::UnconnectedState; }) &&
           page->socket.closeCode() == code;
}

QScopedPointer<QTcpSocket> TestRemoteServer::knock(const QByteArray& bytes)
{
    QScopedPointer<QTcpSocket> socket(new QTcpSocket);
    socket->connectToHost(QHostAddress::LocalHost, m_server->serverPort());
    socket->write(bytes);
    QTcpSocket* raw = socket.data();
    if (!QTest::qWaitFor(
            [raw] { return raw->state() == QAbstractSocket::ConnectedState && raw->bytesToWrite() == 0; }))
        qWarning("not connected");
    return QScopedPointer<QTcpSocket>(socket.take());
}

QByteArray TestRemoteServer::answer(const QByteArray& bytes)
{
    const auto socket = knock(bytes);
    QTcpSocket* raw = socket.data();
    if (!QTest::qWaitFor([raw] { return raw->state() == QAbstractSocket::UnconnectedState; }, 10000))
        return "the connection stays";
    return socket->readAll();
}

QByteArray TestRemoteServer::upgrade(const QByteArray& host, const QByteArray& origin)
{
    return "GET / HTTP/1.1\r\nHost: " + host + (origin.isEmpty() ? "" : "\r\nOrigin: " + origin) +
           "\r\nConnection: Upgrade\r\nUpgrade: websocket\r\nSec-WebSocket-Version: 13\r\n"
           "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n";
}

void TestRemoteServer::paint(const QColor& color, const QRect& rect, const QSize& size)
{
    const QRect place = rect.isEmpty() ? QRect(QPoint(), size) : rect;
    DeskChange change;
    change.layout.size = size;
    change.layout.unit = change.layout.screen = QRect(QPoint(), size);
    QImage picture(place.size(), QImage::Format_RGB32);
    picture.fill(color);
    change.patches.append({place.topLeft(), picture});
    m_server->show(change);
}

QImage TestRemoteServer::shownBy(const PagePointer& page)
{
    QImage shown(200, 100, QImage::Format_RGB32);
    shown.fill(Qt::black);
    for (const QByteArray& frame : std::as_const(page->frames))
        drawFrame(frame, &shown);
    return shown;
}

void TestRemoteServer::pageIsHandedOut()
{
    const QByteArray response = answer("GET / HTTP/1.1\r\nHost: " + host() + "\r\n\r\n");
    QVERIFY2(response.startsWith("HTTP/1.1 200 OK\r\n"), response.left(100));
    QVERIFY(response.contains("\r\nContent-Security-Policy: default-src 'none'; "));
    QVERIFY(response.contains("connect-src ws://" + host() + ";"));
    QVERIFY(response.endsWith(headunit::Page().html()));
    QVERIFY(!response.contains(m_gate->token()));
}

void TestRemoteServer::requestIsRefused_data()
{
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QByteArray>("status");
    // HOST and ORIGIN stand for those of the server.
    QTest::newRow("foreign host") << QByteArray("GET / HTTP/1.1\r\nHost: evil.example\r\n\r\n")
                                  << QByteArray("403");
    QTest::newRow("no host") << QByteArray("GET / HTTP/1.1\r\n\r\n") << QByteArray("403");
    QTest::newRow("post") << QByteArray("POST / HTTP/1.1\r\nHost: HOST\r\n\r\n") << QByteArray("405");
    QTest::newRow("other path") << QByteArray("GET /../etc/passwd HTTP/1.1\r\nHost: HOST\r\n\r\n")
                                << QByteArray("404");
    QTest::newRow("malformed") << QByteArray("GET\r\n\r\n") << QByteArray("400");
    QTest::newRow("too long") << QByteArray("GET / HTTP/1.1\r\nA: ") + QByteArray(20000, 'a')
                              << QByteArray("431");
    QTest::newRow("foreign origin") << upgrade("HOST", "http://evil.example") << QByteArray("403");
    QTest::newRow("origin of a file") << upgrade("HOST", "null") << QByteArray("403");
    QTest::newRow("no origin") << upgrade("HOST", "") << QByteArray("403");
    QTest::newRow("name that was made to point here")
        << upgrade("evil.example:HOSTPORT", "http://evil.example:HOSTPORT") << QByteArray("403");
}

void TestRemoteServer::requestIsRefused()
{
    QFETCH(QByteArray, request);
    QFETCH(QByteArray, status);
    request.replace("HOSTPORT", QByteArray::number(m_server->serverPort())).replace("HOST", host());
    const QByteArray response = answer(request);
    QVERIFY2(response.startsWith("HTTP/1.1 " + status + ' '), response);
    QVERIFY(response.contains("\r\nConnection: close\r\n"));
    QVERIFY(!response.contains("<html"));
    QVERIFY(m_watched.isEmpty());
}

void TestRemoteServer::handshakeThatIsNoneEndsTheConnection_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<QByteArray>("instead");
    QTest::newRow("no key") << QByteArray("Sec-WebSocket-Key") << QByteArray("Not-A-Key");
    QTest::newRow("version of the past") << QByteArray("Version: 13") << QByteArray("Version: 8");
    QTest::newRow("version that is no number") << QByteArray("Version: 13") << QByteArray("Version: x");
    QTest::newRow("no connection to upgrade")
        << QByteArray("Connection: Upgrade") << QByteArray("Connection: close");
}

void TestRemoteServer::handshakeThatIsNoneEndsTheConnection()
{
    QFETCH(QByteArray, header);
    QFETCH(QByteArray, instead);
    const QByteArray response = answer(upgrade(host(), "http://" + host()).replace(header, instead));
    QVERIFY2(!response.startsWith("HTTP/1.1 101") && response != "the connection stays", response);
    QVERIFY(openPage());
}

void TestRemoteServer::tokenComesFirst_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("code");
    QTest::newRow("wrong token") << QString("{\"token\":\"%1\"}").arg(QString(32, '0'))
                                 << int(Client::WrongToken);
    QTest::newRow("empty token") << "{\"token\":\"\"}" << int(Client::WrongToken);
    QTest::newRow("token of another kind") << "{\"token\":true}" << int(Client::WrongToken);
    QTest::newRow("touch") << "{\"pointer\":\"down\",\"x\":1,\"y\":1}" << 1008;
    QTest::newRow("control") << "{\"control\":true}" << 1008;
    QTest::newRow("nonsense") << "hello" << 1008;
}

void TestRemoteServer::tokenComesFirst()
{
    QFETCH(QString, message);
    QFETCH(int, code);
    paint(Qt::red);
    const PagePointer page = connectPage();
    QVERIFY(page);
    page->socket.sendTextMessage(message);
    page->say("{\"pointer\":\"down\",\"x\":1,\"y\":1}");
    QVERIFY(isRefused(page, code));
    QVERIFY(page->frames.isEmpty() && page->told.isEmpty());
    QVERIFY(m_events.isEmpty() && m_watched.isEmpty());
}

void TestRemoteServer::whoIsSlowIsLetGo()
{
    const auto silent = knock(), half = knock("GET / HTTP/1.1\r\nHost: a");
    const PagePointer withoutToken = connectPage();
    QVERIFY(withoutToken);
    QElapsedTimer waited;
    waited.start();
    // A byte now and then doesn't help.
    QTimer drop;
    connect(&drop, &QTimer::timeout, half.data(), [&half] { half->write("b"); });
    drop.start(500);
    for (const QTcpSocket* socket : {silent.data(), half.data()})
        QVERIFY(QTest::qWaitFor([socket] { return socket->state() == QAbstractSocket::UnconnectedState; },
                                2 * Visitor::patienceMs));
    QVERIFY(isRefused(withoutToken, Client::WrongToken));
    QVERIFY(waited.elapsed() < 2 * Visitor::patienceMs);
}

void TestRemoteServer::crowdAtTheDoorKeepsNobodyOut()
{
    std::vector<std::unique_ptr<QTcpSocket>> crowd;
    for (int i = 0; i < 2 * RemoteServer::maxVisitors; ++i)
        crowd.emplace_back(knock("GET").take());
    QVERIFY(openPage());
    const int still = int(std::count_if(crowd.begin(), crowd.end(), [](const auto& socket) {
        return socket->state() == QAbstractSocket::ConnectedState;
    }));
    QVERIFY2(still <= RemoteServer::maxVisitors, qPrintable(QString::number(still)));
    QVERIFY(crowd.back()->state() == QAbstractSocket::ConnectedState); // the oldest went
}

void TestRemoteServer::firstControlsAndOthersLook()
{
    const PagePointer first = openPage(), second = openPage();
    QVERIFY(first && second);
    QVERIFY(first->controls() && !second->controls());
    second->say("{\"pointer\":\"down\",\"x\":1,\"y\":1}");
    second->say("{\"key\":\"a\",\"down\":true}");
    first->say("{\"pointer\":\"down\",\"x\":7,\"y\":8}");
    QVERIFY(QTest::qWaitFor([this] { return !m_events.isEmpty(); }));
    QCOMPARE(m_events.size(), 1);
    QCOMPARE(m_events.first().pos, QPoint(7, 8));
    first->socket.close();
    QVERIFY(QTest::qWaitFor([&second] { return second->controls(); }));
    QCOMPARE(m_lettingsGo, 1);
    m_server->tellFocus("EQ");
    QVERIFY(QTest::qWaitFor([&second] { return second->told.last().value("focus") == QLatin1String("EQ"); }));
}

void TestRemoteServer::controlIsHandedOver()
{
    const PagePointer first = openPage(), second = openPage();
    QVERIFY(first && second);
    second->say("{\"control\":true}");
    QVERIFY(QTest::qWaitFor([&] { return second->controls() && !first->controls(); }));
    QCOMPARE(m_lettingsGo, 1);
    first->say("{\"wheel\":120,\"x\":1,\"y\":1}");
    second->say("{\"wheel\":240,\"x\":1,\"y\":1}");
    QVERIFY(QTest::qWaitFor([this] { return !m_events.isEmpty(); }));
    QCOMPARE(m_events.size(), 1);
    QCOMPARE(m_events.first().turn, 240);
}

void TestRemoteServer::ninthIsRefusedUntilOneLeaves()
{
    QVector<PagePointer> pages;
    for (int i = 0; i < RemoteServer::maxClients; ++i) {
        pages.append(openPage());
        QVERIFY(pages.last());
    }
    const auto ninth = [this] {
        const PagePointer page = connectPage();
        page->socket.sendTextMessage("{\"token\":\"" + QString::fromLatin1(m_gate->token()) + "\"}");
        return page;
    };
    QVERIFY(isRefused(ninth(), Client::TooMany));
    QCOMPARE(pages.first()->socket.state(), QAbstractSocket::ConnectedState);
    pages.last()->socket.close();
    QVERIFY(QTest::qWaitFor(
        [&pages] { return pages.last()->socket.state() == QAbstractSocket::UnconnectedState; }));
    QVERIFY(QTest::qWaitFor([&] { return openPage() != nullptr; }));
}

void TestRemoteServer::onlyWhatHasChangedIsSent()
{
    const PagePointer page = openPage();
    QVERIFY(page);
    QCOMPARE(m_wanted, 1);
    paint(Qt::red);
    QVERIFY(QTest::qWaitFor([&page] { return page->frames.size() == 1; }));
    paint(Qt::blue, QRect(20, 30, 10, 5));
    QVERIFY(QTest::qWaitFor([&page] { return page->frames.size() == 2; }));
    QImage shown(200, 100, QImage::Format_RGB32);
    QCOMPARE(drawFrame(page->frames.at(0), &shown), QRegion(0, 0, 200, 100));
    QCOMPARE(drawFrame(page->frames.at(1), &shown), QRegion(20, 30, 10, 5));
    QCOMPARE(shown.pixelColor(0, 0), QColor(Qt::red));
    QCOMPARE(shown.pixelColor(20, 30), QColor(Qt::blue));
    // Who comes later gets all of it at once.
    const PagePointer later = openPage();
    QVERIFY(later && QTest::qWaitFor([&later] { return later->frames.size() == 1; }));
    QCOMPARE(shownBy(later), shown);
    QCOMPARE(later->told.at(1).value("desk").toArray().at(2).toInt(), 200);
}

void TestRemoteServer::deskThatGrowsIsSentAnew()
{
    const PagePointer page = openPage();
    QVERIFY(page);
    paint(Qt::red);
    QVERIFY(QTest::qWaitFor([&page] { return page->frames.size() == 1; }));
    paint(Qt::blue, QRect(), QSize(300, 100));
    QVERIFY(QTest::qWaitFor([&page] { return page->frames.size() == 2; }));
    QCOMPARE(page->told.last().value("desk").toArray().at(2).toInt(), 300);
    QImage shown(300, 100, QImage::Format_RGB32);
    QCOMPARE(drawFrame(page->frames.at(1), &shown), QRegion(0, 0, 300, 100));
}

void TestRemoteServer::slowClientGetsFewerFramesAndHoldsNobodyUp()
{
    const PagePointer quick = openPage(), slow = openPage();
    QVERIFY(quick && slow);
    const int changes = 20;
    for (int i = 0; i < changes; ++i) {
        paint(QColor(i, i, i), QRect(i * 10, 0, 10, 10));
        QVERIFY2(QTest::qWaitFor([&] { return quick->frames.size() == i + 1; }),
                 qPrintable(QString::number(i)));
        quick->say("{\"shown\":true}");
        QVERIFY(QTest::qWaitFor([&] { return m_wanted == i + 2; })); // the unit is asked for the next one
    }
    QCOMPARE(slow->frames.size(), Client::maxFramesOnTheWay);
    slow->say("{\"shown\":true}");
    QVERIFY(QTest::qWaitFor([&slow] { return slow->frames.size() == Client::maxFramesOnTheWay + 1; }));
    QCOMPARE(shownBy(slow), shownBy(quick)); // with all that it had missed
}

void TestRemoteServer::nothingIsSentWhileNothingChanges()
{
    const PagePointer page = openPage();
    QVERIFY(page);
    paint(Qt::red);
    QVERIFY(QTest::qWaitFor([&page] { return page->frames.size() == 1; }));
    page->say("{\"shown\":true}");
    page->say("{\"pointer\":\"move\",\"x\":1,\"y\":1}");
    QVERIFY(QTest::qWaitFor([this] { return m_events.size() == 1; }));
    QCOMPARE(page->frames.size(), 1);
    QCOMPARE(m_wanted, 2);
    const auto timers = m_server->findChildren<QTimer*>();
    QVERIFY(std::none_of(timers.begin(), timers.end(),
                         [](const QTimer* timer) { return timer->isActive() && !timer->isSingleShot(); }));
}

void TestRemoteServer::unitIsToldWhetherAnybodyLooks()
{
    {
        const PagePointer first = openPage(), second = openPage();
        QCOMPARE(m_watched, QVector<bool>{true});
        first->socket.close();
        QVERIFY(QTest::qWaitFor([&second] { return second->controls(); }));
        QCOMPARE(m_watched, QVector<bool>{true});
    }
    QVERIFY(QTest::qWaitFor([this] { return m_watched == QVector<bool>({true, false}); }));
    QVERIFY(openPage());
    QCOMPARE(m_watched.mid(0, 3), QVector<bool>({true, false, true}));
}

void TestRemoteServer::hostileFramesEndTheConnection_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const auto hex = [](const char* text) { return QByteArray::fromHex(text); };
    QTest::newRow("unmasked") << hex("8105") + "hello";
    QTest::newRow("reserved bits") << hex("f18500000000") + "hello";
    QTest::newRow("unknown opcode") << hex("838500000000") + "hello";
    QTest::newRow("continues nothing") << hex("808500000000") + "hello";
    QTest::newRow("length of 2^63") << hex("81ffffffffffffffffff00000000") + "hello";
    QTest::newRow("length of 2^62") << hex("81ff400000000000000000000000") + "hello";
    QTest::newRow("length written too long") << hex("81fe000500000000") + "hello";
    QTest::newRow("one byte too large") << hex("81fe040100000000") + QByteArray(1025, 'a');
    QTest::newRow("binary") << hex("828500000000") + "hello";
    QTest::newRow("no UTF-8") << hex("818200000000") + hex("c328");
    QTest::newRow("ping that is too long") << hex("89fe007e00000000") + QByteArray(126, 'a');
    QTest::newRow("ping in pieces") << hex("098500000000") + "hello";
    QTest::newRow("close with half a code") << hex("88810000000061");
    QTest::newRow("pieces without end")
        << hex("01fe040000000000") + QByteArray(1024, 'a') + hex("00fe040000000000") + QByteArray(1024, 'a');
    QTest::newRow("HTTP again") << QByteArray("GET / HTTP/1.1\r\nHost: a\r\n\r\n");
}

void TestRemoteServer::hostileFramesEndTheConnection()
{
    QFETCH(QByteArray, bytes);
    const PagePointer page = openPage();
    QVERIFY(page);
    const QByteArray response = answer(upgrade(host(), "http://" + host()) + bytes);
    QVERIFY2(response.startsWith("HTTP/1.1 101 "), response);
    // Others don't notice.
    page->say("{\"pointer\":\"move\",\"x\":1,\"y\":1}");
    QVERIFY(QTest::qWaitFor([this] { return m_events.size() == 1; }));
    QVERIFY(page->controls());
}

void TestRemoteServer::randomBytesEndOrWait()
{
    QRandomGenerator random(1);
    for (int round = 0; round < 100; ++round) {
        QByteArray bytes(random.bounded(1, 400), '\0');
        for (char& byte : bytes)
            byte = char(random.bounded(256));
        const auto socket = knock(round % 2 ? upgrade(host(), "http://" + host()) + bytes : bytes);
        QCoreApplication::processEvents();
    }
    QVERIFY(openPage());
    QVERIFY(m_events.isEmpty());
}

void TestRemoteServer::floodEndsTheConnection()
{
    const PagePointer page = openPage(), other = openPage();
    QVERIFY(page && other);
    for (int i = 0; i < 4 * Client::maxMessagesASecond; ++i)
        page->say("{\"pointer\":\"move\",\"x\":1,\"y\":1}");
    QVERIFY(QTest::qWaitFor([&page] { return page->socket.state() == QAbstractSocket::UnconnectedState; }));
    QVERIFY(QTest::qWaitFor([&other] { return other->controls(); }));
    QVERIFY(m_events.size() <= 2 * Client::maxMessagesASecond);
}

void TestRemoteServer::endIsSaidToAll()
{
    const PagePointer first = openPage(), second = openPage();
    QVERIFY(first && second);
    m_server->shutDown();
    QVERIFY(isRefused(first, 1001));
    QVERIFY(isRefused(second, 1001));
    QVERIFY(!m_server->isListening());
}

QTEST_GUILESS_MAIN(TestRemoteServer)
#include "tst_remoteserver.moc"
