#include "platform/hvaudio/player.h"

#include "platform/hvaudio/outputs/nulloutput.h"
#include "platform/hvaudio/outputs/pipewire/pipewireoutput.h"
#include "platform/hvaudio/outputs/wavoutput.h"
#include "platform/hvaudio/unitfeed.h"

#include <chrono>
#include <thread>

namespace hvaudio {

namespace {

constexpr std::chrono::milliseconds longestFade(400);

bool endsWith(const std::string& text, const std::string& end)
{
    return text.size() > end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

} // namespace

struct Player::Private
{
    explicit Private(Log log)
        : feed(std::move(log))
    {
    }

    /// After every change that the next pull is to find.
    void wakeOutput()
    {
        if (output)
            output->wake();
    }

    UnitFeed feed;
    std::unique_ptr<Output> output;
    dsp::Settings wanted; ///< of the shell; what the engine has differs while it fades out to stop
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
        output = std::make_unique<PipeWireOutput>(d->feed.log(), name == "pipewire");
    } else if (endsWith(name, ".wav")) {
        output = std::make_unique<WavOutput>(name);
    } else if (name == "none") {
        output = std::make_unique<NullOutput>();
        d->feed.say(LogLevel::Info, "no sound output, as asked for");
    } else {
        d->feed.say(LogLevel::Warning,
                    "'" + name +
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
    const bool began = output->start(d->feed, error);
    if (!began) {
        // Without a sound server everything else goes on; that is a normal case when nobody asked for one.
        d->feed.say(mayFail ? LogLevel::Info : LogLevel::Warning,
                    error + "; continuing without sound output");
        output = std::make_unique<NullOutput>();
        output->start(d->feed, error);
    }
    d->feed.engine().set(d->wanted);
    d->output = std::move(output);
    d->wakeOutput();
    return began;
}

void Player::stop()
{
    if (!d->output)
        return;
    dsp::Settings off = d->wanted;
    off.power = false;
    d->feed.engine().set(off);
    const auto deadline = std::chrono::steady_clock::now() + longestFade;
    while (d->output->pulling() && !d->feed.engine().idle() && std::chrono::steady_clock::now() < deadline)
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
    d->feed.engine().set(settings);
    if (otherSource)
        d->feed.resumed();
    d->wakeOutput();
}

bool Player::setSource(int id, SourceKind kind, const std::string& path, std::string* error)
{
    std::string why;
    if (!d->feed.setSource(id, kind, path, why)) {
        d->feed.say(LogLevel::Warning, why);
        if (error)
            *error = why;
        return false;
    }
    d->wakeOutput();
    return true;
}

SourceKind Player::sourceKind(int id) const
{
    return d->feed.sourceKind(id);
}

std::string Player::sourcePath(int id) const
{
    return d->feed.sourcePath(id);
}

void Player::prompt(dsp::Prompt which, bool repeated) noexcept
{
    d->feed.chimes().start(which, repeated);
    d->wakeOutput();
}

void Player::endPrompt(dsp::Prompt which) noexcept
{
    d->feed.chimes().end(which);
    d->wakeOutput();
}

bool Player::promptSounds(dsp::Prompt which) const noexcept
{
    return d->feed.chimes().sounds(which);
}

void Player::beep() noexcept
{
    d->feed.engine().beep();
    d->wakeOutput();
}

dsp::Meters Player::takeMeters() noexcept
{
    if (d->feed.measure())
        d->wakeOutput();
    return d->feed.engine().takeMeters();
}

const dsp::Engine& Player::engine() const
{
    return d->feed.engine();
}

void Player::listen(bool on)
{
    d->feed.listen(on);
    d->wakeOutput();
}

int Player::fetchHeard(HeardFrame* frames, int count, bool* gap)
{
    return d->feed.fetchHeard(frames, count, gap);
}

std::string Player::status() const
{
    return d->output ? d->output->status() : "stopped";
}

} // namespace hvaudio
