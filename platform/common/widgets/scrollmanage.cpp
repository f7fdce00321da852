#include "common/scroll.h"

#include <QApplication>
#include <QEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QScrollArea>
#include <QScrollPrepareEvent>
#include <QScroller>
#include <QScrollerProperties>
#include <QVariantAnimation>

namespace cm {

namespace {

constexpr int glideMs = 300;

/// A slider in the area keeps the finger that went down on it.
bool belongsToSlider(const QWidget* viewport, const QPoint& pos)
{
    for (const QWidget* w = viewport->childAt(pos); w && w != viewport; w = w->parentWidget())
        if (qobject_cast<const QAbstractSlider*>(w))
            return w->isEnabled();
    return false;
}

} // namespace

/// Feeds Qt's QScroller with the mouse (Qt makes touches into it) and puts the scroller's results on the
/// scroll bars. Not by QScroller::grabGesture(): that leaves a recognizer behind for every page that ever
/// scrolled, and the scroll area's own handling of the results knows neither which directions are allowed nor
/// which widgets keep their finger.
class ScrollManagePrivate : public QObject
{
    Q_OBJECT
public:
    ScrollManagePrivate(ScrollManage* owner, bool vertical, bool horizontal)
        : QObject(owner)
        , q(owner)
        , m_vertical(vertical)
        , m_horizontal(horizontal)
    {
        m_glide.setDuration(glideMs);
        m_glide.setEasingCurve(QEasingCurve::OutCubic);
        connect(&m_glide, SIGNAL(valueChanged(QVariant)), this, SLOT(onGlide(QVariant)));
    }

    /// Null as soon as the area is being destroyed.
    QScrollArea* area() const { return qobject_cast<QScrollArea*>(q->parent()); }

    bool isActive() const { return m_viewport; }

    void activate()
    {
        if (m_viewport || !area())
            return;
        m_viewport = area()->viewport();
        QScrollerProperties properties = scroller()->scrollerProperties();
        properties.setScrollMetric(QScrollerProperties::DragStartDistance,
                                   0.003); // m: a resting finger trembles
        properties.setScrollMetric(QScrollerProperties::HorizontalOvershootPolicy,
                                   QScrollerProperties::OvershootAlwaysOff);
        properties.setScrollMetric(QScrollerProperties::VerticalOvershootPolicy,
                                   QScrollerProperties::OvershootAlwaysOff);
        scroller()->setScrollerProperties(properties);
        qApp->installEventFilter(this); // a finger that goes down on a key in the area drags, too
    }

    void retire()
    {
        m_glide.stop();
        m_finger = Finger::None;
        if (qApp)
            qApp->removeEventFilter(this);
        if (m_viewport)
            scroller()->stop();
        m_viewport = nullptr;
    }

    void scrollTo(QPoint pos, bool animated)
    {
        QScrollArea* scrollArea = area();
        if (!m_viewport || !scrollArea)
            return;
        m_glide.stop();
        scroller()->stop();
        const QScrollBar* h = scrollArea->horizontalScrollBar();
        const QScrollBar* v = scrollArea->verticalScrollBar();
        pos =
            QPoint(qBound(h->minimum(), pos.x(), h->maximum()), qBound(v->minimum(), pos.y(), v->maximum()));
        const QPoint from(h->value(), v->value());
        if (!animated || from == pos) {
            onGlide(pos);
            return;
        }
        m_glide.setStartValue(from);
        m_glide.setEndValue(pos);
        m_glide.start();
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
            return isInside(watched) &&
                   pressed(static_cast<QWidget*>(watched), static_cast<QMouseEvent*>(event));
        case QEvent::MouseMove:
            return isInside(watched) && moved(static_cast<QMouseEvent*>(event));
        case QEvent::MouseButtonRelease:
            return isInside(watched) && released(static_cast<QMouseEvent*>(event));
        case QEvent::Wheel:
            if (isInside(watched))
                m_glide.stop();
            return false;
        case QEvent::Hide:
            if (watched == m_viewport)
                letGo(); // the page was left; nobody will say that the finger was lifted
            return false;
        case QEvent::ScrollPrepare:
            return watched == m_viewport && prepare(static_cast<QScrollPrepareEvent*>(event));
        case QEvent::Scroll:
            if (watched != m_viewport)
                return false;
            onGlide(static_cast<QScrollEvent*>(event)->contentPos().toPoint());
            event->accept();
            return true;
        default:
            return false;
        }
    }

private slots:
    void onGlide(const QVariant& pos)
    {
        if (QScrollArea* scrollArea = area()) {
            scrollArea->horizontalScrollBar()->setValue(pos.toPoint().x());
            scrollArea->verticalScrollBar()->setValue(pos.toPoint().y());
        }
    }

private:
    enum class Finger {
        None,
        Down, ///< it may still become a touch on what lies under it
        Drags ///< the area has it; nobody else sees it until it is lifted
    };

    QScroller* scroller() const { return QScroller::scroller(m_viewport.data()); }

    bool isInside(QObject* watched) const
    {
        const auto* widget = watched->isWidgetType() ? static_cast<QWidget*>(watched) : nullptr;
        return widget && m_viewport && (widget == m_viewport || m_viewport->isAncestorOf(widget));
    }

    bool input(QScroller::Input kind, const QMouseEvent* event)
    {
        return scroller()->handleInput(kind, m_viewport->mapFromGlobal(event->globalPos()),
                                       qint64(event->timestamp()));
    }

    bool pressed(QWidget* widget, const QMouseEvent* event)
    {
        if (event->button() != Qt::LeftButton)
            return m_finger == Finger::Drags;
        // An event that a child ignores comes again, for its parent.
        if (m_finger != Finger::None && m_pressTime == event->timestamp() && m_pressPos == event->globalPos())
            return m_finger == Finger::Drags;
        letGo();
        m_pressTime = event->timestamp();
        m_pressPos = event->globalPos();
        const bool stopsAFlick = scroller()->state() == QScroller::Scrolling;
        if ((!m_vertical && !m_horizontal) ||
            belongsToSlider(m_viewport, m_viewport->mapFromGlobal(event->globalPos()))) {
            scroller()->stop();
            return false;
        }
        if (!input(QScroller::InputPress, event) && scroller()->state() == QScroller::Inactive)
            return false; // there is nothing to scroll
        m_touched = widget;
        m_finger = stopsAFlick ? Finger::Drags : Finger::Down;
        return stopsAFlick; // it is no touch on the key that happens to be passing
    }

    bool moved(const QMouseEvent* event)
    {
        if (m_finger == Finger::None || !(event->buttons() & Qt::LeftButton))
            return false;
        input(QScroller::InputMove, event);
        if (m_finger == Finger::Down && scroller()->state() == QScroller::Dragging) {
            m_finger = Finger::Drags;
            takeBackPress();
        }
        return m_finger == Finger::Drags;
    }

    bool released(const QMouseEvent* event)
    {
        if (event->button() != Qt::LeftButton || m_finger == Finger::None)
            return false;
        const bool dragged = m_finger == Finger::Drags;
        m_finger = Finger::None;
        input(QScroller::InputRelease, event);
        return dragged;
    }

    void letGo()
    {
        m_glide.stop();
        if (m_finger != Finger::None) {
            m_finger = Finger::None;
            scroller()->stop();
        }
    }

    /// The key under the finger went down at once; it is let go far outside, which is no click. Whatever lies
    /// around it may have taken the press instead.
    void takeBackPress()
    {
        const QPointF outside(-QWIDGETSIZE_MAX, -QWIDGETSIZE_MAX);
        while (m_touched && m_touched != m_viewport) {
            const QPointer<QWidget> around = m_touched->parentWidget();
            QMouseEvent release(QEvent::MouseButtonRelease, outside, outside, outside, Qt::LeftButton,
                                Qt::NoButton, Qt::NoModifier);
            // Past the filters: it is meant for this one alone.
            static_cast<QObject*>(m_touched.data())->event(&release);
            m_touched = around;
        }
    }

    bool prepare(QScrollPrepareEvent* event)
    {
        const QScrollBar* h = area()->horizontalScrollBar();
        const QScrollBar* v = area()->verticalScrollBar();
        const bool movesX = m_horizontal && h->maximum() > h->minimum();
        const bool movesY = m_vertical && v->maximum() > v->minimum();
        if (!movesX && !movesY) {
            event->ignore();
            return true;
        }
        // A direction that may not move is a range without extent at the place where it stands.
        event->setViewportSize(m_viewport->size());
        event->setContentPosRange(
            QRectF(movesX ? h->minimum() : h->value(), movesY ? v->minimum() : v->value(),
                   movesX ? h->maximum() - h->minimum() : 0, movesY ? v->maximum() - v->minimum() : 0));
        event->setContentPos(QPointF(h->value(), v->value()));
        event->accept();
        return true;
    }

    ScrollManage* q;
    QPointer<QWidget> m_viewport; ///< null: another manager has taken over
    QPointer<QWidget> m_touched;  ///< what the finger went down on
    Finger m_finger = Finger::None;
    ulong m_pressTime = 0;
    QPoint m_pressPos; ///< on the screen
    QVariantAnimation m_glide;
    const bool m_vertical;
    const bool m_horizontal;
};

ScrollManage::ScrollManage(QScrollArea* area, bool vertical, bool horizontal)
    : QObject(area)
    , d(new ScrollManagePrivate(this, vertical, horizontal))
{
    if (!area) {
        qWarning("ScrollManage: there is no area to manage");
        return;
    }
    for (ScrollManage* older : area->findChildren<ScrollManage*>(QString(), Qt::FindDirectChildrenOnly))
        if (older != this)
            older->d->retire();
    d->activate();
}

ScrollManage::~ScrollManage()
{
    QScrollArea* area = d->area();
    const bool wasActive = d->isActive();
    d->retire();
    if (!area || !wasActive)
        return; // either the area is going, with everything in it, or another manager has it
    // The area is left as it was found: a manager that had to give way to this one takes it back.
    ScrollManage* previous = nullptr;
    for (ScrollManage* other : area->findChildren<ScrollManage*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (other == this)
            break;
        previous = other;
    }
    if (previous)
        previous->d->activate();
}

void ScrollManage::scrollToPos(const QPoint& pos, bool animated)
{
    d->scrollTo(pos, animated);
}

} // namespace cm

#include "scrollmanage.moc"
