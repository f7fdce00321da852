// Which page reads and writes which key of the settings store, by which of its two faces, with which default
// and flag: the whole index, held against what the pages really do.

#include "M5QX/m5qx_audiosetting_crossover_setting_page.h"
#include "M5QX/m5qx_mainwidget.h"
#include "common/customslider.h"
#include "tests/support/platform_double/platform_double.h"

#include <QPushButton>
#include <QtTest>

#include <algorithm>

using namespace audiosetting;
using namespace platform_double;

namespace {

/// Bits of what is done with a key.
enum Use { R = 1, W = 2, RW = R | W };

struct KeyRow
{
    const char* key; ///< with %1 for each of numbers
    const char* defaultValue;
    int func; ///< what is done with it by SettingsFunc
    int exe;  ///< and by SettingsExe
    QVector<int> numbers = {};
};

const QVector<int> bands = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
const QVector<int> items = {0, 1, 2, 3, 4};
const QVector<int> channels = {0, 1, 2, 4, 5};

// clang-format off
const KeyRow keys[] = {
    {"AudioSetting_Page",                  "1",               0,  RW},
    {"customloudnes",                      "false",           R,  0},
    {"subwooferOnOff",                     "true",            RW, 0},
    {"subwooferLevel",                     "11",              RW, RW},
    {"subwooferFreq",                      "7",               RW, RW},
    {"subwooferslope",                     "0",               W,  0},
    {"lpfState",                           "false",           0,  RW},
    {"lpfFreq",                            "0",               0,  RW},
    {"lpfslope",                           "3",               0,  RW},
    {"hpfState",                           "false",           0,  RW},
    {"hpfFreq",                            "4",               0,  RW},
    {"hpfslope",                           "1",               0,  RW},
    {"settings_cross_filter",              "0",               RW, 0},
    {"settings_cross_freq_index",          "\"0;0;1;0;2;6\"", RW, 0},
    {"settings_cross_gain_index",          "\"0;0;1;0;2;0\"", RW, 0},
    {"settings_cross_slope_index",         "\"0;0;1;0;2;0\"", RW, 0},
    {"Audio_Phase_Troggle",                "false",           RW, 0},
    {"eq1%1",                              "0",               R,  0,  bands},
    {"eq2%1",                              "0",               R,  0,  bands},
    {"Audio_Time_Alignment_Num1%1",        "0",               0,  RW, items},
    {"Audio_Time_Alignment_Num2%1",        "0",               0,  RW, items},
    {"Audio_Time_Alignment_Num3%1",        "0",               0,  RW, items},
    {"Audio_Time_Alignment_Preset",        "0",               0,  RW},
    {"volume%1",                           "0",               R,  0,  channels},
    {"Setup_Main_Volume",                  "25",              RW, 0},
    {"Setup_Volume_Type_BT_Ringer",        "40",              RW, 0},
    {"Setup_Volume_Type_BT_Talking",       "40",              RW, 0},
    {"Setup_Volume_Type_Navi",             "40",              RW, 0},
    {"Setup_Volume_Type_Voice",            "40",              RW, 0},
    {"Setup_Input_Gain_Type_Radio",        "5",               RW, 0},
    {"Setup_Input_Gain_Type_USB",          "5",               RW, 0},
    {"Setup_Input_Gain_Type_BT_Audio",     "5",               RW, 0},
    {"Setup_Input_Gain_Type_AUX",          "5",               RW, 0},
    {"Setup_Input_Gain_Type_Carplay",      "5",               RW, 0},
    {"Setup_Input_Gain_Type_Android_Auto", "5",               RW, 0},
    {"Setup_Input_Gain_Type_DAB",          "5",               RW, 0},
};
// clang-format on
static_assert(std::size(keys) == 36, "the store's index has 36 keys");

QStringList expectedAccesses()
{
    QStringList lines;
    for (const KeyRow& row : keys) {
        QStringList names;
        if (row.numbers.isEmpty())
            names << QString::fromLatin1(row.key);
        for (int number : row.numbers)
            names << QString::fromLatin1(row.key).arg(number);
        for (const QString& name : std::as_const(names)) {
            const struct
            {
                const char* name;
                int use;
            } faces[] = {{"Func", row.func}, {"Exe", row.exe}};
            for (const auto& face : faces) {
                const QString line =
                    QStringLiteral("%1 %2 %3 ")
                        .arg(QLatin1String(face.name), name, QLatin1String(row.defaultValue));
                if (face.use & R)
                    lines << line + QLatin1Char('R');
                if (face.use & W)
                    lines << line + QStringLiteral("W true");
            }
        }
    }
    // The one write that may wait: the subwoofer's level when its key switches it off.
    lines << QStringLiteral("Func subwooferLevel 11 W false");
    return lines;
}

/// Hidden keys too: live volume rows and the DAB row work although nobody sees them.
void clickAll(QWidget* page, const QString& prefix = QString())
{
    const auto buttons = page->findChildren<QPushButton*>();
    for (QPushButton* button : buttons) {
        if (button->objectName().startsWith(prefix))
            button->click();
    }
}

void clickAllTwice(QWidget* page)
{
    clickAll(page);
    clickAll(page);
}

QWidget* shownPage(const QWidget& hub)
{
    const auto children = hub.findChildren<QWidget*>();
    for (QWidget* page : children) {
        if (page->size() == QSize(1024, 510) && page->isVisible() && page->objectName() != "up_widget" &&
            page->objectName() != "bkg_tab_01")
            return page;
    }
    qFatal("the hub shows no page");
}

void useEveryPageOfTheHub()
{
    m5qx_mainwidget hub(nullptr);
    hub.show();
    for (const char* show : {"onShowEQSettingPage", "onShowAudioLevelsPage", "onShowCrossoverSettingsPage",
                             "onShowTimeAlignmentPage", "onShowEQPresetPage", "onShowVolumeLevelPage"}) {
        QVERIFY(QMetaObject::invokeMethod(&hub, show));
        QWidget* page = shownPage(hub);
        clickAllTwice(page);
        if (qstrcmp(show, "onShowTimeAlignmentPage") == 0) {
            for (const char* preset : {"key_preset1", "key_preset2", "key_preset3"}) {
                clickAll(page, QLatin1String(preset));
                clickAll(page, QStringLiteral("Key_"));
            }
        }
        if (qstrcmp(show, "onShowCrossoverSettingsPage") == 0) {
            // Once more with the subwoofer's group, which writes the shared keys.
            clickAll(page, QStringLiteral("key_subwoofer"));
            clickAllTwice(page);
        }
        const auto all = sliders();
        for (settings::CustomSlider_2* slider : all)
            emit slider->valSave(slider->value());
    }
}

/// Lines that are among the first and not among the others.
QStringList without(QStringList lines, const QStringList& others)
{
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [&](const QString& line) { return others.contains(line); }),
                lines.end());
    return lines;
}

} // namespace

class TestSettingsKeys : public QObject
{
    Q_OBJECT
private slots:
    void everyKeyIsReadAndWrittenAsItsRowSaysAndNoOther();
};

void TestSettingsKeys::everyKeyIsReadAndWrittenAsItsRowSaysAndNoOther()
{
    reset();
    useEveryPageOfTheHub();
    m5qx_eq_crossover_setting_page page(nullptr);
    page.show();
    clickAllTwice(&page);

    const QStringList missing = without(expectedAccesses(), accesses());
    const QStringList surplus = without(accesses(), expectedAccesses());
    QVERIFY2(missing.isEmpty(), qPrintable("never done:\n" + missing.join('\n')));
    QVERIFY2(surplus.isEmpty(), qPrintable("not in the index:\n" + surplus.join('\n')));
}

QTEST_MAIN(TestSettingsKeys)
#include "tst_settingskeys.moc"
