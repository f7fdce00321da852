#include "common/customslider.h"

#include "palette.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QStyle>
#include <QStyleOption>
#include <QTimer>

#include <cmath>

namespace settings {

namespace {

// Style 4, made for a row of 59 px: the bubble with the number above, so that the finger on the handle
// doesn't cover it, and the track below.
constexpr int kBubbleWidth = 58;
constexpr int kBubbleHeight = 31;
constexpr int kPointerHeight = 5; ///< the bubble's tip
constexpr int kHandleRadius = 10;
constexpr int kTrackHeight = 6;
constexpr int kDigits = 23;                         ///< px
constexpr int kMargin = kBubbleWidth / 2 + 2;       ///< from the edge to the handle's centre at either end
constexpr int kTrackFromBottom = kHandleRadius + 2; ///< to the track's centre line
constexpr int kSettleMs = 400;

/// Relative luminance, WCAG 2.1.
qreal luminance(const QColor& color)
{
    const auto linear = [](qreal c) { return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

/// Dark or light, whichever contrasts more with that ground.
QColor readableOn(const QColor& ground)
{
    const QColor dark(cm::palette::well), light(cm::palette::ink);
    const auto lighted = [](const QColor& color) { return luminance(color) + 0.05; };
    return lighted(ground) / lighted(dark) > lighted(light) / lighted(ground) ? dark : light;
}

} // namespace

class CustomSlider_2Private
{
public:
    int offset = 0;
    QColor hint = QColor(cm::palette::accentBright);
    QTimer settle; ///< runs while keyboard stepping goes on
    bool dragging = false;
    int before = 0;  ///< the value before the drag or the stepping began
    int stepped = 0; ///< the value that stepping has reached

    bool stepping() const { return settle.isActive(); }
};

CustomSlider_2::CustomSlider_2(QWidget* parent, const QRect& geometry, int style)
    : QSlider(Qt::Horizontal, parent)
    , d(new CustomSlider_2Private)
{
    Q_UNUSED(style) // there is one look; see the header
    setGeometry(geometry);
    setFocusPolicy(Qt::TabFocus); // a touch takes no focus, the keyboard reaches it
    d->settle.setSingleShot(true);
    d->settle.setInterval(kSettleMs);
    connect(&d->settle, SIGNAL(timeout()), this, SLOT(onSettled()));
}

CustomSlider_2::~CustomSlider_2()
{
    delete d;
}

void CustomSlider_2::setOffset(int offset)
{
    d->offset = offset;
    update();
}

void CustomSlider_2::setHintColor(const QColor& color)
{
    if (!color.isValid()) {
        qWarning("CustomSlider_2: an invalid hint colour is ignored");
        return;
    }
    d->hint = color;
    update();
}

int CustomSlider_2::valueAt(int x) const
{
    const bool flipped = invertedAppearance() != (layoutDirection() == Qt::RightToLeft);
    return QStyle::sliderValueFromPosition(minimum(), maximum(), x - kMargin, qMax(1, width() - 2 * kMargin),
                                           flipped);
}

int CustomSlider_2::handleX() const
{
    const bool flipped = invertedAppearance() != (layoutDirection() == Qt::RightToLeft);
    return kMargin + QStyle::sliderPositionFromValue(minimum(), maximum(), sliderPosition(),
                                                     qMax(1, width() - 2 * kMargin), flipped);
}

/// Ends a drag or a stepping that doesn't count: the slider shows again what was last saved or set.
void CustomSlider_2::abandon()
{
    if (d->stepping()) {
        d->settle.stop();
        setValue(d->before);
    }
    if (d->dragging) {
        d->dragging = false;
        setSliderPosition(d->before);
        setSliderDown(false);
        update();
    }
}

void CustomSlider_2::onSettled()
{
    d->settle.stop();
    // The page may have refreshed the slider from its store meanwhile; what the user chose still counts.
    setValue(d->stepped);
    emit valSave(value());
}

void CustomSlider_2::noteStep(int valueBefore)
{
    if (value() == valueBefore)
        return;
    if (!d->stepping())
        d->before = valueBefore;
    d->stepped = value();
    d->settle.start();
}

bool CustomSlider_2::event(QEvent* event)
{
    switch (event->type()) {
    case QEvent::EnabledChange:
        if (!isEnabled())
            abandon();
        break;
    case QEvent::UngrabMouse: // something else has taken the finger
        if (d->dragging)
            abandon();
        break;
    case QEvent::FocusOut:
        // Disabling takes the focus first; a disabled slider saves nothing.
        if (!isEnabled())
            abandon();
        else if (d->stepping())
            onSettled();
        break;
    default:
        break;
    }
    return QSlider::event(event);
}

void CustomSlider_2::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    event->accept();
    d->before = d->stepping() ? d->before : value();
    d->settle.stop();
    d->dragging = true;
    setSliderDown(true);
    setSliderPosition(valueAt(event->x()));
    update();
}

void CustomSlider_2::mouseMoveEvent(QMouseEvent* event)
{
    event->setAccepted(d->dragging);
    if (d->dragging)
        setSliderPosition(valueAt(event->x()));
}

void CustomSlider_2::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !d->dragging) {
        event->ignore();
        return;
    }
    event->accept();
    d->dragging = false;
    // By the finger, not by the value: a refresh of the page may have set another one under the finger.
    setSliderPosition(valueAt(event->x()));
    setSliderDown(false);
    update();
    emit valSave(value());
}

void CustomSlider_2::keyPressEvent(QKeyEvent* event)
{
    if (d->dragging) {
        event->accept(); // the finger has it
        return;
    }
    const int valueBefore = value();
    QSlider::keyPressEvent(event);
    noteStep(valueBefore);
}

void CustomSlider_2::wheelEvent(QWheelEvent* event)
{
    // Without the focus, the wheel belongs to the page that scrolls beneath.
    if (!hasFocus() || d->dragging) {
        event->ignore();
        return;
    }
    const int valueBefore = value();
    QSlider::wheelEvent(event);
    event->accept();
    noteStep(valueBefore);
}

void CustomSlider_2::hideEvent(QHideEvent* event)
{
    if (d->dragging)
        abandon();
    else if (d->stepping())
        onSettled();
    QSlider::hideEvent(event);
}

void CustomSlider_2::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event)
    using namespace cm;
    QStyleOptionSlider option;
    initStyleOption(&option);
    const bool enabled = option.state & QStyle::State_Enabled;

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);

    const int x = handleX();
    const qreal y = height() - kTrackFromBottom;
    const QRectF track(kMargin - kHandleRadius, y - kTrackHeight / 2.0,
                       width() - 2.0 * (kMargin - kHandleRadius), kTrackHeight);
    QRectF filled = track;
    if (option.upsideDown)
        filled.setLeft(x);
    else
        filled.setRight(x);
    painter.setBrush(QColor(palette::lineStrong));
    painter.drawRoundedRect(track, kTrackHeight / 2.0, kTrackHeight / 2.0);
    painter.setBrush(QColor(enabled ? palette::accent : palette::accentDeep));
    painter.drawRoundedRect(filled, kTrackHeight / 2.0, kTrackHeight / 2.0);

    const QColor handle = !enabled      ? QColor(palette::inkDim).darker(170)
                          : d->dragging ? d->hint
                                        : QColor(palette::ink);
    painter.setBrush(QColor(palette::page)); // a gap that lifts the handle off the track
    painter.drawEllipse(QPointF(x, y), kHandleRadius + 2, kHandleRadius + 2);
    painter.setBrush(handle);
    painter.drawEllipse(QPointF(x, y), kHandleRadius, kHandleRadius);

    const QColor ground = d->dragging ? d->hint : QColor(enabled ? palette::panel : palette::line);
    const QRectF bubble(x - kBubbleWidth / 2.0, 1, kBubbleWidth, kBubbleHeight);
    QPainterPath shape;
    shape.addRoundedRect(bubble, 8, 8);
    QPainterPath tip;
    tip.addPolygon(QPolygonF({QPointF(x - 6, bubble.bottom() - 1), QPointF(x + 6, bubble.bottom() - 1),
                              QPointF(x, bubble.bottom() + kPointerHeight)}));
    painter.fillPath(shape.united(tip), ground);

    QFont digits = font();
    digits.setPixelSize(kDigits);
    digits.setBold(true);
    painter.setFont(digits);
    painter.setPen(!enabled ? QColor(palette::inkDim) : readableOn(ground));
    painter.drawText(bubble, Qt::AlignCenter, QString::number(sliderPosition() + d->offset));

    if ((option.state & QStyle::State_HasFocus) && (option.state & QStyle::State_KeyboardFocusChange)) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(QColor(palette::accentBright), 2));
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 6, 6);
    }
}

} // namespace settings
