#pragma once

#include <QColor>
#include <QList>
#include <QPoint>
#include <QWidget>

/// Sketches one crossover filter over the page's grid in two straight lines that meet at the knee: the flat
/// pass band and, when the filter has a slope, the falling edge. It draws nothing else, so that several lie
/// over one grid. Thread: GUI.
///
///     high-pass             low-pass (the edge leans as the sign of k says)
///          knee ____ W       0 ____ knee
///         /                            \         .
///        0                              bottom
///
/// Positions are widget pixels, y growing downwards. The lines are computed from the size that the widget has
/// when a curve is set.
class CurveWidget : public QWidget
{
    Q_OBJECT
public:
    explicit CurveWidget(QWidget* parent);

    /// High-pass: k is the edge's gradient in pixels down for each pixel to the right (negative rises to the
    /// right). Only exactly 0 means no edge. Doesn't repaint: the caller sets what belongs together, then
    /// calls update().
    void setCurveHpf(QPoint knee, float k);
    /// Low-pass, k as above, except that anything between -1 and 1 (both exclusive) means no edge. Doesn't
    /// repaint.
    void setCurveLpf(QPoint knee, float k);
    /// Colour of both lines; an invalid one draws black. Doesn't repaint.
    void setCurveColor(QColor color);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QList<QPoint> points; ///< knee, end of the first line, end of the second; empty until a curve is set
    QColor curveColor;
    bool flat = false;  ///< the curve has no edge
    bool isLpf = false; ///< the curve is a low-pass
};
