#include "headunit/front/statusbar.h"

#include "headunit/sound/mastervolume.h"

#include "platform/common/widgets/palette.h"

#include <QPainter>
#include <QPainterPath>
#include <QTime>

namespace headunit {

namespace {

/// A loudspeaker, with waves by level or a cross when muted, in a 28 x 28 field.
void drawLoudspeaker(QPainter& painter, const QPointF& topLeft, int waves, bool muted)
{
    painter.save();
    painter.translate(topLeft);
    QPainterPath body(QPointF(2, 10));
    body.lineTo(8, 10);
    body.lineTo(15, 4);
    body.lineTo(15, 24);
    body.lineTo(8, 18);
    body.lineTo(2, 18);
    body.closeSubpath();
    painter.fillPath(body, QColor(cm::palette::ink));
    painter.setBrush(Qt::NoBrush);
    if (muted) {
        painter.setPen(QPen(QColor(cm::palette::accentBright), 2.4, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(19, 10), QPointF(27, 18));
        painter.drawLine(QPointF(27, 10), QPointF(19, 18));
    } else {
        painter.setPen(QPen(QColor(cm::palette::ink), 2.2, Qt::SolidLine, Qt::RoundCap));
        for (int wave = 0; wave < waves; ++wave) {
            const qreal radius = 4.5 + 4.0 * wave;
            painter.drawArc(QRectF(16 - radius, 14 - radius, 2 * radius, 2 * radius), -45 * 16, 90 * 16);
        }
    }
    painter.restore();
}

} // namespace

StatusBar::StatusBar(const MasterVolume* volume, QWidget* parent)
    : QWidget(parent)
    , m_volume(volume)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    connect(volume, &MasterVolume::changed, this, QOverload<>::of(&QWidget::update));
    m_minute.setSingleShot(true);
    connect(&m_minute, &QTimer::timeout, this, &StatusBar::onMinute);
    onMinute();
}

StatusBar::~StatusBar() = default;

void StatusBar::onMinute()
{
    update();
    const QTime now = QTime::currentTime();
    m_minute.start((60 - now.second()) * 1000 - now.msec() + 5);
}

void StatusBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), QColor(0, 0, 0, 150));

    QFont font = this->font();
    font.setPixelSize(26);
    painter.setFont(font);

    const int level = m_volume->level();
    const bool muted = m_volume->isMuted();
    const int waves = (level + 16) / 17; // none at 0, three near the top
    drawLoudspeaker(painter, QPointF(30, (height() - 28) / 2.0), waves, muted);
    painter.setPen(QColor(muted ? cm::palette::inkDim : cm::palette::ink));
    painter.drawText(QRect(72, 0, 100, height()), Qt::AlignLeft | Qt::AlignVCenter, QString::number(level));

    painter.setPen(QColor(cm::palette::ink));
    painter.drawText(rect().adjusted(0, 0, -30, 0), Qt::AlignRight | Qt::AlignVCenter,
                     QTime::currentTime().toString(QStringLiteral("hh:mm")));
}

} // namespace headunit
