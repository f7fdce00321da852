#include "M5QX/setuppagekeywidget.h"

#include "M5QX/diagnostic.h"
#include "common/mcumanager.h"
#include "common/transferstation.h"
#include "ui_setuppagekeywidget.h"

SetupPageKeyWidget::SetupPageKeyWidget(QWidget* parent)
    : QWidget(parent)
    , ui(new Ui_SetupPageKeyWidget)
{
    ui->setupUi(this);
}

SetupPageKeyWidget::~SetupPageKeyWidget() = default;

void SetupPageKeyWidget::resizeHeightofKeyWidget(int height)
{
    ui->Key_next_page->move(ui->Key_next_page->x(), ui->Key_next_page->y() - height);
}

void SetupPageKeyWidget::setPageName(const QString& name)
{
    ui->Key_prev_page->setAccessibleName(name + QStringLiteral(" <"));
    ui->Key_next_page->setAccessibleName(name + QStringLiteral(" >"));
}

// These keys beep through the vehicle's controller, unlike the keys of the page below them.
void SetupPageKeyWidget::on_Key_prev_page_clicked()
{
    AS_DEBUG();
    McuManager::instance()->triggerBeep(0);
    emit cm::TransferFunction::instance()->getTS()->setupPrevPage();
}

void SetupPageKeyWidget::on_Key_next_page_clicked()
{
    AS_DEBUG();
    McuManager::instance()->triggerBeep(0);
    emit cm::TransferFunction::instance()->getTS()->setupNextPage();
}

void SetupPageKeyWidget::showEvent(QShowEvent*)
{
}
