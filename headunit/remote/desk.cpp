#include "headunit/remote/desk.h"

#include "headunit/front/screen.h"
#include "headunit/front/unitwindow.h"

#include <QApplication>
#include <QBackingStore>
#include <QEvent>
#include <QPainter>
#include <QVarLengthArray>
#include <QWindow>

#include <algorithm>
#include <cstring>

namespace headunit {

namespace {

constexpr int tileWidth = 32, tileHeight = 16;

const QEvent::Type lookEvent = QEvent::Type(QEvent::registerEventType());

/// What the window has painted so far; null before it has begun. The pixels stay the window's: the picture
/// is good until it paints again.
QImage paintedBy(const QWidget* window)
{
    const QBackingStore* store = window->backingStore();
    QPaintDevice* device = store ? const_cast<QBackingStore*>(store)->paintDevice() : nullptr;
    if (!device || device->devType() != QInternal::Image)
        return QImage();
    const QImage& image = *static_cast<QImage*>(device);
    const QSize size = image.size().boundedTo(window->size());
    return QImage(image.constBits(), size.width(), size.height(), int(image.bytesPerLine()), image.format());
}

/// Where windows of a kind lie above others.
int heightOf(const QWidget* window)
{
    switch (window->windowType()) {
    case Qt::ToolTip:
        return 3;
    case Qt::Popup:
        return 2;
    case Qt::Window:
    case Qt::Widget:
        return 0;
    default: // dialogs and tools
        return 1;
    }
}

QRect placeOf(const Desk::Placed& placed)
{
    return {placed.pos, placed.window->size()};
}

/// Copies what differs from `now` into `kept`, both RGB32 and of one size; returns where that was.
QRegion update(QImage* kept, const QImage& now)
{
    const int width = now.width(), height = now.height();
    QRegion changed;
    for (int top = 0; top < height; top += tileHeight) {
        const int bottom = qMin(top + tileHeight, height);
        QVarLengthArray<bool, maxDeskSize / tileWidth> differs((width + tileWidth - 1) / tileWidth);
        std::fill(differs.begin(), differs.end(), false);
        bool any = false;
        for (int y = top; y < bottom; ++y) {
            const uchar* line = now.constScanLine(y);
            uchar* keptLine = kept->scanLine(y);
            if (std::memcmp(line, keptLine, std::size_t(width) * 4) == 0)
                continue;
            any = true;
            for (int tile = 0; tile < differs.size(); ++tile) {
                const int from = tile * tileWidth * 4, to = qMin(from + tileWidth * 4, width * 4);
                if (std::memcmp(line + from, keptLine + from, std::size_t(to - from)) == 0)
                    continue;
                std::memcpy(keptLine + from, line + from, std::size_t(to - from));
                differs[tile] = true;
            }
        }
        for (int tile = 0; any && tile < differs.size(); ++tile) {
            if (!differs[tile])
                continue;
            const int first = tile;
            while (tile < differs.size() && differs[tile])
                ++tile;
            changed +=
                QRect(QPoint(first * tileWidth, top), QPoint(qMin(tile * tileWidth, width) - 1, bottom - 1));
        }
    }
    return changed;
}

} // namespace

Desk::Desk(UnitWindow* unit)
    : m_unit(unit)
{
}

void Desk::watch(bool on)
{
    if (on == m_watched)
        return;
    m_watched = on;
    m_picture = QImage();
    m_composed = QImage();
    m_painted = true;
    if (on) {
        qApp->installEventFilter(this);
        lookSoon();
    } else {
        qApp->removeEventFilter(this);
    }
}

void Desk::want()
{
    m_wanted = true;
    lookSoon();
}

QVector<Desk::Placed> Desk::placed() const
{
    QVector<QWidget*> windows;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && !window->isMinimized() && !paintedBy(window).isNull())
            windows.append(window);
    }
    std::stable_sort(windows.begin(), windows.end(), [this](const QWidget* one, const QWidget* other) {
        const bool first = one == m_unit, second = other == m_unit;
        return first != second ? first : heightOf(one) < heightOf(other);
    });
    QVector<Placed> all;
    int right = 0;
    for (QWidget* window : std::as_const(windows)) {
        if (heightOf(window) == 0) {
            all.append({window, {right, 0}});
            right += window->width();
            continue;
        }
        // As it lies to the window that it belongs to, and to the unit when it belongs to none.
        const QWidget* owner = window->parentWidget() ? window->parentWidget()->window() : m_unit;
        const auto found = std::find_if(
            all.begin(), all.end(), [owner](const Placed& candidate) { return candidate.window == owner; });
        const QPoint pos = found == all.end() ? QPoint() : found->pos - owner->geometry().topLeft();
        all.append({window, pos + window->geometry().topLeft()});
    }
    return all;
}

Desk::Placed Desk::at(const QPoint& pos) const
{
    const QVector<Placed> windows = placed();
    const auto found = std::find_if(windows.rbegin(), windows.rend(), [&pos](const Placed& candidate) {
        return candidate.window->windowType() != Qt::ToolTip && placeOf(candidate).contains(pos);
    });
    return found == windows.rend() ? Placed() : *found;
}

bool Desk::eventFilter(QObject*, QEvent* event)
{
    switch (event->type()) {
    case QEvent::UpdateRequest:
    case QEvent::Paint:
    case QEvent::Show:
    case QEvent::Hide:
    case QEvent::Move:
        m_painted = true;
        lookSoon();
        break;
    default:
        break;
    }
    return false;
}

void Desk::lookSoon()
{
    if (!m_watched || !m_wanted || !m_painted || m_looksSoon)
        return;
    m_looksSoon = true;
    // Behind the painting itself, which windows ask for at low priority.
    QCoreApplication::postEvent(this, new QEvent(lookEvent), Qt::LowEventPriority - 1);
}

bool Desk::event(QEvent* event)
{
    if (event->type() != lookEvent)
        return QObject::event(event);
    m_looksSoon = false;
    if (m_watched)
        look();
    return true;
}

DeskLayout Desk::layoutOf(const QSize& desk) const
{
    DeskLayout layout;
    layout.size = desk;
    layout.unit = QRect(QPoint(), m_unit->size());
    layout.screen = m_unit->screen()->geometry();
    const auto keys = m_unit->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (const QWidget* key : keys) {
        if (!key->accessibleName().isEmpty())
            layout.keys.append({key->accessibleName(), key->toolTip(), key->geometry()});
    }
    return layout;
}

QImage Desk::compose(const QVector<Placed>& windows, const QSize& desk)
{
    if (windows.size() == 1) {
        const QImage alone = paintedBy(windows.first().window);
        if (alone.size() == desk && alone.format() == QImage::Format_RGB32)
            return alone;
    }
    if (m_composed.size() != desk)
        m_composed = QImage(desk, QImage::Format_RGB32);
    m_composed.fill(Qt::black);
    QPainter painter(&m_composed);
    for (const Placed& placed : windows)
        painter.drawImage(placed.pos, paintedBy(placed.window));
    return m_composed;
}

void Desk::look()
{
    m_painted = false;
    const QVector<Placed> windows = placed();
    QRect all;
    for (const Placed& placed : windows) {
        if (heightOf(placed.window) < 2) // lists and hints don't make the desk larger for a moment
            all |= placeOf(placed);
    }
    const QSize desk = QSize(all.right() + 1, all.bottom() + 1).boundedTo(QSize(maxDeskSize, maxDeskSize));
    if (desk.isEmpty())
        return;

    const QImage now = compose(windows, desk);
    const DeskLayout layout = layoutOf(desk);
    QRegion region;
    if (m_picture.size() != desk) {
        m_picture = now.copy();
        region = QRect(QPoint(), desk);
    } else {
        region = update(&m_picture, now);
    }
    if (region.isEmpty() && layout == m_layout)
        return;
    m_layout = layout;
    DeskChange change{layout, {}};
    for (const QRect& rect : region)
        change.patches.append({rect.topLeft(), m_picture.copy(rect)});
    m_wanted = false;
    emit changed(change);
}

} // namespace headunit
