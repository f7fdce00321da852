#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

/// What a finger does on the whole screen (1024 x 600), and every platform call that follows.
namespace hubtouches {

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

// What the recording platform writes.

const QString beep = QStringLiteral("AudioService.doBeep(0)");
const QString mcuBeep = QStringLiteral("McuManager.triggerBeep(0)");
const QString readBalanceFader = QStringLiteral("AudioService.getBalanceFader()");
/// A back request that reached the application.
const QString back = QStringLiteral("back");

inline QString quoted(const QVariant& value)
{
    return value.type() == QVariant::String ? QLatin1Char('"') + value.toString() + QLatin1Char('"')
                                            : value.toString();
}

inline QString readOf(const char* path, const QString& key, const QVariant& byDefault)
{
    return QStringLiteral("Settings%1.getValue(\"%2\", %3)").arg(QLatin1String(path), key, quoted(byDefault));
}

inline QString writeOf(const char* path, const QString& key, const QVariant& byDefault, const QVariant& value,
                       bool commit = true)
{
    return QStringLiteral("Settings%1.setValue(\"%2\", %3, %4, %5)")
        .arg(QLatin1String(path), key, quoted(byDefault), quoted(value), QVariant(commit).toString());
}

/// service("setEQType", 6, true): "AudioService.setEQType(6, true)".
template <typename... Arguments>
QString service(const char* operation, Arguments... arguments)
{
    const QStringList list{QVariant(arguments).toString()...};
    return QStringLiteral("AudioService.%1(%2)")
        .arg(QLatin1String(operation), list.join(QStringLiteral(", ")));
}

/// "T<x>,<y>"
inline QString touchAt(int x, int y)
{
    return QStringLiteral("T%1,%2").arg(x).arg(y);
}

} // namespace hubtouches
