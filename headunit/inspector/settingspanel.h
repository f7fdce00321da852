#pragma once

#include <QWidget>

namespace headunit {

/// All settings with their live values, to be filtered and edited. Thread: GUI.
class SettingsPanel : public QWidget
{
    Q_OBJECT
public:
    explicit SettingsPanel(QWidget* parent);
};

} // namespace headunit
