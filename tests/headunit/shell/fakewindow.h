#pragma once

#include "common/events.h"
#include "common/keyevent.h"
#include "common/windowinterface.h"

#include <QCoreApplication>
#include <QPointer>
#include <QStringList>
#include <QWidget>

/// Root widget that notes when it appears and disappears, and asks for the status bar as an application does.
class FakeRoot : public QWidget
{
public:
    explicit FakeRoot(QStringList* calls)
        : m_calls(calls)
    {
    }
    ~FakeRoot() override { m_calls->append("root deleted"); }

protected:
    void showEvent(QShowEvent*) override
    {
        m_calls->append("root shown");
        QCoreApplication::postEvent(qApp, new StatusBarHideEvent(true));
    }
    void hideEvent(QHideEvent*) override
    {
        m_calls->append("root hidden");
        QCoreApplication::postEvent(qApp, new StatusBarHideEvent(false));
    }

private:
    QStringList* m_calls;
};

/// A window that records what the shell does with it.
class FakeWindow : public WindowInterface
{
public:
    explicit FakeWindow(int id = 33)
        : m_id(id)
    {
    }

    void onCreate() override
    {
        calls.append("onCreate");
        if (!root && handsOutRoot)
            root = new FakeRoot(&calls);
    }
    void onDestroy() override { calls.append("onDestroy"); }
    void onShow() override { calls.append("onShow"); }
    void onHide() override { calls.append("onHide"); }
    void onEnter() override { calls.append("onEnter"); }
    void onExit() override { calls.append("onExit"); }
    int backEvent() override
    {
        calls.append("backEvent");
        if (postsBack)
            QCoreApplication::postEvent(qApp, new TouchEvent(Qx::Touch_Back, -1, -1));
        return handlesBack;
    }
    int keyEvent(KeyEvent* event) override
    {
        calls.append(QStringLiteral("key %1 %2").arg(event->key()).arg(event->type()));
        return event->key() == handledKey;
    }
    QString name() override { return title; }
    QWidget* mainWidget() const override { return root; }
    int mainWidgetId() const override { return root ? m_id : 0; }

    /// What was called since the last time.
    QStringList takeCalls()
    {
        QStringList taken;
        taken.swap(calls);
        return taken;
    }

    QStringList calls;
    QPointer<QWidget> root;
    QString title = QStringLiteral("EQ");
    bool handsOutRoot = true;
    int handlesBack = 0;
    bool postsBack = false;
    int handledKey = 0;

private:
    const int m_id;
};
