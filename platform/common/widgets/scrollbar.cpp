#include "common/scroll.h"

#include "platform/common/widgets/fingercontrol.h"
#include "platform/common/widgets/focusring.h"
#include "platform/common/widgets/palette.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>

namespace cm {

namespace {

constexpr int barWidth = 6;
constexpr int shortestHandle = 48;

} // namespace

/// Behaviour and look of the bar; the class itself only passes its events here.
class ScrollBarPrivate
{
public:
    ScrollBarPrivate(ScrollBar* bar, const QRect& geometry)
        : q(bar)
        , place(geometry)
    {
    }

    QRect handleRect() const;
    void changed(const QEvent* event);
    void pressed(QMouseEvent* event);
    void moved(QMouseEvent* event);
    void released(QMouseEvent* event);
    void paint();

    ScrollBar* q;
    const QRect place;
    int grip = -1; ///< where the finger holds the handle, in px from its top; -1: not held
};

ScrollBar::ScrollBar(QWidget* parent, const QRect& geometry, int style)
    : QScrollBar(Qt::Vertical, parent)
    , d(new ScrollBarPrivate(this, geometry))
{
    Q_UNUSED(style) // there is one look; see the header
    setContextMenuPolicy(Qt::NoContextMenu);
    setGeometry(geometry);
}

ScrollBar::~ScrollBar()
{
    delete d;
}

QSize ScrollBar::sizeHint() const
{
    return QSize(0, d->place.height());
}

QSize ScrollBar::minimumSizeHint() const
{
    return QSize(0, 0);
}

bool ScrollBar::event(QEvent* event)
{
    if (passFinger(this, d, event))
        return true;
    if (event->type() == QEvent::Paint) {
        d->paint();
        return true;
    }
    const bool handled = QScrollBar::event(event);
    d->changed(event);
    return handled;
}

QRect ScrollBarPrivate::handleRect() const
{
    const int range = q->maximum() - q->minimum();
    const int pages = range + q->pageStep();
    const int height = q->height();
    const int length =
        pages > 0 ? qBound(qMin(shortestHandle, height), int(qint64(height) * q->pageStep() / pages), height)
                  : height;
    const int y = QStyle::sliderPositionFromValue(q->minimum(), q->maximum(), q->sliderPosition(),
                                                  height - length, q->invertedAppearance());
    return QRect(0, y, q->width(), length);
}

void ScrollBarPrivate::changed(const QEvent* event)
{
    switch (event->type()) {
    case QEvent::Move:
    case QEvent::Resize:
        // A scroll area lays its bars out along its edge; this one has a place of its own.
        if (q->geometry() != place)
            q->setGeometry(place);
        break;
    case QEvent::Hide:
    case QEvent::EnabledChange:
        if (grip >= 0 && (!q->isVisible() || !q->isEnabled())) {
            grip = -1;
            q->setSliderDown(false);
        }
        break;
    default:
        break;
    }
}

void ScrollBarPrivate::pressed(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || q->maximum() <= q->minimum()) {
        event->ignore();
        return;
    }
    event->accept();
    const QRect handle = handleRect();
    const bool onHandle = event->y() >= handle.top() && event->y() <= handle.bottom();
    grip = onHandle ? event->y() - handle.top() : handle.height() / 2; // beside it: it comes to the finger
    q->setSliderDown(true);
    moved(event);
    q->update();
}

void ScrollBarPrivate::moved(QMouseEvent* event)
{
    if (grip < 0) {
        event->ignore();
        return;
    }
    event->accept();
    const int span = qMax(1, q->height() - handleRect().height());
    q->setSliderPosition(QStyle::sliderValueFromPosition(q->minimum(), q->maximum(), event->y() - grip, span,
                                                         q->invertedAppearance()));
}

void ScrollBarPrivate::released(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || grip < 0) {
        event->ignore();
        return;
    }
    event->accept();
    grip = -1;
    q->setSliderDown(false);
    q->update();
}

void ScrollBarPrivate::paint()
{
    if (q->maximum() <= q->minimum())
        return; // nothing to scroll, nothing to show
    QPainter painter(q);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const auto bar = [this, &painter](int top, int length, qreal thickness, QRgb color) {
        const QRectF r((q->width() - thickness) / 2.0, top, thickness, length);
        painter.setBrush(QColor(color));
        painter.drawRoundedRect(r, thickness / 2.0, thickness / 2.0);
    };
    const QRect handle = handleRect();
    bar(0, q->height(), barWidth - 2, palette::lineStrong);
    const bool held = grip >= 0;
    bar(handle.top(), handle.height(), held ? barWidth + 4 : barWidth,
        !q->isEnabled() ? palette::panel
        : held          ? palette::accentBright
                        : palette::inkDim);
    QStyleOption option;
    option.initFrom(q);
    if (option.state & QStyle::State_HasFocus)
        drawFocusRing(option, &painter, 2, 6);
}

} // namespace cm
