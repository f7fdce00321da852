#pragma once

#include "tests/system/soundunit.h"

#include <string>
#include <vector>

/// What every control of every page does to the sound.
namespace touchtable {

enum Speakers : int {
    FL = 1,
    FR = 2,
    RL = 4,
    RR = 8,
    Sub = 16,
    Front = FL | FR,
    Rear = RL | RR,
    Left = FL | RL,
    Right = FR | RR,
    Cabin = Front | Rear,
    All = Cabin | Sub,
};

/// What changes on some speakers, as a range.
struct Change
{
    enum Kind { Level, Delay, Polarity };
    int speakers;
    double hz;  ///< for levels
    double low; ///< dB, or ms
    double high;
    Kind kind = Level;
};

struct Row
{
    std::string name;
    std::vector<Touch> before;  ///< from the first start on
    std::vector<Touch> touches; ///< what is examined; the last one is the row's control
    std::vector<Change> changes;
    int input = SoundUnit::programme;
    HVAudio_source_id_e source = HVAudio_source_Radio;
    bool atPowerOn = false; ///< heard after the next power-on, and not before
};

// The pages, opened by their tabs.
constexpr Touch equalizer{"key_EQ_setting"}, presets{"key_eq_preset"}, levels{"key_balance_setting"},
    crossover{"key_crossover_setting"}, alignment{"key_time_alignment"}, volumes{"key_audio_level"},
    alone{standAlonePage};

/// One row for each thing that a finger can do to a control; equalizer, levels, crossover, time alignment,
/// volumes, stand-alone crossover page.
const std::vector<Row>& rows();

} // namespace touchtable
