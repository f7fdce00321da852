#pragma once

#include "common/export.h"

#include <QEvent>

/// A hard key of the unit (the ones around the screen). Thread: GUI.
class COMMON_EXPORT KeyEvent : public QEvent
{
public:
    enum Key : int {
        Key_Power = 1,
        Key_Home = 2,
        Key_Back = 3,
        Key_VolumeUp = 4,
        Key_VolumeDown = 5,
        Key_Mute = 6,
        Key_PrevPage = 7,
        Key_NextPage = 8,
    };

    /// Event types; type() is one of them.
    enum Action : int {
        Press = 1001,
        Release = 1002,
        LongPress = 1003,
    };

    /// key: a Key, or any other number of a key that this framework has no name for.
    KeyEvent(int key, Action action);
    ~KeyEvent() override;

    /// As given.
    int key() const;

private:
    int m_key;
};
