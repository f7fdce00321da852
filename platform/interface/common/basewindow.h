#pragma once

#include "common/export.h"
#include "common/windowinterface.h"

#include <QObject>

namespace cm {

class BaseWindowPrivate;

/// Base of every application window: keeps the root widget for the shell and answers keys. Thread: GUI.
class COMMON_EXPORT BaseWindow : public QObject, public WindowInterface
{
    Q_OBJECT
public:
    /// The parent owns the window; without one (null) the caller does.
    explicit BaseWindow(QObject* parent = nullptr);
    /// Deletes a root widget that no shell has taken (one without a parent).
    ~BaseWindow() override;

    /// Hands the root widget and its window id (any number) to the framework. Ownership of the widget passes
    /// with it: to the shell that gives it a parent, until then to this window. A widget that was handed out
    /// before and that no shell has taken is deleted. Null is logged; the window then has no root widget.
    void setMainWidget(QWidget* widget, int windowId);

    // The order of these nine is the interface's slot order; an application's window overrides what it needs
    // and calls the base's.
    void onCreate() override;
    void onDestroy() override;
    void onShow() override;
    void onHide() override;
    void onEnter() override;
    void onExit() override;
    /// Returns 0: a window that doesn't override it leaves the request to the shell.
    int backEvent() override;
    /// Deals with the two paging keys by passing them to the transfer station (returns 1); every other key is
    /// left to the shell (returns 0). Null is logged and returns 0.
    int keyEvent(KeyEvent* event) override;
    /// Empty for a window that doesn't override it.
    QString name() override;

    QWidget* mainWidget() const override;
    int mainWidgetId() const override;

private:
    BaseWindowPrivate* d;
    Q_DISABLE_COPY(BaseWindow)
};

} // namespace cm
