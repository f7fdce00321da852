#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

/// Text forms of calls in the journal: `setValue("lpfFreq", 0, 3, true)`. Strings stand in double quotes with
/// line ends escaped, so that an entry is one line, and are cut after 200 characters; numbers are as
/// QString::number writes them. Thread: any.
namespace cm {

inline QString journalText(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

inline QString journalText(int value)
{
    return QString::number(value);
}

inline QString journalText(float value)
{
    return QString::number(static_cast<double>(value), 'g', 6);
}

inline QString journalText(const QString& value)
{
    // A stored text may be a megabyte long; nobody reads that in a journal of 2000 entries.
    constexpr int longest = 200;
    QString text = value.size() > longest ? value.left(longest) + QStringLiteral("...") : value;
    text.replace(QLatin1Char('\n'), QLatin1String("\\n")).replace(QLatin1Char('\r'), QLatin1String("\\r"));
    return QLatin1Char('"') + text + QLatin1Char('"');
}

inline QString journalText(const QVariant& value)
{
    switch (static_cast<QMetaType::Type>(value.type())) {
    case QMetaType::Bool:
        return journalText(value.toBool());
    case QMetaType::Int:
        return journalText(value.toInt());
    case QMetaType::QString:
        return journalText(value.toString());
    default:
        return QLatin1String(value.typeName()) + QLatin1Char('(') + value.toString() + QLatin1Char(')');
    }
}

template <typename... Arguments>
QString journalCall(const char* operation, const Arguments&... arguments)
{
    const QStringList list{journalText(arguments)...};
    return QLatin1String(operation) + QLatin1Char('(') + list.join(QStringLiteral(", ")) + QLatin1Char(')');
}

} // namespace cm
