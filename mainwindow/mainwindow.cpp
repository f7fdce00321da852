#include "mainwindow/mainwindow.h"

#include "M5QX/diagnostic.h"
#include "common/keyevent.h"
#include "mainwindow/mainwidget.h"

namespace audiosetting {

MainWindow::MainWindow(QObject* parent)
    : cm::BaseWindow(parent)
{
}

MainWindow::~MainWindow()
{
    // A root widget that no shell has taken goes with the base, when this is no MainWindow any more.
    if (m_widget)
        disconnect(m_widget, SIGNAL(destroyed()), this, SLOT(onDestroyObj()));
}

void MainWindow::onCreate()
{
    if (m_widget) {
        m_widget->resume();
    } else {
        m_widget = new MainWidget(nullptr);
        connect(m_widget, SIGNAL(destroyed()), this, SLOT(onDestroyObj()));
        setMainWidget(m_widget, windowId);
    }
    cm::BaseWindow::onCreate();
}

void MainWindow::onDestroy()
{
    cm::BaseWindow::onDestroy();
}

void MainWindow::onShow()
{
    cm::BaseWindow::onShow();
}

void MainWindow::onHide()
{
    cm::BaseWindow::onHide();
}

void MainWindow::onEnter()
{
    cm::BaseWindow::onEnter();
}

void MainWindow::onExit()
{
    cm::BaseWindow::onExit();
}

int MainWindow::backEvent()
{
    return m_widget ? m_widget->backEvent() : 0;
}

int MainWindow::keyEvent(KeyEvent* event)
{
    if (event) // the base answers for none, too
        AS_DEBUG() << "key:" << event->key() << "type:" << event->type();
    return cm::BaseWindow::keyEvent(event);
}

QString MainWindow::name()
{
    return QStringLiteral("EQ");
}

void MainWindow::onDestroyObj()
{
    AS_DEBUG() << "root widget destroyed";
    m_widget = nullptr;
}

} // namespace audiosetting
