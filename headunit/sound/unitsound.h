#pragma once

#include "headunit/sound/soundcontrol.h"

namespace headunit {

/// The unit's sound: takes the audio service's settings and beeps as long as it lives. Thread: GUI.
///
///     page, panel -> AudioService -> sink -----> Player -> output
///     any key     -> doBeep, triggerBeep ------> Player
///     panel       -> SoundControl -------------> Player
///
/// Each source plays what other programs play into the unit, until something else is chosen for it: so any
/// player can be put through any source. There is one such object at a time, since there is one service.
class UnitSound final : public SoundControl
{
public:
    UnitSound();
    /// Fades out; the service is a silent one again.
    ~UnitSound() override;

    /// output: as hvaudio::Player::start. False, with a line in the log, when it can't be had; everything
    /// but the sound works then.
    bool start(const QString& output);

    bool setSource(HVAudio_source_id_e id, const SourceChoice& choice, QString* error = nullptr) override;
    SourceChoice source(HVAudio_source_id_e id) const override;
    void play(HVAudio_source_id_e id) override;
    void prompt(Prompt which, bool repeated) override;
    void endPrompt(Prompt which) override;
    bool promptSounds(Prompt which) const override;
    Meters takeMeters() override;
    void listen(bool on) override;
    int fetchHeard(HeardFrame* frames, int count, bool* gap) override;
    QString status() const override;
    const hvaudio::dsp::Engine& engine() const override;

private:
    hvaudio::Player m_player;
};

} // namespace headunit
