#include "mainwindow/mainwidget.h"

#include "M5QX/diagnostic.h"
#include "M5QX/m5qx_mainwidget.h"

namespace audiosetting {

MainWidget::MainWidget(QWidget* parent)
    : QWidget(parent)
{
    // The constructor's own signature; the name is part of the interface.
    if (objectName().isEmpty())
        setObjectName(QStringLiteral("audiosetting::MainWidget::MainWidget(QWidget*)"));
    m_hub = new m5qx_mainwidget(this);
}

void MainWidget::resume()
{
    if (m_hub)
        m_hub->resume();
}

int MainWidget::backEvent()
{
    return m_hub ? m_hub->backEvent() : 0;
}

} // namespace audiosetting
