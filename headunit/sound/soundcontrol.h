#pragma once

#include "headunit/sound/soundtypes.h"
#include "headunit/sound/speakerresponses.h"

namespace headunit {

/// What the shell and its panels ask of the unit's sound. Apart from the settings: those go through the audio
/// service, from a panel as from a page. Thread: GUI.
class SoundControl
{
public:
    virtual ~SoundControl() = default;

    /// What plays as this source. False, with a sentence in `error` where given, when a file can't be read
    /// and that shows at once; what played before goes on then. A file on a slow medium is opened afterwards:
    /// its source is silent until then, and for good when that fails.
    virtual bool setSource(HVAudio_source_id_e id, const SourceChoice& choice, QString* error = nullptr) = 0;
    virtual SourceChoice source(HVAudio_source_id_e id) const = 0;
    /// Makes this source the one that is heard.
    virtual void play(HVAudio_source_id_e id) = 0;
    HVAudio_source_id_e playing() const { return HVAudio_source_id_e(engine().settings().source); }

    /// Sounds a chime on its channel, once or until it is ended; the programme steps back meanwhile. A unit
    /// that is off gives none.
    virtual void prompt(Prompt which, bool repeated) = 0;
    virtual void endPrompt(Prompt which) = 0;
    virtual bool promptSounds(Prompt which) const = 0;

    /// What the running processor is asked for.
    SpeakerResponses responses() const { return {engine().snapshot(), engine().rate()}; }
    /// What the subwoofer is asked for; its filter and its polarity are the outcome of several settings.
    SubwooferSettings subwoofer() const { return engine().settings().subwoofer; }
    /// Rate of the processor, in Hz.
    double rate() const { return engine().rate(); }
    /// Of the processor alone.
    int latencyFrames() const { return engine().latencyFrames(); }
    /// Loudest samples since the last call. One reader at a time.
    virtual Meters takeMeters() = 0;
    /// Keeps what is heard for `fetchHeard` from now on, or stops doing so and forgets it.
    virtual void listen(bool on) = 0;
    /// Moves up to `count` of the frames that were heard to `frames`, oldest first, and returns how many.
    /// What isn't fetched within about 0.6 s (at 48 kHz) is lost; `*gap` (where given) says so.
    virtual int fetchHeard(HeardFrame* frames, int count, bool* gap) = 0;

    /// One short sentence on the output.
    virtual QString status() const = 0;

protected:
    SoundControl() = default;
    virtual const hvaudio::dsp::Engine& engine() const = 0;

private:
    Q_DISABLE_COPY(SoundControl)
};

} // namespace headunit
