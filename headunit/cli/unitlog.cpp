#include "headunit/cli/unitlog.h"

#include <QLoggingCategory>
#include <QVector>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace headunit {

namespace {

struct Message
{
    QtMsgType type;
    QString text;
};

bool everything = false;
int exitWithoutDisplay = -1; ///< -1: no DisplayGuard lives
QVector<Message> waiting;    ///< until it is known whether there is a display

/// What Qt says of forms and connections as they are meant to be, see the applications' own tests.
bool isOfAForm(QtMsgType type, const QString& text)
{
    return type == QtWarningMsg && (text.startsWith(QLatin1String("QObject::connect: ")) ||
                                    text.startsWith(QLatin1String("QCssParser::")));
}

void print(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, text)));
}

[[noreturn]] void endWithoutDisplay()
{
    const char* name = "QT_QPA_PLATFORM";
    for (const char* other : {"WAYLAND_DISPLAY", "DISPLAY"}) {
        if (qEnvironmentVariableIsEmpty(name))
            name = other;
    }
    std::fprintf(stderr, "headunit: no display: %s=%s can't be reached\n", name, qgetenv(name).constData());
    std::_Exit(exitWithoutDisplay);
}

void onMessage(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (exitWithoutDisplay >= 0 && type == QtFatalMsg)
        endWithoutDisplay();
    if (exitWithoutDisplay >= 0 && !everything)
        waiting.append({type, text});
    else if (everything || !isOfAForm(type, text))
        print(type, context, text);
}

} // namespace

void setUpLog(bool all)
{
    if (!qEnvironmentVariableIsSet("QT_MESSAGE_PATTERN"))
        qSetMessagePattern(QStringLiteral("%{if-debug}%{file}:%{line} %{endif}%{if-critical}%{file}:%{line} "
                                          "%{endif}%{message}"));
    everything = all;
    if (!all)
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    qInstallMessageHandler(onMessage);
}

DisplayGuard::DisplayGuard(int exitCode)
{
    exitWithoutDisplay = exitCode;
}

DisplayGuard::~DisplayGuard()
{
    exitWithoutDisplay = -1;
    const QVector<Message> messages = std::exchange(waiting, {});
    for (const Message& message : messages)
        onMessage(message.type, QMessageLogContext(), message.text);
}

} // namespace headunit
