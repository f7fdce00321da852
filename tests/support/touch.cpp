#include "tests/support/touch.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPointer>
#include <QWidget>

namespace touch {

namespace {

QPointer<QWidget> holder;

void send(QWidget* page, QEvent::Type type, const QPoint& pos, Qt::MouseButton button,
          Qt::MouseButtons buttons)
{
    if (!holder)
        return;
    // The same way a window system's event goes: through the application, up the parents until someone
    // accepts.
    const QPoint local = holder->mapFrom(page, pos);
    QMouseEvent event(type, local, page->mapTo(page->window(), pos), page->mapToGlobal(pos), button, buttons,
                      Qt::NoModifier);
    QApplication::sendEvent(holder, &event);
}

} // namespace

QWidget* press(QWidget* page, const QPoint& pos)
{
    QWidget* child = page->childAt(pos);
    holder = child ? child : page;
    send(page, QEvent::MouseButtonPress, pos, Qt::LeftButton, Qt::LeftButton);
    return holder;
}

void move(QWidget* page, const QPoint& pos)
{
    send(page, QEvent::MouseMove, pos, Qt::NoButton, Qt::LeftButton);
}

void release(QWidget* page, const QPoint& pos)
{
    send(page, QEvent::MouseButtonRelease, pos, Qt::LeftButton, Qt::NoButton);
    holder = nullptr;
}

void click(QWidget* page, const QPoint& pos)
{
    press(page, pos);
    release(page, pos);
}

QPoint middle(const QWidget* page, const QWidget* child)
{
    return child->mapTo(const_cast<QWidget*>(page), child->rect().center());
}

} // namespace touch
