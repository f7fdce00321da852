#include "M5QX/pa_balancefadercontrol.h"

#include "M5QX/diagnostic.h"
#include "common/mcumanager.h"
#include "common/settingstable.h"
#include "hvaudio/audioservice.h"

#include <QMouseEvent>
#include <QPainter>

namespace audiosetting {

namespace {

constexpr int maxValue = mem::settingOf("AudioService_Balance").largest; // the fader's range is the same
constexpr int touchStep = 7;                                             // px of touch for one step
constexpr int locatorTravel = 112; // px of the locator from 0 to maxValue

// Distance of a touch from the centre to a value, half a step rounded away from zero. The touch scale is a
// little finer than the locator's, so that the ends are reached without touching the very edge.
int valueOfDistance(qint64 distance)
{
    qint64 value = distance / touchStep;
    if (qAbs(distance % touchStep) >= 4)
        value += distance < 1 ? -1 : 1;
    if (qAbs(value) > maxValue)
        value = distance < 1 ? -maxValue : maxValue;
    return static_cast<int>(value);
}

// Way of the locator from the centre. 64 bits and a far limit: a value that nobody bounded leaves the pad,
// it must not wrap back onto it.
int distanceOfValue(int value)
{
    constexpr qint64 far = 1000000;
    return static_cast<int>(qBound(-far, qint64(locatorTravel) * value / maxValue, far));
}

} // namespace

balanceFaderControl::balanceFaderControl(QWidget* parent, const QRect& rect)
    : QSlider(parent)
    , m_background(QString())
    , m_verticalLine(QString())
    , m_horizontalLine(QString())
    , imageCircle(QStringLiteral(":/vexa_m5qx_settingicon_ext/locator.png"))
    , m_centre(rect.width() / 2, rect.height() / 2)
{
    setFocusPolicy(Qt::NoFocus); // the keys around it do the same by keyboard
    setGeometry(rect);
    m_verticalPos = QPoint(m_centre.x(), (height() - m_verticalLine.height()) / 2);
    m_horizontalPos = QPoint((width() - m_horizontalLine.width()) / 2, m_centre.y());
    m_locatorPos = m_centre - QPoint(imageCircle.width() / 2, imageCircle.height() / 2);
}

void balanceFaderControl::setValueX(int balance)
{
    m_valueX = balance;
}

void balanceFaderControl::setValueY(int fader)
{
    m_valueY = fader;
}

int balanceFaderControl::getValueX() const
{
    return m_valueX;
}

int balanceFaderControl::getValueY() const
{
    return m_valueY;
}

void balanceFaderControl::setcircleX(int x)
{
    m_locatorPos.setX(x);
}

void balanceFaderControl::setcircleY(int y)
{
    m_locatorPos.setY(y);
}

void balanceFaderControl::setVlineX(int x)
{
    m_verticalPos.setX(x);
}

void balanceFaderControl::setHlineY(int y)
{
    m_horizontalPos.setY(y);
}

void balanceFaderControl::updatePos()
{
    circlePos = QPoint(m_centre.x() + distanceOfValue(m_valueX), m_centre.y() - distanceOfValue(m_valueY));
    // One pixel to the right of where the constructor puts it. Part of the unit's look, and only here.
    m_locatorPos = circlePos - QPoint(imageCircle.width() / 2 - 1, imageCircle.height() / 2);
    update();
}

void balanceFaderControl::updateValue(const QPoint& pos)
{
    m_valueX = valueOfDistance(qint64(pos.x()) - m_centre.x());
    m_valueY = valueOfDistance(qint64(m_centre.y()) - pos.y());
}

void balanceFaderControl::updateLabel()
{
    QPainter painter(this);
    painter.save();
    painter.drawPixmap(rect(), m_background);
    painter.drawPixmap(m_horizontalPos, m_horizontalLine);
    painter.drawPixmap(m_verticalPos, m_verticalLine);
    painter.drawPixmap(m_locatorPos, imageCircle);
    painter.restore();
}

void balanceFaderControl::mousePressEvent(QMouseEvent* event)
{
    McuManager::instance()->triggerBeep(0);
    updateValue(event->pos());
    emit balanceFaderChanged(m_valueX, m_valueY);
}

void balanceFaderControl::mouseReleaseEvent(QMouseEvent* event)
{
    updateValue(event->pos());
    hvaudio::AudioService::instance()->setBalanceFader(m_valueX, m_valueY, true);
}

void balanceFaderControl::mouseMoveEvent(QMouseEvent* event)
{
    updateValue(event->pos());
    emit balanceFaderChanged(m_valueX, m_valueY);
}

void balanceFaderControl::paintEvent(QPaintEvent*)
{
    updateLabel();
}

} // namespace audiosetting
