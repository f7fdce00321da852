#include "common/customslider.h"

#include "platform/common/widgets/fingercontrol.h"
#include "platform/common/widgets/focusring.h"
#include "platform/common/widgets/palette.h"

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
constexpr int bubbleWidth = 58;
constexpr int bubbleHeight = 31;
constexpr int pointerHeight = 5; ///< the bubble's tip
constexpr int handleRadius = 10;
constexpr int trackHeight = 6;
constexpr int digitPixels = 23;
constexpr int margin = bubbleWidth / 2 + 2;       ///< from the edge to the handle's centre at either end
constexpr int trackFromBottom = handleRadius + 2; ///< to the track's centre line
constexpr int settleMs = 400;

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

/// The outline of the field with the value over a handle at 0, with a tip that points down to it.
QPainterPath bubbleShape()
{
    const QRectF bubble(-bubbleWidth / 2.0, 1, bubbleWidth, bubbleHeight);
    QPainterPath field;
    field.addRoundedRect(bubble, 8, 8);
    QPainterPath tip;
    tip.addPolygon(QPolygonF({QPointF(-6, bubble.bottom() - 1), QPointF(6, bubble.bottom() - 1),
                              QPointF(0, bubble.bottom() + pointerHeight)}));
    return field.united(tip);
}

} // namespace

/// All behaviour of the slider; the class itself only passes its events here, so that its header shows none
/// of it.
class CustomSlider_2Private
{
public:
    explicit CustomSlider_2Private(CustomSlider_2* slider)
        : q(slider)
    {
    }

    void changed(const QEvent* event);
    void pressed(QMouseEvent* event);
    void moved(QMouseEvent* event);
    void released(QMouseEvent* event);
    void paint();
    void abandon();
    void settled();
    void noteStep(int valueBefore);
    int valueAt(int x) const;
    int handleX() const;
    bool stepping() const { return settle.isActive(); }

    CustomSlider_2* q;
    int offset = 0;
    QColor hint = QColor(cm::palette::accentBright);
    QTimer settle; ///< runs while keyboard stepping goes on
    bool dragging = false;
    int before = 0;  ///< the value before the drag or the stepping began
    int stepped = 0; ///< the value that stepping has reached
};

CustomSlider_2::CustomSlider_2(QWidget* parent, const QRect& geometry, int style)
    : QSlider(Qt::Horizontal, parent)
    , d(new CustomSlider_2Private(this))
{
    Q_UNUSED(style) // there is one look; see the header
    setGeometry(geometry);
    setFocusPolicy(Qt::TabFocus); // a touch takes no focus, the keyboard reaches it
    d->settle.setSingleShot(true);
    d->settle.setInterval(settleMs);
    connect(&d->settle, &QTimer::timeout, this, [this] { d->settled(); });
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

int CustomSlider_2Private::valueAt(int x) const
{
    const bool flipped = q->invertedAppearance() != (q->layoutDirection() == Qt::RightToLeft);
    return QStyle::sliderValueFromPosition(q->minimum(), q->maximum(), x - margin,
                                           qMax(1, q->width() - 2 * margin), flipped);
}

int CustomSlider_2Private::handleX() const
{
    const bool flipped = q->invertedAppearance() != (q->layoutDirection() == Qt::RightToLeft);
    return margin + QStyle::sliderPositionFromValue(q->minimum(), q->maximum(), q->sliderPosition(),
                                                    qMax(1, q->width() - 2 * margin), flipped);
}

/// Ends a drag or a stepping that doesn't count: the slider shows again what was last saved or set.
void CustomSlider_2Private::abandon()
{
    if (stepping()) {
        settle.stop();
        q->setValue(before);
    }
    if (dragging) {
        dragging = false;
        q->setSliderPosition(before);
        q->setSliderDown(false);
        q->update();
    }
}

void CustomSlider_2Private::settled()
{
    settle.stop();
    // The page may have refreshed the slider from its store meanwhile; what the user chose still counts.
    q->setValue(stepped);
    emit q->valSave(q->value());
}

void CustomSlider_2Private::noteStep(int valueBefore)
{
    if (q->value() == valueBefore)
        return;
    if (!stepping())
        before = valueBefore;
    stepped = q->value();
    settle.start();
}

void CustomSlider_2Private::changed(const QEvent* event)
{
    switch (event->type()) {
    case QEvent::EnabledChange:
        if (!q->isEnabled())
            abandon();
        break;
    case QEvent::UngrabMouse: // something else has taken the finger
        if (dragging)
            abandon();
        break;
    case QEvent::FocusOut:
        // Disabling takes the focus first; a disabled slider saves nothing.
        if (!q->isEnabled())
            abandon();
        else if (stepping())
            settled();
        break;
    case QEvent::Hide:
        if (dragging)
            abandon();
        else if (stepping())
            settled();
        break;
    default:
        break;
    }
}

bool CustomSlider_2::event(QEvent* event)
{
    if (cm::passFinger(this, d, event))
        return true;
    switch (event->type()) {
    case QEvent::EnabledChange:
    case QEvent::UngrabMouse:
    case QEvent::FocusOut:
    case QEvent::Hide:
        d->changed(event);
        break;
    case QEvent::Wheel:
        // Without the focus, the wheel belongs to the page that scrolls beneath.
        if (!hasFocus() || d->dragging) {
            event->ignore();
            return true;
        }
        Q_FALLTHROUGH();
    case QEvent::KeyPress: {
        if (d->dragging) {
            event->accept(); // the finger has it
            return true;
        }
        const int valueBefore = value();
        const bool handled = QSlider::event(event);
        if (event->type() == QEvent::Wheel)
            event->accept();
        d->noteStep(valueBefore);
        return handled;
    }
    case QEvent::Paint:
        d->paint();
        return true;
    default:
        break;
    }
    return QSlider::event(event);
}

void CustomSlider_2Private::pressed(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    event->accept();
    before = stepping() ? before : q->value();
    settle.stop();
    dragging = true;
    q->setSliderDown(true);
    q->setSliderPosition(valueAt(event->x()));
    q->update();
}

void CustomSlider_2Private::moved(QMouseEvent* event)
{
    event->setAccepted(dragging);
    if (dragging)
        q->setSliderPosition(valueAt(event->x()));
}

void CustomSlider_2Private::released(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !dragging) {
        event->ignore();
        return;
    }
    event->accept();
    dragging = false;
    // By the finger, not by the value: a refresh of the page may have set another one under the finger.
    q->setSliderPosition(valueAt(event->x()));
    q->setSliderDown(false);
    q->update();
    emit q->valSave(q->value());
}

void CustomSlider_2Private::paint()
{
    using namespace cm;
    QStyleOptionSlider option;
    q->initStyleOption(&option);
    const bool enabled = option.state & QStyle::State_Enabled;

    QPainter painter(q);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);

    const int x = handleX();
    const qreal y = q->height() - trackFromBottom;
    const QRectF track(margin - handleRadius, y - trackHeight / 2.0,
                       q->width() - 2.0 * (margin - handleRadius), trackHeight);
    QRectF filled = track;
    if (option.upsideDown)
        filled.setLeft(x);
    else
        filled.setRight(x);
    painter.setBrush(QColor(palette::lineStrong));
    painter.drawRoundedRect(track, trackHeight / 2.0, trackHeight / 2.0);
    painter.setBrush(QColor(enabled ? palette::accent : palette::accentDeep));
    painter.drawRoundedRect(filled, trackHeight / 2.0, trackHeight / 2.0);

    const QColor handle = !enabled   ? QColor(palette::inkDim).darker(170)
                          : dragging ? hint
                                     : QColor(palette::ink);
    painter.setBrush(QColor(palette::page)); // a gap that lifts the handle off the track
    painter.drawEllipse(QPointF(x, y), handleRadius + 2, handleRadius + 2);
    painter.setBrush(handle);
    painter.drawEllipse(QPointF(x, y), handleRadius, handleRadius);

    const QColor ground = dragging ? hint : QColor(enabled ? palette::panel : palette::line);
    const QRectF bubble(x - bubbleWidth / 2.0, 1, bubbleWidth, bubbleHeight);
    static const QPainterPath shape = bubbleShape();
    painter.fillPath(shape.translated(x, 0), ground);

    QFont digits = q->font();
    digits.setPixelSize(digitPixels);
    digits.setBold(true);
    painter.setFont(digits);
    painter.setPen(!enabled ? QColor(palette::inkDim) : readableOn(ground));
    painter.drawText(bubble, Qt::AlignCenter, QString::number(qint64(q->sliderPosition()) + offset));
    if (option.state & QStyle::State_HasFocus)
        drawFocusRing(option, &painter, 2, 6);
}

} // namespace settings
