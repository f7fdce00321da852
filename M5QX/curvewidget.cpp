#include "M5QX/curvewidget.h"

#include "M5QX/diagnostic.h"

#include <QPainter>

#include <cmath>
#include <limits>

namespace {

constexpr int flatWidth = 6;
constexpr int edgeWidth = 5;

/// Truncates toward zero. Beyond what an int holds it stops there, and no number counts as 0: a cast would be
/// undefined.
int toPixel(float value)
{
    constexpr float limit = 2147483648.0F;
    if (std::isnan(value))
        return 0;
    if (value >= limit)
        return std::numeric_limits<int>::max();
    if (value < -limit)
        return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

} // namespace

CurveWidget::CurveWidget(QWidget* parent)
    : QWidget(parent)
{
}

void CurveWidget::setCurveHpf(QPoint knee, float k)
{
    points.clear();
    points.append(knee);
    isLpf = false;
    flat = k == 0.0F;
    points.append(QPoint(0, flat ? knee.y() : toPixel(knee.y() - k * knee.x())));
    points.append(QPoint(width(), knee.y()));
    AS_DEBUG() << points.at(0) << points.at(1) << points.at(2);
}

void CurveWidget::setCurveLpf(QPoint knee, float k)
{
    points.clear();
    points.append(knee);
    isLpf = true;
    // Unlike the high-pass it asks whether the truncated gradient is 0: an edge that shallow would end far
    // beyond the grid.
    flat = !(std::fabs(k) >= 1.0F);
    points.append(QPoint(0, knee.y()));
    points.append(flat ? QPoint(width(), knee.y())
                       : QPoint(toPixel(knee.x() + (height() - knee.y()) / k), height()));
    AS_DEBUG() << points.at(0) << points.at(1) << points.at(2);
}

void CurveWidget::setCurveColor(QColor color)
{
    AS_DEBUG() << color;
    curveColor = color;
}

void CurveWidget::paintEvent(QPaintEvent*)
{
    if (points.isEmpty())
        return;
    QPainter painter(this);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    QPen pen(curveColor);
    // A high-pass has its edge in the first line, a low-pass in the second; edges are drawn thinner.
    pen.setWidth(isLpf || flat ? flatWidth : edgeWidth);
    painter.setPen(pen);
    painter.drawLine(points.at(0), points.at(1));
    pen.setWidth(isLpf && !flat ? edgeWidth : flatWidth);
    painter.setPen(pen);
    painter.drawLine(points.at(0), points.at(2));
    painter.restore();
}
