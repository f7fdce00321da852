#pragma once

#include "headunit/remote/clientmessage.h"

#include <QElapsedTimer>
#include <QObject>
#include <QRegion>
#include <QTimer>

class QWebSocket;

namespace headunit {

/// One page that is connected: what it says, checked, and what it still lacks of the picture. A page that
/// breaks a rule is disconnected. Thread: that of the server.
class Client : public QObject
{
    Q_OBJECT
public:
    /// Why the unit ended a connection; the page knows them. Beside these the codes of the protocol.
    enum CloseCode { WrongToken = 4001, TooMany = 4002 };
    enum class Role {
        Unknown, ///< has not shown a token yet
        Looking,
        Controlling,
    };

    static constexpr int patienceMs = 5000;     ///< for the token, and for the end of a connection
    static constexpr int maxMessageSize = 1024; ///< bytes
    static constexpr int maxMessagesASecond = 1000;
    static constexpr int maxFramesOnTheWay = 2;
    static constexpr int maxBytesOnTheWay = 1 << 18;

    /// socket: taken over.
    Client(QWebSocket* socket, QObject* parent);
    ~Client() override;

    Role role() const { return m_role; }
    void setRole(Role role) { m_role = role; }

    /// What it has not been sent yet.
    const QRegion& lacking() const { return m_lacking; }
    void addLacking(const QRegion& region) { m_lacking += region; }
    /// False while it has not shown what it was sent: it gets fewer frames then, each with all that has
    /// changed meanwhile.
    bool isReady() const;

    void say(const QString& text);
    /// frame: all that it lacks.
    void show(const QByteArray& frame);
    /// The connection ends, by force when the other side takes its time.
    void close(int code, const QString& reason);

signals:
    void tokenShown(const QByteArray& token);
    void caughtUp();
    void wantsControl();
    void acted(const headunit::DeskEvent& event);
    /// Nothing more comes of it.
    void gone();

private:
    void onText(const QString& text);
    bool isTooFast();

    QWebSocket* const m_socket;
    Role m_role = Role::Unknown;
    QRegion m_lacking;
    int m_framesOnTheWay = 0;
    QElapsedTimer m_second;
    int m_messagesInSecond = 0;
    bool m_closing = false;
    QTimer m_patience;
};

} // namespace headunit
