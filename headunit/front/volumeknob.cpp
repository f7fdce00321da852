#include "headunit/front/volumeknob.h"

#include "headunit/sound/mastervolume.h"

#include "platform/common/widgets/palette.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <QtMath>

namespace headunit {

namespace {

constexpr qreal degreesPerStep = 12;
constexpr int wheelPerStep = 120;               // one notch, as QWheelEvent counts
constexpr int ringStart = 225, ringSpan = -270; // degrees, as QPainter counts

} // namespace

VolumeKnob::VolumeKnob(const MasterVolume* volume, QWidget* parent)
    : QWidget(parent)
    , m_volume(volume)
{
    setObjectName(QStringLiteral("volume_knob"));
    setToolTip(tr("Volume: turn with the wheel or by dragging, press to mute"));
    setAccessibleName(tr("Volume"));
    connect(volume, &MasterVolume::changed, this, QOverload<>::of(&QWidget::update));
}

void VolumeKnob::setLit(bool lit)
{
    m_lit = lit;
    update();
}

qreal VolumeKnob::angleOf(const QPointF& pos) const
{
    const QPointF fromCentre = pos - QRectF(rect()).center();
    return qRadiansToDegrees(std::atan2(fromCentre.y(), fromCentre.x()));
}

void VolumeKnob::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_down = true;
    m_dragged = false;
    m_turn = 0;
    m_lastAngle = angleOf(event->localPos());
    update();
}

void VolumeKnob::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_down)
        return;
    const qreal angle = angleOf(event->localPos());
    qreal turned = angle - m_lastAngle;
    if (turned > 180) // across the seam on the left
        turned -= 360;
    else if (turned < -180)
        turned += 360;
    m_lastAngle = angle;
    m_turn += turned;
    const int steps = int(m_turn / degreesPerStep);
    if (steps == 0)
        return;
    m_turn -= steps * degreesPerStep;
    m_dragged = true;
    emit this->turned(steps);
}

void VolumeKnob::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !m_down)
        return;
    m_down = false;
    update();
    if (!m_dragged && rect().contains(event->pos()))
        emit pressed();
}

void VolumeKnob::wheelEvent(QWheelEvent* event)
{
    // No more than the whole range at once: every step is a key of its own for the rest of the unit.
    constexpr int wholeRange = MasterVolume::maximum * wheelPerStep;
    m_wheel += qBound(-wholeRange, event->angleDelta().y(), wholeRange);
    const int steps = m_wheel / wheelPerStep;
    m_wheel -= steps * wheelPerStep;
    if (steps != 0)
        emit turned(steps);
    event->accept();
}

void VolumeKnob::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal size = qMin(width(), height());
    painter.translate(QRectF(rect()).center());

    // The ring of light shows the level, dimmed while muted.
    const qreal ring = size / 2 - 4;
    const QRectF ringField(-ring, -ring, 2 * ring, 2 * ring);
    painter.setPen(QPen(QColor(cm::palette::line), 4, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(ringField, ringStart * 16, ringSpan * 16);
    if (m_lit) {
        const QRgb light = m_volume->isMuted() ? cm::palette::lineStrong : cm::palette::accent;
        painter.setPen(QPen(QColor(light), 4, Qt::SolidLine, Qt::RoundCap));
        painter.drawArc(ringField, ringStart * 16, ringSpan * 16 * m_volume->level() / MasterVolume::maximum);
    }

    const qreal radius = ring - 8;
    QLinearGradient metal(0, -radius, 0, radius);
    metal.setColorAt(m_down ? 1 : 0, QColor(cm::palette::lineStrong));
    metal.setColorAt(m_down ? 0 : 1, QColor(cm::palette::page));
    painter.setPen(QPen(QColor(cm::palette::well), 1.5));
    painter.setBrush(metal);
    painter.drawEllipse(QPointF(), radius, radius);

    const qreal angle =
        qDegreesToRadians(ringStart + qreal(ringSpan) * m_volume->level() / MasterVolume::maximum);
    const QPointF direction(std::cos(angle), -std::sin(angle));
    painter.setPen(
        QPen(QColor(m_lit ? cm::palette::ink : cm::palette::lineStrong), 3.5, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(direction * (radius * 0.62), direction * (radius * 0.86));
}

} // namespace headunit
