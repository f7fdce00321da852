#include "M5QX/m5qx_audiosetting_container.h"

#include "M5QX/diagnostic.h"
#include "ui_m5qx_audiosetting_container.h"

namespace audiosetting {

m5qx_audiosetting_container::m5qx_audiosetting_container(QWidget* parent, Ui::m5qx_audiosetting_container* ui)
    : QWidget(parent)
{
    ui->setupUi(this);
}

} // namespace audiosetting
