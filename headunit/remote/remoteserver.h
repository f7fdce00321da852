#pragma once

#include "headunit/remote/clientmessage.h"
#include "headunit/remote/deskchange.h"
#include "headunit/remote/gate.h"
#include "headunit/remote/page.h"

#include <QSslConfiguration>
#include <QTcpServer>
#include <QVector>
#include <QWebSocketServer>

#include <optional>

namespace headunit {

class Client;
class Visitor;

/// What browsers connect to: hands out the page, lets in who has the token, sends each what has changed as
/// fast as it can take it, and passes on what the one that controls does. The first that comes controls;
/// when it goes, the one that has looked longest. Thread: its own, so that the unit waits for nobody.
class RemoteServer : public QTcpServer
{
    Q_OBJECT
public:
    static constexpr int maxClients = 8;
    static constexpr int maxVisitors = 32; ///< and clients without a token; beyond, the oldest is dropped

    /// tls: certificate and key; none: plain HTTP. gate: made for the same.
    RemoteServer(const Gate& gate, const std::optional<QSslConfiguration>& tls);
    ~RemoteServer() override;

    /// Ends all connections.
    void shutDown();

public slots:
    void show(const headunit::DeskChange& change);
    /// What has the keyboard's focus, in words, for the page that controls.
    void tellFocus(const QString& words);

signals:
    /// Whether anybody looks.
    void watched(bool on);
    void frameWanted();
    void acted(const headunit::DeskEvent& event);
    /// Who held something down is gone.
    void letGo();

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    void onWebSocket();
    void onToken(Client* client, const QByteArray& token);
    void onGone(Client* client);
    void giveControl(Client* client);
    void tellRole(Client* client);
    void tellFocusTo(Client* client);
    void tellLayout(Client* client);
    void sendFrames();
    void dropOldest();
    int countOf(bool known) const;

    const Gate m_gate;
    const Page m_page;
    const std::optional<QSslConfiguration> m_tls;
    QWebSocketServer m_webSockets; ///< only shakes hands; it doesn't listen
    QVector<Visitor*> m_visitors;  ///< the oldest first
    QVector<Client*> m_clients;    ///< the oldest first
    QString m_focus;
    DeskLayout m_layout;
    QImage m_picture;
    bool m_wanted = false; ///< a frame, asked for and not yet come
};

} // namespace headunit
