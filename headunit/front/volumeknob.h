#pragma once

#include <QPointF>
#include <QWidget>

namespace headunit {

class MasterVolume;

/// The volume knob: wheel and dragging around (or up and down) turn it in steps, a press without dragging
/// mutes. Says steps, never levels: what they mean is the shell's. Thread: GUI.
class VolumeKnob : public QWidget
{
    Q_OBJECT
public:
    /// volume: what the ring shows; outlives the knob.
    VolumeKnob(const MasterVolume* volume, QWidget* parent);

    /// The ring's lamp; on by default.
    void setLit(bool lit);

signals:
    /// steps: positive is louder, never 0, and no more than the volume has.
    void turned(int steps);
    void pressed();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    /// Where a pointer stands around the knob, in degrees, clockwise positive.
    qreal angleOf(const QPointF& pos) const;

    const MasterVolume* const m_volume;
    bool m_down = false;
    bool m_lit = true;
    bool m_dragged = false;
    qreal m_lastAngle = 0;
    qreal m_turn = 0; ///< degrees dragged that are not yet a step
    int m_wheel = 0;  ///< eighths of a degree of the wheel that are not yet a step
};

} // namespace headunit
