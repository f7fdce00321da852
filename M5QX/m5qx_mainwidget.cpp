#include "M5QX/m5qx_mainwidget.h"

#include "M5QX/backrequest.h"
#include "M5QX/diagnostic.h"
#include "M5QX/filelocal.h"
#include "M5QX/m5qx_audiosetting_container.h"
#include "M5QX/m5qx_audiosetting_tab_widget.h"
#include "common/settings.h"
#include "ui_m5qx_audiosetting_container.h"

namespace audiosetting {

namespace {

const QString pageKey = QStringLiteral("AudioSetting_Page");
constexpr int defaultPage = 1;

} // namespace

m5qx_mainwidget::m5qx_mainwidget(QWidget* parent)
    : QWidget(parent)
{
    AS_DEBUG() << "hub";
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
    constexpr int count = sizeof(show) / sizeof(show[0]);
    static_assert(count == VolumeLevelPage + 1, "one slot a page");

    const int page = m_settings->getValue(pageKey, defaultPage);
    if (page >= 0 && page < count)
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

void m5qx_mainwidget::hideContainerChilds()
{
}

void m5qx_mainwidget::markPage(Page page)
{
    m_settings->setValue(pageKey, defaultPage, static_cast<int>(page), true);
    m_container->show();
    m_tabs->setCheckedPage(page);
    m_tabs->show();
}

void m5qx_mainwidget::onShowEQSettingPage()
{
    AS_DEBUG();
    hideContainerChilds();
    markPage(EQSettingPage);
}

void m5qx_mainwidget::onShowAudioLevelsPage()
{
    AS_DEBUG();
    hideContainerChilds();
    markPage(AudioLevelsPage);
}

void m5qx_mainwidget::onShowCrossoverSettingsPage()
{
    AS_DEBUG();
    hideContainerChilds();
    markPage(CrossoverSettingsPage);
}

void m5qx_mainwidget::onCrossSettingsExit()
{
    AS_DEBUG();
    postBackRequest();
}

void m5qx_mainwidget::onShowTimeAlignmentPage()
{
    AS_DEBUG();
    hideContainerChilds();
    markPage(TimeAlignmentPage);
}

void m5qx_mainwidget::onShowEQPresetPage()
{
    AS_DEBUG();
    hideContainerChilds();
    markPage(EQPresetPage);
}

void m5qx_mainwidget::onEQPresetExit()
{
    AS_DEBUG();
    postBackRequest();
}

void m5qx_mainwidget::onShowVolumeLevelPage()
{
    AS_DEBUG();
    hideContainerChilds();
    markPage(VolumeLevelPage);
}

void m5qx_mainwidget::onVolumeLevelExit()
{
    AS_DEBUG();
    postBackRequest();
}

void m5qx_mainwidget::onEQTypeChanged()
{
    AS_DEBUG();
    if (m_tabs)
        m_tabs->showEQTypeText();
}

} // namespace audiosetting
