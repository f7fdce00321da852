#pragma once

#include "platform/common/widgets/palette.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOption>

namespace cm {

/// The ring within the edge of a control that the keyboard has moved the focus to; nothing when it came by
/// touch or by code. width, and radius of the corners: px. Thread: GUI.
inline void drawFocusRing(const QStyleOption& option, QPainter* painter, int width, int radius)
{
    if (!(option.state & QStyle::State_KeyboardFocusChange))
        return;
    const qreal half = width / 2.0;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setBrush(Qt::NoBrush);
    painter->setPen(QPen(QColor(palette::accentBright), width));
    painter->drawRoundedRect(QRectF(option.rect).adjusted(half, half, -half, -half), radius, radius);
    painter->restore();
}

} // namespace cm
