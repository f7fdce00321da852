#pragma once

#include "hvaudio/audioservice.h"
#include "platform/hvaudio/dsp/engine.h"
#include "platform/hvaudio/player.h"

#include <QString>

namespace headunit {

/// What the shell and its panels ask of the unit's sound. Apart from the settings: those go through the audio
/// service, from a panel as from a page. Thread: GUI.
class SoundControl
{
public:
    virtual ~SoundControl() = default;

    /// What plays as this source. False, with a sentence in `error`, when a file can't be read; what played
    /// before goes on then. `path` is for files.
    virtual bool setSource(HVAudio_source_id_e id, hvaudio::SourceKind kind, const QString& path,
                           QString* error) = 0;
    virtual hvaudio::SourceKind sourceKind(HVAudio_source_id_e id) const = 0;
    /// Empty for anything but a file.
    virtual QString sourcePath(HVAudio_source_id_e id) const = 0;

    /// Makes this source the one that is heard.
    virtual void play(HVAudio_source_id_e id) = 0;
    virtual HVAudio_source_id_e playing() const = 0;

    /// Sounds a chime on its channel, once or until it is ended; the programme steps back meanwhile. A unit
    /// that is off gives none.
    virtual void prompt(hvaudio::dsp::Prompt which, bool repeated) = 0;
    virtual void endPrompt(hvaudio::dsp::Prompt which) = 0;
    virtual bool promptSounds(hvaudio::dsp::Prompt which) const = 0;

    /// The running processor: what it was asked for, and that as coefficients.
    virtual hvaudio::dsp::Settings settings() const = 0;
    virtual hvaudio::dsp::Snapshot snapshot() const = 0;
    virtual double rate() const = 0;       ///< Hz
    virtual int latencyFrames() const = 0; ///< of the processor alone
    /// Loudest samples since the last call. One reader at a time.
    virtual hvaudio::dsp::Meters takeMeters() = 0;
    /// Keeps what is heard for `heard` from now on; see hvaudio::Player.
    virtual void listen(bool on) = 0;
    virtual int heard(hvaudio::HeardFrame* frames, int count, bool* gap) = 0;

    /// One short sentence on the output.
    virtual QString status() const = 0;

protected:
    SoundControl() = default;
    Q_DISABLE_COPY(SoundControl)
};

} // namespace headunit
