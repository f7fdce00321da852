#include "common/keyevent.h"

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
