#pragma once

#include "common/settingstable.h"

#include <QString>
#include <QVariant>

/// A page's reads and writes of the settings' table: key and default are the row's, the value is what is
/// stored, also outside the row's range. A Store is mem::SettingsFunc or mem::SettingsExe; both reach the
/// same values. member: which of a family's keys, ignored for any other row.
namespace stored {

inline QString key(const mem::Setting& row, int member = 0)
{
    const QString key = QString::fromLatin1(row.key);
    return row.count > 1 ? key.arg(member) : key;
}

inline QVariant defaultOf(const mem::Setting& row)
{
    switch (row.type) {
    case mem::SettingType::Bool:
        return row.defaultValue != 0;
    case mem::SettingType::Int:
        return row.defaultValue;
    case mem::SettingType::Text:
        break;
    }
    return QString::fromLatin1(row.defaultText);
}

template <typename Store>
bool flag(Store* store, const mem::Setting& row)
{
    return store->getValue(key(row), row.defaultValue != 0);
}

template <typename Store>
int number(Store* store, const mem::Setting& row, int member = 0)
{
    return store->getValue(key(row, member), row.defaultValue);
}

template <typename Store>
QString text(Store* store, const mem::Setting& row)
{
    return store->getValue(key(row), QString::fromLatin1(row.defaultText));
}

/// Durable when it returns.
template <typename Store>
void write(Store* store, const mem::Setting& row, const QVariant& value, int member = 0)
{
    store->setValue(key(row, member), defaultOf(row), value, true);
}

} // namespace stored
