#include "mainwindow/plugin.h"

#include "M5QX/diagnostic.h"
#include "mainwindow/mainwindow.h"

namespace audiosetting {

void Plugin::create()
{
}

QList<int> Plugin::windowInterfaceID()
{
    return {MainWindow::windowId};
}

QList<int> Plugin::sourceInterfaceID()
{
    return {};
}

WindowInterface* Plugin::requestWindowInterface(int id)
{
    if (id != MainWindow::windowId)
        return nullptr;
    if (!m_window)
        m_window = new MainWindow(this);
    return m_window;
}

SourceInterface* Plugin::requestSourceInterface(int)
{
    return nullptr;
}

} // namespace audiosetting
