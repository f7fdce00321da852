#pragma once

#include "common/appplugin.h"
#include "common/windowinterface.h"

#include <QString>
#include <QWidget>

/// Leaves a mark in the environment when the library's code runs, so that a test can tell whether it did.
struct LoadMark
{
    explicit LoadMark(const char* name) { qputenv(name, "1"); }
};

/// The least that is a window.
class TestWindow : public WindowInterface
{
public:
    explicit TestWindow(int id)
        : m_id(id)
    {
    }
    void onCreate() override
    {
        if (!m_root)
            m_root = new QWidget;
    }
    void onDestroy() override { m_root = nullptr; }
    void onShow() override {}
    void onHide() override {}
    void onEnter() override {}
    void onExit() override {}
    int backEvent() override { return 0; }
    int keyEvent(KeyEvent*) override { return 0; }
    QString name() override { return QStringLiteral("Window %1").arg(m_id); }
    QWidget* mainWidget() const override { return m_root; }
    int mainWidgetId() const override { return m_id; }

protected:
    QWidget* m_root = nullptr;

private:
    const int m_id;
};

/// Offers windows 7 and 8, and doesn't hand out the second.
class TestPlugin : public AppPlugin
{
public:
    void create() override { qputenv("HEADUNIT_TEST_CREATED", qgetenv("HEADUNIT_TEST_CREATED") + "x"); }
    QList<int> windowInterfaceID() override { return {7, 8}; }
    QList<int> sourceInterfaceID() override { return {}; }
    WindowInterface* requestWindowInterface(int id) override { return id == 7 ? &m_window : nullptr; }
    SourceInterface* requestSourceInterface(int) override { return nullptr; }

private:
    TestWindow m_window{7};
};
