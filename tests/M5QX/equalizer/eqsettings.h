#pragma once

#include "M5QX/m5qx_audiosetting_settings_page.h"
#include "tests/M5QX/pagefixture.h"

/// What the tests of the EQ settings page share.
namespace eqsettings {

using namespace audiosetting;
using namespace platform_double;

constexpr int bandCount = 13;
constexpr int barTop = 141;
constexpr int barHeight = 364;
const int barLeft[bandCount] = {109, 175, 241, 306, 372, 438, 504, 570, 636, 702, 767, 833, 899};
// Way of a handle below the bar's top for 10, 9, ... -10.
const int handleTravel[21] = {0,   15,  30,  46,  61,  77,  92,  108, 123, 139, 154,
                              169, 185, 200, 216, 231, 247, 262, 278, 293, 309};
// First pixel below the bar's top at which a finger means 10, 9, ... -10.
const int firstPixel[21] = {0,   18,  35,  52,  70,  87,  104, 122, 139, 156, 174,
                            191, 208, 226, 243, 260, 278, 295, 312, 330, 347};

inline QPoint onBar(int band, int value)
{
    return {barLeft[band] + 30, barTop + firstPixel[10 - value]};
}

class EqSettingsFixture : public PageFixture<m5qx_EQ_settings_page>
{
protected:
    void makePage()
    {
        reset();
        audio().eqType = 6;
        build();
    }
    void build()
    {
        m_page.reset(new m5qx_EQ_settings_page(nullptr));
        m_page->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_page.data()));
        takeCalls(All);
        takeLog();
    }
    QLabel* handle(int band) { return find<QLabel>(QStringLiteral("icon_band_num_%1").arg(band + 1)); }
    QWidget* bubble() { return find<QWidget>(QStringLiteral("eq_value_widget")); }
    /// Values as the handles show them.
    QVector<int> drawn()
    {
        QVector<int> values;
        for (int band = 0; band < bandCount; ++band) {
            const QPoint at = handle(band)->mapTo(m_page.data(), QPoint());
            if (at.x() != barLeft[band])
                return {};
            for (int i = 0; i < 21; ++i) {
                if (at.y() == barTop + handleTravel[i])
                    values.append(10 - i);
            }
        }
        return values;
    }
};

} // namespace eqsettings
