#pragma once

#include "platform/common/framework/journal.h"

#include <QAbstractTableModel>

namespace headunit {

/// The journal as a table of time, subsystem and operation, oldest first; follows it live. Keeps as many
/// entries as the journal does, and drops them in batches. Thread: GUI.
class JournalModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { Time, Subsystem, Operation, ColumnCount };
    static constexpr int kept = cm::Journal::kept, batch = 200;

    explicit JournalModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

public slots:
    /// Empties the table; the journal itself stays.
    void clear();

private:
    void append(const cm::Journal::Entry& entry);

    QVector<cm::Journal::Entry> m_entries;
};

} // namespace headunit
