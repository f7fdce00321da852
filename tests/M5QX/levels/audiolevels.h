#pragma once

#include "M5QX/m5qx_audiosetting_audio_levels_page.h"
#include "M5QX/pa_balancefadercontrol.h"
#include "common/customslider.h"
#include "tests/M5QX/pagefixture.h"

/// What the tests of the audio levels page share.
namespace audiolevels {

using namespace audiosetting;
using namespace platform_double;

const QString keyBeep = QStringLiteral("AudioService.doBeep(0)");
const QString mcuBeep = QStringLiteral("McuManager.triggerBeep(0)");
const QString readPair = QStringLiteral("AudioService.getBalanceFader()");
const QString readLoudness = QStringLiteral("SettingsFunc.getValue(\"customloudnes\", false)");
const QString readSwitch = QStringLiteral("SettingsFunc.getValue(\"subwooferOnOff\", true)");
const QString readLevel = QStringLiteral("SettingsFunc.getValue(\"subwooferLevel\", 11)");
const QString readFrequency = QStringLiteral("SettingsFunc.getValue(\"subwooferFreq\", 7)");

class AudioLevelsFixture : public PageFixture<m5qx_eq_audio_levels_page>
{
protected:
    void makePage()
    {
        reset();
        m_page.reset(new m5qx_eq_audio_levels_page(nullptr));
        m_page->resume();
        m_page->show();
        take(All);
    }
    balanceFaderControl* pad() { return m_page->findChild<balanceFaderControl*>(); }
    settings::CustomSlider_2* slider() { return m_page->findChild<settings::CustomSlider_2*>(); }
};

} // namespace audiolevels
