#include "tests/system/touchtable.h"

#include "hvaudio/eqcurves.h"

using namespace sound;

namespace touchtable {

namespace {

// clang-format off
Change level(int speakers, double hz, double db, double tolerance = 0.1) { return {speakers, hz, db - tolerance, db + tolerance}; }
Change louder(int speakers, double hz, double low, double high = 300)    { return {speakers, hz, low, high}; }
Change softer(int speakers, double hz, double low, double high = 300)    { return {speakers, hz, -high, -low}; }
Change silent(int speakers)                                              { return {speakers, 60, -1000, -60}; }
Change later(int speakers, double ms)                                    { return {speakers, 0, ms - 0.01, ms + 0.01, Change::Delay}; }
Change turned(int speakers)                                              { return {speakers, 0, 0, 0, Change::Polarity}; }
// clang-format on

const QPointF rightEnd(1, 0.5), leftEnd(0, 0.5);

/// A drag along an equalizer bar to a value: 21 equal heights.
Touch band(const char* bar, int value)
{
    return {bar, 0, QPointF(0.5, (10 - value + 0.5) / 21)};
}

// clang-format off
const char* const bars[bandCount] = {
    "eq_band_widget1", "eq_band_widget2", "eq_band_widget3",  "eq_band_widget4",  "eq_band_widget5",  "eq_band_widget6",  "eq_band_widget7",
    "eq_band_widget8", "eq_band_widget9", "eq_band_widget10", "eq_band_widget11", "eq_band_widget12", "eq_band_widget13",
};

struct Tile { const char* key; AudioEQType type; };
const Tile tiles[] = {
    {"key_jazz",   EQ_Type_Jazz},
    {"key_hiphop", EQ_Type_HipHop},
    {"key_pop",    EQ_Type_Pop},
    {"key_rock",   EQ_Type_Rock},
    {"key_rb",     EQ_Type_RB},
};

struct Item { const char* plus; const char* minus; int speaker; };
const Item items[] = {
    {"Key_front_left_plus",  "Key_front_left_minus",  FL},
    {"Key_front_right_plus", "Key_front_right_minus", FR},
    {"Key_rear_left_plus",   "Key_rear_left_minus",   RL},
    {"Key_rear_right_plus",  "Key_rear_right_minus",  RR},
    {"Key_subwoofer_plus",   "Key_subwoofer_minus",   Sub},
};

struct Volume { const char* up; const char* down; const char* slider; int input; int fromDefaultToEnd; };
const Volume startVolumes[] = {
    {"key_main_default_up",  "key_main_default_down",  "widget_default_main:slider",  SoundUnit::programme, 25},
    {"key_ring_default_up",  "key_ring_default_down",  "widget_default_ring:slider",  Ring,                 10},
    {"key_call_default_up",  "key_call_default_down",  "widget_default_call:slider",  Call,                 10},
    {"key_navi_default_up",  "key_navi_default_down",  "widget_default_navi:slider",  Navi,                 10},
    {"key_voice_default_up", "key_voice_default_down", "widget_default_voice:slider", Voice,                10},
};

struct Gain { const char* up; const char* down; const char* slider; HVAudio_source_id_e source; };
const Gain gains[] = {
    {"key_source_radio_up",       "key_source_radio_down",       "widget_source_radio:slider",       HVAudio_source_Radio},
    {"key_source_usb_up",         "key_source_usb_down",         "widget_source_usb:slider",         HVAudio_source_Usb},
    {"key_source_btaudio_up",     "key_source_btaudio_down",     "widget_source_btaudio:slider",     HVAudio_source_BtAudio},
    {"key_source_avin_up",        "key_source_avin_down",        "widget_source_avin:slider",        HVAudio_source_AvIn},
    {"key_source_carplay_up",     "key_source_carplay_down",     "widget_source_carplay:slider",     HVAudio_source_Carplay},
    {"key_source_androidauto_up", "key_source_androidauto_down", "widget_source_androidauto:slider", HVAudio_source_AndroidAuto},
};
// clang-format on

/// One step of volume.
constexpr double volumeStep = 1.2;

/// The change from one curve to another at every band.
std::vector<Change> curve(const int* from, const int* to)
{
    std::vector<Change> changes;
    for (int i = 0; i < bandCount; ++i)
        changes.push_back(level(All, bandHz[std::size_t(i)], to[i] - from[i], 0.6));
    return changes;
}

void addEqualizer(std::vector<Row>& rows)
{
    for (int i = 0; i < bandCount; ++i) {
        const double hz = bandHz[std::size_t(i)];
        const std::string name = "equalizer, " + std::to_string(int(hz)) + " Hz ";
        rows.push_back({name + "up", {equalizer}, {band(bars[i], 6)}, {level(All, hz, 6, 0.6)}});
        rows.push_back({name + "to the top", {equalizer}, {band(bars[i], 10)}, {level(All, hz, 10, 0.6)}});
        rows.push_back({name + "down", {equalizer}, {band(bars[i], -6)}, {level(All, hz, -6, 0.6)}});
    }
    const Touch raised = band("eq_band_widget6", 6);
    // clang-format off
    rows.push_back({"equalizer, the other curve by plus",      {equalizer, raised},                       {{"Key_eqtype_plus"}},  {level(All, 1000, -6, 0.6)}});
    rows.push_back({"equalizer, back by plus",                 {equalizer, raised, {"Key_eqtype_plus"}},  {{"Key_eqtype_plus"}},  {level(All, 1000, 6, 0.6)}});
    rows.push_back({"equalizer, the other curve by minus",     {equalizer, raised},                       {{"Key_eqtype_minus"}}, {level(All, 1000, -6, 0.6)}});
    rows.push_back({"equalizer, a curve of its own for minus", {equalizer, raised, {"Key_eqtype_minus"}}, {band(bars[11], 4)},    {level(All, 14000, 4, 0.6)}});
    // clang-format on

    const int* const flat = hvaudio::eqCurveOf(EQ_Type_Flat).value;
    for (const Tile& tile : tiles)
        rows.push_back({std::string("preset ") + tile.key,
                        {presets},
                        {{tile.key}},
                        curve(flat, hvaudio::eqCurveOf(tile.type).value)});
    const int* const rock = hvaudio::eqCurveOf(EQ_Type_Rock).value;
    rows.push_back({"preset key_flat", {presets, {"key_rock"}}, {{"key_flat"}}, curve(rock, flat)});
    const int user1[bandCount] = {0, 0, 0, 0, 0, 6}, user2[bandCount] = {0, 0, -5};
    const std::vector<Touch> drawn = {equalizer,         raised,  {"Key_eqtype_plus"},
                                      band(bars[2], -5), presets, {"key_rock"}};
    rows.push_back({"preset key_user1", drawn, {{"key_user1"}}, curve(rock, user1)});
    rows.push_back({"preset key_user2", drawn, {{"key_user2"}}, curve(rock, user2)});
}

void addLevels(std::vector<Row>& rows)
{
    // Five of fifteen steps away: the far side keeps cos 30 degrees.
    const double five = db(std::sqrt(0.75));
    const char* const slider = "m5qx_audiosetting_audio_levels_page:slider";
    // clang-format off
    rows.push_back({"fader to the front",        {levels}, {{"key_up_level", 5}},    {level(Rear, 1000, five)}});
    rows.push_back({"fader to the rear",         {levels}, {{"key_down_level", 5}},  {level(Front, 1000, five)}});
    rows.push_back({"balance to the left",       {levels}, {{"key_left_level", 5}},  {level(Right, 1000, five)}});
    rows.push_back({"balance to the right",      {levels}, {{"key_right_btn", 5}},   {level(Left, 1000, five)}});
    rows.push_back({"fader all to the front",    {levels}, {{"key_up_level", 15}},   {silent(Rear)}});
    rows.push_back({"pad to the right",          {levels}, {{"pad", 0, rightEnd}},   {silent(Left)}});
    rows.push_back({"pad to the left",           {levels}, {{"pad", 0, leftEnd}},    {silent(Right)}});
    rows.push_back({"pad to the front",          {levels}, {{"pad", 0, {0.5, 0}}},   {silent(Rear)}});
    rows.push_back({"pad to the rear left",      {levels}, {{"pad", 0, {0, 1}}},     {silent(Front | RR)}});
    rows.push_back({"balance and fader reset",   {levels, {"pad", 0, {0, 1}}},  {{"key_reset_level"}},   {louder(Front | RR, 60, 60)}});
    rows.push_back({"loudness on",               {levels},                      {{"key_loudness"}},      {louder(Cabin, 40, 3, 20), louder(Cabin, 12000, 0.5, 12), level(Cabin, 1000, 0, 0.5), louder(Sub, 40, 3, 20)}});
    rows.push_back({"loudness off",              {levels, {"key_loudness"}},    {{"key_loudness"}},      {softer(Cabin, 40, 3, 20), softer(Cabin, 12000, 0.5, 12), level(Cabin, 1000, 0, 0.5), softer(Sub, 40, 3, 20)}});
    rows.push_back({"subwoofer off",             {levels},                      {{"key_subwoofer"}},     {silent(Sub)}});
    rows.push_back({"subwoofer on",              {levels, {"key_subwoofer"}},   {{"key_subwoofer"}},     {louder(Sub, 60, 60)}});
    rows.push_back({"subwoofer level up",        {levels},                      {{"key_sub_level_up"}},      {level(Sub, 60, 1)}});
    rows.push_back({"subwoofer level up by 5",   {levels},                      {{"key_sub_level_up", 5}},   {level(Sub, 60, 5)}});
    rows.push_back({"subwoofer level down",      {levels},                      {{"key_sub_level_down"}},    {level(Sub, 60, -1)}});
    rows.push_back({"subwoofer slider to right", {levels},                      {{slider, 0, rightEnd}},     {level(Sub, 60, 11)}});
    rows.push_back({"subwoofer slider to left",  {levels},                      {{slider, 0, leftEnd}},      {level(Sub, 60, -1)}});
    // clang-format on
}

void addCrossover(std::vector<Row>& rows)
{
    const struct
    {
        const char* name;
        const char* key;
        int speakers;
    } pairs[] = {{"front", "key_front", Front}, {"rear", "key_rear", Rear}};
    for (const auto& pair : pairs) {
        const std::string name = std::string("crossover, ") + pair.name + ": ";
        // The other group is chosen first, so that the group key is what makes the steps act here.
        const Touch other{pair.speakers == Front ? "key_rear" : "key_front"}, own{pair.key};
        const Touch to250{"key_filter_up", 8}, steep{"key_slope_up"};
        const int s = pair.speakers;
        // Where the slope changes the subwoofer is turned round, so that it goes on adding to these speakers.
        // clang-format off
        rows.push_back({name + "filter up",           {crossover, other},              {own, {"key_filter_up"}},      {level(s, 30, -3.01)}});
        rows.push_back({name + "chosen only",         {crossover, own, to250, other},  {own},                         {}});
        rows.push_back({name + "filter up to 250 Hz", {crossover, other},              {own, to250},                  {level(s, 250, -3.01)}});
        rows.push_back({name + "filter down",         {crossover, own, to250},         {{"key_filter_down"}},         {louder(s, 60, 2, 5)}});
        rows.push_back({name + "filter down to off",  {crossover, own, to250},         {{"key_filter_down", 8}},      {level(s, 250, 3.01)}});
        rows.push_back({name + "slope up",            {crossover, own, to250},         {{"key_slope_up"}},            {level(s, 62.5, -12.3, 0.2), turned(Sub)}});
        rows.push_back({name + "slope up to 24 dB",   {crossover, own, to250},         {{"key_slope_up", 3}},         {level(s, 125, -17.6, 0.2), turned(Sub)}});
        rows.push_back({name + "slope down",          {crossover, own, to250, steep},  {{"key_slope_down"}},          {level(s, 62.5, 12.3, 0.2), turned(Sub)}});
        rows.push_back({name + "level down",          {crossover, own, {"key_filter_up"}},                        {{"key_level_down"}}, {level(s, 1000, -1)}});
        rows.push_back({name + "level up",            {crossover, own, {"key_filter_up"}, {"key_level_down", 4}}, {{"key_level_up"}},   {level(s, 1000, 1)}});
        // clang-format on
    }
    const Touch own{"key_subwoofer"};
    // clang-format off
    // A fresh unit: 120 Hz, 6 dB/octave, -11 dB.
    rows.push_back({"crossover, subwoofer: switched on by being chosen", {levels, {"key_subwoofer"}, crossover}, {own}, {louder(Sub, 60, 60)}});
    rows.push_back({"crossover, subwoofer: filter up",           {crossover, own},                       {{"key_filter_up"}},       {louder(Sub, 300, 1, 3)}});
    rows.push_back({"crossover, subwoofer: filter down",         {crossover, own},                       {{"key_filter_down"}},     {softer(Sub, 300, 1, 3)}});
    rows.push_back({"crossover, subwoofer: filter down to off",  {crossover, own},                       {{"key_filter_down", 6}},  {level(Sub, 120, 3.01, 0.1), louder(Sub, 1000, 15, 25)}});
    rows.push_back({"crossover, subwoofer: slope up",            {crossover, own},                       {{"key_slope_up"}},        {level(Sub, 480, -12.3, 0.3)}});
    rows.push_back({"crossover, subwoofer: slope down",          {crossover, own, {"key_slope_up", 2}},  {{"key_slope_down"}},      {level(Sub, 480, 11.5, 0.3)}});
    rows.push_back({"crossover, subwoofer: slope stays when the level changes", {crossover, own, {"key_slope_up", 3}, levels}, {{"key_sub_level_up"}}, {level(Sub, 480, 1), level(Sub, 60, 1)}});
    rows.push_back({"crossover, subwoofer: level up",            {crossover, own},                       {{"key_level_up"}},        {level(Sub, 60, 1)}});
    rows.push_back({"crossover, subwoofer: level down",          {crossover, own},                       {{"key_level_down"}},      {level(Sub, 60, -1)}});
    rows.push_back({"crossover, subwoofer: phase to 180",        {crossover, own},                       {{"Key_troggle_phase"}},   {turned(Sub)}});
    rows.push_back({"crossover, subwoofer: phase back to 0",     {crossover, own, {"Key_troggle_phase"}},{{"Key_troggle_phase"}},   {turned(Sub)}});
    // clang-format on
}

void addAlignment(std::vector<Row>& rows)
{
    for (const Item& item : items) {
        const std::string name = std::string("time alignment, ") + item.plus;
        const Touch ten{item.plus, 10};
        rows.push_back({name, {alignment}, {{item.plus}}, {later(item.speaker, 0.1)}});
        rows.push_back({name + " to the end", {alignment}, {{item.plus, 100}}, {later(item.speaker, 10)}});
        rows.push_back({std::string("time alignment, ") + item.minus,
                        {alignment, ten},
                        {{item.minus, 4}},
                        {later(item.speaker, -0.4)}});
    }
    // A memory each, 1, 2 and 3 ms for another speaker.
    const Touch one{"key_preset1"}, two{"key_preset2"}, three{"key_preset3"};
    const std::vector<Touch> filled = {alignment,
                                       one,
                                       {"Key_front_left_plus", 10},
                                       two,
                                       {"Key_rear_right_plus", 20},
                                       three,
                                       {"Key_subwoofer_plus", 30}};
    std::vector<Touch> withTwo = filled;
    withTwo.push_back(two);
    // clang-format off
    rows.push_back({"time alignment, key_preset1", filled,  {one},            {later(Sub, -3), later(FL, 1)}});
    rows.push_back({"time alignment, key_preset2", filled,  {two},            {later(Sub, -3), later(RR, 2)}});
    rows.push_back({"time alignment, key_preset3", withTwo, {three},          {later(Sub, 3), later(RR, -2)}});
    rows.push_back({"time alignment, key_reset",   filled,  {{"key_reset"}},  {later(Sub, -3)}});
    // clang-format on
}

void addVolumes(std::vector<Row>& rows)
{
    for (const Gain& gain : gains) {
        const auto row = [&](const char* control, const Touch& touch, double change) {
            rows.push_back({std::string("volumes, ") + control,
                            {volumes},
                            {touch},
                            {level(All, 60, change), level(All, 1000, change)},
                            SoundUnit::programme,
                            gain.source});
        };
        row(gain.up, {gain.up}, 1);
        row(gain.down, {gain.down, 3}, -3);
        row(gain.slider, {gain.slider, 0, rightEnd}, 10);
    }
    for (const Volume& volume : startVolumes) {
        const auto row = [&](const char* control, const Touch& touch, double steps) {
            rows.push_back({std::string("volumes, ") + control,
                            {volumes},
                            {touch},
                            {level(All, 60, volumeStep * steps), level(All, 1000, volumeStep * steps)},
                            volume.input,
                            HVAudio_source_Radio,
                            true});
        };
        row(volume.up, {volume.up}, 1);
        row(volume.down, {volume.down, 2}, -2);
        row(volume.slider, {volume.slider, 0, rightEnd}, volume.fromDefaultToEnd);
    }
}

void addStandAlone(std::vector<Row>& rows)
{
    // The hub's page has marked the level as one of a subwoofer that is on: 10 of 14, so 4 dB below the most.
    const Touch subOn{"key_sub_level_up"};
    // clang-format off
    // A fresh high-pass: 160 Hz, 12 dB/octave.
    const Touch high{"key_high_pass"}, low{"key_low_pass"}, lowUp{"Key_low_freq_plus"};
    rows.push_back({"stand-alone, high-pass on",           {alone},                               {high},                        {level(Cabin, 160, -6.02), level(Cabin, 40, -24.6, 0.2), turned(Sub)}});
    rows.push_back({"stand-alone, high-pass off",          {alone, high},                         {high},                        {level(Cabin, 160, 6.02), level(Cabin, 40, 24.6, 0.2), turned(Sub)}});
    rows.push_back({"stand-alone, high-pass up",           {alone, high},                         {{"Key_hpf_freq_plus"}},       {softer(Cabin, 60, 7, 8)}});
    rows.push_back({"stand-alone, high-pass down",         {alone, high},                         {{"Key_hpf_freq_minus"}},      {louder(Cabin, 40, 10, 12)}});
    rows.push_back({"stand-alone, high-pass 6 dB",         {alone, high},                         {{"key_hpf_slope_6db"}},       {level(Cabin, 40, 12.3, 0.2), turned(Sub)}});
    rows.push_back({"stand-alone, high-pass 12 dB",        {alone, high, {"key_hpf_slope_18db"}}, {{"key_hpf_slope_12db"}},      {level(Cabin, 40, 11.5, 0.2)}});
    rows.push_back({"stand-alone, high-pass 18 dB",        {alone, high},                         {{"key_hpf_slope_18db"}},      {level(Cabin, 40, -11.5, 0.2)}});
    // A fresh low-pass: no frequency, 24 dB/octave.
    rows.push_back({"stand-alone, low-pass on and up",     {alone},                               {low, lowUp},                  {level(Cabin, 2000, -6.02), softer(Cabin, 8000, 45, 70)}});
    rows.push_back({"stand-alone, low-pass on",            {alone, low, lowUp, low},              {low},                         {level(Cabin, 2000, -6.02)}});
    rows.push_back({"stand-alone, low-pass off",           {alone, low, lowUp},                   {low},                         {level(Cabin, 2000, 6.02)}});
    rows.push_back({"stand-alone, low-pass up",            {alone, low, lowUp},                   {lowUp},                       {louder(Cabin, 8000, 40, 70)}});
    rows.push_back({"stand-alone, low-pass down",          {alone, low, {"Key_low_freq_plus", 2}},{{"Key_low_freq_minus"}},      {softer(Cabin, 8000, 40, 70)}});
    rows.push_back({"stand-alone, low-pass 6 dB",          {alone, low, lowUp},                   {{"key_low_slope_6db"}},       {louder(Cabin, 8000, 33, 42)}});
    rows.push_back({"stand-alone, low-pass 12 dB",         {alone, low, lowUp},                   {{"key_low_slope_12db"}},      {louder(Cabin, 8000, 22, 30)}});
    rows.push_back({"stand-alone, low-pass 18 dB",         {alone, low, lowUp},                   {{"key_low_slope_18db"}},      {louder(Cabin, 8000, 11, 15)}});
    // A fresh subwoofer: the hub's entry 7, which sounds as 120 Hz here; this page's keys count on from there.
    rows.push_back({"stand-alone, subwoofer frequency down", {levels, subOn, alone}, {{"Key_subwoofer_freq_minus", 4}}, {softer(Sub, 300, 2, 8)}});
    rows.push_back({"stand-alone, subwoofer frequency off",  {levels, subOn, alone}, {{"Key_subwoofer_freq_minus", 7}}, {silent(Sub)}});
    rows.push_back({"stand-alone, subwoofer frequency up",   {levels, subOn, alone, {"Key_subwoofer_freq_minus", 4}}, {{"Key_subwoofer_freq_plus"}}, {louder(Sub, 300, 2, 8)}});
    rows.push_back({"stand-alone, subwoofer level up",       {levels, subOn, alone}, {{"Key_subwoofer_level_plus", 3}},  {level(Sub, 60, 3)}});
    rows.push_back({"stand-alone, subwoofer level down",     {levels, subOn, alone}, {{"Key_subwoofer_level_minus", 3}}, {level(Sub, 60, -3)}});
    // clang-format on
}

} // namespace

const std::vector<Row>& rows()
{
    static const std::vector<Row> all = [] {
        std::vector<Row> rows;
        addEqualizer(rows);
        addLevels(rows);
        addCrossover(rows);
        addAlignment(rows);
        addVolumes(rows);
        addStandAlone(rows);
        return rows;
    }();
    return all;
}

} // namespace touchtable
