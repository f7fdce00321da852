#include "M5QX/m5qx_mainwidget.h"

#include "M5QX/backrequest.h"
#include "M5QX/diagnostic.h"
#include "M5QX/eqpresetwidget.h"
#include "M5QX/filelocal.h"
#include "M5QX/m5qx_audiosetting_audio_levels_page.h"
#include "M5QX/m5qx_audiosetting_container.h"
#include "M5QX/m5qx_audiosetting_settings_page.h"
#include "M5QX/m5qx_audiosetting_tab_widget.h"
#include "M5QX/m5qx_audiosetting_time_alignment_page.h"
#include "M5QX/m5qxcrosssettingwidget.h"
#include "M5QX/volumesettingwidget.h"
#include "common/settings.h"
#include "ui_m5qx_audiosetting_container.h"

namespace audiosetting {

namespace {

const QString pageKey = QStringLiteral("AudioSetting_Page");
constexpr int defaultPage = 1;

/// A page's own room, above the tab bar: a transient page is a child of the hub and would cover the tab keys
/// otherwise.
constexpr QRect pageArea(0, 0, 1024, 510);

} // namespace

m5qx_mainwidget::m5qx_mainwidget(QWidget* parent)
    : QWidget(parent)
{
    AS_DEBUG();
    setGeometry(0, 0, 1024, 600);
    m_settings = new mem::SettingsExe(this);
    init();
    initTabWidget();
    resume();
}

m5qx_mainwidget::~m5qx_mainwidget()
{
    delete m_form;
}

void m5qx_mainwidget::init()
{
    m_eqSettings = nullptr;
    m_audioLevels = nullptr;
    m_timeAlignment = nullptr;
    m_crossover = nullptr;
    m_eqPreset = nullptr;
    m_volumes = nullptr;
}

void m5qx_mainwidget::initTabWidget()
{
    if (!m_form)
        m_form = new Ui::m5qx_audiosetting_container;
    if (!m_container)
        m_container = new m5qx_audiosetting_container(this, m_form);
    if (!m_tabs)
        m_tabs = new m5qx_eq_tab_widget(m_form->down_widget);

    // clang-format off
    const struct { const char* signal; const char* slot; } bindings[] = {
        {SIGNAL(triShowEQSettingPage()),        SLOT(onShowEQSettingPage())},
        {SIGNAL(triShowAudioLevelsPage()),      SLOT(onShowAudioLevelsPage())},
        {SIGNAL(triShowCrossoverSettingPage()), SLOT(onShowCrossoverSettingsPage())},
        {SIGNAL(triShowTimeAlignmentpage()),    SLOT(onShowTimeAlignmentPage())},
        {SIGNAL(triShowEQPreset()),             SLOT(onShowEQPresetPage())},
        {SIGNAL(triVolumeLevel()),              SLOT(onShowVolumeLevelPage())},
    };
    // clang-format on
    static_assert(sizeof(bindings) / sizeof(bindings[0]) == PageCount, "one signal a page");
    for (const auto& binding : bindings)
        connect(m_tabs, binding.signal, this, binding.slot);
}

void m5qx_mainwidget::resume()
{
    // clang-format off
    static void (m5qx_mainwidget::*const show[])() = {
        &m5qx_mainwidget::onShowEQSettingPage,
        &m5qx_mainwidget::onShowAudioLevelsPage,
        &m5qx_mainwidget::onShowCrossoverSettingsPage,
        &m5qx_mainwidget::onShowTimeAlignmentPage,
        &m5qx_mainwidget::onShowEQPresetPage,
        &m5qx_mainwidget::onShowVolumeLevelPage,
    };
    // clang-format on
    static_assert(sizeof(show) / sizeof(show[0]) == PageCount, "one slot a page");

    const int page = m_settings->getValue(pageKey, defaultPage);
    if (page >= 0 && page < PageCount)
        (this->*show[page])();
}

int m5qx_mainwidget::backEvent()
{
    postBackRequest();
    return 1;
}

void m5qx_mainwidget::showEvent(QShowEvent*)
{
    QCoreApplication::postEvent(QCoreApplication::instance(), new StatusBarHideEvent(true));
}

void m5qx_mainwidget::hideEvent(QHideEvent*)
{
    QCoreApplication::postEvent(QCoreApplication::instance(), new StatusBarHideEvent(false));
}

/// Kept pages stay alive, transient ones go.
void m5qx_mainwidget::hideContainerChilds()
{
    for (QWidget* page : std::initializer_list<QWidget*>{m_eqSettings, m_audioLevels, m_timeAlignment}) {
        if (page)
            page->hide();
    }
    drop(m_crossover);
    drop(m_eqPreset);
    drop(m_volumes);
}

template <typename TransientPage>
void m5qx_mainwidget::drop(TransientPage*& page)
{
    if (!page)
        return;
    page->hide();
    page->deleteLater();
    page = nullptr;
}

/// A transient page asked to leave: the framework leaves the application, the hub falls back to no other
/// page. The page may have gone already, when it asked more than once.
template <typename TransientPage>
void m5qx_mainwidget::leave(TransientPage*& page)
{
    drop(page);
    postBackRequest();
}

void m5qx_mainwidget::markPage(Page page)
{
    m_settings->setValue(pageKey, defaultPage, static_cast<int>(page), true);
    m_container->show();
    m_tabs->setCheckedPage(page);
    if (page == CrossoverSettingsPage)
        m_tabs->raise();
    m_tabs->show();
}

/// Requests that can't succeed: the hub has no such slots, and not every page has the signals. Qt refuses
/// them with a warning that a test names. They are kept, since they mark where a hub would pass loudness and
/// subwoofer switching on.
void m5qx_mainwidget::connectSwitches(QWidget* page)
{
    connect(page, SIGNAL(trigSubwooferOutputOnOff(bool)), this, SLOT(onAudioTrigSubwooferOutputOnOff(bool)));
    connect(page, SIGNAL(trigLoudnessOnOff(bool)), this, SLOT(onAudioTrigLoudnessOnOff(bool)));
}

void m5qx_mainwidget::onShowEQSettingPage()
{
    AS_DEBUG();
    hideContainerChilds();
    if (!m_eqSettings) {
        m_eqSettings = new m5qx_EQ_settings_page(m_form->up_widget);
        connect(m_eqSettings, SIGNAL(EQTypeChanged()), this, SLOT(onEQTypeChanged()));
        // The page listens to the platform's EQType(int) itself and has only onEQTypeChanged(int): refused,
        // like the switches.
        connect(m_tabs, SIGNAL(EQTypeChanged()), m_eqSettings, SLOT(onEQTypeChanged()));
        connectSwitches(m_eqSettings);
    }
    markPage(EQSettingPage);
    m_eqSettings->resume();
    m_eqSettings->show();
}

void m5qx_mainwidget::onShowAudioLevelsPage()
{
    AS_DEBUG();
    hideContainerChilds();
    if (!m_audioLevels) {
        m_audioLevels = new m5qx_eq_audio_levels_page(m_form->up_widget);
        connectSwitches(m_audioLevels);
    }
    markPage(AudioLevelsPage);
    m_audioLevels->resume();
    m_audioLevels->show();
}

void m5qx_mainwidget::onShowCrossoverSettingsPage()
{
    AS_DEBUG();
    hideContainerChilds();
    if (!m_crossover) {
        m_crossover = new M5QXCrossSettingWidget(this);
        m_crossover->setGeometry(pageArea);
        connect(m_crossover, SIGNAL(exitUI()), this, SLOT(onCrossSettingsExit()));
    }
    markPage(CrossoverSettingsPage);
    m_crossover->resume();
    m_crossover->show();
}

void m5qx_mainwidget::onCrossSettingsExit()
{
    AS_DEBUG();
    leave(m_crossover);
}

void m5qx_mainwidget::onShowTimeAlignmentPage()
{
    AS_DEBUG();
    hideContainerChilds();
    if (!m_timeAlignment) {
        m_timeAlignment = new m5qx_eq_time_alignment_page(m_form->up_widget);
        connectSwitches(m_timeAlignment);
    }
    markPage(TimeAlignmentPage);
    // This page reads everything in its show event and has nothing to resume.
    m_timeAlignment->show();
}

void m5qx_mainwidget::onShowEQPresetPage()
{
    AS_DEBUG();
    hideContainerChilds();
    if (!m_eqPreset) {
        m_eqPreset = new EQPresetWidget(this);
        m_eqPreset->setGeometry(pageArea);
        connect(m_eqPreset, SIGNAL(exitUI()), this, SLOT(onEQPresetExit()));
    }
    markPage(EQPresetPage);
    m_eqPreset->resume();
    m_eqPreset->show();
}

void m5qx_mainwidget::onEQPresetExit()
{
    AS_DEBUG();
    leave(m_eqPreset);
}

void m5qx_mainwidget::onShowVolumeLevelPage()
{
    AS_DEBUG();
    hideContainerChilds();
    if (!m_volumes) {
        m_volumes = new VolumeSettingWidget(this);
        m_volumes->setGeometry(pageArea);
        connect(m_volumes, SIGNAL(exitUI()), this, SLOT(onVolumeLevelExit()));
    }
    markPage(VolumeLevelPage);
    m_volumes->resume();
    m_volumes->show();
}

void m5qx_mainwidget::onVolumeLevelExit()
{
    AS_DEBUG();
    leave(m_volumes);
}

void m5qx_mainwidget::onEQTypeChanged()
{
    AS_DEBUG();
    if (m_tabs)
        m_tabs->showEQTypeText();
}

} // namespace audiosetting
