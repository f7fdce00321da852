#include "headunit/remote/clientmessage.h"

#include "headunit/remote/deskchange.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace headunit {

namespace {

struct PointerRow
{
    const char* name;
    DeskEvent::Kind kind;
};

struct KeyRow
{
    const char* name; ///< as KeyboardEvent.key
    int key;
};

// clang-format off
constexpr PointerRow pointerRows[] = {
    {"down", DeskEvent::Kind::PointerDown},
    {"move", DeskEvent::Kind::PointerMove},
    {"up",   DeskEvent::Kind::PointerUp},
};

constexpr KeyRow keyRows[] = {
    {"ArrowDown",       Qt::Key_Down},
    {"ArrowLeft",       Qt::Key_Left},
    {"ArrowRight",      Qt::Key_Right},
    {"ArrowUp",         Qt::Key_Up},
    {"AudioVolumeDown", Qt::Key_VolumeDown},
    {"AudioVolumeMute", Qt::Key_VolumeMute},
    {"AudioVolumeUp",   Qt::Key_VolumeUp},
    {"Backspace",       Qt::Key_Backspace},
    {"BrowserBack",     Qt::Key_Back},
    {"Delete",          Qt::Key_Delete},
    {"End",             Qt::Key_End},
    {"Enter",           Qt::Key_Return},
    {"Escape",          Qt::Key_Escape},
    {"F12",             Qt::Key_F12},
    {"Home",            Qt::Key_Home},
    {"Insert",          Qt::Key_Insert},
    {"PageDown",        Qt::Key_PageDown},
    {"PageUp",          Qt::Key_PageUp},
    {"Tab",             Qt::Key_Tab},
};
// clang-format on

constexpr int maxTurn = 1200; ///< ten notches at once

/// False when the value is no whole number or beyond the limit.
bool readNumber(const QJsonValue& value, int limit, int* number)
{
    const double given = value.toDouble(limit + 1.0);
    *number = given >= -limit && given <= limit ? int(given) : 0;
    return value.isDouble() && *number == given;
}

bool readPos(const QJsonObject& object, QPoint* pos)
{
    // A finger that is held may leave the desk.
    return readNumber(object.value(QLatin1String("x")), 2 * maxDeskSize, &pos->rx()) &&
           readNumber(object.value(QLatin1String("y")), 2 * maxDeskSize, &pos->ry());
}

bool readPointer(const QJsonObject& object, DeskEvent* event)
{
    const QString name = object.value(QLatin1String("pointer")).toString();
    for (const PointerRow& row : pointerRows) {
        if (name != QLatin1String(row.name))
            continue;
        event->kind = row.kind;
        return readPos(object, &event->pos);
    }
    return false;
}

bool readWheel(const QJsonObject& object, DeskEvent* event)
{
    event->kind = DeskEvent::Kind::Wheel;
    return readNumber(object.value(QLatin1String("wheel")), maxTurn, &event->turn) &&
           readPos(object, &event->pos);
}

bool readKey(const QJsonObject& object, DeskEvent* event)
{
    const QString name = object.value(QLatin1String("key")).toString();
    const QJsonValue down = object.value(QLatin1String("down"));
    if (name.isEmpty() || !down.isBool())
        return false;
    event->kind = down.toBool() ? DeskEvent::Kind::KeyDown : DeskEvent::Kind::KeyUp;
    event->repeats = object.value(QLatin1String("repeat")).toBool();
    event->modifiers.setFlag(Qt::ShiftModifier, object.value(QLatin1String("shift")).toBool());
    for (const KeyRow& row : keyRows) {
        if (name == QLatin1String(row.name))
            event->key = row.key;
    }
    if (event->key == Qt::Key_Tab && event->modifiers.testFlag(Qt::ShiftModifier))
        event->key = Qt::Key_Backtab;
    // A key that types has the character for a name; others have words.
    if (event->key == 0 && name.size() == 1 && name.at(0).isPrint()) {
        event->text = name;
        event->key = name.at(0).toUpper().unicode();
    }
    return true;
}

} // namespace

std::optional<ClientMessage> readClientMessage(const QString& text)
{
    const QJsonObject object = QJsonDocument::fromJson(text.toUtf8()).object();
    ClientMessage message;
    bool isRead = true;
    if (object.contains(QLatin1String("token"))) {
        message.kind = ClientMessage::Kind::Token;
        message.token = object.value(QLatin1String("token")).toString().toLatin1();
    } else if (object.contains(QLatin1String("shown"))) {
        message.kind = ClientMessage::Kind::Shown;
    } else if (object.contains(QLatin1String("control"))) {
        message.kind = ClientMessage::Kind::Control;
    } else if (object.contains(QLatin1String("pointer"))) {
        isRead = readPointer(object, &message.event);
    } else if (object.contains(QLatin1String("wheel"))) {
        isRead = readWheel(object, &message.event);
    } else {
        isRead = readKey(object, &message.event);
    }
    return isRead ? std::optional(message) : std::nullopt;
}

} // namespace headunit
