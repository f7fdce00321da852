#include "common/basewindow.h"

#include "common/keyevent.h"
#include "common/transferstation.h"
#include "platform/common/framework/journal.h"
#include "platform/common/framework/journaltext.h"

#include <QDebug>
#include <QPointer>
#include <QWidget>

namespace cm {

namespace {

void report(const QString& call)
{
    Journal::instance()->record(QStringLiteral("BaseWindow"), call);
}

struct PagingKey
{
    KeyEvent::Key key;
    void (R9TransferStation::*operation)();
};

// clang-format off
constexpr PagingKey pagingKeys[] = {
    {KeyEvent::Key_PrevPage, &R9TransferStation::setupPrevPage},
    {KeyEvent::Key_NextPage, &R9TransferStation::setupNextPage},
};
// clang-format on

} // namespace

class BaseWindowPrivate
{
public:
    QPointer<QWidget> widget;
    int id = 0;

    /// A parent means that a shell has taken the widget into its screen; without one nobody else will delete
    /// it.
    void dropUntaken()
    {
        if (widget && !widget->parent())
            delete widget;
    }
};

BaseWindow::BaseWindow(QObject* parent)
    : QObject(parent)
    , d(new BaseWindowPrivate)
{
}

BaseWindow::~BaseWindow()
{
    d->dropUntaken();
    delete d;
}

void BaseWindow::setMainWidget(QWidget* widget, int windowId)
{
    const char* const type = widget ? widget->metaObject()->className() : "null";
    report(QStringLiteral("setMainWidget(%1, %2)").arg(QLatin1String(type)).arg(windowId));
    if (!widget)
        qWarning() << "BaseWindow: window" << windowId << "hands out no root widget";
    if (d->widget != widget)
        d->dropUntaken();
    d->widget = widget;
    d->id = windowId;
}

void BaseWindow::onCreate()
{
    report(journalCall("onCreate"));
}

void BaseWindow::onDestroy()
{
    report(journalCall("onDestroy"));
}

void BaseWindow::onShow()
{
    report(journalCall("onShow"));
}

void BaseWindow::onHide()
{
    report(journalCall("onHide"));
}

void BaseWindow::onEnter()
{
    report(journalCall("onEnter"));
}

void BaseWindow::onExit()
{
    report(journalCall("onExit"));
}

int BaseWindow::backEvent()
{
    report(journalCall("backEvent"));
    return 0;
}

int BaseWindow::keyEvent(KeyEvent* event)
{
    if (!event) {
        qWarning() << "BaseWindow: a key event that is none";
        return 0;
    }
    report(journalCall("keyEvent", event->key()));
    for (const PagingKey& paging : pagingKeys) {
        if (event->key() != paging.key)
            continue;
        // One page a press; release and long press belong to the same touch of the key.
        if (static_cast<int>(event->type()) == KeyEvent::Press)
            (TransferFunction::instance()->getTS()->*paging.operation)();
        return 1;
    }
    return 0;
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

} // namespace cm
