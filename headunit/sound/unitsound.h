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

    bool setSource(HVAudio_source_id_e id, hvaudio::SourceKind kind, const QString& path,
                   QString* error) override;
    hvaudio::SourceKind sourceKind(HVAudio_source_id_e id) const override;
    QString sourcePath(HVAudio_source_id_e id) const override;
    void play(HVAudio_source_id_e id) override;
    HVAudio_source_id_e playing() const override;
    void prompt(hvaudio::dsp::Prompt which, bool repeated) override;
    void endPrompt(hvaudio::dsp::Prompt which) override;
    bool promptSounds(hvaudio::dsp::Prompt which) const override;
    hvaudio::dsp::Settings settings() const override;
    hvaudio::dsp::Snapshot snapshot() const override;
    double rate() const override;
    int latencyFrames() const override;
    hvaudio::dsp::Meters takeMeters() override;
    void listen(bool on) override;
    int heard(hvaudio::HeardFrame* frames, int count, bool* gap) override;
    QString status() const override;

private:
    hvaudio::Player m_player;
};

} // namespace headunit
