#pragma once

#include <QStringList>
#include <QtGlobal>

/// Collects what is logged while it lives.
class Messages
{
public:
    Messages()
    {
        all().clear();
        m_previous = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext&, const QString& text) { all().append(text); });
    }
    ~Messages() { qInstallMessageHandler(m_previous); }
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;

    static int with(const QString& part) { return all().filter(part).size(); }
    static QStringList& all()
    {
        static QStringList messages;
        return messages;
    }

private:
    QtMessageHandler m_previous;
};
