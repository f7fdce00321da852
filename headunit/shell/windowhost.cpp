#include "headunit/shell/windowhost.h"

#include "headunit/shell/seam.h"

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

bool WindowHost::call(const char* name, const std::function<void()>& work) const
{
    return callAcrossSeam(QStringLiteral("window %1, %2").arg(m_id).arg(QLatin1String(name)), work);
}

QString WindowHost::name() const
{
    call("name", [this] { m_name = m_window->name(); });
    return m_name;
}

int WindowHost::keyEvent(KeyEvent* event)
{
    int handled = 0;
    call("keyEvent", [&] { handled = m_window->keyEvent(event); });
    return handled;
}

int WindowHost::backEvent()
{
    int handled = 0;
    call("backEvent", [&] { handled = m_window->backEvent(); });
    return handled;
}

bool WindowHost::open()
{
    if (m_inFront)
        return true;
    QWidget* root = nullptr;
    int rootId = 0;
    const auto create = [&] {
        m_window->onCreate();
        m_created = true;
        root = m_window->mainWidget();
        rootId = m_window->mainWidgetId();
    };
    if (!call("onCreate", create))
        return false;
    if (!root) {
        qWarning("window %d has no root widget after onCreate; it can't be shown", m_id);
        return false;
    }
    if (rootId != m_id)
        qWarning("window %d handed out its root widget under the id %d", m_id, rootId);
    if (root != m_root)
        adoptRoot(root);

    bool up = call("onShow", [this] { m_window->onShow(); });
    root->show();
    root->raise();
    m_inFront = true;
    up = call("onEnter", [this] { m_window->onEnter(); }) && up;
    if (!up)
        leave();
    return up;
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
    call("onExit", [this] { m_window->onExit(); });
    if (m_root)
        m_root->hide();
    call("onHide", [this] { m_window->onHide(); });
}

void WindowHost::destroy()
{
    m_destroying = true;
    leave();
    if (m_created) {
        call("onDestroy", [this] { m_window->onDestroy(); });
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
