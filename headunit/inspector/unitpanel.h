#pragma once

#include <QWidget>

class QPushButton;

namespace headunit {

class Shell;

/// Language, power cycle and factory reset, and where the unit's files are. Thread: GUI.
class UnitPanel : public QWidget
{
    Q_OBJECT
public:
    /// shell: outlives the panel.
    UnitPanel(Shell* shell, QWidget* parent);
    ~UnitPanel() override;

private:
    QWidget* languageBox();
    QString applicationsText() const;
    void onResetClicked();

    Shell* const m_shell;
    QPushButton* m_reset;
    Q_DISABLE_COPY(UnitPanel)
};

} // namespace headunit
