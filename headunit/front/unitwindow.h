#pragma once

#include "common/keyevent.h"

#include <QVector>
#include <QWidget>

namespace headunit {

class HardKey;
class MasterVolume;
class Screen;
class VolumeKnob;

/// The window on the desk: the screen and, around it, the unit's front with its hard keys. Some keys of a
/// keyboard stand for hard keys where no control wants them: Escape back, Home home, Page Up and Down the
/// paging keys, the volume keys of a keyboard the knob. Thread: GUI.
class UnitWindow : public QWidget
{
    Q_OBJECT
public:
    /// volume: outlives the window. withFront: false leaves the bare screen.
    UnitWindow(const MasterVolume* volume, bool withFront);

    Screen* screen() const { return m_screen; }
    /// Lamps of the front and the screen, as the unit is on or off. The power key's lamp stays on.
    void setLit(bool lit);

signals:
    void hardKey(KeyEvent::Key key, KeyEvent::Action action);
    /// The window's close button was used.
    void closed();

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void buildFront(const MasterVolume* volume);
    void pressAndRelease(KeyEvent::Key key, int times);
    bool passKeyboard(QKeyEvent* event, KeyEvent::Action action);

    Screen* m_screen;
    VolumeKnob* m_knob = nullptr;
    QVector<HardKey*> m_keys;
};

} // namespace headunit
