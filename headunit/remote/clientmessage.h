#pragma once

#include <QByteArray>
#include <QMetaType>
#include <QPoint>
#include <QString>

#include <optional>

namespace headunit {

/// What a finger, a pointer or a keyboard does on the desk.
struct DeskEvent
{
    enum class Kind { PointerDown, PointerMove, PointerUp, Wheel, KeyDown, KeyUp };
    Kind kind = Kind::PointerMove;
    QPoint pos;   ///< pointer, wheel: pixels of the desk, at most maxDeskSize off it
    int turn = 0; ///< wheel: eighths of a degree, positive away from the user
    int key = 0;  ///< keys: a Qt::Key
    QString text; ///< keys: what is typed, empty for keys that type nothing
    Qt::KeyboardModifiers modifiers;
    bool repeats = false; ///< keys: it has been held
};

/// What a page says, one JSON object a message:
///
///     {"token": "..."}                                     first of all
///     {"shown": true}                                      one more frame is on its screen
///     {"control": true}                                    wants to control rather than look
///     {"pointer": "down"|"move"|"up", "x": X, "y": Y}
///     {"wheel": TURN, "x": X, "y": Y}
///     {"key": NAME, "down": true|false, "shift": true, "repeat": true}    NAME as KeyboardEvent.key
struct ClientMessage
{
    enum class Kind { Token, Shown, Control, Event };
    Kind kind = Kind::Event;
    QByteArray token;
    DeskEvent event;
};

/// None when it is malformed or out of range. A key that the unit doesn't know has key 0. Thread: any.
std::optional<ClientMessage> readClientMessage(const QString& text);

} // namespace headunit

Q_DECLARE_METATYPE(headunit::DeskEvent)
