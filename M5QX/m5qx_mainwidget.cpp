#include "M5QX/m5qx_mainwidget.h"

#include "M5QX/backrequest.h"
#include "M5QX/diagnostic.h"
#include "M5QX/eqpresetwidget.h"
#include "M5QX/m5qx_audiosetting_audio_levels_page.h"
#include "M5QX/m5qx_audiosetting_container.h"
#include "M5QX/m5qx_audiosetting_settings_page.h"
#include "M5QX/m5qx_audiosetting_tab_widget.h"
#include "M5QX/m5qx_audiosetting_time_alignment_page.h"
#include "M5QX/m5qxcrosssettingwidget.h"
#include "M5QX/pages.h"
#include "M5QX/pagesettings.h"
#include "M5QX/volumesettingwidget.h"
#include "common/settings.h"
#include "ui_m5qx_audiosetting_container.h"

namespace audiosetting {

namespace {

constexpr const mem::Setting& currentPage = mem::settingOf("AudioSetting_Page");
static_assert(currentPage.largest == PageCount - 1, "every page can be stored");

/// Where a page lies, above the tab bar: a transient page is a child of the hub and would cover the tab keys
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

m5qx_mainwidget::~m5qx_mainwidget() = default;

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
        m_form.reset(new Ui::m5qx_audiosetting_container);
    if (!m_container)
        m_container = new m5qx_audiosetting_container(this, m_form.data());
    if (!m_tabs)
        m_tabs = new m5qx_eq_tab_widget(m_form->down_widget);

    for (const PageRow& row : pageRows)
        connect(m_tabs, row.signal, this, row.slot);
}

void m5qx_mainwidget::resume()
{
    invokeOfPage(this, &PageRow::slot, stored::number(m_settings, currentPage));
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
    // Qt draws anew what lies below a page that is deleted, be it hidden: the next page would be drawn twice.
    page->setGeometry(QRect());
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
    stored::write(m_settings, currentPage, static_cast<int>(page));
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

/// The page is made anew each time: hiding the others has dropped it, if it was the one that was shown.
template <typename TransientPage>
void m5qx_mainwidget::showTransient(TransientPage*& page, Page number, const char* exitSlot)
{
    hideContainerChilds();
    page = new TransientPage(this);
    page->setGeometry(pageArea);
    connect(page, SIGNAL(exitUI()), this, exitSlot);
    markPage(number);
    page->resume();
    page->show();
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
    showTransient(m_crossover, CrossoverSettingsPage, SLOT(onCrossSettingsExit()));
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
    showTransient(m_eqPreset, EQPresetPage, SLOT(onEQPresetExit()));
}

void m5qx_mainwidget::onEQPresetExit()
{
    AS_DEBUG();
    leave(m_eqPreset);
}

void m5qx_mainwidget::onShowVolumeLevelPage()
{
    AS_DEBUG();
    showTransient(m_volumes, VolumeLevelPage, SLOT(onVolumeLevelExit()));
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
