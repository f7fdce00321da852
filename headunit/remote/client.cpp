#include "headunit/remote/client.h"

#include <QWebSocket>

namespace headunit {

Client::Client(QWebSocket* socket, QObject* parent)
    : QObject(parent)
    , m_socket(socket)
{
    m_socket->setParent(this);
    m_socket->setMaxAllowedIncomingFrameSize(maxMessageSize);
    m_socket->setMaxAllowedIncomingMessageSize(maxMessageSize);
    connect(m_socket, &QWebSocket::textMessageReceived, this, &Client::onText);
    connect(m_socket, &QWebSocket::binaryMessageReceived, this, [this] {
        close(QWebSocketProtocol::CloseCodeDatatypeNotSupported, QStringLiteral("text only"));
    });
    connect(m_socket, &QWebSocket::disconnected, this, &Client::gone);
    connect(&m_patience, &QTimer::timeout, this, [this] {
        if (m_closing)
            m_socket->abort();
        else if (m_role == Role::Unknown)
            close(WrongToken, QStringLiteral("no token"));
    });
    m_patience.setSingleShot(true);
    m_patience.start(patienceMs);
    m_second.start();
}

Client::~Client()
{
    m_socket->disconnect(this);
    delete m_socket;
}

bool Client::isReady() const
{
    return m_role != Role::Unknown && !m_closing && m_framesOnTheWay < maxFramesOnTheWay &&
           m_socket->bytesToWrite() < maxBytesOnTheWay;
}

void Client::say(const QString& text)
{
    if (!m_closing)
        m_socket->sendTextMessage(text);
}

void Client::show(const QByteArray& frame)
{
    m_lacking = QRegion();
    ++m_framesOnTheWay;
    m_socket->sendBinaryMessage(frame);
}

void Client::close(int code, const QString& reason)
{
    if (m_closing)
        return;
    m_closing = true;
    m_patience.start(patienceMs);
    m_socket->close(QWebSocketProtocol::CloseCode(code), reason);
}

bool Client::isTooFast()
{
    if (m_second.elapsed() >= 1000) {
        m_second.restart();
        m_messagesInSecond = 0;
    }
    return ++m_messagesInSecond > maxMessagesASecond;
}

void Client::onText(const QString& text)
{
    if (m_closing)
        return;
    if (isTooFast())
        return close(QWebSocketProtocol::CloseCodePolicyViolated, QStringLiteral("too many messages"));
    const std::optional<ClientMessage> message = readClientMessage(text);
    if (!message || (message->kind == ClientMessage::Kind::Token) != (m_role == Role::Unknown))
        return close(QWebSocketProtocol::CloseCodePolicyViolated, QStringLiteral("not understood"));
    switch (message->kind) {
    case ClientMessage::Kind::Token:
        emit tokenShown(message->token);
        break;
    case ClientMessage::Kind::Shown:
        m_framesOnTheWay = qMax(0, m_framesOnTheWay - 1);
        emit caughtUp();
        break;
    case ClientMessage::Kind::Control:
        emit wantsControl();
        break;
    case ClientMessage::Kind::Event:
        emit acted(message->event);
        break;
    }
}

} // namespace headunit
