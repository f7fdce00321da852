#include "tests/support/platform_double/platform_double.h"

#include "common/events.h"
#include "common/mcumanager.h"
#include "common/settings.h"
#include "common/translator.h"
#include "hvaudio/eqcurves.h"

#include <QCoreApplication>
#include <QHash>
#include <QMutex>
#include <QPair>

namespace platform_double {

namespace {

/// Sees the events that pages post to the application object.
class ApplicationWatcher : public QObject
{
public:
    int backRequests = 0;
    QList<bool> statusBar;

protected:
    bool eventFilter(QObject* receiver, QEvent* event) override
    {
        if (receiver != QCoreApplication::instance())
            return false;
        if (event->type() == static_cast<QEvent::Type>(Qx::EventType_Touch)) {
            const auto* touch = static_cast<TouchEvent*>(event);
            const qint32 expected[] = {1008, 15, -1, -1};
            if (touch->value() == Qx::Touch_Back &&
                touch->payload() == QByteArray(reinterpret_cast<const char*>(expected), sizeof(expected)))
                ++backRequests;
            return true;
        }
        if (event->type() == static_cast<QEvent::Type>(Qx::EventType_StatusBarHide)) {
            statusBar.append(static_cast<StatusBarHideEvent*>(event)->value());
            return true;
        }
        return false;
    }
};

QList<QPair<Kind, QString>> lines;
QHash<int, QString> texts;
QMutex logMutex;
QStringList logLines;
QStringList logFiles;
QtMessageHandler nextHandler = nullptr;

ApplicationWatcher* watcher()
{
    static QPointer<ApplicationWatcher> instance;
    if (!instance && QCoreApplication::instance()) {
        instance = new ApplicationWatcher;
        instance->setParent(QCoreApplication::instance());
        QCoreApplication::instance()->installEventFilter(instance);
    }
    return instance;
}

void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    {
        const QMutexLocker lock(&logMutex);
        const char level = type == QtDebugMsg     ? 'D'
                           : type == QtWarningMsg ? 'W'
                           : type == QtInfoMsg    ? 'I'
                                                  : 'C';
        logLines.append(QString(QLatin1Char(level)) + QLatin1Char(' ') + message);
        logFiles.append(QString::fromUtf8(context.file));
    }
    // QtTest counts warnings (QTest::ignoreMessage) and prints them; the plug-in's own lines would only drown
    // its report.
    if (nextHandler && !message.startsWith(QLatin1String("[DBG]")) &&
        !message.startsWith(QLatin1String("[ERR]")))
        nextHandler(type, context, message);
}

void deliverPosted()
{
    watcher();
    QCoreApplication::sendPostedEvents(QCoreApplication::instance(), 0);
}

} // namespace

void resetSettings();
void resetAudio();
void resetWidgets();

void reset()
{
    watcher();
    deliverPosted();
    watcher()->backRequests = 0;
    watcher()->statusBar.clear();
    lines.clear();
    texts.clear();
    resetSettings();
    resetAudio();
    resetWidgets();
    if (const QtMessageHandler previous = qInstallMessageHandler(handleMessage); previous != handleMessage)
        nextHandler = previous;
    takeLog();
}

void record(Kind kind, const QString& line)
{
    lines.append({kind, line});
}

QStringList takeCalls(int kinds)
{
    QStringList result;
    for (const auto& line : std::as_const(lines)) {
        if (line.first & kinds)
            result.append(line.second);
    }
    lines.clear();
    return result;
}

void setText(int id, const QString& text)
{
    texts.insert(id, text);
}

int takeBackRequests()
{
    deliverPosted();
    return std::exchange(watcher()->backRequests, 0);
}

QList<bool> takeStatusBarRequests()
{
    deliverPosted();
    return std::exchange(watcher()->statusBar, {});
}

QStringList takeLog()
{
    const QMutexLocker lock(&logMutex);
    logFiles.clear();
    return std::exchange(logLines, {});
}

QStringList takeLogFiles()
{
    const QMutexLocker lock(&logMutex);
    logLines.clear();
    return std::exchange(logFiles, {});
}

QString textOf(int id)
{
    return texts.value(id, QStringLiteral("T%1").arg(id));
}

} // namespace platform_double

// ---- translator
// ----------------------------------------------------------------------------------------------------

namespace platform_double {
QString textOf(int id);
}

QString Translator::translate(int id)
{
    platform_double::record(platform_double::Text, QStringLiteral("Translator.translate(%1)").arg(id));
    return platform_double::textOf(id);
}

namespace cm {
using hvaudio::eqCurveOf;

const int eqNameStrId[9] = {eqCurveOf(0).nameId, eqCurveOf(1).nameId, eqCurveOf(2).nameId,
                            eqCurveOf(3).nameId, eqCurveOf(4).nameId, eqCurveOf(5).nameId,
                            eqCurveOf(6).nameId, eqCurveOf(7).nameId, eqCurveOf(8).nameId};
} // namespace cm
