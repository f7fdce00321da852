#pragma once

#include "common/keyevent.h"

#include <QTimer>
#include <QWidget>

namespace headunit {

/// A key of the unit's front, outside the screen. Thread: GUI.
class HardKey : public QWidget
{
    Q_OBJECT
public:
    static constexpr int longPressMs = 800;

    HardKey(KeyEvent::Key key, const QString& name, QWidget* parent);

    /// A lamp behind the key's sign; on by default.
    void setLit(bool lit);

signals:
    /// action: Press when it goes down, LongPress 800 ms later while it is still held, Release when it comes
    /// up.
    void acted(KeyEvent::Key key, KeyEvent::Action action);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    const KeyEvent::Key m_key;
    QTimer m_longPress;
    bool m_down = false;
    bool m_lit = true;
};

} // namespace headunit
