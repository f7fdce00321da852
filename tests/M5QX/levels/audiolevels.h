#pragma once

#include "M5QX/m5qx_audiosetting_audio_levels_page.h"
#include "M5QX/pa_balancefadercontrol.h"
#include "common/customslider.h"
#include "tests/M5QX/pagefixture.h"

/// What the tests of the audio levels page share.
namespace audiolevels {

using namespace audiosetting;
using namespace platform_double;

const QString readPair = service("getBalanceFader");
const QString readLoudness = readOf("Func", QStringLiteral("customloudnes"), false);
const QString readSwitch = readOf("Func", QStringLiteral("subwooferOnOff"), true);
const QString readLevel = readOf("Func", QStringLiteral("subwooferLevel"), 11);
const QString readFrequency = readOf("Func", QStringLiteral("subwooferFreq"), 7);

class AudioLevelsFixture : public PageFixture<m5qx_eq_audio_levels_page>
{
protected:
    void makePage()
    {
        reset();
        m_page.reset(new m5qx_eq_audio_levels_page(nullptr));
        m_page->resume();
        m_page->show();
        takeCalls(All);
    }
    balanceFaderControl* pad() { return m_page->findChild<balanceFaderControl*>(); }
    settings::CustomSlider_2* slider() { return m_page->findChild<settings::CustomSlider_2*>(); }
};

} // namespace audiolevels
