#pragma once

#include "M5QX/m5qx_audiosetting_crossover_setting_page.h"
#include "tests/M5QX/pagefixture.h"

/// What the tests of the stand-alone crossover page share.
namespace crossoverpage {

using namespace platform_double;
using Page = audiosetting::m5qx_eq_crossover_setting_page;

#define ICONS ":/vexa_m5qx_audiosettingicon/"
const QString keyBeep = QStringLiteral("AudioService.doBeep(0)");

/// The four calls that send a filter.
inline QStringList sent(const char* filter, int freq, int slope)
{
    QStringList calls;
    for (const int speaker : {1, 2, 4, 8})
        calls << QStringLiteral("AudioService.set%1Filter(%2, %3, %4, %5)")
                     .arg(QLatin1String(filter))
                     .arg(freq)
                     .arg(freq & 0x7F)
                     .arg(speaker)
                     .arg(slope);
    return calls;
}

inline QString write(const char* key, const char* fallback, const QString& value)
{
    return QStringLiteral("SettingsExe.setValue(\"%1\", %2, %3, true)")
        .arg(QLatin1String(key), QLatin1String(fallback), value);
}

inline QString sub(int freq, int level)
{
    return QStringLiteral("AudioService.setSubFilter(%1, %2, 0)").arg(freq).arg(level);
}

class CrossoverPageFixture : public PageFixture<Page>
{
protected:
    void makePage()
    {
        reset();
        m_page.reset(new Page);
    }
    QString text(const char* name) { return label(name)->text(); }
    bool visible(const char* name) { return find<QWidget>(name)->isVisibleTo(m_page.data()); }
    void show()
    {
        m_page->show();
        take();
        takeLog();
    }
};

} // namespace crossoverpage
