#include "headunit/remote/visitor.h"

#include "headunit/remote/gate.h"
#include "headunit/remote/page.h"

#include <QTcpSocket>

#include <utility>

namespace headunit {

Visitor::Visitor(QTcpSocket* socket, const Gate* gate, const Page* page, bool tls, QObject* parent)
    : QObject(parent)
    , m_socket(socket)
    , m_gate(gate)
    , m_page(page)
    , m_tls(tls)
{
    m_socket->setParent(this);
    m_socket->setReadBufferSize(2 * HttpHead::maxSize);
    connect(m_socket, &QTcpSocket::readyRead, this, &Visitor::onReadyRead);
    connect(m_socket, &QTcpSocket::disconnected, this, &Visitor::leave);
    connect(&m_patience, &QTimer::timeout, this, &Visitor::leave);
    m_patience.setSingleShot(true);
    m_patience.start(patienceMs);
}

void Visitor::leave()
{
    if (!m_socket)
        return;
    m_socket->disconnect(this);
    m_socket->abort();
    m_patience.stop();
    m_socket->deleteLater();
    m_socket = nullptr;
    emit done();
    deleteLater();
}

void Visitor::onReadyRead()
{
    if (m_answered) { // whatever comes now is no business of ours, and must not fill the buffer
        m_socket->readAll();
        return;
    }
    const QByteArray bytes = m_socket->peek(HttpHead::maxSize);
    const int size = HttpHead::sizeIn(bytes);
    if (size == 0) {
        if (bytes.size() == HttpHead::maxSize)
            finish("431 Request Header Fields Too Large", "text/plain", "The request is too long.\n");
        return;
    }
    const std::optional<HttpHead> head = HttpHead::read(bytes.left(size));
    if (head)
        answer(*head);
    else
        finish("400 Bad Request", "text/plain", "The request is malformed.\n");
}

void Visitor::answer(const HttpHead& head)
{
    const QByteArray host = head.header("host");
    if (!m_gate->admitsHost(host))
        return finish("403 Forbidden", "text/plain", "The unit is not known under this name.\n");
    if (head.method() != "GET")
        return finish("405 Method Not Allowed", "text/plain", "There is only a page.\n", "Allow: GET\r\n");
    if (head.target() != "/")
        return finish("404 Not Found", "text/plain", "There is only one page.\n");
    if (head.header("upgrade").toLower() != "websocket")
        return finish("200 OK", "text/html; charset=utf-8", m_page->html(),
                      "Content-Security-Policy: " + m_page->policy((m_tls ? "wss://" : "ws://") + host) +
                          "\r\n");
    if (!m_gate->admitsOrigin(head.header("origin"), host))
        return finish("403 Forbidden", "text/plain", "The unit talks to its own page only.\n");
    m_patience.stop();
    QTcpSocket* socket = std::exchange(m_socket, nullptr);
    socket->disconnect(this);
    socket->setParent(nullptr);
    emit upgrades(socket);
    emit done();
    deleteLater();
}

void Visitor::finish(const char* status, const QByteArray& type, const QByteArray& body,
                     const QByteArray& headers)
{
    m_answered = true;
    m_socket->readAll();
    m_socket->write(QByteArray("HTTP/1.1 ") + status + "\r\nContent-Type: " + type +
                    "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n" + headers +
                    "Cache-Control: no-store\r\n"
                    "Cross-Origin-Opener-Policy: same-origin\r\n"
                    "Cross-Origin-Resource-Policy: same-origin\r\n"
                    "Referrer-Policy: no-referrer\r\n"
                    "X-Content-Type-Options: nosniff\r\n"
                    "Connection: close\r\n\r\n" +
                    body);
    m_socket->disconnectFromHost();
}

} // namespace headunit
