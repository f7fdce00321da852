#pragma once

#include "common/export.h"

#include <QObject>

class QPushButton;

namespace cm {

class PushButtonPrivate;

/// Tells short and long presses of a form's button apart, made by finger or by keyboard. Disabling or hiding
/// the button ends a press without a click. Thread: GUI.
///
///     press ---- 800 ms ----> longPressed() -- 150 ms --> longPressedRepeat() -- 150 ms --> ...
///     release inside the key -> shortClicked(), once, however long it was held
class COMMON_EXPORT PushButton : public QObject
{
    Q_OBJECT
public:
    /// The button stays the form's and may go first. Without a button (null) nothing is ever reported, which
    /// is logged. The parent owns the wrapper; without one the caller does.
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
