#pragma once

#include "M5QX/m5qxcrosssettingwidget.h"
#include "tests/M5QX/pagefixture.h"

/// What the tests of the speaker crossover share.
namespace crosssetting {

using namespace platform_double;

const char* const freqKey = "settings_cross_freq_index";
const char* const gainKey = "settings_cross_gain_index";
const char* const slopeKey = "settings_cross_slope_index";

/// What the page draws into one of its curves, as its setter logs it.
inline QStringList loggedCurves(const QString& setter)
{
    QStringList curves;
    for (const QString& line : takeLog()) {
        if (line.contains(setter))
            curves << line.section(QStringLiteral(" -- "), 1).trimmed();
    }
    return curves;
}

inline QString points(QPoint a, QPoint b, QPoint c)
{
    QString text;
    QDebug(&text).nospace() << a << " " << b << " " << c;
    return text;
}

inline QString write(const char* key, const QString& defaultMap, const QString& map)
{
    return writeOf("Func", QLatin1String(key), defaultMap, map);
}

inline QString hpf(int frequency, int gain, int speaker, int slope)
{
    return service("setHPFFilter", frequency, gain, speaker, slope);
}

/// The calls that send a group's filter.
inline QStringList sent(int group, int freq, int gain, int slope)
{
    if (group == 0)
        return {hpf(freq, gain, 1, slope), hpf(freq, gain, 2, slope)};
    if (group == 1)
        return {hpf(freq | 0x80, gain, 4, slope), hpf(freq | 0x80, gain, 8, slope)};
    return {
        service("setSubFilter", freq + 1, gain, slope),
        writeOf("Func", QStringLiteral("subwooferFreq"), 7, freq + 1),
        writeOf("Func", QStringLiteral("subwooferslope"), 0, slope),
        writeOf("Func", QStringLiteral("subwooferLevel"), 11, gain | 0x80),
        writeOf("Func", QStringLiteral("subwooferOnOff"), true, true),
    };
}

class CrossSettingFixture : public PageFixture<M5QXCrossSettingWidget>
{
protected:
    void makePage()
    {
        reset();
        m_page.reset(new M5QXCrossSettingWidget);
    }
    void resume()
    {
        m_page->resume();
        takeCalls();
        takeLog();
    }
    QStringList shown()
    {
        return {label("label_filter")->text(), label("txt_filter")->text(), label("txt_slope")->text(),
                label("txt_level")->text()};
    }
    /// Which of the six step keys are enabled: filter down, up, slope down, up, level down, up.
    QString enabled()
    {
        QString text;
        for (const char* key : {"key_filter_down", "key_filter_up", "key_slope_down", "key_slope_up",
                                "key_level_down", "key_level_up"})
            text += QLatin1Char(find(key)->isEnabled() ? '1' : '0');
        return text;
    }
};

} // namespace crosssetting
