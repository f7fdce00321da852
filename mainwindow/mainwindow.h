#pragma once

#include "common/basewindow.h"

namespace audiosetting {

class MainWidget;

/// The window "EQ". It adds to the framework's life cycle only the making of its root widget; the framework
/// owns that widget and may destroy it at any time, after which the next onCreate() makes a new one. Thread:
/// GUI.
class MainWindow : public cm::BaseWindow
{
    Q_OBJECT
public:
    /// The plug-in's only window, and the window id of its root widget.
    static constexpr int windowId = 33;

    explicit MainWindow(QObject* parent = nullptr);
    ~MainWindow() override;

    void onCreate() override;
    void onDestroy() override;
    void onShow() override;
    void onHide() override;
    void onEnter() override;
    void onExit() override;
    int backEvent() override;
    int keyEvent(KeyEvent* event) override;
    QString name() override;

public slots:
    /// The root widget has gone.
    void onDestroyObj();

private:
    MainWidget* m_widget = nullptr;
};

} // namespace audiosetting
