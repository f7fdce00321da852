#pragma once

#include <QWidget>

class QSortFilterProxyModel;
class QTableView;

namespace headunit {

/// The journal, live, with a filter over subsystem and operation. Follows the newest entry while the table
/// stands at its end. Thread: GUI.
class JournalPanel : public QWidget
{
    Q_OBJECT
public:
    explicit JournalPanel(QWidget* parent);

private:
    QSortFilterProxyModel* m_filtered;
    QTableView* m_table;
    bool m_follow = true;
};

} // namespace headunit
