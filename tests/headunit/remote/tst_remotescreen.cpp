#include "tests/headunit/remote/framereader.h"

#include "headunit/front/hardkey.h"
#include "headunit/front/unitwindow.h"
#include "headunit/remote/remotescreen.h"
#include "headunit/sound/mastervolume.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <QWebSocket>

using namespace headunit;

/// The whole of it, but for the browser: a window, its server, a page's socket.
class TestRemoteScreen : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void urlIsOfTheLoopbackWithATokenOfItsOwn();
    void whatCantBeHadIsSaid_data();
    void whatCantBeHadIsSaid();
    void portThatIsTakenIsSaid();
    void pageSeesAndTouchesTheWindow();
    void fingerIsLiftedWhenThePageGoes();
    void tlsIsSpokenWithTheCertificate_data();
    void tlsIsSpokenWithTheCertificate();
    void pageIsHandedOutOverTls();
    void clearTextGetsNothingWhereTlsIsSpoken();
    void endIsSaid();
    void windowIsLeftAloneWhileNobodyLooks();

private:
    static QString file(const char* name)
    {
        return QStringLiteral(TEST_FOLDER "/tls/") + QLatin1String(name);
    }
    static ListenAddress anyPort() { return ListenAddress(); }
    /// Opens the socket of a page under this address and shows the token.
    bool connectPage(QWebSocket* socket, const QString& url);

    MasterVolume m_volume;
    QScopedPointer<UnitWindow> m_unit;
    QScopedPointer<RemoteScreen> m_screen;
    QString m_error;
    QImage m_shown;
    QVector<KeyEvent::Action> m_keys;
    int m_frames = 0;
    bool m_controls = false;
};

void TestRemoteScreen::init()
{
    m_screen.reset();
    m_unit.reset(new UnitWindow(&m_volume, true));
    m_screen.reset(new RemoteScreen(m_unit.data()));
    m_keys.clear();
    m_error.clear();
    connect(m_unit.data(), &UnitWindow::hardKey, this,
            [this](KeyEvent::Key, KeyEvent::Action action) { m_keys.append(action); });
    m_unit->show();
    m_shown = QImage(m_unit->size(), QImage::Format_RGB32);
    m_shown.fill(Qt::black);
    m_frames = 0;
    m_controls = false;
}

bool TestRemoteScreen::connectPage(QWebSocket* socket, const QString& url)
{
    connect(socket, &QWebSocket::textMessageReceived, this, [this](const QString& text) {
        const QJsonObject told = QJsonDocument::fromJson(text.toUtf8()).object();
        m_controls = told.value("controls").toBool(m_controls);
    });
    connect(socket, &QWebSocket::binaryMessageReceived, this, [this, socket](const QByteArray& frame) {
        drawFrame(frame, &m_shown);
        ++m_frames;
        socket->sendTextMessage("{\"shown\":true}");
    });
    connect(socket, &QWebSocket::connected, this,
            [socket, url] { socket->sendTextMessage("{\"token\":\"" + url.section('#', 1) + "\"}"); });
    QSslConfiguration tls = socket->sslConfiguration();
    tls.setPeerVerifyMode(QSslSocket::VerifyNone);
    socket->setSslConfiguration(tls);
    socket->open(QUrl(url.section('#', 0, 0).replace("http", "ws")));
    return QTest::qWaitFor([this] { return m_controls && m_frames > 0; });
}

void TestRemoteScreen::urlIsOfTheLoopbackWithATokenOfItsOwn()
{
    RemoteScreen one(m_unit.data()), other(m_unit.data());
    QVERIFY2(one.start({anyPort(), {}, {}}, &m_error) && other.start({anyPort(), {}, {}}, &m_error),
             qPrintable(m_error));
    const QRegularExpression form("\\Ahttp://127\\.0\\.0\\.1:[1-9][0-9]+/#[0-9a-f]{32}\\z");
    QVERIFY2(form.match(one.url()).hasMatch(), qPrintable(one.url()));
    QVERIFY(one.url().section('#', 1) != other.url().section('#', 1));
}

void TestRemoteScreen::whatCantBeHadIsSaid_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("certificate");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("words");
    const QString any = "127.0.0.1:0";
    QTest::newRow("open to others in the clear") << "0.0.0.0:0"
                                                 << ""
                                                 << ""
                                                 << "needs a certificate";
    QTest::newRow("not an address of this machine")
        << "192.0.2.1:0" << file("unit.pem") << file("unit-key.pem") << "can't be listened on";
    QTest::newRow("no such certificate")
        << any << file("none.pem") << file("unit-key.pem") << "none.pem can't be read";
    QTest::newRow("no such key") << any << file("unit.pem") << file("none.pem") << "none.pem can't be read";
    QTest::newRow("folder") << any << file("") << file("unit-key.pem") << "can't be read";
    QTest::newRow("key for a certificate")
        << any << file("unit-key.pem") << file("unit-key.pem") << "no certificate";
    QTest::newRow("certificate for a key") << any << file("unit.pem") << file("unit.pem") << "no private key";
    QTest::newRow("key of another certificate")
        << any << file("unit.pem") << file("other-key.pem") << "is not the key of";
    QTest::newRow("key of another kind")
        << any << file("unit.pem") << file("rsa-key.pem") << "is not the key of";
}

void TestRemoteScreen::whatCantBeHadIsSaid()
{
    QFETCH(QString, address);
    QFETCH(QString, certificate);
    QFETCH(QString, key);
    QFETCH(QString, words);
    QVERIFY(!m_screen->start({*readListenAddress(address), certificate, key}, &m_error));
    QVERIFY2(m_error.contains(words), qPrintable(m_error));
}

void TestRemoteScreen::portThatIsTakenIsSaid()
{
    QTcpServer other;
    QVERIFY(other.listen(QHostAddress::LocalHost));
    ListenAddress address;
    address.port = other.serverPort();
    QVERIFY(!m_screen->start({address, {}, {}}, &m_error));
    QVERIFY2(m_error.contains(textOf(address)), qPrintable(m_error));
}

void TestRemoteScreen::pageSeesAndTouchesTheWindow()
{
    QVERIFY(m_screen->start({anyPort(), {}, {}}, &m_error));
    QWebSocket page(m_screen->url().section("/#", 0, 0));
    QVERIFY(connectPage(&page, m_screen->url()));
    const QRect home =
        m_unit->findChild<HardKey*>("hardkey_" + QString::number(KeyEvent::Key_Home))->geometry();
    const QImage before = m_shown.copy(home);
    page.sendTextMessage(
        QString("{\"pointer\":\"down\",\"x\":%1,\"y\":%2}").arg(home.center().x()).arg(home.center().y()));
    QVERIFY(QTest::qWaitFor([&] { return m_shown.copy(home) != before; }));
    QCOMPARE(m_keys.size(), 1);
    page.sendTextMessage(
        QString("{\"pointer\":\"up\",\"x\":%1,\"y\":%2}").arg(home.center().x()).arg(home.center().y()));
    QVERIFY(QTest::qWaitFor([&] { return m_shown.copy(home) == before; }));
    QCOMPARE(m_keys.size(), 2);
}

void TestRemoteScreen::fingerIsLiftedWhenThePageGoes()
{
    QVERIFY(m_screen->start({anyPort(), {}, {}}, &m_error));
    QWebSocket page(m_screen->url().section("/#", 0, 0));
    QVERIFY(connectPage(&page, m_screen->url()));
    page.sendTextMessage("{\"pointer\":\"down\",\"x\":1185,\"y\":104}");
    QVERIFY(QTest::qWaitFor([this] { return m_keys.size() == 1; }));
    page.abort();
    QVERIFY(QTest::qWaitFor([this] { return m_keys.size() == 2; }));
    QCOMPARE(m_keys.last(), KeyEvent::Release);
}

void TestRemoteScreen::tlsIsSpokenWithTheCertificate_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("elliptic") << "unit";
    QTest::newRow("RSA") << "rsa";
}

void TestRemoteScreen::tlsIsSpokenWithTheCertificate()
{
    QFETCH(QString, name);
    ListenAddress everywhere;
    everywhere.host = QHostAddress(QHostAddress::AnyIPv4);
    QVERIFY2(
        m_screen->start({everywhere, file(qPrintable(name + ".pem")), file(qPrintable(name + "-key.pem"))},
                        &m_error),
        qPrintable(m_error));
    QVERIFY(m_screen->url().startsWith("https://" + QSysInfo::machineHostName() + ":"));
    // By an address, for this machine may not know its own name.
    const QString url = "https://127.0.0.1:" + m_screen->url().section(':', 2);
    QWebSocket page(url.section("/#", 0, 0));
    QVERIFY(connectPage(&page, url));
    QCOMPARE(page.sslConfiguration().peerCertificate().subjectInfo(QSslCertificate::CommonName),
             QStringList{name + ".example"});
}

void TestRemoteScreen::pageIsHandedOutOverTls()
{
    QVERIFY(m_screen->start({anyPort(), file("unit.pem"), file("unit-key.pem")}, &m_error));
    QSslSocket socket;
    socket.setPeerVerifyMode(QSslSocket::VerifyNone);
    socket.connectToHostEncrypted("127.0.0.1", quint16(QUrl(m_screen->url()).port()));
    QVERIFY(QTest::qWaitFor([&socket] { return socket.isEncrypted(); }));
    socket.write("GET / HTTP/1.1\r\nHost: unit.example\r\n\r\n");
    QVERIFY(QTest::qWaitFor([&socket] { return socket.state() == QAbstractSocket::UnconnectedState; }));
    const QByteArray response = socket.readAll();
    QVERIFY2(response.startsWith("HTTP/1.1 200 OK"), response.left(100));
    QVERIFY(response.contains("connect-src wss://unit.example;"));
    QVERIFY(response.endsWith("</html>\n"));
}

void TestRemoteScreen::clearTextGetsNothingWhereTlsIsSpoken()
{
    QVERIFY(m_screen->start({anyPort(), file("unit.pem"), file("unit-key.pem")}, &m_error));
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, quint16(QUrl(m_screen->url()).port()));
    socket.write("GET / HTTP/1.1\r\nHost: localhost\r\n\r\n");
    QVERIFY(
        QTest::qWaitFor([&socket] { return socket.state() == QAbstractSocket::UnconnectedState; }, 10000));
    QVERIFY(!socket.readAll().contains("HTTP"));
}

void TestRemoteScreen::endIsSaid()
{
    QVERIFY(m_screen->start({anyPort(), {}, {}}, &m_error));
    QWebSocket page(m_screen->url().section("/#", 0, 0));
    QVERIFY(connectPage(&page, m_screen->url()));
    m_screen.reset();
    QVERIFY(QTest::qWaitFor([&page] { return page.state() == QAbstractSocket::UnconnectedState; }));
    QCOMPARE(page.closeCode(), QWebSocketProtocol::CloseCodeGoingAway);
}

void TestRemoteScreen::windowIsLeftAloneWhileNobodyLooks()
{
    QVERIFY(m_screen->start({anyPort(), {}, {}}, &m_error));
    {
        QWebSocket page(m_screen->url().section("/#", 0, 0));
        QVERIFY(connectPage(&page, m_screen->url()));
    }
    const int frames = m_frames;
    QWebSocket stranger(m_screen->url().section("/#", 0, 0));
    stranger.open(QUrl(m_screen->url().section('#', 0, 0).replace("http", "ws")));
    QVERIFY(QTest::qWaitFor([&stranger] { return stranger.state() == QAbstractSocket::ConnectedState; }));
    m_unit->setLit(false);
    QCoreApplication::processEvents();
    QCOMPARE(m_frames, frames);
}

QTEST_MAIN(TestRemoteScreen)
#include "tst_remotescreen.moc"
