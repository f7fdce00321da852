#include "headunit/front/hardkey.h"

#include "platform/common/widgets/palette.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

namespace headunit {

namespace {

/// The key's sign, in a 32 x 32 field around the origin.
QPainterPath sign(KeyEvent::Key key)
{
    QPainterPath path;
    switch (key) {
    case KeyEvent::Key_Power:
        path.arcMoveTo(-11, -10, 22, 22, 60);
        path.arcTo(-11, -10, 22, 22, 60, -300);
        path.moveTo(0, -14);
        path.lineTo(0, -1);
        break;
    case KeyEvent::Key_Home:
        path.moveTo(-13, 0);
        path.lineTo(0, -12);
        path.lineTo(13, 0);
        path.moveTo(-9, -2);
        path.lineTo(-9, 11);
        path.lineTo(9, 11);
        path.lineTo(9, -2);
        break;
    case KeyEvent::Key_Back:
        path.moveTo(-5, -12);
        path.lineTo(-12, -5);
        path.lineTo(-5, 2);
        path.moveTo(-12, -5);
        path.lineTo(5, -5);
        path.arcTo(-3, -5, 16, 16, 90, -180);
        path.lineTo(-5, 11);
        break;
    case KeyEvent::Key_PrevPage:
        path.moveTo(-11, 6);
        path.lineTo(0, -6);
        path.lineTo(11, 6);
        break;
    case KeyEvent::Key_NextPage:
        path.moveTo(-11, -6);
        path.lineTo(0, 6);
        path.lineTo(11, -6);
        break;
    default:
        break;
    }
    return path;
}

} // namespace

HardKey::HardKey(KeyEvent::Key key, const QString& name, QWidget* parent)
    : QWidget(parent)
    , m_key(key)
{
    setObjectName(QStringLiteral("hardkey_%1").arg(int(key)));
    setToolTip(name);
    setAccessibleName(name);
    m_longPress.setSingleShot(true);
    m_longPress.setInterval(longPressMs);
    connect(&m_longPress, &QTimer::timeout, this, [this] { emit acted(m_key, KeyEvent::LongPress); });
}

void HardKey::setLit(bool lit)
{
    m_lit = lit;
    update();
}

void HardKey::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_down = true;
    m_longPress.start();
    update();
    emit acted(m_key, KeyEvent::Press);
}

void HardKey::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !m_down)
        return;
    m_down = false;
    m_longPress.stop();
    update();
    emit acted(m_key, KeyEvent::Release);
}

void HardKey::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF body = QRectF(rect()).adjusted(1, 1, -1, -1);
    QLinearGradient ground(body.topLeft(), body.bottomLeft());
    ground.setColorAt(m_down ? 1 : 0, QColor(cm::palette::panel));
    ground.setColorAt(m_down ? 0 : 1, QColor(cm::palette::page));
    painter.setPen(QPen(QColor(cm::palette::well), 1.5));
    painter.setBrush(ground);
    painter.drawRoundedRect(body, 12, 12);

    painter.translate(body.center());
    const QRgb ink = !m_lit ? cm::palette::lineStrong : m_down ? cm::palette::accentBright : cm::palette::ink;
    painter.setPen(QPen(QColor(ink), 2.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(sign(m_key));
}

} // namespace headunit
