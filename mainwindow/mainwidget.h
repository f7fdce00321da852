#pragma once

#include <QWidget>

namespace audiosetting {

class m5qx_mainwidget;

/// Root widget of the window: holds the hub and passes the framework's requests down to it. Thread: GUI.
class MainWidget : public QWidget
{
    Q_OBJECT
public:
    explicit MainWidget(QWidget* parent);

    /// Shows the stored page again.
    void resume();
    /// 1 when the hub has dealt with it, 0 when there is no hub.
    int backEvent();

private:
    m5qx_mainwidget* m_hub = nullptr;
};

} // namespace audiosetting
