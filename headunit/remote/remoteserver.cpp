#include "headunit/remote/remoteserver.h"

#include "headunit/remote/client.h"
#include "headunit/remote/frame.h"
#include "headunit/remote/visitor.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>
#include <QSslSocket>
#include <QWebSocket>

#include <algorithm>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace headunit {

namespace {

/// Who has vanished without a word is found out by the system, which wakes nobody for it.
void findOutWhenGone(qintptr descriptor)
{
    constexpr struct
    {
        int level, option, value;
    } options[] = {
        {SOL_SOCKET, SO_KEEPALIVE, 1},   {IPPROTO_TCP, TCP_KEEPIDLE, 15},        // s
        {IPPROTO_TCP, TCP_KEEPINTVL, 5},                                         // s
        {IPPROTO_TCP, TCP_KEEPCNT, 3},   {IPPROTO_TCP, TCP_USER_TIMEOUT, 30000}, // ms
    };
    for (const auto& option : options)
        setsockopt(int(descriptor), option.level, option.option, &option.value, sizeof(option.value));
}

QJsonArray arrayOf(const QRect& rect)
{
    return {rect.x(), rect.y(), rect.width(), rect.height()};
}

QString textOf(const QJsonObject& object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

} // namespace

RemoteServer::RemoteServer(const Gate& gate, const std::optional<QSslConfiguration>& tls)
    : m_gate(gate)
    , m_tls(tls)
    , m_webSockets(QStringLiteral("headunit"),
                   tls ? QWebSocketServer::SecureMode : QWebSocketServer::NonSecureMode, this)
{
    connect(&m_webSockets, &QWebSocketServer::newConnection, this, &RemoteServer::onWebSocket);
}

RemoteServer::~RemoteServer()
{
    shutDown();
}

void RemoteServer::shutDown()
{
    close();
    qDeleteAll(std::exchange(m_visitors, {}));
    const QVector<Client*> clients = std::exchange(m_clients, {});
    for (Client* client : clients) {
        client->disconnect(this);
        client->close(QWebSocketProtocol::CloseCodeGoingAway, QStringLiteral("the unit ends"));
    }
    qDeleteAll(clients);
}

void RemoteServer::incomingConnection(qintptr descriptor)
{
    QTcpSocket* socket = m_tls ? new QSslSocket : new QTcpSocket;
    if (!socket->setSocketDescriptor(descriptor)) {
        delete socket;
        return;
    }
    findOutWhenGone(descriptor);
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    while (m_visitors.size() + countOf(false) >= maxVisitors)
        dropOldest();
    auto* visitor = new Visitor(socket, &m_gate, &m_page, m_tls.has_value(), this);
    m_visitors.append(visitor);
    connect(visitor, &Visitor::upgrades, &m_webSockets, [this](QTcpSocket* upgraded) {
        upgraded->setParent(&m_webSockets); // which deletes it when it is disconnected
        m_webSockets.handleConnection(upgraded);
    });
    connect(visitor, &Visitor::done, this, [this, visitor] { m_visitors.removeOne(visitor); });
    if (m_tls) {
        auto* secure = static_cast<QSslSocket*>(socket);
        secure->setSslConfiguration(*m_tls);
        secure->startServerEncryption();
    }
}

void RemoteServer::dropOldest()
{
    if (!m_visitors.isEmpty()) {
        delete m_visitors.takeFirst();
        return;
    }
    const auto unknown = std::find_if(m_clients.begin(), m_clients.end(), [](const Client* client) {
        return client->role() == Client::Role::Unknown;
    });
    delete m_clients.takeAt(int(unknown - m_clients.begin()));
}

int RemoteServer::countOf(bool known) const
{
    return int(std::count_if(m_clients.begin(), m_clients.end(), [known](const Client* client) {
        return (client->role() != Client::Role::Unknown) == known;
    }));
}

void RemoteServer::onWebSocket()
{
    while (QWebSocket* socket = m_webSockets.nextPendingConnection()) {
        auto* client = new Client(socket, this);
        m_clients.append(client);
        connect(client, &Client::tokenShown, this,
                [this, client](const QByteArray& token) { onToken(client, token); });
        connect(client, &Client::caughtUp, this, &RemoteServer::sendFrames);
        connect(client, &Client::wantsControl, this, [this, client] { giveControl(client); });
        connect(client, &Client::acted, this, [this, client](const DeskEvent& event) {
            if (client->role() == Client::Role::Controlling)
                emit acted(event);
        });
        connect(client, &Client::gone, this, [this, client] { onGone(client); });
    }
}

void RemoteServer::onToken(Client* client, const QByteArray& token)
{
    if (!m_gate.admitsToken(token))
        return client->close(Client::WrongToken, QStringLiteral("wrong token"));
    const int known = countOf(true);
    if (known >= maxClients)
        return client->close(Client::TooMany, QStringLiteral("too many clients"));
    const bool isControlled = std::any_of(m_clients.begin(), m_clients.end(), [](const Client* other) {
        return other->role() == Client::Role::Controlling;
    });
    client->setRole(isControlled ? Client::Role::Looking : Client::Role::Controlling);
    tellRole(client);
    if (known == 0) {
        m_wanted = false;
        m_picture = QImage();
        emit watched(true);
    } else if (!m_picture.isNull()) {
        tellLayout(client);
        client->addLacking(m_picture.rect());
    }
    sendFrames();
}

void RemoteServer::onGone(Client* client)
{
    m_clients.removeOne(client);
    const Client::Role role = client->role();
    client->disconnect(this);
    client->deleteLater();
    if (role == Client::Role::Controlling) {
        emit letGo();
        for (Client* other : std::as_const(m_clients)) {
            if (other->role() == Client::Role::Looking) {
                giveControl(other);
                break;
            }
        }
    }
    if (role != Client::Role::Unknown && countOf(true) == 0)
        emit watched(false);
}

void RemoteServer::giveControl(Client* client)
{
    for (Client* other : std::as_const(m_clients)) {
        if (other == client || other->role() != Client::Role::Controlling)
            continue;
        other->setRole(Client::Role::Looking);
        tellRole(other);
        emit letGo();
    }
    client->setRole(Client::Role::Controlling);
    tellRole(client);
}

void RemoteServer::tellRole(Client* client)
{
    const bool controls = client->role() == Client::Role::Controlling;
    client->say(textOf({{QStringLiteral("controls"), controls}}));
    if (controls)
        tellFocusTo(client);
}

void RemoteServer::tellLayout(Client* client)
{
    QJsonArray keys;
    for (const DeskKey& key : std::as_const(m_layout.keys))
        keys.append(QJsonObject{{QStringLiteral("name"), key.name},
                                {QStringLiteral("hint"), key.hint},
                                {QStringLiteral("place"), arrayOf(key.place)}});
    client->say(textOf({{QStringLiteral("desk"), arrayOf(QRect(QPoint(), m_layout.size))},
                        {QStringLiteral("unit"), arrayOf(m_layout.unit)},
                        {QStringLiteral("screen"), arrayOf(m_layout.screen)},
                        {QStringLiteral("keys"), keys}}));
}

void RemoteServer::tellFocus(const QString& words)
{
    m_focus = words;
    for (Client* client : std::as_const(m_clients)) {
        if (client->role() == Client::Role::Controlling)
            tellFocusTo(client);
    }
}

void RemoteServer::tellFocusTo(Client* client)
{
    client->say(textOf({{QStringLiteral("focus"), m_focus}}));
}

void RemoteServer::show(const DeskChange& change)
{
    m_wanted = false;
    const bool isNew = m_picture.isNull() || !(change.layout == m_layout);
    if (m_picture.size() != change.layout.size) {
        m_picture = QImage(change.layout.size, QImage::Format_RGB32);
        m_picture.fill(Qt::black);
    }
    m_layout = change.layout;
    QRegion changed;
    QPainter painter(&m_picture);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    for (const DeskChange::Patch& patch : change.patches) {
        painter.drawImage(patch.pos, patch.picture);
        changed += QRect(patch.pos, patch.picture.size());
    }
    painter.end();
    for (Client* client : std::as_const(m_clients)) {
        if (client->role() == Client::Role::Unknown)
            continue;
        if (isNew)
            tellLayout(client);
        client->addLacking(changed);
    }
    sendFrames();
}

void RemoteServer::sendFrames()
{
    QRegion encoded;
    QByteArray frame;
    bool wants = false;
    for (Client* client : std::as_const(m_clients)) {
        if (client->isReady() && !m_picture.isNull() && !client->lacking().isEmpty()) {
            const QRegion lacking = client->lacking() & m_picture.rect();
            if (lacking != encoded) { // clients that keep up lack the same
                encoded = lacking;
                frame = encodeFrame(m_picture, lacking);
            }
            client->show(frame);
        }
        wants = wants || client->isReady();
    }
    if (wants && !m_wanted) {
        m_wanted = true;
        emit frameWanted();
    }
}

} // namespace headunit
