#pragma once

#include "headunit/sound/soundcontrol.h"
#include "platform/hvaudio/dsp/snapshot.h"

#include <QMap>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

/// Records what panels ask for, and says what a test lets it say.
class FakeSound : public headunit::SoundControl
{
public:
    FakeSound()
    {
        processor.prepare(48000);
        wanted.power = true;
        wanted.source = HVAudio_source_Radio;
        wanted.mainDb = 0;
        apply();
    }

    bool setSource(HVAudio_source_id_e id, const headunit::SourceChoice& choice, QString* error) override
    {
        calls.append(
            QStringLiteral("setSource %1 %2 \"%3\"").arg(int(id)).arg(int(choice.kind)).arg(choice.path));
        if (!refusal.isEmpty() && choice.kind == refuses.value_or(choice.kind)) {
            if (error)
                *error = refusal;
            return false;
        }
        sources[id] = choice;
        if (onSetSource)
            onSetSource();
        return true;
    }
    headunit::SourceChoice source(HVAudio_source_id_e id) const override { return sources.value(id); }
    void play(HVAudio_source_id_e id) override
    {
        calls.append(QStringLiteral("play %1").arg(int(id)));
        wanted.source = id;
        apply();
    }

    void prompt(hvaudio::dsp::Prompt which, bool repeated) override
    {
        calls.append(QStringLiteral("prompt %1 %2").arg(int(which)).arg(repeated ? "repeated" : "once"));
        sounding[which] = true;
    }
    void endPrompt(hvaudio::dsp::Prompt which) override
    {
        calls.append(QStringLiteral("endPrompt %1").arg(int(which)));
        sounding[which] = false;
    }
    bool promptSounds(hvaudio::dsp::Prompt which) const override { return sounding[which]; }

    hvaudio::dsp::Meters takeMeters() override
    {
        ++metersTaken;
        return meters;
    }
    void listen(bool on) override { listening = on; }
    int fetchHeard(hvaudio::HeardFrame* frames, int count, bool* gap) override
    {
        *gap = false;
        const int given = std::min(count, int(toHear.size()));
        std::copy(toHear.begin(), toHear.begin() + given, frames);
        toHear.erase(toHear.begin(), toHear.begin() + given);
        return given;
    }
    QString status() const override { return output; }
    const hvaudio::dsp::Engine& engine() const override { return processor; }

    /// The engine stands at `wanted` at once.
    void apply()
    {
        processor.set(wanted);
        processor.settle();
    }
    /// What was asked for since the last time.
    QStringList takeCalls()
    {
        QStringList taken;
        taken.swap(calls);
        return taken;
    }

    QStringList calls;
    std::function<void()> onSetSource;          ///< while a source is set
    QString refusal;                            ///< what a source is refused with; empty: taken
    std::optional<hvaudio::SourceKind> refuses; ///< the kind that is refused; none: all
    QString output = QStringLiteral("some output");
    QMap<HVAudio_source_id_e, headunit::SourceChoice> sources;
    bool sounding[hvaudio::dsp::promptCount] = {};
    hvaudio::dsp::Settings wanted;
    hvaudio::dsp::Engine processor;
    hvaudio::dsp::Meters meters;
    int metersTaken = 0;
    bool listening = false;
    std::vector<hvaudio::HeardFrame> toHear;
};
