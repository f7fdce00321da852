#pragma once

#include <QPixmap>
#include <QPoint>
#include <QSlider>

namespace audiosetting {

/// The balance/fader pad: a touch on the square is a balance (horizontal, positive to the right) and a fader
/// (vertical, positive to the top), each -15..15 steps. Thread: GUI.
///
///     press, move  -> values -> balanceFaderChanged()     the owner shows them and moves the locator
///     release      -> values -> AudioService              the only place that sends
///
/// A slider only to be a widget that takes touches: its own value, range and painting are not used.
class balanceFaderControl : public QSlider
{
    Q_OBJECT
public:
    /// rect: place in the parent, px. Both values are 0 and the locator stands at the centre.
    balanceFaderControl(QWidget* parent, const QRect& rect);

    /// Plain accessors: no range is kept here, nothing moves before updatePos().
    void setValueX(int balance);
    void setValueY(int fader);
    int getValueX() const;
    int getValueY() const;

    /// Top-left corner of the locator, px.
    void setcircleX(int x);
    void setcircleY(int y);
    /// Place of the two lines, px. Their pictures are empty, so that nothing of them is seen.
    void setVlineX(int x);
    void setHlineY(int y);

    /// Moves the locator to the current values and repaints.
    void updatePos();
    /// Turns a touch position (px in this widget, also outside it) into the two values.
    void updateValue(const QPoint& pos);
    /// Paints; call it from paintEvent() only.
    void updateLabel();

signals:
    void balanceFaderChanged(int balance, int fader);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    // The frame lies on the page's own label, so that the pad's background and lines stay empty pictures.
    QPixmap m_background;
    QPixmap m_verticalLine;
    QPixmap m_horizontalLine;
    QPixmap imageCircle;    ///< the locator
    QPoint circlePos;       ///< centre of the locator
    QPoint m_centre;        ///< of the pad
    int m_valueX = 0;       ///< balance
    int m_valueY = 0;       ///< fader
    QPoint m_verticalPos;   ///< of the vertical line
    QPoint m_horizontalPos; ///< of the horizontal line
    QPoint m_locatorPos;    ///< top-left corner of the locator
};

} // namespace audiosetting
