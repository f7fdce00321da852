#pragma once

#include <QString>
#include <QVariant>

#include <iterator>
#include <string_view>

/// Every setting that the unit keeps, in the one table that pages, audio service, shell and inspector read.
namespace mem {

enum class SettingType {
    Bool,
    Int,
    Text,
};

/// Who writes a setting and gives it its meaning; everybody may read it.
enum class SettingOwner {
    AudioSetting, ///< the audio settings' pages
    AudioService, ///< the audio service
    HeadUnit,     ///< the shell
};

struct Setting
{
    /// As it stands in the store. "%1" stands for each number of a family, 0 .. count - 1.
    const char* key;
    int count; ///< 1 for a key that is no family
    SettingType type;
    /// What absence means, for Int and for Bool (0, 1).
    int defaultValue;
    /// What absence means, for Text.
    const char* defaultText;
    /// Range of an Int, both ends included. Whoever reads a stored value outside it says what he makes of it.
    int smallest, largest;
    SettingOwner owner;
};

namespace detail {

constexpr Setting flag(const char* key, bool defaultValue, SettingOwner owner)
{
    return {key, 1, SettingType::Bool, defaultValue ? 1 : 0, "", 0, 1, owner};
}

constexpr Setting number(const char* key, int count, int defaultValue, int smallest, int largest,
                         SettingOwner owner)
{
    return {key, count, SettingType::Int, defaultValue, "", smallest, largest, owner};
}

constexpr Setting text(const char* key, int count, const char* defaultText, SettingOwner owner)
{
    return {key, count, SettingType::Text, 0, defaultText, 0, 0, owner};
}

constexpr SettingOwner pages = SettingOwner::AudioSetting;
constexpr SettingOwner service = SettingOwner::AudioService;
constexpr SettingOwner shell = SettingOwner::HeadUnit;

} // namespace detail

/// Spellings such as "customloudnes" and "Troggle" are what stored files hold, and stay.
// clang-format off
constexpr Setting settings[] = {
    // Which page shows.
    detail::number("AudioSetting_Page",                  1,  1,  0,   5,     detail::pages),
    // Equalizer, loudness, balance: the service's, which the pages read where their comment says so.
    detail::number("AudioService_EQType",                1,  0,  0,   8,     detail::service),
    detail::number("eq1%1",                              13, 0,  -10, 10,    detail::service), // read by the pages; dB
    detail::number("eq2%1",                              13, 0,  -10, 10,    detail::service), // read by the pages; dB
    detail::flag  ("customloudnes",                          false,          detail::service), // read by the pages
    detail::number("AudioService_Balance",               1,  0,  -15, 15,    detail::service),
    detail::number("AudioService_Fader",                 1,  0,  -15, 15,    detail::service),
    // What the service was sent last: filters "frequency;attenuation;slope", of both pages' lists, and delays in
    // microseconds. Without a filter of its own the subwoofer's is made of the pages' values below.
    detail::text  ("AudioService_HPF_%1",                4,  "0;0;0",        detail::service),
    detail::text  ("AudioService_LPF_%1",                4,  "0;0;0",        detail::service),
    detail::text  ("AudioService_Sub",                   1,  "",             detail::service),
    detail::text  ("AudioService_MainHPF_%1",            4,  "0;0;0",        detail::service),
    detail::text  ("AudioService_MainLPF_%1",            4,  "0;0;0",        detail::service),
    detail::text  ("AudioService_MainSub",               1,  "",             detail::service),
    detail::number("AudioService_DelayUs_%1",            5,  0,  0,   10000, detail::service),
    // Subwoofer, shared by three pages.
    detail::flag  ("subwooferOnOff",                         true,           detail::pages),
    detail::number("subwooferLevel",                     1,  11, 0,   255,   detail::pages),
    detail::number("subwooferFreq",                      1,  7,  0,   9,     detail::pages),
    detail::number("subwooferslope",                     1,  0,  0,   3,     detail::pages),
    detail::flag  ("Audio_Phase_Troggle",                    false,          detail::pages),
    // The stand-alone crossover page; its low-pass slope is 3 until one of the keys 0..2 is touched.
    detail::flag  ("lpfState",                               false,          detail::pages),
    detail::number("lpfFreq",                            1,  0,  0,   5,     detail::pages),
    detail::number("lpfslope",                           1,  3,  0,   3,     detail::pages),
    detail::flag  ("hpfState",                               false,          detail::pages),
    detail::number("hpfFreq",                            1,  4,  0,   5,     detail::pages),
    detail::number("hpfslope",                           1,  1,  0,   3,     detail::pages),
    // The speaker groups' crossover page: the chosen group, and maps "group;index;group;index;group;index".
    detail::number("settings_cross_filter",              1,  0,  0,   2,     detail::pages),
    detail::text  ("settings_cross_freq_index",          1,  "0;0;1;0;2;6",  detail::pages),
    detail::text  ("settings_cross_gain_index",          1,  "0;0;1;0;2;0",  detail::pages),
    detail::text  ("settings_cross_slope_index",         1,  "0;0;1;0;2;0",  detail::pages),
    // Time alignment: five speakers in three presets, 0.1 ms each.
    detail::number("Audio_Time_Alignment_Num1%1",        5,  0,  0,   100,   detail::pages),
    detail::number("Audio_Time_Alignment_Num2%1",        5,  0,  0,   100,   detail::pages),
    detail::number("Audio_Time_Alignment_Num3%1",        5,  0,  0,   100,   detail::pages),
    detail::number("Audio_Time_Alignment_Preset",        1,  0,  0,   2,     detail::pages),
    // Levels now, by channel of the service, then at power-on, then input gains (0..15 stand for -5..+10 dB).
    detail::number("volume%1",                           6,  0,  0,   50,    detail::service), // read by the pages
    detail::number("Setup_Main_Volume",                  1,  25, 0,   50,    detail::pages),
    detail::number("Setup_Volume_Type_BT_Ringer",        1,  40, 0,   50,    detail::pages),
    detail::number("Setup_Volume_Type_BT_Talking",       1,  40, 0,   50,    detail::pages),
    detail::number("Setup_Volume_Type_Navi",             1,  40, 0,   50,    detail::pages),
    detail::number("Setup_Volume_Type_Voice",            1,  40, 0,   50,    detail::pages),
    detail::number("Setup_Input_Gain_Type_Radio",        1,  5,  0,   15,    detail::pages),
    detail::number("Setup_Input_Gain_Type_USB",          1,  5,  0,   15,    detail::pages),
    detail::number("Setup_Input_Gain_Type_BT_Audio",     1,  5,  0,   15,    detail::pages),
    detail::number("Setup_Input_Gain_Type_AUX",          1,  5,  0,   15,    detail::pages),
    detail::number("Setup_Input_Gain_Type_Carplay",      1,  5,  0,   15,    detail::pages),
    detail::number("Setup_Input_Gain_Type_Android_Auto", 1,  5,  0,   15,    detail::pages),
    detail::number("Setup_Input_Gain_Type_DAB",          1,  5,  0,   15,    detail::pages),
    // The unit's own: its language, the source that is heard, and what plays as each source.
    detail::text  ("Headunit_Language",                  1,  "",             detail::shell),
    detail::text  ("Headunit_Playing",                   1,  "",             detail::shell),
    detail::text  ("Headunit_Source_Radio",              1,  "",             detail::shell),
    detail::text  ("Headunit_Source_USB",                1,  "",             detail::shell),
    detail::text  ("Headunit_Source_BT_Audio",           1,  "",             detail::shell),
    detail::text  ("Headunit_Source_AUX",                1,  "",             detail::shell),
    detail::text  ("Headunit_Source_Carplay",            1,  "",             detail::shell),
    detail::text  ("Headunit_Source_Android_Auto",       1,  "",             detail::shell),
    detail::text  ("Headunit_Source_DAB",                1,  "",             detail::shell),
    // What is being started, while it is.
    detail::text  ("Headunit_Starting",                  1,  "",             detail::shell),
};
// clang-format on
static_assert(std::size(settings) == 56, "one row a key or family of keys");

/// The row of that key. Meant for constants: a key that is in no row doesn't compile there.
constexpr const Setting& settingOf(std::string_view key)
{
    for (const Setting& row : settings) {
        if (key == row.key)
            return row;
    }
    throw "no setting has this key";
}

/// The key as the store knows it. member: which one of a family, 0 .. count - 1; ignored for any other row.
inline QString keyOf(const Setting& row, int member = 0)
{
    const QString key = QString::fromLatin1(row.key);
    return row.count > 1 ? key.arg(member) : key;
}

/// What absence means, in the row's type.
inline QVariant defaultOf(const Setting& row)
{
    switch (row.type) {
    case SettingType::Bool:
        return row.defaultValue != 0;
    case SettingType::Int:
        return row.defaultValue;
    case SettingType::Text:
        break;
    }
    return QString::fromLatin1(row.defaultText);
}

/// Parts of "subwooferLevel": the attenuation in dB, and beside it whether it was written while the subwoofer
/// was on.
constexpr int subwooferLevelBits = 0x7F;
constexpr int subwooferWrittenWhileOn = 0x80;

} // namespace mem
