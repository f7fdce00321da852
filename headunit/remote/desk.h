#pragma once

#include "headunit/remote/deskchange.h"

#include <QObject>

class QWidget;

namespace headunit {

class UnitWindow;

/// The program's windows as one picture: the unit's on the left, the inspector beside it wherever they lie on
/// the display, dialogs and lists over the window that they belong to. Reads what the windows have painted
/// and makes nothing paint. While nobody watches it does nothing, while nothing is painted it sleeps.
/// Thread: GUI.
class Desk : public QObject
{
    Q_OBJECT
public:
    /// unit: outlives this object.
    explicit Desk(UnitWindow* unit);

    struct Placed
    {
        QWidget* window = nullptr;
        QPoint pos; ///< of its upper left corner on the desk
    };
    /// What takes a touch there; no window where there is none. pos: on the desk.
    Placed at(const QPoint& pos) const;

public slots:
    /// true: the next change is the whole picture.
    void watch(bool on);
    /// Asks for one change: at once when there is one, else as soon as there is.
    void want();

signals:
    void changed(const headunit::DeskChange& change);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool event(QEvent* event) override;

private:
    void lookSoon();
    void look();
    /// The windows that are shown and have been painted, the lowest first.
    QVector<Placed> placed() const;
    DeskLayout layoutOf(const QSize& desk) const;
    QImage compose(const QVector<Placed>& windows, const QSize& desk);

    UnitWindow* const m_unit;
    DeskLayout m_layout; ///< as last told
    QImage m_picture;    ///< as last told
    QImage m_composed;   ///< where there is more than one window
    bool m_watched = false;
    bool m_wanted = false;
    bool m_painted = false; ///< something, since the last look
    bool m_looksSoon = false;
};

} // namespace headunit
