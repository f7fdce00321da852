#pragma once

#include "M5QX/volumesettingwidget.h"
#include "common/customslider.h"
#include "tests/M5QX/pagefixture.h"

#include <QScrollArea>

/// What the tests of the volume page share.
namespace volumesetting {

using namespace platform_double;

enum Section { Live, StartUp, Gain };

struct Row
{
    const char* base;   ///< middle of the children's names
    const char* widget; ///< the row
    Section section;
    const char* key;
    int defaultValue;
    int service; ///< channel or source
    int textId;  ///< 0: fixed "DAB"
    const char* saveSlot;
    int formY;
};

// clang-format off
const Row rows[] = {
    {"main",               "widget_main",               Live,    "volume0",                            0,  0,  436,  "onMainSave",              50},
    {"ring",               "widget_ring",               Live,    "volume1",                            0,  1,  437,  "onRingSave",              128},
    {"call",               "widget_call",               Live,    "volume2",                            0,  2,  438,  "onCallSave",              206},
    {"navi",               "widget_navi",               Live,    "volume5",                            0,  5,  439,  "onNaviSave",              284},
    {"voice",              "widget_voice",              Live,    "volume4",                            0,  4,  440,  "onVoiceSave",             362},
    {"main_default",       "widget_default_main",       StartUp, "Setup_Main_Volume",                  25, -1, 1249, "onMainDefaultSave",       490},
    {"ring_default",       "widget_default_ring",       StartUp, "Setup_Volume_Type_BT_Ringer",        40, -1, 1250, "onRingDefaultSave",       568},
    {"call_default",       "widget_default_call",       StartUp, "Setup_Volume_Type_BT_Talking",       40, -1, 1251, "onCallDefaultSave",       646},
    {"navi_default",       "widget_default_navi",       StartUp, "Setup_Volume_Type_Navi",             40, -1, 1254, "onNaviDefaultSave",       724},
    {"voice_default",      "widget_default_voice",      StartUp, "Setup_Volume_Type_Voice",            40, -1, 1255, "onVoiceDefaultSave",      802},
    {"source_radio",       "widget_source_radio",       Gain,    "Setup_Input_Gain_Type_Radio",        5,  18, 366,  "onSourceRadioSave",       930},
    {"source_usb",         "widget_source_usb",         Gain,    "Setup_Input_Gain_Type_USB",          5,  6,  18,   "onSourceUSBSave",         1008},
    {"source_btaudio",     "widget_source_btaudio",     Gain,    "Setup_Input_Gain_Type_BT_Audio",     5,  5,  369,  "onSourceBtaudioSave",     1086},
    {"source_avin",        "widget_source_avin",        Gain,    "Setup_Input_Gain_Type_AUX",          5,  7,  368,  "onSourceAVINSave",        1164},
    {"source_carplay",     "widget_source_carplay",     Gain,    "Setup_Input_Gain_Type_Carplay",      5,  0,  443,  "onSourceCarplaySave",     1242},
    {"source_androidauto", "widget_source_androidauto", Gain,    "Setup_Input_Gain_Type_Android_Auto", 5,  1,  17,   "onSourceAndroidautoSave", 1320},
    {"source_dab",         "widget_source_dab",         Gain,    "Setup_Input_Gain_Type_DAB",          5,  19, 0,    "onSourceDABSave",         0},
};
// clang-format on

constexpr int rowCount = std::size(rows);
static_assert(rowCount == 17, "seventeen rows");
constexpr int dab = rowCount - 1;

inline int maximumOf(const Row& row)
{
    return row.section == Gain ? 15 : 50;
}

inline QString readLine(const Row& row)
{
    return readOf("Func", QLatin1String(row.key), row.defaultValue);
}

inline QStringList readLines(Section section)
{
    QStringList lines;
    for (const Row& row : rows) {
        if (row.section == section)
            lines.append(readLine(row));
    }
    return lines;
}

inline void addRows()
{
    formcheck::addRows(rows, &Row::base, "index");
}

class VolumeSettingFixture : public PageFixture<VolumeSettingWidget>
{
protected:
    void makePage()
    {
        reset();
        m_page.reset(new VolumeSettingWidget(nullptr));
        takeCalls(All);
        takeLog();
    }
    void show()
    {
        m_page->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_page.data()));
        takeCalls(All);
        takeLog();
    }
    using PageFixture::key;
    QPushButton* key(int row, const char* way)
    {
        return formcheck::child<QPushButton>(
            m_page.data(),
            QStringLiteral("key_%1_%2").arg(QLatin1String(rows[row].base), QLatin1String(way)));
    }
    QWidget* widget(int row) { return find<QWidget>(QLatin1String(rows[row].widget)); }
    /// The platform's slider of a row.
    settings::CustomSlider_2* slider(int row)
    {
        return formcheck::child<settings::CustomSlider_2>(widget(row), QString());
    }
    QScrollArea* area() { return find<QScrollArea>(QStringLiteral("scrollArea")); }
    QWidget* contents() { return find<QWidget>(QStringLiteral("scrollAreaWidgetContents")); }
    QString keySlot(int row, const char* way)
    {
        return QStringLiteral("on_key_%1_%2_clicked").arg(QLatin1String(rows[row].base), QLatin1String(way));
    }
};

} // namespace volumesetting
