#include "headunit/inspector/journalmodel.h"

#include <QStringList>

namespace headunit {

JournalModel::JournalModel(QObject* parent)
    : QAbstractTableModel(parent)
    , m_entries(cm::Journal::instance()->entries())
{
    connect(cm::Journal::instance(), &cm::Journal::recorded, this, &JournalModel::append);
}

int JournalModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_entries.size();
}

int JournalModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

QVariant JournalModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || role != Qt::DisplayRole)
        return QVariant();
    const cm::Journal::Entry& entry = m_entries.at(index.row());
    switch (index.column()) {
    case Time:
        return entry.time.toString(QStringLiteral("hh:mm:ss.zzz"));
    case Subsystem:
        return entry.subsystem;
    case Operation:
        return entry.operation;
    default:
        return QVariant();
    }
}

QVariant JournalModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    return QStringList{tr("Time"), tr("Subsystem"), tr("Operation")}.value(section);
}

void JournalModel::clear()
{
    beginResetModel();
    m_entries.clear();
    endResetModel();
}

void JournalModel::append(const cm::Journal::Entry& entry)
{
    if (m_entries.size() >= kept + batch) {
        beginRemoveRows(QModelIndex(), 0, batch - 1);
        m_entries.remove(0, batch);
        endRemoveRows();
    }
    beginInsertRows(QModelIndex(), m_entries.size(), m_entries.size());
    m_entries.append(entry);
    endInsertRows();
}

} // namespace headunit
