#pragma once

#include "tests/support/platform_double/lines.h"

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

/// What a finger does on the whole screen (1024 x 600), and every platform call that follows.
namespace hubtouches {

using namespace platform_double;

/// In the order of the pages' indexes.
enum Page : int { Equalizer, Levels, Crossover, Alignment, Presets, Volumes, PageCount };

/// A stored value; or, with one of these names, what the audio service answers.
struct Given
{
    QString name;
    QVariant value;
};
const QString currentType = QStringLiteral("type");
const QString currentBalance = QStringLiteral("balance");
const QString currentFader = QStringLiteral("fader");

/// Fingers are written `T x,y` (touch and lift), `P x,y` (press), `M x,y` (move), `R x,y` (lift), parted by
/// blanks and in pixels of the screen: "P247,295 M400,295 R400,295".
struct Row
{
    QString name;
    Page page;
    QVector<Given> given;
    QString finger;
    QStringList calls;
    QString before = {}; ///< touches whose calls are of no interest
    /// How often these are read is the page's own affair; every other call is compared.
    QString freeReads = {};
};

const QString readBalanceFader = QStringLiteral("AudioService.getBalanceFader()");
/// A back request that reached the application.
const QString back = QStringLiteral("back");

/// "T<x>,<y>"
inline QString touchAt(int x, int y)
{
    return QStringLiteral("T%1,%2").arg(x).arg(y);
}

} // namespace hubtouches
