#include "headunit/inspector/settingspanel.h"

#include "headunit/inspector/settingsmodel.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QTableView>

namespace headunit {

SettingsPanel::SettingsPanel(QWidget* parent)
    : QWidget(parent)
{
    auto* model = new SettingsModel(this);
    auto* filtered = new QSortFilterProxyModel(this);
    filtered->setSourceModel(model);
    filtered->setFilterKeyColumn(SettingsModel::Key);
    filtered->setFilterCaseSensitivity(Qt::CaseInsensitive);

    auto* filter = new QLineEdit(this);
    filter->setObjectName(QStringLiteral("settings_filter"));
    filter->setPlaceholderText(tr("Filter: part of a key"));
    connect(filter, &QLineEdit::textChanged, filtered, &QSortFilterProxyModel::setFilterFixedString);

    auto* table = new QTableView(this);
    table->setObjectName(QStringLiteral("settings_table"));
    table->setModel(filtered);
    table->setShowGrid(false);
    table->verticalHeader()->hide();
    table->verticalHeader()->setDefaultSectionSize(24);
    table->horizontalHeader()->setStretchLastSection(true);
    table->setColumnWidth(SettingsModel::Key, 270);
    table->setColumnWidth(SettingsModel::Type, 70);

    auto* unset = new QPushButton(tr("Unset"), this);
    unset->setToolTip(tr("Remove the chosen key's value, so that its default holds"));
    connect(unset, &QPushButton::clicked, this,
            [=] { model->unset(filtered->mapToSource(table->currentIndex())); });

    auto* top = new QHBoxLayout;
    top->addWidget(filter);
    top->addWidget(unset);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(table);
}

} // namespace headunit
