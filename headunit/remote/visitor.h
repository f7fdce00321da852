#pragma once

#include "headunit/remote/httphead.h"

#include <QObject>
#include <QTimer>

class QTcpSocket;

namespace headunit {

class Gate;
class Page;

/// A connection until its one request has been answered: with the page, with a refusal, or by becoming a
/// WebSocket. One that takes longer than patienceMs is ended. Thread: that of the server.
class Visitor : public QObject
{
    Q_OBJECT
public:
    static constexpr int patienceMs = 5000;

    /// socket: taken over. gate, page: outlive this object.
    Visitor(QTcpSocket* socket, const Gate* gate, const Page* page, bool tls, QObject* parent);

signals:
    /// The request for a WebSocket is in order and still unread. The socket is the receiver's, who sees to it
    /// that it is deleted.
    void upgrades(QTcpSocket* socket);
    /// Nothing more comes of it; it deletes itself.
    void done();

private:
    void onReadyRead();
    void answer(const HttpHead& head);
    void finish(const char* status, const QByteArray& type, const QByteArray& body,
                const QByteArray& headers = {});
    void leave();

    QTcpSocket* m_socket;
    const Gate* const m_gate;
    const Page* const m_page;
    const bool m_tls;
    bool m_answered = false;
    QTimer m_patience;
};

} // namespace headunit
