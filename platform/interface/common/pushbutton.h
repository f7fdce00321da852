#pragma once

#include "common/export.h"

#include <QObject>

class QPushButton;

namespace cm {

class PushButtonPrivate;

/// Tells short and long presses of a form's button apart. The button stays the form's. Thread: GUI.
///
///     press ---- 800 ms ----> longPressed() -- 150 ms --> longPressedRepeat() -- 150 ms --> ...
///     release inside the key -> shortClicked(), once, however long it was held
class COMMON_EXPORT PushButton : public QObject
{
    Q_OBJECT
public:
    PushButton(QPushButton* button, QObject* parent);
    ~PushButton() override;

signals:
    /// Exactly once for each press that is released inside the key.
    void shortClicked();
    /// Once, 800 ms after the press, while the key is still held.
    void longPressed();
    /// Every 150 ms after longPressed(), while the key is still held.
    void longPressedRepeat();

private:
    PushButtonPrivate* d;
    Q_DISABLE_COPY(PushButton)
};

} // namespace cm
