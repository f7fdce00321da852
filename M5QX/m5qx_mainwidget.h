#pragma once

#include <QWidget>

namespace Ui {
class m5qx_audiosetting_container;
}

namespace mem {
class SettingsExe;
}

namespace audiosetting {

class m5qx_audiosetting_container;
class m5qx_eq_tab_widget;

/// Shows one page at a time above the tab bar and remembers which, so that the application reopens where the
/// driver left it. Kept pages are built once; transient ones are built anew each time and go by
/// deleteLater(), so that a page may ask to leave from inside its own signal. Thread: GUI.
class m5qx_mainwidget : public QWidget
{
    Q_OBJECT
public:
    explicit m5qx_mainwidget(QWidget* parent);
    ~m5qx_mainwidget() override;

    void init();
    void initTabWidget();
    /// Shows the stored page; an unknown one shows none.
    void resume();
    /// Asks the framework to leave the application. Returns 1: dealt with.
    int backEvent();

public slots:
    void onShowEQSettingPage();
    void onShowAudioLevelsPage();
    void onShowCrossoverSettingsPage();
    void onCrossSettingsExit();
    void onShowTimeAlignmentPage();
    void onShowEQPresetPage();
    void onEQPresetExit();
    void onShowVolumeLevelPage();
    void onVolumeLevelExit();
    void onEQTypeChanged();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    /// Numbers under which the store and the tab bar know the pages.
    enum Page : int {
        EQSettingPage = 0,
        AudioLevelsPage = 1,
        CrossoverSettingsPage = 2,
        TimeAlignmentPage = 3,
        EQPresetPage = 4,
        VolumeLevelPage = 5,
    };

    void hideContainerChilds();
    void markPage(Page page);

    Ui::m5qx_audiosetting_container* m_form = nullptr;
    m5qx_audiosetting_container* m_container = nullptr;
    m5qx_eq_tab_widget* m_tabs = nullptr;
    mem::SettingsExe* m_settings = nullptr;
};

} // namespace audiosetting
