#pragma once

#include "common/settingstable.h"

#include <QString>
#include <QVariant>

/// A page's reads and writes of the settings' table: key and default are the row's, the value is what is
/// stored, also outside the row's range. A Store is mem::SettingsFunc or mem::SettingsExe; both reach the
/// same values; it is never null. member: which of a family's keys, 0 .. count - 1; ignored for any other
/// row. Thread: GUI.
namespace stored {

template <typename Store>
bool flag(Store* store, const mem::Setting& row)
{
    return store->getValue(mem::keyOf(row), row.defaultValue != 0);
}

template <typename Store>
int number(Store* store, const mem::Setting& row, int member = 0)
{
    return store->getValue(mem::keyOf(row, member), row.defaultValue);
}

template <typename Store>
QString text(Store* store, const mem::Setting& row)
{
    return store->getValue(mem::keyOf(row), QString::fromLatin1(row.defaultText));
}

/// Durable when it returns.
template <typename Store>
void write(Store* store, const mem::Setting& row, const QVariant& value, int member = 0)
{
    store->setValue(mem::keyOf(row, member), mem::defaultOf(row), value, true);
}

} // namespace stored
