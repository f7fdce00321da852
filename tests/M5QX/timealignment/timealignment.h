#pragma once

#include "M5QX/m5qx_audiosetting_time_alignment_page.h"
#include "tests/M5QX/pagefixture.h"

/// What the tests of the time alignment page share.
namespace timealignment {

using namespace audiosetting;
using namespace platform_double;

/// Opens the operations that only the page itself calls.
class OpenPage : public m5qx_eq_time_alignment_page
{
public:
    using m5qx_eq_time_alignment_page::currItemVlaue;
    using m5qx_eq_time_alignment_page::getTimeAlignmentValue;
    using m5qx_eq_time_alignment_page::isValidValue;
    using m5qx_eq_time_alignment_page::m5qx_eq_time_alignment_page;
    using m5qx_eq_time_alignment_page::setTimeAlignment;
    using m5qx_eq_time_alignment_page::setTimeAlignmentValue;
    using m5qx_eq_time_alignment_page::updateAllTimeAlignmentItemState;
    using m5qx_eq_time_alignment_page::updateCurrAlignmentText;
    using m5qx_eq_time_alignment_page::updatePresetIcon;
    using m5qx_eq_time_alignment_page::updtaeTimeAlignmentItemState;
};

// clang-format off
struct Item { const char* name; int plus; int minus; int mask; };
const Item items[] = {
    {"front_left",  1,  2,  1},
    {"front_right", 3,  4,  2},
    {"rear_left",   5,  6,  4},
    {"rear_right",  7,  8,  8},
    {"subwoofer",   9, 10, 32},
};
// clang-format on

inline QString storeKey(int preset, int item)
{
    return QStringLiteral("Audio_Time_Alignment_Num%1%2").arg(preset + 1).arg(item);
}

inline QString writeItem(int preset, int item, int value)
{
    return writeOf("Exe", storeKey(preset, item), 0, value);
}

inline QString writePreset(int preset)
{
    return writeOf("Exe", QStringLiteral("Audio_Time_Alignment_Preset"), 0, preset);
}

inline QString delay(int mask, const char* ms)
{
    return QStringLiteral("AudioService.setSurroundDelay(%1, %2)").arg(mask).arg(QLatin1String(ms));
}

inline QString plusKey(int item)
{
    return QStringLiteral("Key_%1_plus").arg(QLatin1String(items[item].name));
}

inline QString minusKey(int item)
{
    return QStringLiteral("Key_%1_minus").arg(QLatin1String(items[item].name));
}

inline QString valueLabel(int item)
{
    return QStringLiteral("text_%1_data").arg(QLatin1String(items[item].name));
}

class TimeAlignmentFixture : public PageFixture<OpenPage>
{
protected:
    void makePage()
    {
        reset();
        rebuild();
    }
    /// A fresh page on what is stored.
    void rebuild()
    {
        m_page.reset(new OpenPage(nullptr));
        m_page->show();
        takeCalls(All);
    }
    QStringList shownValues()
    {
        QStringList result;
        for (int item = 0; item < 5; ++item)
            result += label(valueLabel(item))->text();
        return result;
    }
    QStringList disabledKeys()
    {
        QStringList result;
        for (const QPushButton* each : m_page->findChildren<QPushButton*>()) {
            if (!each->isEnabled())
                result += each->objectName();
        }
        return result;
    }
};

} // namespace timealignment
