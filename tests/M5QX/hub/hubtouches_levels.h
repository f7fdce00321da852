#pragma once

#include "tests/M5QX/hub/hubtouches.h"

/// Rows of the pages that set levels and delays: audio levels, time alignment, volumes.
namespace hubtouches {

inline QVector<Row> levelsRows()
{
    const auto at = [](int balance, int fader) {
        return QVector<Given>{{currentBalance, balance}, {currentFader, fader}};
    };
    const auto set = [](int balance, int fader) { return service("setBalanceFader", balance, fader, true); };
    const auto pad = [&](int balance, int fader) { return QStringList{mcuBeep, set(balance, fader)}; };
    const auto arrow = [&](int balance, int fader) {
        return QStringList{keyBeep,          readBalanceFader, readBalanceFader, set(balance, fader),
                           readBalanceFader, readBalanceFader};
    };
    // The right key alone also says in the log what the service has by then.
    const auto rightArrow = [&](int balance, int fader) {
        return arrow(balance, fader) << readBalanceFader << readBalanceFader;
    };
    const auto onOff = [](bool on) { return writeOf("Func", "subwooferOnOff", true, on); };
    const auto level = [](int value, bool commit = true) {
        return writeOf("Func", "subwooferLevel", 11, value, commit);
    };
    const auto sub = [](int freq, int level) { return service("setSubFilter", freq, level, 0); };
    const QString readLevel = readOf("Func", "subwooferLevel", 11);
    const QString readFreq = readOf("Func", "subwooferFreq", 7);
    const auto slider = [&](int freq, int value) {
        return QStringList{onOff(true), readFreq, level(value | 128), sub(freq, value)};
    };
    const auto step = [&](int freq, int value) {
        return QStringList{keyBeep, onOff(true), readLevel, readFreq, level(value | 128), sub(freq, value)};
    };
    const Given off{"subwooferOnOff", false};
    const Given other{"subwooferFreq", 3};
    const QVector<Given> fresh;
    // clang-format off
    return {
        {"pad, centre",                      Levels, at(5, 5), "T247,295", pad(0, 0)},
        {"pad, 3 px right",                  Levels, fresh, "T250,295", pad(0, 0)},
        {"pad, 4 px right",                  Levels, fresh, "T251,295", pad(1, 0)},
        {"pad, 3 px left",                   Levels, fresh, "T244,295", pad(0, 0)},
        {"pad, 4 px left",                   Levels, fresh, "T243,295", pad(-1, 0)},
        {"pad, 4 px up",                     Levels, fresh, "T247,291", pad(0, 1)},
        {"pad, 4 px down",                   Levels, fresh, "T247,299", pad(0, -1)},
        {"pad, 101 px right",                Levels, fresh, "T348,295", pad(14, 0)},
        {"pad, 102 px right",                Levels, fresh, "T349,295", pad(15, 0)},
        {"pad, 102 px down",                 Levels, fresh, "T247,397", pad(0, -15)},
        {"pad, first pixel",                 Levels, fresh, "T121,169", pad(-15, 15)},
        {"pad, last pixel",                  Levels, fresh, "T373,421", pad(15, -15)},
        {"pad, left of it",                  Levels, fresh, "T120,230", {}},
        {"pad, right of it",                 Levels, fresh, "T374,230", {}},
        {"pad, dragged",                     Levels, fresh, "P247,295 M261,288 M275,281 R275,281", pad(4, 2)},
        {"pad, lifted without a move",       Levels, fresh, "P247,295 R275,281", pad(4, 2)},
        {"pad, dragged off the screen",      Levels, fresh, "P247,295 M-50,700 R-50,700", pad(-15, -15)},
        {"pad, off the screen and back",     Levels, fresh, "P247,295 M-50,700 M254,295 R254,295", pad(1, 0)},
        {"pad, lifted on an arrow key",      Levels, fresh, "P247,295 M416,296 R416,296", pad(15, 0)},
        {"pad, lifted on a tab key",         Levels, fresh, "P247,295 M247,556 R247,556", pad(0, -15)},
        {"right key, first pixel",           Levels, at(2, 3), "T379,261", rightArrow(3, 3)},
        {"right key, to the end",            Levels, at(14, 0), "T452,330", rightArrow(15, 0)},
        {"right key, at the end",            Levels, at(15, 0), "T416,296", {}},
        {"right key, back from the other end", Levels, at(-15, 0), "T416,296", rightArrow(-14, 0)},
        {"left key, first pixel",            Levels, at(2, 3), "T42,261", arrow(1, 3)},
        {"left key, last pixel",             Levels, at(2, 3), "T115,330", arrow(1, 3)},
        {"left key, at the end",             Levels, at(-15, 0), "T79,296", {}},
        {"up key, first pixel",              Levels, at(2, 3), "T211,89", arrow(2, 4)},
        {"up key, last pixel",               Levels, at(2, 14), "T284,158", arrow(2, 15)},
        {"up key, at the end",               Levels, at(0, 15), "T248,124", {}},
        {"down key, first pixel",            Levels, at(2, 3), "T211,431", arrow(2, 2)},
        {"down key, last pixel",             Levels, at(2, -14), "T284,500", arrow(2, -15)},
        {"down key, at the end",             Levels, at(0, -15), "T248,466", {}},
        {"up key, after the pad took the end away", Levels, at(0, 15), "T248,124", arrow(0, 1), "T247,295"},
        {"arrow key, lifted beside it",      Levels, fresh, "P79,296 M20,296 R20,296", {}},
        {"arrow key, lifted on the pad",     Levels, fresh, "P79,296 M247,295 R247,295", {}},
        {"arrow key, left and come back",    Levels, fresh, "P79,296 M-9,-9 M80,297 R80,297", arrow(-1, 0)},
        {"between key and pad",              Levels, fresh, "T118,296", {}},
        {"reset, first pixel",               Levels, at(7, -7), "T22,431", {keyBeep, set(0, 0)}},
        {"reset, on its caption",            Levels, at(7, -7), "T96,466", {keyBeep, set(0, 0)}},
        {"reset, last pixel",                Levels, at(15, 15), "T170,500", {keyBeep, set(0, 0)}},
        {"reset, right beside it",           Levels, at(7, -7), "T171,466", {}},
        {"loudness on",                      Levels, fresh, "T920,180", {mcuBeep, service("setCustomLoudness", true, false)}},
        {"loudness off",                     Levels, {{"customloudnes", true}}, "T979,209", {mcuBeep, service("setCustomLoudness", false, false)}},
        {"loudness, above it",               Levels, fresh, "T950,179", {}},
        {"loudness, lifted on the subwoofer's switch", Levels, fresh, "P950,195 M950,265 R950,265", {}},
        {"subwoofer off",                    Levels, {{"subwooferLevel", 139}}, "T920,250", {mcuBeep, onOff(false), readLevel, readFreq, level(11, false), sub(0, 11)}},
        {"subwoofer on",                     Levels, {off, other}, "T979,279", {mcuBeep, onOff(true), readLevel, readFreq, level(139), sub(3, 11)}},
        {"subwoofer, below it",              Levels, fresh, "T950,280", {}},
        {"level slider, middle",             Levels, fresh, "T759,410", slider(7, 6)},
        {"level slider, first pixel",        Levels, {other}, "T588,380", slider(3, 12)},
        {"level slider, last pixel",         Levels, fresh, "T929,438", slider(7, 0)},
        {"level slider, dragged off to the right", Levels, fresh, "P600,410 M759,410 M1100,410 R1100,410", slider(7, 0)},
        {"level slider, dragged off to the left", Levels, fresh, "P759,410 M300,600 R300,600", slider(7, 12)},
        {"level slider, out and back",       Levels, fresh, "P600,410 M1100,-9 M759,410 R759,410", slider(7, 6)},
        {"level slider, switched off",       Levels, {off}, "P600,410 M759,410 R759,410", {}},
        {"level slider, after the switch",   Levels, {off}, "T759,410", slider(7, 6), "T950,265"},
        {"level up, first pixel",            Levels, fresh, "T930,380", step(7, 10)},
        {"level up, at the loudest",         Levels, {{"subwooferLevel", 128}}, "T992,438", step(7, 0)},
        {"level up, switched off",           Levels, {off}, "T960,410", {}},
        {"level down, first pixel",          Levels, {other}, "T525,380", step(3, 12)},
        {"level down, at the softest",       Levels, {{"subwooferLevel", 12}}, "T587,438", step(7, 12)},
        {"level down, switched off",         Levels, {off}, "T556,410", {}},
        {"level down, after the switch went off", Levels, fresh, "T556,410", {}, "T950,265"},
        {"level key, lifted on the slider",  Levels, fresh, "P556,410 M759,410 R759,410", {}},
        {"row captions",                     Levels, fresh, "P600,195 M600,265 M600,330 R600,330", {}},
        {"texts of balance and fader",       Levels, fresh, "T100,120 T390,120", {}},
        {"where the hidden back key lies",   Levels, fresh, "T975,53", {}},
    };
    // clang-format on
}

inline QVector<Row> alignmentRows()
{
    struct Channel
    {
        const char* name;
        int minusX, plusX, y, mask;
    };
    // clang-format off
    static const Channel channels[] = {
        {"front left",   31, 185, 132,  1},
        {"front right", 581, 735, 132,  2},
        {"rear left",    31, 185, 274,  4},
        {"rear right",  581, 735, 274,  8},
        {"subwoofer",   309, 468, 400, 32},
    };
    // clang-format on
    static_assert(std::size(channels) == 5, "five channels");
    const QString presetKey = QStringLiteral("Audio_Time_Alignment_Preset");
    const auto key = [](int preset, int item) {
        return QStringLiteral("Audio_Time_Alignment_Num%1%2").arg(preset + 1).arg(item);
    };
    const auto delay = [](int item, int value) {
        return service("setSurroundDelay", channels[item].mask, value / 10.0);
    };
    const auto step = [&](int preset, int item, int value) {
        const QString readPreset = readOf("Exe", presetKey, 0);
        const QString readValue = readOf("Exe", key(preset, item), 0);
        return QStringList{keyBeep,    readPreset,
                           readValue,  delay(item, value),
                           readPreset, writeOf("Exe", key(preset, item), 0, value),
                           readPreset, readValue};
    };
    QVector<Row> rows;
    for (int i = 0; i < 5; ++i) {
        const Channel& c = channels[i];
        const QString name = QLatin1String(c.name);
        const QString plus = touchAt(c.plusX + 30, c.y + 30);
        const QString minus = touchAt(c.minusX + 30, c.y + 30);
        const auto holds = [&](int value, int preset = 0) {
            return QVector<Given>{{presetKey, preset}, {key(preset, i), value}};
        };
        // clang-format off
        rows << Row{name + " plus, first pixel, from 0", Alignment, {}, touchAt(c.plusX, c.y), step(0, i, 1)}
             << Row{name + " plus, last pixel, preset 2", Alignment, holds(42, 1), touchAt(c.plusX + 73, c.y + 69), step(1, i, 43)}
             << Row{name + " plus, to the top",         Alignment, holds(99), plus, step(0, i, 100)}
             << Row{name + " plus, at the top",         Alignment, holds(100), plus, {}}
             << Row{name + " plus, after the step to the top", Alignment, holds(99), plus, {}, plus}
             << Row{name + " plus, after a step down from the top", Alignment, holds(100), plus, step(0, i, 100), minus}
             << Row{name + " minus, first pixel, to 0", Alignment, holds(1), touchAt(c.minusX, c.y), step(0, i, 0)}
             << Row{name + " minus, last pixel, preset 3", Alignment, holds(15, 2), touchAt(c.minusX + 73, c.y + 69), step(2, i, 14)}
             << Row{name + " minus, at 0",              Alignment, {}, minus, {}}
             << Row{name + " minus, after a step up from 0", Alignment, {}, minus, step(0, i, 0), plus}
             << Row{name + " minus, after reset",       Alignment, holds(50), minus, {}, "T93,435"}
             << Row{name + " plus, lifted on minus",    Alignment, holds(50), 'P' + plus.mid(1) + " M" + minus.mid(1) + " R" + minus.mid(1), {}}
             << Row{name + " value",                    Alignment, holds(50), touchAt(c.minusX + 110, c.y + 30), {}};
        // clang-format on
    }
    rows << Row{"a stored value above the range is taken as it is",
                Alignment,
                {{key(0, 0), 150}},
                "T222,167",
                step(0, 0, 151)};

    const QVector<int> memory{11, 12, 13, 14, 15};
    const QString freeReads = QStringLiteral("^SettingsExe\\.getValue\\(\"Audio_Time_Alignment_");
    const auto chosen = [&](const char* name, int preset, int from, const char* finger) {
        QVector<Given> given{{presetKey, from}};
        QStringList calls{keyBeep, writeOf("Exe", presetKey, 0, preset)};
        for (int i = 0; i < 5; ++i) {
            given << Given{key(preset, i), memory.at(i)};
            calls << delay(i, memory.at(i));
        }
        rows << Row{name, Alignment, given, finger, calls, {}, freeReads};
    };
    chosen("preset 1, first pixel", 0, 2, "T847,138");
    chosen("preset 2, on its label", 1, 0, "T918,266");
    chosen("preset 3, last pixel", 2, 0, "T988,393");
    chosen("preset 2, chosen already", 1, 1, "T847,231");
    const auto reset = [&](const char* name, int preset, const char* finger) {
        QStringList calls{keyBeep};
        for (int p = 0; p < 3; ++p) {
            for (int i = 0; i < 5; ++i)
                calls << writeOf("Exe", key(p, i), 0, 0);
        }
        for (int i = 0; i < 5; ++i)
            calls << delay(i, 0);
        rows << Row{name, Alignment, {{presetKey, preset}, {key(0, 1), 20}, {key(2, 4), 30}}, finger, calls,
                    {},   freeReads};
    };
    reset("reset, first pixel", 0, "T22,400");
    reset("reset, on its caption, preset 3", 2, "T93,435");
    reset("reset, last pixel", 1, "T163,469");
    // clang-format off
    rows << Row{"reset, right beside it",          Alignment, {}, "T164,435", {}}
         << Row{"reset, lifted beside it",         Alignment, {}, "P93,435 M200,435 R200,435", {}}
         << Row{"between the presets",             Alignment, {}, "T918,220", {}}
         << Row{"preset, lifted on the next",      Alignment, {}, "P918,170 M918,266 R918,266", {}}
         << Row{"preset, lifted on a tab key",     Alignment, {}, "P918,360 M918,556 R918,556", {}}
         << Row{"car",                             Alignment, {}, "P400,200 M450,300 R450,300", {}}
         << Row{"where the hidden back key lies",  Alignment, {}, "T975,43", {}};
    // clang-format on
    return rows;
}

inline QVector<Row> volumesRows()
{
    enum { StartUp = 5 };
    struct Level
    {
        const char* name;
        const char* key;
        int byDefault;
        int source;
        int y; ///< of the row on the screen, scrolled as `view` says
        const char* view;
    };
    // The next-page key shows the end of the list; between the two views the scroll bar goes by one page.
    static const char* const top = "";
    static const char* const between = "T986,340";
    static const char* const end = "T985,444";
    // clang-format off
    static const Level levels[] = {
        {"main default",  "Setup_Main_Volume",                 25, -1, 125, top},
        {"ring default",  "Setup_Volume_Type_BT_Ringer",       40, -1, 203, top},
        {"call default",  "Setup_Volume_Type_BT_Talking",      40, -1, 281, top},
        {"navi default",  "Setup_Volume_Type_Navi",            40, -1, 359, top},
        {"voice default", "Setup_Volume_Type_Voice",           40, -1, 437, top},
        {"radio",         "Setup_Input_Gain_Type_Radio",        5, 18, 121, between},
        {"usb",           "Setup_Input_Gain_Type_USB",          5,  6,  59, end},
        {"btaudio",       "Setup_Input_Gain_Type_BT_Audio",     5,  5, 137, end},
        {"avin",          "Setup_Input_Gain_Type_AUX",          5,  7, 215, end},
        {"carplay",       "Setup_Input_Gain_Type_Carplay",      5,  0, 293, end},
        {"androidauto",   "Setup_Input_Gain_Type_Android_Auto", 5,  1, 371, end},
        {"dab",           "Setup_Input_Gain_Type_DAB",          5, 19,  -1, end}, // never seen, read with the others
    };
    // clang-format on
    static_assert(std::size(levels) == 12, "five start-up levels, seven gains");
    QVector<Row> rows;
    for (int i = 0; i < 11; ++i) {
        const Level& level = levels[i];
        const bool gain = i >= StartUp;
        const int maximum = gain ? 15 : 50;
        const QString name = QLatin1String(level.name);
        const auto save = [&](int value) {
            QStringList calls{writeOf("Func", level.key, level.byDefault, value)};
            if (gain)
                calls << service("setSourceOffsetGain", level.source, value);
            return calls;
        };
        const auto step = [&](int value) {
            QStringList calls{keyBeep, readOf("Func", level.key, level.byDefault)};
            calls << save(value);
            for (int other = gain ? int(StartUp) : 0; other < (gain ? 12 : int(StartUp)); ++other)
                calls << readOf("Func", levels[other].key, levels[other].byDefault);
            return calls;
        };
        const auto row = [&](const char* what, const QVector<Given>& given, const QString& finger,
                             const QStringList& calls) {
            rows << Row{name + QLatin1String(what), Volumes, given, finger, calls, level.view};
        };
        const auto holds = [&](int value) { return QVector<Given>{{level.key, value}}; };
        const int first = qMax(level.y + 10, 75); // of the keys; the list is cut above
        const int last = level.y + 68;
        const int mid = level.y + 40;
        const int half = gain ? 7 : 25;
        const QString drag = QStringLiteral("P600,%1 M692,%1 M%2,600 R%2,600").arg(mid);
        row(" up, first pixel", {}, touchAt(889, first), step(level.byDefault + 1));
        row(" up, at the top", holds(maximum), touchAt(951, last), step(maximum));
        row(" down, under the label's end", {}, touchAt(433, first), step(level.byDefault - 1));
        row(" down, at 0", holds(0), touchAt(495, last), step(0));
        row(" down, from above the range", holds(1000), touchAt(460, mid), step(maximum));
        row(" slider, first pixel", {}, touchAt(496, first), save(0));
        row(" slider, middle", {}, touchAt(692, mid), save(half));
        row(" slider, last pixel", {}, touchAt(888, last), save(maximum));
        row(" slider, dragged off to the right", {}, drag.arg(1100), save(maximum));
        row(" slider, dragged off to the left", {}, drag.arg(-20), save(0));
        row(" key, lifted on the slider", {}, QStringLiteral("P460,%1 M692,%1 R692,%1").arg(mid), {});
        row(" label", {}, touchAt(200, mid), {});
    }
    const auto paged = [](const char* way, int y) {
        return QStringList{mcuBeep, QStringLiteral("R9TransferStation.setup%1Page()").arg(QLatin1String(way)),
                           QStringLiteral("ScrollManage.scrollToPos(0,%1, false)").arg(y)};
    };
    const auto mainUp = rows.first().calls;
    // clang-format off
    rows << Row{"next page, first pixel",           Volumes, {}, "T960,402",  paged("Next", 1028)}
         << Row{"next page, last pixel",            Volumes, {}, "T1009,486", paged("Next", 1028)}
         << Row{"next page, at the end already",    Volumes, {}, "T985,444",  paged("Next", 1028), "T985,444"}
         << Row{"previous page, first pixel",       Volumes, {}, "T960,70",   paged("Prev", 0)}
         << Row{"previous page, last pixel",        Volumes, {}, "T1009,154", paged("Prev", 0), "T985,444"}
         << Row{"next page, lifted beside it",      Volumes, {}, "P985,444 M900,500 R900,500", {}}
         << Row{"first row after there and back",   Volumes, {}, "T889,135", mainUp, "T985,444 T985,112"}
         << Row{"scroll bar, dragged",              Volumes, {}, "P986,200 M986,300 M900,700 R900,700", {}}
         << Row{"title of the start-up levels",     Volumes, {}, "T300,95", {}}
         << Row{"list, dragged",                    Volumes, {}, "P200,480 M200,300 M200,100 R200,100", {}}
         << Row{"slider, lifted on a tab key",      Volumes, {}, "P692,165 M692,556 R692,556", {writeOf("Func", "Setup_Main_Volume", 25, 25)}}
         << Row{"emblem",                           Volumes, {}, "T50,45", {}}
         << Row{"where the hidden exit key lies",   Volumes, {}, "T950,40", {}};
    // clang-format on
    return rows;
}

} // namespace hubtouches
