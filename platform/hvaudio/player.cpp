#include "platform/hvaudio/player.h"

#include "platform/hvaudio/dsp/scopedflush.h"
#include "platform/hvaudio/outputs/nulloutput.h"
#include "platform/hvaudio/outputs/pipewire/pipewireoutput.h"
#include "platform/hvaudio/outputs/wavoutput.h"
#include "platform/hvaudio/sources/backgroundfile.h"
#include "platform/hvaudio/sources/chimes.h"
#include "platform/hvaudio/sources/inputsource.h"
#include "platform/hvaudio/sources/pinknoise.h"
#include "platform/hvaudio/sources/ring.h"
#include "platform/hvaudio/sources/sources.h"
#include "platform/hvaudio/sources/sweep.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

namespace hvaudio {

namespace {

constexpr int pieceFrames = 1024;
constexpr int heardFrames = 32768;
constexpr double rateBeforeStart = 48000;
/// Of a caller that wants a file to play.
constexpr std::chrono::milliseconds patience(200), longestFade(400);

bool endsWith(const std::string& text, const std::string& end)
{
    return text.size() > end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

} // namespace

struct Player::Private final : Feed
{
    struct Slot
    {
        SourceKind kind = SourceKind::Silence;
        std::string path;
        std::shared_ptr<BackgroundFile> file; ///< where the kind is one
    };

    explicit Private(Log logTo)
        : log(std::move(logTo))
    {
        engine.prepare(rateBeforeStart);
        sources.prepare(rateBeforeStart);
        chimes.prepare(rateBeforeStart);
    }

    void say(LogLevel level, const std::string& text) const
    {
        if (log)
            log(level, text);
    }

    /// The source for a slot at the engine's rate, a file's begun to be opened; null is silence.
    std::shared_ptr<Source> make(Slot& slot, int id) const
    {
        const double rate = engine.rate();
        switch (slot.kind) {
        case SourceKind::Silence:
            return nullptr;
        case SourceKind::File:
            slot.file = std::make_shared<BackgroundFile>(slot.path, rate, [to = log](const std::string& why) {
                if (to)
                    to(LogLevel::Warning, why);
            });
            return slot.file;
        case SourceKind::PinkNoise:
            return makePinkNoise(rate, unsigned(id + 1));
        case SourceKind::Sweep:
            return makeSweep(rate);
        case SourceKind::Input:
            return makeInput();
        }
        return nullptr;
    }

    bool prepare(double rate) override
    {
        // The shell may be setting a source meanwhile; nobody pulls.
        const std::lock_guard<std::mutex> lock(slotsMutex);
        const bool changed = rate != engine.rate();
        if (!engine.prepare(rate))
            return false;
        sources.prepare(rate);
        chimes.prepare(rate);
        for (int id = 0; changed && id < sourceIds; ++id) {
            sources.set(id, make(slots[id], id));
            std::string error;
            if (slots[id].file && slots[id].file->opened({}, error) == BackgroundFile::Opening::Failed)
                say(LogLevel::Warning, error);
        }
        isSilent = false;
        return true;
    }

    int latencyFrames() const noexcept override { return engine.latencyFrames(); }
    bool silent() const noexcept override { return isSilent.load(std::memory_order_relaxed); }
    bool unobserved() const noexcept override
    {
        return !listening.load(std::memory_order_relaxed) && measured.load(std::memory_order_relaxed) <= 0 &&
               !chimes.anySounds();
    }
    void resumed() override
    {
        const std::lock_guard<std::mutex> lock(slotsMutex);
        for (const Slot& slot : slots)
            if (slot.file)
                slot.file->wake();
    }

    void pull(const float* const in[2], float* const out[dsp::speakerCount], int frames) noexcept override
    {
        const dsp::ScopedFlush flush;
        bool plays = false;
        for (int done = 0; done < frames;) {
            const int count = std::min(frames - done, pieceFrames);
            plays |= pullPiece(in, out, done, count);
            done += count;
        }
        isSilent.store(!plays && engine.idle() && !chimes.anySounds(), std::memory_order_relaxed);
        if (measured.load(std::memory_order_relaxed) > 0)
            measured.fetch_sub(frames, std::memory_order_relaxed);
    }

    /// True when a source plays, be it silence.
    bool pullPiece(const float* const in[2], float* const out[dsp::speakerCount], int start,
                   int frames) noexcept
    {
        const float* const from[2] = {in[0] ? in[0] + start : nullptr, in[1] ? in[1] + start : nullptr};
        dsp::Block block;
        block.frames = frames;
        const bool plays = sources.render(engine.audibleSource(), from, programme[0], programme[1], frames);
        if (plays) {
            block.programme[0] = programme[0];
            block.programme[1] = programme[1];
        }
        for (int i = 0; i < dsp::promptCount; ++i)
            if (chimes.render(dsp::Prompt(i), prompts[i], frames))
                block.prompt[i][0] = prompts[i];
        const bool kept = listening.load(std::memory_order_relaxed);
        for (int i = 0; i < dsp::speakerCount; ++i)
            block.out[i] = out[i] ? out[i] + start : kept ? unwanted[i] : nullptr;
        engine.process(block);
        if (kept)
            keep(block);
        return plays;
    }

    void keep(const dsp::Block& block) noexcept
    {
        HeardFrame piece[64];
        for (int done = 0; done < block.frames;) {
            const int count = std::min(block.frames - done, 64);
            for (int n = 0; n < count; ++n) {
                for (int s = 0; s < 2; ++s)
                    piece[n].programme[s] = block.programme[s] ? block.programme[s][done + n] : 0;
                for (int i = 0; i < dsp::speakerCount; ++i)
                    piece[n].speaker[i] = block.out[i][done + n];
            }
            // A listener that is late gets the older frames whole; what comes until it has made room is lost.
            if (heard.write(piece, count) < count) {
                gap.store(true, std::memory_order_relaxed);
                return;
            }
            done += count;
        }
    }

    /// Fills `error` and changes nothing when it is a file that can't be read.
    void exchange(int id, Slot slot, std::string& error)
    {
        std::unique_lock<std::mutex> lock(slotsMutex);
        const double rate = engine.rate();
        std::shared_ptr<Source> source = make(slot, id);
        // Nobody else waits for the medium.
        lock.unlock();
        if (slot.file && slot.file->opened(patience, error) == BackgroundFile::Opening::Failed)
            return;
        lock.lock();
        if (engine.rate() != rate) {
            source = make(slot, id);
            if (slot.file && slot.file->opened({}, error) == BackgroundFile::Opening::Failed)
                return;
        }
        sources.set(id, std::move(source));
        std::swap(slots[id], slot);
    }

    /// Wants `slotsMutex`. False for an id out of range, and for a file that can't be read.
    bool plays(int id) const
    {
        return id >= 0 && id < sourceIds && !(slots[id].file && slots[id].file->hasFailed());
    }

    /// After every change that the next pull is to find.
    void wakeOutput()
    {
        if (output)
            output->wake();
    }

    const Log log;
    dsp::Engine engine;
    Sources sources;
    Chimes chimes;
    std::unique_ptr<Output> output;

    mutable std::mutex slotsMutex;
    Slot slots[sourceIds];
    dsp::Settings wanted; ///< of the shell; what the engine has differs while it fades out to stop

    std::atomic<bool> isSilent{false};
    std::atomic<bool> listening{false};
    std::atomic<int> measured{0}; ///< frames that are still played for the sake of the meters
    std::atomic<bool> gap{false};
    Ring<HeardFrame> heard{heardFrames};

    // Audio side.
    float programme[2][pieceFrames], prompts[dsp::promptCount][pieceFrames],
        unwanted[dsp::speakerCount][pieceFrames];
};

Player::Player(Log log)
    : d(std::make_unique<Private>(std::move(log)))
{
}

Player::~Player()
{
    stop();
}

bool Player::start(const std::string& name)
{
    stop();
    std::unique_ptr<Output> output;
    bool asAsked = true;
    if (name == "auto" || name == "pipewire") {
        output = std::make_unique<PipeWireOutput>(d->log, name == "pipewire");
    } else if (endsWith(name, ".wav")) {
        output = std::make_unique<WavOutput>(name);
    } else if (name == "none") {
        output = std::make_unique<NullOutput>();
        d->say(LogLevel::Info, "no sound output, as asked for");
    } else {
        d->say(LogLevel::Warning, "'" + name +
                                      "' is no sound output: auto, pipewire, none or the path of a file that "
                                      "ends with .wav; continuing without");
        output = std::make_unique<NullOutput>();
        asAsked = false;
    }
    const bool began = begin(std::move(output), name == "auto");
    return asAsked && (began || name == "auto");
}

bool Player::start(std::unique_ptr<Output> output)
{
    stop();
    return begin(std::move(output), false);
}

bool Player::begin(std::unique_ptr<Output> output, bool mayFail)
{
    std::string error;
    const bool began = output->start(*d, error);
    if (!began) {
        // Without a sound server everything else goes on; that is a normal case when nobody asked for one.
        d->say(mayFail ? LogLevel::Info : LogLevel::Warning, error + "; continuing without sound output");
        output = std::make_unique<NullOutput>();
        output->start(*d, error);
    }
    d->engine.set(d->wanted);
    d->output = std::move(output);
    return began;
}

void Player::stop()
{
    if (!d->output)
        return;
    dsp::Settings off = d->wanted;
    off.power = false;
    d->engine.set(off);
    const auto deadline = std::chrono::steady_clock::now() + longestFade;
    while (d->output->pulling() && !d->engine.idle() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    d->output->stop();
    d->output.reset();
}

bool Player::started() const
{
    return d->output != nullptr;
}

void Player::setSettings(const dsp::Settings& settings)
{
    const bool otherSource = settings.source != d->wanted.source;
    d->wanted = settings;
    d->engine.set(settings);
    if (otherSource)
        d->resumed();
    d->wakeOutput();
}

bool Player::setSource(int id, SourceKind kind, const std::string& path, std::string* error)
{
    std::string why;
    if (id < 0 || id >= sourceIds)
        why = "no source " + std::to_string(id);
    else
        d->exchange(id, {kind, kind == SourceKind::File ? path : std::string(), nullptr}, why);
    if (!why.empty()) {
        d->say(LogLevel::Warning, why);
        if (error)
            *error = why;
        return false;
    }
    d->wakeOutput();
    return true;
}

SourceKind Player::sourceKind(int id) const
{
    const std::lock_guard<std::mutex> lock(d->slotsMutex);
    return d->plays(id) ? d->slots[id].kind : SourceKind::Silence;
}

std::string Player::sourcePath(int id) const
{
    const std::lock_guard<std::mutex> lock(d->slotsMutex);
    return d->plays(id) ? d->slots[id].path : std::string();
}

void Player::prompt(dsp::Prompt which, bool repeated) noexcept
{
    d->chimes.start(which, repeated);
    d->wakeOutput();
}

void Player::endPrompt(dsp::Prompt which) noexcept
{
    d->chimes.end(which);
    d->wakeOutput();
}

bool Player::promptSounds(dsp::Prompt which) const noexcept
{
    return d->chimes.sounds(which);
}

void Player::beep() noexcept
{
    d->engine.beep();
    d->wakeOutput();
}

dsp::Meters Player::takeMeters() noexcept
{
    if (d->measured.exchange(int(d->engine.rate())) <= 0)
        d->wakeOutput();
    return d->engine.takeMeters();
}

const dsp::Engine& Player::engine() const
{
    return d->engine;
}

void Player::listen(bool on)
{
    d->listening.store(on);
    d->heard.read(nullptr, d->heard.readable());
    d->gap.store(false);
    d->wakeOutput();
}

int Player::fetchHeard(HeardFrame* frames, int count, bool* gap)
{
    // After a gap, what comes before and after it must not be taken for one piece: the older part goes.
    const bool lost = d->gap.exchange(false);
    if (lost)
        d->heard.read(nullptr, d->heard.readable());
    if (gap)
        *gap = lost;
    return d->heard.read(frames, count);
}

std::string Player::status() const
{
    return d->output ? d->output->status() : "stopped";
}

} // namespace hvaudio
