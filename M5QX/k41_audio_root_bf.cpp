#include "M5QX/k41_audio_root_bf.h"

#include "M5QX/diagnostic.h"

#include <QMouseEvent>

k41_audio_root_bf::k41_audio_root_bf(QWidget* parent)
    : QSlider(parent)
{
    setFocusPolicy(Qt::NoFocus);
}

void k41_audio_root_bf::mousePressEvent(QMouseEvent*)
{
}

void k41_audio_root_bf::mouseMoveEvent(QMouseEvent* event)
{
    AS_DEBUG() << qUtf8Printable(QStringLiteral("(%1,%2)").arg(event->x()).arg(event->y()));
}

void k41_audio_root_bf::mouseReleaseEvent(QMouseEvent*)
{
}

void k41_audio_root_bf::paintEvent(QPaintEvent* event)
{
    // Past the slider: no groove and no handle.
    QWidget::paintEvent(event);
}
