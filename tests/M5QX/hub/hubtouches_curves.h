#pragma once

#include "tests/M5QX/hub/hubtouches.h"

/// Rows of the pages that shape the sound by frequency: equalizer, presets, crossover.
namespace hubtouches {

inline QVector<Row> equalizerRows()
{
    struct Bar
    {
        const char* name;
        int x;
        int width;
    };
    // clang-format off
    static const Bar bars[] = {
        {"32 Hz", 109, 60},
        {"63 Hz", 175, 62},
        {"125 Hz", 241, 62},
        {"250 Hz", 306, 62},
        {"500 Hz", 372, 62},
        {"1 kHz", 438, 62},
        {"2 kHz", 504, 62},
        {"4 kHz", 570, 62},
        {"8 kHz", 636, 62},
        {"10 kHz", 702, 62},
        {"12 kHz", 767, 62},
        {"14 kHz", 833, 62},
        {"16 kHz", 899, 62},
    };
    // clang-format on
    static_assert(std::size(bars) == 13, "thirteen bands");

    const Given user1{currentType, 6};
    const Given user2{currentType, 7};
    const auto sent = [](int type, int value, int band) {
        return QStringList{service("setEQType", type, true), keyBeep,
                           service(type == 6 ? "setCustomEq1" : "setCustomEq2", value, band, true)};
    };
    QVector<Row> rows;
    for (int band = 0; band < 13; ++band) {
        const Bar& bar = bars[band];
        const QString name = QLatin1String(bar.name);
        const int right = bar.x + bar.width - 1;
        const QString inside = QString::number(bar.x + bar.width / 2);
        rows
            << Row{name + ", first pixel, user 1", Equalizer, {user1}, touchAt(bar.x, 141), sent(6, 10, band)}
            << Row{name + ", last pixel, user 2", Equalizer, {user2}, touchAt(right, 504), sent(7, -10, band)}
            << Row{name + ", drawn from +7 down to -4",
                   Equalizer,
                   {user1},
                   QStringLiteral("P%1,200 M%1,300 M%1,400 R%1,400").arg(inside),
                   sent(6, -4, band)}
            << Row{name + ", beside the bar", Equalizer, {user1}, touchAt(right + 1, 300), {}};
    }
    // clang-format off
    rows << Row{"middle of a bar is 0",             Equalizer, {user1}, "T120,323", sent(6, 0, 0)}
         << Row{"above a bar",                      Equalizer, {user1}, "T120,140", {}}
         << Row{"below a bar",                      Equalizer, {user1}, "T120,505", {}}
         << Row{"left of the bars, on the scale",   Equalizer, {user1}, "T70,156", {}}
         << Row{"a preset gives way to user 1",     Equalizer, {{currentType, 3}}, "T120,323", sent(6, 0, 0)}
         << Row{"a type without a row gives way",   Equalizer, {{currentType, 8}}, "T120,323", sent(6, 0, 0)}
         << Row{"a preset gives way to the user curve shown last", Equalizer, {user2}, "T120,323", sent(7, 0, 0),
                "T429,556 T874,179 T263,556"}
         << Row{"across bars",                      Equalizer, {user1}, "P260,200 M330,300 M400,450 R400,450", sent(6, 7, 2)}
         << Row{"across bars and back",             Equalizer, {user1}, "P260,200 M400,450 M260,323 R260,323", sent(6, 0, 2)}
         << Row{"lifted in the next bar at once",   Equalizer, {user1}, "P260,200 R330,400", sent(6, 7, 2)}
         << Row{"lifted lower without a move",      Equalizer, {user1}, "P260,200 R260,400", sent(6, 7, 2)}
         << Row{"off the screen",                   Equalizer, {user2}, "P260,200 M260,90 M-50,-50 R-50,-50", sent(7, 7, 2)}
         << Row{"down onto the tab keys",           Equalizer, {user1}, "P260,480 M260,556 R260,556", sent(6, -9, 2)}
         << Row{"from a gap into a bar",            Equalizer, {user1}, "P171,300 M200,300 R200,300", {}}
         << Row{"minus, from user 1",               Equalizer, {user1}, "T382,66",  {keyBeep, service("setEQType", 7, true)}}
         << Row{"minus, from user 2",               Equalizer, {user2}, "T456,136", {keyBeep, service("setEQType", 6, true)}}
         << Row{"plus, from user 1",                Equalizer, {user1}, "T614,66",  {keyBeep, service("setEQType", 7, true)}}
         << Row{"plus, from user 2",                Equalizer, {user2}, "T688,136", {keyBeep, service("setEQType", 6, true)}}
         << Row{"plus, from a preset",              Equalizer, {{currentType, 2}}, "T651,101", {keyBeep, service("setEQType", 7, true)}}
         << Row{"plus, lifted beside it",           Equalizer, {user1}, "P651,101 M535,101 R535,101", {}}
         << Row{"name of the type",                 Equalizer, {user1}, "T535,101", {}}
         << Row{"back key",                         Equalizer, {user1}, "T938,13",  {back}}
         << Row{"back key, lifted below it",        Equalizer, {user1}, "P1011,72 M1011,80 R1011,80", {}};
    // clang-format on
    for (Row& row : rows)
        row.freeReads = QStringLiteral("^AudioService\\.getCurrEQType\\(\\)$");
    return rows;
}

inline QVector<Row> presetRows()
{
    struct Tile
    {
        const char* name;
        int x, y, type;
    };
    // clang-format off
    static const Tile tiles[] = {
        {"user 1",   35, 116, 6},
        {"jazz",    276, 116, 5},
        {"hip-hop", 519, 116, 4},
        {"pop",     761, 116, 3},
        {"user 2",   35, 312, 7},
        {"rock",    276, 312, 2},
        {"R&B",     519, 312, 1},
        {"flat",    761, 312, 0},
    };
    // clang-format on
    static_assert(std::size(tiles) == 8, "eight tiles");
    QVector<Row> rows;
    for (const Tile& tile : tiles) {
        const QString name = QLatin1String(tile.name);
        const QStringList sent{service("setEQType", tile.type, true)};
        const QString inside = touchAt(tile.x + 110, tile.y + 100).mid(1);
        rows << Row{name + ", first pixel", Presets, {}, touchAt(tile.x, tile.y), sent}
             << Row{name + ", last pixel", Presets, {}, touchAt(tile.x + 226, tile.y + 125), sent}
             << Row{name + ", on its label", Presets, {}, touchAt(tile.x + 100, tile.y + 40), sent}
             << Row{name + ", checked already", Presets, {{currentType, tile.type}}, 'T' + inside, sent}
             << Row{name + ", lifted outside", Presets, {}, "P" + inside + " M10,480 R10,480", {}}
             << Row{name + ", left and come back",
                    Presets,
                    {},
                    'P' + inside + " M-9,700 M" + inside + " R" + inside,
                    sent}
             << Row{name + ", right beside it", Presets, {}, touchAt(tile.x + 227, tile.y + 60), {}};
    }
    rows << Row{"from tile to tile", Presets, {}, "P140,150 M400,150 R400,150", {}}
         << Row{"between the rows", Presets, {}, "T400,270", {}} << Row{"emblem", Presets, {}, "T50,45", {}}
         << Row{"where the hidden exit key lies", Presets, {}, "T975,43", {}};
    return rows;
}

inline QVector<Row> crossoverRows()
{
    const QString freqKey = QStringLiteral("settings_cross_freq_index");
    const QString gainKey = QStringLiteral("settings_cross_gain_index");
    const QString slopeKey = QStringLiteral("settings_cross_slope_index");
    const auto freq = [&](const char* map) { return writeOf("Func", freqKey, "0;0;1;0;2;6", map); };
    const auto gain = [&](const char* map) { return writeOf("Func", gainKey, "0;0;1;0;2;0", map); };
    const auto slope = [&](const char* map) { return writeOf("Func", slopeKey, "0;0;1;0;2;0", map); };
    const auto group = [](int index) { return writeOf("Func", "settings_cross_filter", 0, index); };
    const auto phase = [](bool on) { return writeOf("Func", "Audio_Phase_Troggle", false, on); };
    const auto hpf = [](int f, int g, int speaker, int s) {
        return service("setHPFFilter", f, g, speaker, s);
    };
    // The subwoofer's filter and what is stored with it.
    const auto sub = [](int f, int g, int s) {
        return QStringList{service("setSubFilter", f, g, s), writeOf("Func", "subwooferFreq", 7, f),
                           writeOf("Func", "subwooferslope", 0, s),
                           writeOf("Func", "subwooferLevel", 11, g | 128),
                           writeOf("Func", "subwooferOnOff", true, true)};
    };
    const Given front80{freqKey, "0;4;1;0;2;6"};
    const Given rear{"settings_cross_filter", 1};
    const Given woofer{"settings_cross_filter", 2};
    const Given steepest{slopeKey, "0;3;1;0;2;0"};
    const Given lowest{gainKey, "0;12;1;0;2;0"};
    const Given middle{gainKey, "0;5;1;0;2;0"};
    const QVector<Given> fresh;
    // clang-format off
    return {
        {"filter up, from off",               Crossover, fresh, "T264,417", {keyBeep, freq("0;1;1;0;2;6"), hpf(1, 0, 1, 0), hpf(1, 0, 2, 0)}},
        {"filter up, last pixel",             Crossover, {front80}, "T337,486", {keyBeep, freq("0;5;1;0;2;6"), hpf(5, 0, 1, 0), hpf(5, 0, 2, 0)}},
        {"filter up, at 250 Hz",              Crossover, {{freqKey, "0;8;1;0;2;6"}}, "T300,450", {}},
        {"filter down, where the title covers it", Crossover, {front80}, "T24,418", {keyBeep, freq("0;3;1;0;2;6"), hpf(3, 0, 1, 0), hpf(3, 0, 2, 0)}},
        {"filter down, to off",               Crossover, {{freqKey, "0;1;1;0;2;6"}}, "T95,486", {keyBeep, freq("0;0;1;0;2;6"), hpf(0, 0, 1, 0), hpf(0, 0, 2, 0)}},
        {"filter down, when off",             Crossover, fresh, "T60,450", {}},
        {"slope up",                          Crossover, {front80}, "T596,417", {keyBeep, slope("0;1;1;0;2;0"), hpf(4, 0, 1, 1), hpf(4, 0, 2, 1)}},
        {"slope up, at the steepest",         Crossover, {front80, steepest}, "T630,450", {}},
        {"slope up, when off",                Crossover, fresh, "T630,450", {}},
        {"slope down",                        Crossover, {front80, steepest}, "T354,417", {keyBeep, slope("0;2;1;0;2;0"), hpf(4, 0, 1, 2), hpf(4, 0, 2, 2)}},
        {"slope down, at the flattest",       Crossover, {front80}, "T390,450", {}},
        {"slope down, when off",              Crossover, {steepest}, "T390,450", {}},
        {"level down",                        Crossover, {front80}, "T686,417", {keyBeep, gain("0;1;1;0;2;11"), hpf(4, 1, 1, 0), hpf(4, 1, 2, 0)}},
        {"level down, at the lowest",         Crossover, {front80, lowest}, "T720,450", {}},
        {"level down, when off",              Crossover, fresh, "T720,450", {}},
        {"level up",                          Crossover, {front80, middle}, "T1001,486", {keyBeep, gain("0;4;1;0;2;11"), hpf(4, 4, 1, 0), hpf(4, 4, 2, 0)}},
        {"level up, at 0 dB",                 Crossover, {front80}, "T960,450", {}},
        {"level up, when off",                Crossover, {middle}, "T960,450", {}},
        {"rear, filter up",                   Crossover, {rear}, "T300,450", {keyBeep, freq("0;0;1;1;2;6"), hpf(129, 0, 4, 0), hpf(129, 0, 8, 0)}},
        {"rear, level down",                  Crossover, {rear, {freqKey, "0;0;1;8;2;6"}}, "T720,450", {keyBeep, gain("0;0;1;1;2;11"), hpf(136, 1, 4, 0), hpf(136, 1, 8, 0)}},
        {"rear, slope up",                    Crossover, {rear, {freqKey, "0;0;1;8;2;6"}}, "T630,450", {keyBeep, slope("0;0;1;1;2;0"), hpf(136, 0, 4, 1), hpf(136, 0, 8, 1)}},
        {"subwoofer, filter up",              Crossover, {woofer}, "T300,450", QStringList{keyBeep, freq("0;0;1;0;2;7")} + sub(8, 11, 0)},
        {"subwoofer, filter down",            Crossover, {woofer}, "T60,450",  QStringList{keyBeep, freq("0;0;1;0;2;5")} + sub(6, 11, 0)},
        {"subwoofer, slope up",               Crossover, {woofer}, "T630,450", QStringList{keyBeep, slope("0;0;1;0;2;1")} + sub(7, 11, 1)},
        {"subwoofer, level down",             Crossover, {woofer}, "T720,450", QStringList{keyBeep, gain("0;0;1;0;2;12")} + sub(7, 12, 0)},
        {"subwoofer, level up",               Crossover, {woofer, {"subwooferLevel", 139}}, "T960,450", QStringList{keyBeep, gain("0;0;1;0;2;10")} + sub(7, 10, 0)},
        {"subwoofer, level down, at the lowest", Crossover, {woofer, {"subwooferLevel", 12 | 128}}, "T720,450", {}},
        {"front key, first pixel",            Crossover, {rear}, "T820,94",  {keyBeep, group(0), hpf(0, 0, 1, 0), hpf(0, 0, 2, 0)}},
        {"front key, shown already",          Crossover, {front80}, "T992,163", {keyBeep, group(0), hpf(4, 0, 1, 0), hpf(4, 0, 2, 0)}},
        {"rear key, on its label",            Crossover, fresh, "T900,205", {keyBeep, group(1), hpf(128, 0, 4, 0), hpf(128, 0, 8, 0)}},
        {"subwoofer key, last pixel",         Crossover, fresh, "T992,316", QStringList{keyBeep, group(2)} + sub(7, 11, 0)},
        {"between the group keys",            Crossover, fresh, "T900,166", {}},
        {"group key, lifted on the next",     Crossover, fresh, "P900,205 M900,280 R900,280", {}},
        {"phase to 180",                      Crossover, {woofer}, "T835,322", QStringList{keyBeep, phase(true)} + sub(7, 11, 0)},
        {"phase to 0",                        Crossover, {woofer, {"Audio_Phase_Troggle", true}}, "T970,372", QStringList{keyBeep, phase(false)} + sub(7, 11, 0)},
        {"phase, hidden with front",          Crossover, fresh, "T900,345", {}},
        {"phase, hidden with rear",           Crossover, {rear}, "T900,345", {}},
        {"phase, after its group was chosen", Crossover, fresh, "T900,345", QStringList{keyBeep, phase(true)} + sub(7, 11, 0), "T900,280"},
        {"phase, gone after another group",   Crossover, {woofer}, "T900,345", {}, "T900,130"},
        {"step key, dragged off the screen",  Crossover, {front80}, "P300,450 M300,900 R300,900", {}},
        {"step key, left and come back",      Crossover, {front80}, "P300,450 M500,100 M301,451 R301,451", {keyBeep, freq("0;5;1;0;2;6"), hpf(5, 0, 1, 0), hpf(5, 0, 2, 0)}},
        {"step key, lifted on a tab key",     Crossover, {front80}, "P300,450 M260,556 R260,556", {}},
        {"grid",                              Crossover, {front80}, "P60,100 M400,250 R700,380", {}},
        {"value between the step keys",       Crossover, {front80}, "T180,450", {}},
        {"emblem",                            Crossover, fresh, "T50,45", {}},
        {"where the hidden exit key lies",    Crossover, fresh, "T975,43", {}},
    };
    // clang-format on
}

} // namespace hubtouches
