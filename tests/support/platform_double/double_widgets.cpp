#include "common/customslider.h"
#include "common/pushbutton.h"
#include "common/scroll.h"
#include "tests/support/platform_double/platform_double.h"

#include <QMouseEvent>
#include <QPointer>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>

using platform_double::record;
using platform_double::written;

namespace cm {

class PushButtonPrivate
{
public:
    QPointer<QPushButton> button;
};

class ScrollManagePrivate
{
public:
    QScrollArea* area = nullptr;
};

} // namespace cm

namespace settings {

class CustomSlider_2Private
{
public:
    int offset = 0;
    QColor hint;
    bool dragging = false;
    int valueBefore = 0; ///< the touch
};

} // namespace settings

namespace {

QList<cm::PushButton*> wrappers;
QHash<cm::PushButton*, QPointer<QPushButton>> wrapped;
QList<settings::CustomSlider_2*> allSliders;
QHash<settings::CustomSlider_2*, settings::CustomSlider_2Private*> sliderState;
QList<cm::ScrollManage*> managers;

QString text(const QRect& rect)
{
    return QStringLiteral("%1,%2 %3x%4").arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height());
}

} // namespace

namespace platform_double {

// Widgets that live on stay known: a test may reset the lines while its page stands.
void resetWidgets()
{
}

QList<cm::PushButton*> pushButtons()
{
    return wrappers;
}

QPushButton* buttonOf(cm::PushButton* wrapper)
{
    return wrapped.value(wrapper);
}

cm::PushButton* wrapperOf(QPushButton* button)
{
    for (cm::PushButton* wrapper : std::as_const(wrappers)) {
        if (wrapped.value(wrapper) == button)
            return wrapper;
    }
    return nullptr;
}

QList<settings::CustomSlider_2*> sliders()
{
    return allSliders;
}

int offsetOf(settings::CustomSlider_2* slider)
{
    return sliderState.value(slider)->offset;
}

QColor hintColorOf(settings::CustomSlider_2* slider)
{
    return sliderState.value(slider)->hint;
}

QList<cm::ScrollManage*> scrollManagers()
{
    return managers;
}

} // namespace platform_double

namespace cm {

PushButton::PushButton(QPushButton* button, QObject* parent)
    : QObject(parent)
    , d(new PushButtonPrivate)
{
    if (!button) {
        qWarning("PushButton: there is no button to listen to");
        return;
    }
    d->button = button;
    wrappers.append(this);
    wrapped.insert(this, button);
    record(platform_double::Widget, QStringLiteral("PushButton(%1)").arg(button->objectName()));
    connect(button, &QPushButton::clicked, this, &PushButton::shortClicked);
}

PushButton::~PushButton()
{
    wrappers.removeOne(this);
    wrapped.remove(this);
    delete d;
}

ScrollBar::ScrollBar(QWidget* parent, const QRect& geometry, int style)
    : QScrollBar(Qt::Vertical, parent)
    , d(nullptr)
{
    setGeometry(geometry);
    record(platform_double::Widget, QStringLiteral("ScrollBar(%1, %2)").arg(text(geometry)).arg(style));
}

ScrollBar::~ScrollBar() = default;

QSize ScrollBar::sizeHint() const
{
    return QScrollBar::sizeHint();
}

QSize ScrollBar::minimumSizeHint() const
{
    return QScrollBar::minimumSizeHint();
}

bool ScrollBar::event(QEvent* event)
{
    return QScrollBar::event(event);
}

ScrollManage::ScrollManage(QScrollArea* area, bool vertical, bool horizontal)
    : QObject(area)
    , d(new ScrollManagePrivate)
{
    if (!area) {
        qWarning("ScrollManage: there is no area to scroll");
        return;
    }
    for (ScrollManage* older : std::as_const(managers)) {
        if (older->d->area == area)
            older->d->area = nullptr; // replaced
    }
    d->area = area;
    managers.append(this);
    record(platform_double::Widget, QStringLiteral("ScrollManage(%1, %2, %3)")
                                        .arg(area->objectName(), written(vertical), written(horizontal)));
}

ScrollManage::~ScrollManage()
{
    managers.removeOne(this);
    delete d;
}

void ScrollManage::scrollToPos(const QPoint& pos, bool animated)
{
    record(platform_double::Widget, QStringLiteral("ScrollManage.scrollToPos(%1,%2, %3)")
                                        .arg(pos.x())
                                        .arg(pos.y())
                                        .arg(written(animated)));
    if (!d->area)
        return;
    d->area->verticalScrollBar()->setValue(pos.y());
    d->area->horizontalScrollBar()->setValue(pos.x());
}

} // namespace cm

namespace settings {

CustomSlider_2::CustomSlider_2(QWidget* parent, const QRect& geometry, int style)
    : QSlider(Qt::Horizontal, parent)
    , d(new CustomSlider_2Private)
{
    setGeometry(geometry);
    allSliders.append(this);
    sliderState.insert(this, d);
    record(platform_double::Widget, QStringLiteral("CustomSlider_2(%1, %2)").arg(text(geometry)).arg(style));
}

CustomSlider_2::~CustomSlider_2()
{
    allSliders.removeOne(this);
    sliderState.remove(this);
    delete d;
}

void CustomSlider_2::setOffset(int offset)
{
    d->offset = offset;
    record(platform_double::Widget, QStringLiteral("CustomSlider_2.setOffset(%1)").arg(offset));
}

void CustomSlider_2::setHintColor(const QColor& color)
{
    d->hint = color;
    record(platform_double::Widget, QStringLiteral("CustomSlider_2.setHintColor(%1)").arg(color.name()));
}

// A press or move anywhere maps the width to the range; a release settles. Disabling or hiding it takes the
// touch back.
bool CustomSlider_2::event(QEvent* event)
{
    if (!isEnabled() || event->type() == QEvent::Hide) {
        if (std::exchange(d->dragging, false))
            setValue(d->valueBefore);
        return QSlider::event(event);
    }
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        d->dragging = true;
        d->valueBefore = value();
        Q_FALLTHROUGH();
    case QEvent::MouseMove:
        if (d->dragging) {
            const int span = maximum() - minimum();
            const int x = static_cast<QMouseEvent*>(event)->pos().x();
            setValue(minimum() + (x * span + width() / 2) / qMax(1, width()));
        }
        return true;
    case QEvent::MouseButtonRelease:
        if (std::exchange(d->dragging, false))
            emit valSave(value());
        return true;
    default:
        return QSlider::event(event);
    }
}

} // namespace settings
