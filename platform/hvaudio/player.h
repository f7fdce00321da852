#pragma once

#include "platform/hvaudio/dsp/engine.h"
#include "platform/hvaudio/export.h"
#include "platform/hvaudio/heardframe.h"
#include "platform/hvaudio/outputs/log.h"
#include "platform/hvaudio/outputs/output.h"
#include "platform/hvaudio/sources/sourcekind.h"

#include <memory>
#include <string>

namespace hvaudio {

/// The unit's sound as its shell sees it: sources, prompts, engine and output in one object.
///
///     sources (by id) --+--> engine --> output (PipeWire, WAV file, or none)
///     prompts, beep ----+
///
/// All functions are [CT], and one thread at a time unless it says otherwise. Nothing throws while the system
/// has memory and threads to give; what fails says so in the log, once, and leaves the rest working.
class HVAUDIO_EXPORT Player final
{
public:
    /// `log` may be empty.
    explicit Player(Log log = {});
    ~Player();
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    /// output: "auto" (PipeWire when a daemon answers, else none), "pipewire" (waits for the daemon when
    /// there is none), "none", or the path of a WAV file to write, which ends with ".wav". False, and one
    /// line in the log, when that output can't be had; the unit then plays to none, so that everything else
    /// works. Starting a started player changes the output.
    bool start(const std::string& output = "auto");
    /// The same with an output of the caller's own, not null.
    bool start(std::unique_ptr<Output> output);
    /// Fades out (at most 0.4 s) and lets the output go. The destructor does the same.
    void stop();
    /// True between `start` and `stop`, be it to none.
    bool started() const;

    /// What the listener asked for, clamped as in `dsp::clampToRange`; at once, click-free.
    /// `Settings::source` chooses among the sources below.
    void setSettings(const dsp::Settings& settings);

    /// What plays as the source `id`; the sound changes by a short fade when it is the one that is heard.
    /// `path` is for files. False, and one line in the log and in `error` where given, when the id is out of
    /// range, or when a file can't be read and that shows within 0.2 s; what played before then goes on. A
    /// file whose medium takes longer is opened behind this call's back: the source is silent until then, and
    /// for good, with a line in the log, when the file can't be read or isn't open after 5 s. All sources
    /// start as silence.
    bool setSource(int id, SourceKind kind, const std::string& path = {}, std::string* error = nullptr);
    /// Silence for an id out of range, and for a file that couldn't be opened in time.
    SourceKind sourceKind(int id) const;
    /// The file that plays as this source; empty for other kinds.
    std::string sourcePath(int id) const;

    /// Sounds the chime of this prompt channel from its beginning: once, or until `endPrompt`.
    void prompt(dsp::Prompt which, bool repeated = false) noexcept;
    /// Fades the chime out.
    void endPrompt(dsp::Prompt which) noexcept;
    /// [ANY] True from `prompt` on until the chime has ended.
    bool promptSounds(dsp::Prompt which) const noexcept;
    /// The key beep.
    void beep() noexcept;

    /// Loudest samples and the limiter's work since the last call. An output that rests while nothing is
    /// measured plays for the next second of sound.
    dsp::Meters takeMeters() noexcept;
    /// The running processor: its response, rate, latency, settings. Owned here.
    const dsp::Engine& engine() const;

    /// Keeps what is heard for `fetchHeard`, or stops doing so and forgets it. Costs a copy; off at first.
    void listen(bool on);
    /// Moves up to `count` frames, 0 or more, oldest first, to `frames` and returns how many. What isn't
    /// fetched within 32768 frames (0.6 s at 48 kHz) is lost: then it goes on with whole, later frames, and
    /// `*gap` (where given) says so.
    int fetchHeard(HeardFrame* frames, int count, bool* gap = nullptr);

    /// One short sentence on the output: "PipeWire, 48000 Hz, 5.1", "no sound output".
    std::string status() const;

private:
    bool begin(std::unique_ptr<Output> output, bool mayFail);
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace hvaudio
