#include "common/basewindow.h"
#include "common/keyevent.h"
#include "common/mcumanager.h"
#include "common/transferstation.h"
#include "tests/support/platform_double/platform_double.h"

#include <QPointer>
#include <QWidget>

namespace {
int keyEventResult = 0;
}

namespace platform_double {

void setKeyEventResult(int result)
{
    keyEventResult = result;
}

} // namespace platform_double

using platform_double::record;

KeyEvent::KeyEvent(int key, Action action)
    : QEvent(static_cast<QEvent::Type>(action))
    , m_key(key)
{
}

KeyEvent::~KeyEvent() = default;

int KeyEvent::key() const
{
    return m_key;
}

McuManager::McuManager() = default;
McuManager::~McuManager() = default;

McuManager* McuManager::instance()
{
    static McuManager theInstance;
    return &theInstance;
}

void McuManager::triggerBeep(int tone)
{
    record(platform_double::Beep, QStringLiteral("McuManager.triggerBeep(%1)").arg(tone));
}

namespace cm {

class BaseWindowPrivate
{
public:
    QPointer<QWidget> widget;
    int id = 0;
};

namespace {
void recordWindow(const char* operation)
{
    record(platform_double::Window, QStringLiteral("BaseWindow.%1()").arg(QLatin1String(operation)));
}
} // namespace

BaseWindow::BaseWindow(QObject* parent)
    : QObject(parent)
    , d(new BaseWindowPrivate)
{
}

BaseWindow::~BaseWindow()
{
    if (d->widget && !d->widget->parent())
        delete d->widget;
    delete d;
}

void BaseWindow::setMainWidget(QWidget* widget, int windowId)
{
    const char* name = widget ? widget->metaObject()->className() : "null";
    record(platform_double::Window,
           QStringLiteral("BaseWindow.setMainWidget(%1, %2)").arg(QLatin1String(name)).arg(windowId));
    if (!widget)
        qWarning("BaseWindow: without a root widget the window shows nothing");
    if (d->widget && d->widget != widget && !d->widget->parent())
        delete d->widget;
    d->widget = widget;
    d->id = windowId;
}

void BaseWindow::onCreate()
{
    recordWindow("onCreate");
}

void BaseWindow::onDestroy()
{
    recordWindow("onDestroy");
}

void BaseWindow::onShow()
{
    recordWindow("onShow");
}

void BaseWindow::onHide()
{
    recordWindow("onHide");
}

void BaseWindow::onEnter()
{
    recordWindow("onEnter");
}

void BaseWindow::onExit()
{
    recordWindow("onExit");
}

int BaseWindow::backEvent()
{
    recordWindow("backEvent");
    return 0;
}

int BaseWindow::keyEvent(KeyEvent* event)
{
    record(platform_double::Window, QStringLiteral("BaseWindow.keyEvent(%1)").arg(event ? event->key() : 0));
    if (!event)
        qWarning("BaseWindow: a key event is null");
    return event ? keyEventResult : 0;
}

QString BaseWindow::name()
{
    return QString();
}

QWidget* BaseWindow::mainWidget() const
{
    return d->widget;
}

int BaseWindow::mainWidgetId() const
{
    return d->id;
}

R9TransferStation::R9TransferStation(QObject* parent)
    : QObject(parent)
{
    // The operations are the signals; the first listener is the recorder.
    connect(this, &R9TransferStation::setupNextPage,
            [] { record(platform_double::Station, QStringLiteral("R9TransferStation.setupNextPage()")); });
    connect(this, &R9TransferStation::setupPrevPage,
            [] { record(platform_double::Station, QStringLiteral("R9TransferStation.setupPrevPage()")); });
}

R9TransferStation::~R9TransferStation() = default;

TransferFunction::TransferFunction()
    : m_station(new R9TransferStation)
{
}

TransferFunction::~TransferFunction()
{
    delete m_station;
}

TransferFunction* TransferFunction::instance()
{
    static TransferFunction theInstance;
    return &theInstance;
}

R9TransferStation* TransferFunction::getTS()
{
    return m_station;
}

} // namespace cm
