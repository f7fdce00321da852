#pragma once

#include <QWidget>

namespace Ui {
class m5qx_audiosetting_container;
}

namespace audiosetting {

/// The whole screen of the application: the upper area for the current page, the lower one for the tab bar.
/// Thread: GUI.
class m5qx_audiosetting_container : public QWidget
{
    Q_OBJECT
public:
    /// ui: the form (not null), made and kept by the hub, which puts pages and tab bar into its two areas.
    m5qx_audiosetting_container(QWidget* parent, Ui::m5qx_audiosetting_container* ui);
};

} // namespace audiosetting
