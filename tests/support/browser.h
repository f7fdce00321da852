#pragma once

#include <QImage>
#include <QJsonObject>
#include <QJsonValue>
#include <QPoint>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <QWebSocket>

#include <functional>
#include <memory>

/// A real browser without a window, driven through its own protocol: Chromium with a profile of its own,
/// ended with the object. Where something takes longer than waitMs it fails, and what() says what.
class Browser
{
public:
    static constexpr int waitMs = 20000;

    Browser();
    ~Browser();
    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;

    /// False when it can't be started.
    bool start();
    const QString& what() const { return m_what; }

    /// One page of the browser; ends with the browser at the latest.
    class Page
    {
    public:
        /// What an expression of JavaScript becomes, when that is a promise what it is fulfilled with.
        QJsonValue evaluate(const QString& expression);
        /// Waits until an expression is true.
        bool becomes(const QString& expression);
        /// Goes elsewhere, or to the same place anew, and waits for it.
        bool go(const QString& url);
        bool reload();
        /// The window's size in CSS pixels; a phone's has dots that are finer and a finger in place of a
        /// pointer.
        bool resize(const QSize& size, qreal dotsPerPixel = 1, bool isPhone = false);
        /// type: "mousePressed", "mouseMoved", "mouseReleased".
        bool mouse(const char* type, const QPointF& pos);
        bool click(const QPointF& pos);
        /// type: "touchStart", "touchMove", "touchEnd".
        bool touch(const char* type, const QPointF& pos);
        /// A key that is pressed and let go; name as KeyboardEvent.key.
        bool key(const QString& name);
        QImage screenshot();
        void close();

        /// Any other method of the protocol; its result. A null object when it fails.
        QJsonObject call(const QString& method, const QJsonObject& parameters = {});
        /// Events of the protocol, as they come.
        std::function<void(const QString& method, const QJsonObject& parameters)> onEvent;

    private:
        friend class Browser;
        Browser* m_browser = nullptr;
        QString m_target, m_session;
    };

    /// Opens a page and waits until it is loaded. Null when it fails.
    Page* open(const QString& url, const QSize& size = QSize(1232, 664));
    /// Closes all pages.
    void closeAll();

private:
    QJsonObject call(const QString& session, const QString& method, const QJsonObject& parameters);
    void onMessage(const QString& text);

    QTemporaryDir m_folder;
    QProcess m_process;
    QWebSocket m_socket;
    int m_calls = 0;
    QMap<int, QJsonObject> m_answers;
    std::vector<std::unique_ptr<Page>> m_pages;
    QString m_what;
};
