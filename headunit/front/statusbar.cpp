#include "headunit/front/statusbar.h"

#include "headunit/sound/mastervolume.h"

#include "common/translator.h"
#include "platform/common/settings/settingsstore.h"
#include "platform/common/texts/language.h"
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
    const auto repaint = QOverload<>::of(&QWidget::update);
    connect(volume, &MasterVolume::changed, this, repaint);
    connect(mem::SettingsStore::instance(), &mem::SettingsStore::durableChanged, this, repaint);
    connect(cm::Language::instance(), &cm::Language::changed, this, repaint);
    m_minute.setSingleShot(true);
    connect(&m_minute, &QTimer::timeout, this, &StatusBar::onMinute);
    onMinute();
}

void StatusBar::onMinute()
{
    update();
    const QTime now = QTime::currentTime();
    m_minute.start((60 - now.second()) * 1000 - now.msec() + 5);
}

void StatusBar::paintMark(QPainter& painter) const
{
    constexpr int size = 26;
    const QRect room = rect().adjusted(190, 0, -140, 0);
    const QString text = Translator::translate(notKeptText);
    const int width = size + 12 + painter.fontMetrics().horizontalAdvance(text);
    const QRectF sign(room.center().x() - qMin(width, room.width()) / 2.0, (height() - size) / 2.0, size,
                      size);

    QPainterPath triangle(QPointF(sign.center().x(), sign.top() + 1));
    triangle.lineTo(sign.bottomRight() - QPointF(0, 2));
    triangle.lineTo(sign.bottomLeft() - QPointF(0, 2));
    triangle.closeSubpath();
    painter.strokePath(
        triangle, QPen(QColor(cm::palette::accentBright), 2.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setPen(QPen(QColor(cm::palette::accentBright), 2.4, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(sign.center().x(), sign.top() + 10),
                     QPointF(sign.center().x(), sign.top() + 16));
    painter.drawPoint(QPointF(sign.center().x(), sign.top() + 20));

    const QRect place(int(sign.right()) + 12, 0, room.right() - int(sign.right()) - 12, height());
    painter.setPen(QColor(cm::palette::ink));
    painter.drawText(place, Qt::AlignLeft | Qt::AlignAbsolute | Qt::AlignVCenter,
                     painter.fontMetrics().elidedText(text, Qt::ElideRight, place.width()));
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

    if (!mem::SettingsStore::instance()->isDurable())
        paintMark(painter);

    painter.setPen(QColor(cm::palette::ink));
    painter.drawText(rect().adjusted(0, 0, -30, 0), Qt::AlignRight | Qt::AlignVCenter,
                     QTime::currentTime().toString(QStringLiteral("hh:mm")));
}

} // namespace headunit
