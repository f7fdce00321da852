#include "headunit/shell/windowhost.h"

#include "common/windowinterface.h"

namespace headunit {

WindowHost::WindowHost(int id, WindowInterface* window, QWidget* area, QObject* parent)
    : QObject(parent)
    , m_id(id)
    , m_window(window)
    , m_area(area)
{
}

WindowHost::~WindowHost()
{
    destroy();
}

QString WindowHost::name() const
{
    return m_window->name();
}

bool WindowHost::open()
{
    if (m_inFront)
        return true;
    m_window->onCreate();
    m_created = true;
    QWidget* root = m_window->mainWidget();
    if (!root) {
        qWarning("window %d has no root widget after onCreate; it can't be shown", m_id);
        return false;
    }
    if (m_window->mainWidgetId() != m_id)
        qWarning("window %d handed out its root widget under the id %d", m_id, m_window->mainWidgetId());
    if (root != m_root)
        adoptRoot(root);

    m_window->onShow();
    root->show();
    root->raise();
    m_inFront = true;
    m_window->onEnter();
    return true;
}

void WindowHost::adoptRoot(QWidget* root)
{
    m_root = root;
    root->setParent(m_area);
    root->setGeometry(m_area->rect());
    connect(root, &QObject::destroyed, this, [this] {
        if (m_inFront && !m_destroying)
            emit rootVanished();
    });
}

void WindowHost::leave()
{
    if (!m_inFront)
        return;
    m_inFront = false;
    m_window->onExit();
    if (m_root)
        m_root->hide();
    m_window->onHide();
}

void WindowHost::destroy()
{
    m_destroying = true;
    leave();
    if (m_created) {
        m_window->onDestroy();
        m_created = false;
    }
    delete m_root;
    m_destroying = false;
}

void WindowHost::refresh()
{
    if (!m_inFront)
        return;
    leave();
    open();
}

} // namespace headunit
