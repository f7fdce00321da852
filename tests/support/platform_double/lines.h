#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

/// The lines that the recording platform writes, for the double itself and for tests that expect them.
namespace platform_double {

inline QString written(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}
inline QString written(int value)
{
    return QString::number(value);
}
inline QString written(double value)
{
    return QString::number(value, 'g', 6);
}
inline QString written(const QVariant& value)
{
    return value.type() == QVariant::String ? QLatin1Char('"') + value.toString() + QLatin1Char('"')
                                            : value.toString();
}

/// face: Func or Exe.
inline QString readOf(const char* face, const QString& key, const QVariant& byDefault)
{
    return QStringLiteral("Settings%1.getValue(\"%2\", %3)")
        .arg(QLatin1String(face), key, written(byDefault));
}

inline QString writeOf(const char* face, const QString& key, const QVariant& byDefault, const QVariant& value,
                       bool commit = true)
{
    return QStringLiteral("Settings%1.setValue(\"%2\", %3, %4, %5)")
        .arg(QLatin1String(face), key, written(byDefault), written(value), written(commit));
}

/// service("setEQType", 6, true): "AudioService.setEQType(6, true)".
template <typename... Arguments>
QString service(const char* operation, Arguments... arguments)
{
    const QStringList list{written(arguments)...};
    return QStringLiteral("AudioService.%1(%2)")
        .arg(QLatin1String(operation), list.join(QStringLiteral(", ")));
}

const QString keyBeep = QStringLiteral("AudioService.doBeep(0)");
const QString mcuBeep = QStringLiteral("McuManager.triggerBeep(0)");

} // namespace platform_double
