#pragma once

#include <QAbstractTableModel>
#include <QStringList>
#include <QVariant>

namespace headunit {

/// The settings store as a table of key, type and value, in the order of the keys; follows it live. Values
/// are edited in their own type, are durable and taken over by their owners at once. Keys that the unit knows
/// and that nobody has set yet are listed without a value. Thread: GUI.
class SettingsModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { Key, Type, Value, ColumnCount };

    explicit SettingsModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    /// Qt::EditRole of Value: a variant of the key's type, so that the view offers the editor for it.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    /// False when the value doesn't convert to the key's type.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

    /// Removes the value of that row's key, so that readers get their default.
    void unset(const QModelIndex& index);
    /// Row of a key, -1 when there is none.
    int rowOf(const QString& key) const;

private:
    void onValueChanged(const QString& key, const QVariant& value);
    QVariant::Type typeOf(const QString& key) const;

    QStringList m_keys; ///< sorted
};

} // namespace headunit
