#pragma once

#include "platform/hvaudioservice/audiostate.h"

#include <QString>

/// Where the service keeps its state in the settings store. The pages read "customloudnes", "eq1%1", "eq2%1"
/// and "volume%1"; the keys of its own begin with "AudioService_".
///
/// What is stored and out of its range is logged and counts as the nearest value, as the pages show it; a
/// start-up volume out of range counts as its default, since a damaged number must not be heard at full
/// level, and so does a text that is no filter. Thread: GUI.
namespace hvaudio::audiostatestore {

// Keys of families; their numbers must be in range.
QString userBandKey(int curve, int band);
QString volumeKey(int channel);
QString delayKey(int speaker);
QString highPassKey(AudioServiceHost::FilterTables tables, int speaker);
QString lowPassKey(AudioServiceHost::FilterTables tables, int speaker);
QString subwooferKey(AudioServiceHost::FilterTables tables);

constexpr mem::Setting eqTypeSetting = mem::settingOf("AudioService_EQType");
constexpr mem::Setting balanceSetting = mem::settingOf("AudioService_Balance");
constexpr mem::Setting faderSetting = mem::settingOf("AudioService_Fader");
constexpr mem::Setting loudnessSetting = mem::settingOf("customloudnes");
// Of the crossover page, followed whenever they change.
constexpr mem::Setting subwooferSlopeSetting = mem::settingOf("subwooferslope");
constexpr mem::Setting subwooferPhaseSetting = mem::settingOf("Audio_Phase_Troggle");

/// "frequency;attenuation;slope"
QString filterText(const Filter& filter);

/// Everything but power, tables, source and volumes.
void restore(AudioState& state);
/// The filters of state.tables.
void restoreFilters(AudioState& state);
/// What is stored under this key: one that restore() reads, or a channel's present level, which is its level
/// for power-on where nothing is stored and stays where that is out of range. False for any other, those of
/// the start-up volumes and those that are followed whenever they change among them.
bool restoreKey(AudioState& state, const QString& key);
/// Each channel's level for power-on, by channel number.
std::array<int, channels> storedStartVolumes();
/// Slope index 0..3 that a subwoofer filter without one of its own has.
int storedSubwooferSlope();
/// True: turned by 180 degrees.
bool storedSubwooferPhase();

} // namespace hvaudio::audiostatestore
