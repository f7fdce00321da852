#pragma once

#include <QScopedPointer>
#include <QWidget>

class EQPresetWidget;
class M5QXCrossSettingWidget;
class VolumeSettingWidget;

namespace Ui {
class m5qx_audiosetting_container;
}

namespace mem {
class SettingsExe;
}

namespace audiosetting {

class m5qx_EQ_settings_page;
class m5qx_audiosetting_container;
class m5qx_eq_audio_levels_page;
class m5qx_eq_tab_widget;
class m5qx_eq_time_alignment_page;
enum Page : int;

/// Shows one page at a time above the tab bar and remembers which, so that the application reopens where the
/// driver left it. Kept pages are built once; transient ones are built anew each time and go by
/// deleteLater(), so that a page may ask to leave from inside its own signal. The current page is not held
/// here: it is the value in the store. Thread: GUI.
///
///     tab bar -- triShow...() --> onShow...Page() -- AudioSetting_Page --> store
///     transient page -- exitUI() --> on...Exit() -- back request --> framework
class m5qx_mainwidget : public QWidget
{
    Q_OBJECT
public:
    explicit m5qx_mainwidget(QWidget* parent);
    ~m5qx_mainwidget() override;

    /// No page exists yet.
    void init();
    /// Builds form, container and tab bar as far as they don't exist, and connects the tab bar. Runs once.
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
    void hideContainerChilds();
    /// Remembers the page and marks its tab.
    void markPage(Page page);
    void connectSwitches(QWidget* page);
    template <typename TransientPage>
    void showTransient(TransientPage*& page, Page number, const char* exitSlot);
    template <typename TransientPage>
    void drop(TransientPage*& page);
    template <typename TransientPage>
    void leave(TransientPage*& page);

    m5qx_audiosetting_container* m_container = nullptr;
    QScopedPointer<Ui::m5qx_audiosetting_container> m_form;
    m5qx_eq_tab_widget* m_tabs = nullptr;

    m5qx_EQ_settings_page* m_eqSettings = nullptr;
    m5qx_eq_audio_levels_page* m_audioLevels = nullptr;
    m5qx_eq_time_alignment_page* m_timeAlignment = nullptr;

    mem::SettingsExe* m_settings = nullptr;

    M5QXCrossSettingWidget* m_crossover = nullptr;
    EQPresetWidget* m_eqPreset = nullptr;
    VolumeSettingWidget* m_volumes = nullptr;
};

} // namespace audiosetting
