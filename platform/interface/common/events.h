#pragma once

#include <QByteArray>
#include <QEvent>

/// Numbers of the framework's events, which pages post to the application object. Always posted, never sent,
/// so that the framework acts after the page's own code has returned.
namespace Qx {

enum EventType : int {
    EventType_Touch = 1008,         ///< TouchEvent
    EventType_StatusBarHide = 1016, ///< StatusBarHideEvent
};

/// What a touch asks of the framework.
enum Touch : int {
    Touch_Back = 15, ///< leave the application
};

} // namespace Qx

/// An event that is one value, with a byte payload for a receiver that doesn't share the type. Values have no
/// behaviour, so this header of the interface has bodies. Thread: made on any, delivered on the GUI one.
template <typename T>
class SimpleEvent : public QEvent
{
public:
    SimpleEvent(Qx::EventType type, const T& value)
        : QEvent(static_cast<QEvent::Type>(type))
        , m_value(value)
    {
    }

    const T& value() const { return m_value; }
    /// Empty unless the derived event fills it.
    const QByteArray& payload() const { return m_payload; }

protected:
    void setPayload(const QByteArray& payload) { m_payload = payload; }

private:
    QByteArray m_payload;
    T m_value;
};

/// true hides the status bar, false shows it again.
class StatusBarHideEvent : public SimpleEvent<bool>
{
public:
    explicit StatusBarHideEvent(bool hide)
        : SimpleEvent<bool>(Qx::EventType_StatusBarHide, hide)
    {
    }
};

/// A touch request at a place, in px of the screen. The payload is 16 bytes: event type 1008, touch code, x,
/// y, each a 32-bit signed integer in host byte order. Requests without a place carry x = y = -1.
class TouchEvent : public SimpleEvent<Qx::Touch>
{
public:
    TouchEvent(Qx::Touch code, int x, int y)
        : SimpleEvent<Qx::Touch>(Qx::EventType_Touch, code)
    {
        const qint32 words[] = {Qx::EventType_Touch, code, x, y};
        static_assert(sizeof(words) == 16, "the payload is four 32-bit integers");
        setPayload(QByteArray(reinterpret_cast<const char*>(words), sizeof(words)));
    }
};
