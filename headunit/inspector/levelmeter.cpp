#include "headunit/inspector/levelmeter.h"

#include "platform/common/widgets/palette.h"

#include <QPainter>

#include <cmath>

namespace headunit {

namespace {

constexpr double levelRangeDb = 60, reductionRangeDb = 12;
constexpr double levelFallDb = 40, reductionFallDb = 12; ///< in a second
constexpr qint64 holdMs = 1500;

} // namespace

LevelMeter::LevelMeter(Kind kind, const QColor& colour, QWidget* parent)
    : QWidget(parent)
    , m_kind(kind)
    , m_colour(colour)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    reset();
}

QSize LevelMeter::sizeHint() const
{
    return {200, 16};
}

double LevelMeter::lengthOf(double db) const
{
    return m_kind == Level ? 1 + db / levelRangeDb : -db / reductionRangeDb;
}

void LevelMeter::reset()
{
    m_db = m_holdDb = m_kind == Level ? -levelRangeDb : 0;
    m_silent = true;
    m_sinceShown.invalidate();
    m_sinceHeld.invalidate();
    update();
}

void LevelMeter::setFactor(double factor)
{
    // Both kinds move away from rest at once and back to it slowly; the limiter's way is downwards.
    const bool isLevel = m_kind == Level;
    const double range = isLevel ? levelRangeDb : reductionRangeDb;
    m_silent = !(factor > 0);
    const double db = !m_silent ? qBound(-range, 20 * std::log10(factor), 0.0) : -range;
    const double seconds = m_sinceShown.isValid() ? double(m_sinceShown.restart()) / 1000 : 0;
    if (!m_sinceShown.isValid())
        m_sinceShown.start();
    if (isLevel)
        m_db = qMax(db, qMax(m_db - levelFallDb * seconds, -range));
    else
        m_db = qMin(db, qMin(m_db + reductionFallDb * seconds, 0.0));
    const bool further = isLevel ? m_db >= m_holdDb : m_db <= m_holdDb;
    if (further || !m_sinceHeld.isValid() || m_sinceHeld.elapsed() > holdMs) {
        m_holdDb = m_db;
        m_sinceHeld.start();
    }
    update();
}

QString LevelMeter::text() const
{
    if (m_db <= -levelRangeDb)
        return m_silent ? QStringLiteral("-\u221e dB") : QStringLiteral("< %1 dB").arg(-levelRangeDb);
    return QStringLiteral("%1 dB").arg(m_db, 0, 'f', 1);
}

void LevelMeter::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRectF bar(0, 2, width() - numberWidth, height() - 4);
    painter.fillRect(bar, QColor(cm::palette::well));
    const double length = bar.width() * lengthOf(m_db), hold = bar.width() * lengthOf(m_holdDb);
    QRectF filled = bar;
    if (m_kind == Level)
        filled.setRight(bar.left() + length);
    else
        filled.setLeft(bar.right() - length);
    painter.fillRect(filled, m_colour);
    if (hold > 0) {
        const double x = m_kind == Level ? bar.left() + hold - 2 : bar.right() - hold;
        painter.fillRect(QRectF(x, bar.top(), 2, bar.height()), QColor(cm::palette::ink));
    }
    painter.setPen(QColor(cm::palette::ink));
    painter.drawText(QRectF(bar.right(), 0, numberWidth, height()), Qt::AlignRight | Qt::AlignVCenter,
                     text());
}

} // namespace headunit
