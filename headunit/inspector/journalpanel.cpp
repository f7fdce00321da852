#include "headunit/inspector/journalpanel.h"

#include "headunit/inspector/journalmodel.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSortFilterProxyModel>
#include <QTableView>

namespace headunit {

namespace {

/// Lets through rows where every word of the filter is found in subsystem or operation.
class WordFilter : public QSortFilterProxyModel
{
public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

    void setWords(const QString& text)
    {
        m_words = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        invalidateFilter();
    }

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override
    {
        const QAbstractItemModel* model = sourceModel();
        const QString text = model->index(row, JournalModel::Subsystem, parent).data().toString() +
                             QLatin1Char('.') +
                             model->index(row, JournalModel::Operation, parent).data().toString();
        for (const QString& word : m_words) {
            if (!text.contains(word, Qt::CaseInsensitive))
                return false;
        }
        return true;
    }

private:
    QStringList m_words;
};

} // namespace

JournalPanel::JournalPanel(QWidget* parent)
    : QWidget(parent)
    , m_table(new QTableView(this))
{
    auto* model = new JournalModel(this);
    auto* filtered = new WordFilter(this);
    m_filtered = filtered;
    m_filtered->setSourceModel(model);

    auto* filter = new QLineEdit(this);
    filter->setObjectName(QStringLiteral("journal_filter"));
    filter->setPlaceholderText(tr("Filter: words of subsystem or operation"));
    connect(filter, &QLineEdit::textChanged, filtered, &WordFilter::setWords);
    auto* clear = new QPushButton(tr("Clear"), this);
    connect(clear, &QPushButton::clicked, model, &JournalModel::clear);

    m_table->setObjectName(QStringLiteral("journal_table"));
    m_table->setModel(m_filtered);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setWordWrap(false);
    m_table->setShowGrid(false);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(22);
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->setColumnWidth(JournalModel::Time, 100);
    m_table->setColumnWidth(JournalModel::Subsystem, 130);
    m_table->scrollToBottom();

    // Whether the reader stands at the end is known before the row arrives; afterwards the end has moved.
    connect(m_filtered, &QAbstractItemModel::rowsAboutToBeInserted, this, [this] {
        const QScrollBar* bar = m_table->verticalScrollBar();
        m_follow = bar->value() == bar->maximum();
    });
    connect(m_filtered, &QAbstractItemModel::rowsInserted, this, [this] {
        if (m_follow)
            m_table->scrollToBottom();
    });

    auto* top = new QHBoxLayout;
    top->addWidget(filter);
    top->addWidget(clear);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_table);
}

} // namespace headunit
