#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>

/// Collects what is logged while it lives, instead of printing it. One at a time.
class MessageLog
{
public:
    MessageLog()
    {
        lines().clear();
        m_previous = qInstallMessageHandler(collect);
    }
    ~MessageLog() { qInstallMessageHandler(m_previous); }
    MessageLog(const MessageLog&) = delete;
    MessageLog& operator=(const MessageLog&) = delete;

    static QStringList& lines()
    {
        static QStringList theLines;
        return theLines;
    }
    static int count(const QString& part) { return lines().filter(part).size(); }

private:
    static void collect(QtMsgType, const QMessageLogContext&, const QString& text) { lines().append(text); }
    QtMessageHandler m_previous;
};
