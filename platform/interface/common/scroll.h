#pragma once

#include "common/export.h"

#include <QObject>
#include <QPoint>
#include <QRect>
#include <QScrollBar>

class QScrollArea;

namespace cm {

class ScrollBarPrivate;
class ScrollManagePrivate;

/// A vertical scroll bar of the unit's look, at a fixed place. Thread: GUI.
class COMMON_EXPORT ScrollBar : public QScrollBar
{
    Q_OBJECT
public:
    /// geometry: px in the parent, which owns the bar; without one (null) it is a window of its own and the
    /// caller's. It holds against a scroll area that would lay the bar out. style: 0 = thin bar with a
    /// touchable handle (the only one that the unit uses); any other number is taken as 0.
    ScrollBar(QWidget* parent, const QRect& geometry, int style);
    ~ScrollBar() override;

    /// No width: a scroll area leaves no room for a bar that has a place of its own.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;

private:
    friend class ScrollBarPrivate;
    ScrollBarPrivate* d;
    Q_DISABLE_COPY(ScrollBar)
};

/// Kinetic scrolling of an area by finger. The manager is a child of the area that it manages: it goes with
/// it at the latest, and deleting it earlier leaves the area as it was found. A newer manager of the same
/// area takes over. Thread: GUI.
class COMMON_EXPORT ScrollManage : public QObject
{
    Q_OBJECT
public:
    /// vertical, horizontal: which way a finger drags. With both false it only offers scrollToPos(). Without
    /// an area (null, logged) it does nothing and is the caller's.
    ScrollManage(QScrollArea* area, bool vertical, bool horizontal);
    ~ScrollManage() override;

    /// Brings pos (px in the contents) to the upper left corner of the view, clamped to what can be scrolled;
    /// animated: glides there in 300 ms, else at once. A manager that another one has replaced does nothing.
    void scrollToPos(const QPoint& pos, bool animated);

private:
    ScrollManagePrivate* d;
    Q_DISABLE_COPY(ScrollManage)
};

} // namespace cm
