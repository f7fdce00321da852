#include "headunit/inspector/settingsmodel.h"

#include "common/settingstable.h"
#include "platform/common/settings/settingsstore.h"

#include <QBrush>
#include <QGuiApplication>
#include <QMap>
#include <QPalette>

#include <algorithm>

namespace headunit {

namespace {

/// Of every key that the unit knows.
const QMap<QString, QVariant::Type>& knownTypes()
{
    static const QMap<QString, QVariant::Type> types = [] {
        QMap<QString, QVariant::Type> all;
        for (const mem::Setting& row : mem::settings) {
            for (int member = 0; member < row.count; ++member)
                all.insert(mem::keyOf(row, member), mem::defaultOf(row).type());
        }
        return all;
    }();
    return types;
}

QString typeName(QVariant::Type type)
{
    return type == QVariant::String ? QStringLiteral("string") : QLatin1String(QVariant::typeToName(type));
}

} // namespace

SettingsModel::SettingsModel(QObject* parent)
    : QAbstractTableModel(parent)
{
    QMap<QString, bool> keys;
    const QMap<QString, QVariant> values = mem::SettingsStore::instance()->values();
    for (auto it = knownTypes().cbegin(); it != knownTypes().cend(); ++it)
        keys.insert(it.key(), true);
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        keys.insert(it.key(), true);
    m_keys = keys.keys();
    connect(mem::SettingsStore::instance(), &mem::SettingsStore::valueChanged, this,
            &SettingsModel::onValueChanged);
}

int SettingsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_keys.size();
}

int SettingsModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

QVariant::Type SettingsModel::typeOf(const QString& key) const
{
    const QVariant value = mem::SettingsStore::instance()->value(key);
    return value.isValid() ? value.type() : knownTypes().value(key, QVariant::String);
}

QVariant SettingsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    const QString key = m_keys.at(index.row());
    const QVariant value = mem::SettingsStore::instance()->value(key);
    switch (role) {
    case Qt::DisplayRole:
        if (index.column() == Key)
            return key;
        if (index.column() == Type)
            return typeName(typeOf(key));
        return value.isValid() ? value.toString() : tr("not set");
    case Qt::EditRole:
        if (index.column() != Value)
            return data(index, Qt::DisplayRole);
        return value.isValid() ? value : QVariant(typeOf(key));
    case Qt::ForegroundRole:
        if (!value.isValid())
            return QGuiApplication::palette().brush(QPalette::Disabled, QPalette::Text);
        return QVariant();
    default:
        return QVariant();
    }
}

QVariant SettingsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    return QStringList{tr("Key"), tr("Type"), tr("Value")}.value(section);
}

Qt::ItemFlags SettingsModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    return index.column() == Value ? flags | Qt::ItemIsEditable : flags;
}

bool SettingsModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || index.column() != Value || role != Qt::EditRole)
        return false;
    const QString key = m_keys.at(index.row());
    QVariant typed = value;
    if (!typed.convert(int(typeOf(key)))) // says false for "abc" as a number, too
        return false;
    return mem::SettingsStore::instance()->edit(key, typed);
}

void SettingsModel::unset(const QModelIndex& index)
{
    if (index.isValid())
        mem::SettingsStore::instance()->edit(m_keys.at(index.row()), QVariant());
}

int SettingsModel::rowOf(const QString& key) const
{
    const auto it = std::lower_bound(m_keys.cbegin(), m_keys.cend(), key);
    return it != m_keys.cend() && *it == key ? int(it - m_keys.cbegin()) : -1;
}

void SettingsModel::onValueChanged(const QString& key, const QVariant& value)
{
    int row = rowOf(key);
    if (row >= 0 && !value.isValid() && !knownTypes().contains(key)) {
        beginRemoveRows(QModelIndex(), row, row);
        m_keys.removeAt(row);
        endRemoveRows();
    } else if (row >= 0) {
        emit dataChanged(index(row, 0), index(row, ColumnCount - 1));
    } else if (value.isValid()) {
        row = int(std::lower_bound(m_keys.cbegin(), m_keys.cend(), key) - m_keys.cbegin());
        beginInsertRows(QModelIndex(), row, row);
        m_keys.insert(row, key);
        endInsertRows();
    }
}

} // namespace headunit
