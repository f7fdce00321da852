#include "headunit/remote/deskinput.h"

#include "headunit/remote/desk.h"

#include <QGuiApplication>
#include <QWheelEvent>
#include <QWidget>

// The way in that Qt's own test library takes: as from the display, which Qt has no public header for.
QT_BEGIN_NAMESPACE
Q_GUI_EXPORT void qt_handleMouseEvent(QWindow* window, const QPointF& local, const QPointF& global,
                                      Qt::MouseButtons state, Qt::MouseButton button, QEvent::Type type,
                                      Qt::KeyboardModifiers mods, int timestamp);
Q_GUI_EXPORT void qt_handleKeyEvent(QWindow* window, QEvent::Type t, int k, Qt::KeyboardModifiers mods,
                                    const QString& text, bool autorep, ushort count);
QT_END_NAMESPACE

namespace headunit {

DeskInput::DeskInput(const Desk* desk)
    : m_desk(desk)
{
    m_clock.start();
}

void DeskInput::deliver(const DeskEvent& event)
{
    switch (event.kind) {
    case DeskEvent::Kind::PointerDown:
    case DeskEvent::Kind::PointerMove:
    case DeskEvent::Kind::PointerUp:
        deliverPointer(event);
        break;
    case DeskEvent::Kind::Wheel:
        deliverWheel(event);
        break;
    case DeskEvent::Kind::KeyDown:
    case DeskEvent::Kind::KeyUp:
        deliverKey(event);
        break;
    }
}

void DeskInput::deliverPointer(const DeskEvent& event)
{
    const bool isDown = event.kind == DeskEvent::Kind::PointerDown;
    const bool isUp = event.kind == DeskEvent::Kind::PointerUp;
    if (isDown == m_down && event.kind != DeskEvent::Kind::PointerMove)
        return;
    if (!m_down) {
        const Desk::Placed placed = m_desk->at(event.pos);
        m_touched = placed.window ? placed.window->windowHandle() : nullptr;
        m_corner = placed.pos;
    }
    m_pos = event.pos;
    m_down = isDown || (m_down && !isUp);
    if (!m_touched)
        return;
    const QPoint local = event.pos - m_corner;
    qt_handleMouseEvent(m_touched, local, local + m_touched->position(),
                        m_down ? Qt::LeftButton : Qt::NoButton,
                        isDown || isUp ? Qt::LeftButton : Qt::NoButton,
                        isDown ? QEvent::MouseButtonPress
                        : isUp ? QEvent::MouseButtonRelease
                               : QEvent::MouseMove,
                        Qt::NoModifier, int(m_clock.elapsed()));
}

void DeskInput::deliverWheel(const DeskEvent& event)
{
    const Desk::Placed placed = m_desk->at(event.pos);
    if (!placed.window)
        return;
    const QPoint local = event.pos - placed.pos;
    QWheelEvent wheel(local, local + placed.window->geometry().topLeft(), QPoint(), QPoint(0, event.turn),
                      m_down ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(placed.window->windowHandle(), &wheel);
}

void DeskInput::deliverKey(const DeskEvent& event)
{
    const bool isDown = event.kind == DeskEvent::Kind::KeyDown;
    if (event.key == 0 || (!isDown && !m_keys.remove(event.key)))
        return;
    if (isDown)
        m_keys.insert(event.key);
    if (QWindow* window = QGuiApplication::focusWindow())
        qt_handleKeyEvent(window, isDown ? QEvent::KeyPress : QEvent::KeyRelease, event.key, event.modifiers,
                          event.text, event.repeats, 1);
}

void DeskInput::letGo()
{
    DeskEvent up;
    up.kind = DeskEvent::Kind::PointerUp;
    up.pos = m_pos;
    deliver(up);
    const QSet<int> keys = m_keys;
    for (const int key : keys) {
        DeskEvent release;
        release.kind = DeskEvent::Kind::KeyUp;
        release.key = key;
        deliver(release);
    }
}

} // namespace headunit
