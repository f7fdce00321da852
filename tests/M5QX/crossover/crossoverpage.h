#pragma once

#include "M5QX/m5qx_audiosetting_crossover_setting_page.h"
#include "tests/M5QX/pagefixture.h"

/// What the tests of the stand-alone crossover page share.
namespace crossoverpage {

using namespace platform_double;
using Page = audiosetting::m5qx_eq_crossover_setting_page;

#define ICONS ":/vexa_m5qx_audiosettingicon/"

/// The four calls that send a filter.
inline QStringList sent(const char* filter, int freq, int slope)
{
    QStringList calls;
    for (const int speaker : {1, 2, 4, 8})
        calls << service(qPrintable(QStringLiteral("set%1Filter").arg(QLatin1String(filter))), freq,
                         freq & 0x7F, speaker, slope);
    return calls;
}

inline QString write(const char* key, const char* fallback, const QString& value)
{
    return QStringLiteral("SettingsExe.setValue(\"%1\", %2, %3, true)")
        .arg(QLatin1String(key), QLatin1String(fallback), value);
}

inline QString sub(int freq, int level)
{
    return service("setSubFilter", freq, level, 0);
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
        takeCalls();
        takeLog();
    }
};

} // namespace crossoverpage
