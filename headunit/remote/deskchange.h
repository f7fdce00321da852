#pragma once

#include <QImage>
#include <QMetaType>
#include <QRect>
#include <QString>
#include <QVector>

namespace headunit {

/// Pixels of one side of the desk at most; what lies beyond isn't shown.
constexpr int maxDeskSize = 4096;

/// A key of the unit's front, for those who can't see the picture or want it elsewhere.
struct DeskKey
{
    QString name;
    QString hint; ///< what it does, in words
    QRect place;  ///< on the desk
    bool operator==(const DeskKey& other) const
    {
        return name == other.name && hint == other.hint && place == other.place;
    }
};

/// What the desk holds and where.
struct DeskLayout
{
    QSize size;
    QRect unit;   ///< the unit's window
    QRect screen; ///< the unit's screen in it
    QVector<DeskKey> keys;
    bool operator==(const DeskLayout& other) const
    {
        return size == other.size && unit == other.unit && screen == other.screen && keys == other.keys;
    }
};

/// What has changed since the change before.
struct DeskChange
{
    struct Patch
    {
        QPoint pos;
        QImage picture; ///< RGB32
    };
    DeskLayout layout;
    QVector<Patch> patches; ///< apart from each other, within layout.size
};

} // namespace headunit

Q_DECLARE_METATYPE(headunit::DeskChange)
