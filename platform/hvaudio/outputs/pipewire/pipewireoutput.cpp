#include "platform/hvaudio/outputs/pipewire/pipewireoutput.h"

#include "platform/hvaudio/outputs/pipewire/graphwatch.h"
#include "platform/hvaudio/outputs/pipewire/pipewirestreams.h"

#include <pipewire/pipewire.h>

#include <algorithm>
#include <atomic>
#include <cstring>

namespace hvaudio {

namespace {

constexpr double firstPause = 0.1, longestPause = 5;
constexpr double defaultRate = 48000;

const char* orNoReason(const char* why)
{
    return why ? why : "no reason given";
}

double rateOf(const spa_dict* props)
{
    const char* const text = props ? spa_dict_lookup(props, "default.clock.rate") : nullptr;
    const double rate = text ? std::strtod(text, nullptr) : 0;
    return rate > 0 ? rate : defaultRate;
}

} // namespace

struct PipeWireOutput::Private
{
    Private(Log logTo, bool waitForServer)
        : log(std::move(logTo))
        , wait(waitForServer)
    {
    }

    // All of these run on the loop's thread, or on another one that has locked the loop.
    bool connect(std::string& error);
    void disconnect();
    /// `pauseFirst` false: at once.
    void reconnectLater(const char* why, bool pauseFirst = true);
    void lookAtLinks();
    void say(LogLevel level, const std::string& text) const
    {
        if (log)
            log(level, text);
    }

    const Log log;
    const bool wait;
    Feed* feed = nullptr;

    pw_thread_loop* loop = nullptr;
    pw_context* context = nullptr;
    pw_core* core = nullptr;
    spa_source* timer = nullptr;
    spa_hook coreHook = {};
    double pause = firstPause;
    std::atomic<bool> lost{false}; ///< the connection is to be made anew
    bool saidLost = false, saidNoDevice = false;

    GraphWatch watch{[this] { lookAtLinks(); },
                     // Ports that it made stay, and a successor (WirePlumber 0.4) waits for ever for those of
                     // the sink to be made. New streams have none yet.
                     [this] { reconnectLater("the session manager has gone", false); }};

    PipeWireStreams streams{{
        [this](const char* why) { reconnectLater(why); },
        [this](const char* why) {
            if (!saidNoDevice)
                say(LogLevel::Warning,
                    std::string("no device to play to (") + orNoReason(why) + "), waiting for one");
            saidNoDevice = true;
        },
        [this] {
            pause = firstPause;
            if (saidLost)
                say(LogLevel::Info, "sound output is back");
            saidLost = false;
            feed->resumed();
        },
    }};
    std::atomic<bool> linked{false}; ///< the output to something
};

bool PipeWireOutput::Private::connect(std::string& error)
{
    static const pw_core_events coreEvents = [] {
        pw_core_events events = {};
        events.version = PW_VERSION_CORE_EVENTS;
        events.info = [](void* self, const pw_core_info* info) {
            auto* const d = static_cast<Private*>(self);
            if (d->streams.made() || d->lost || !(info->change_mask & PW_CORE_CHANGE_MASK_PROPS))
                return;
            std::string fault;
            if (!d->streams.make(pw_thread_loop_get_loop(d->loop), d->core, *d->feed, rateOf(info->props),
                                 fault))
                d->reconnectLater(fault.c_str());
        };
        events.error = [](void* self, std::uint32_t id, int, int res, const char* message) {
            // Faults of a stream come to its own listener.
            if (id == PW_ID_CORE && res == -EPIPE)
                static_cast<Private*>(self)->reconnectLater(message);
        };
        return events;
    }();
    core = pw_context_connect(context, nullptr, 0);
    if (!core) {
        error = std::string("no PipeWire daemon answers: ") + std::strerror(errno);
        return false;
    }
    lost = false;
    pw_core_add_listener(core, &coreHook, &coreEvents, this);
    watch.start(core);
    return true;
}

void PipeWireOutput::Private::disconnect()
{
    linked = false;
    streams.destroy();
    watch.stop();
    if (core) {
        spa_hook_remove(&coreHook);
        pw_core_disconnect(core);
        core = nullptr;
    }
}

/// Called from within the connection's own events, so the work is left to the timer.
void PipeWireOutput::Private::reconnectLater(const char* why, bool pauseFirst)
{
    if (lost)
        return;
    lost = true;
    linked = false;
    if (!saidLost)
        say(LogLevel::Warning, std::string("sound output lost (") + orNoReason(why) + "), trying again");
    saidLost = true;
    const double seconds = pauseFirst ? pause : 0;
    timespec due = {time_t(seconds), long((seconds - double(time_t(seconds))) * 1e9)};
    due.tv_nsec = std::max(due.tv_nsec, 1L); // 0 would be never
    pw_loop_update_timer(pw_thread_loop_get_loop(loop), timer, &due, nullptr, false);
    if (pauseFirst)
        pause = std::min(2 * pause, longestPause);
}

void PipeWireOutput::Private::lookAtLinks()
{
    if (!streams.made())
        return;
    const GraphWatch::Linked now = watch.linked(streams.outputNode());
    linked = now.any;
    if (now.any)
        saidNoDevice = false;
    if (now.rearLeft && now.rearRight && now.low)
        streams.setLayout(SpeakerFeed::Layout::Surround);
    else
        streams.setLayout(now.left != now.right ? SpeakerFeed::Layout::Mono : SpeakerFeed::Layout::Stereo);
    streams.setPlayedInto(watch.playedInto(streams.sinkNode()));
}

PipeWireOutput::PipeWireOutput(Log log, bool wait)
    : d(std::make_unique<Private>(std::move(log), wait))
{
    // Kept for the life of the process: its end would take away what other users in it still need.
    static const bool once = [] {
        pw_init(nullptr, nullptr);
        return true;
    }();
    (void)once;
}

PipeWireOutput::~PipeWireOutput()
{
    stop();
}

bool PipeWireOutput::start(Feed& feed, std::string& error)
{
    stop();
    d->feed = &feed;
    d->loop = pw_thread_loop_new("headunit-sound", nullptr);
    pw_loop* const loop = d->loop ? pw_thread_loop_get_loop(d->loop) : nullptr;
    // This configuration lets the audio thread have real-time priority where the system allows it.
    if (loop)
        d->context = pw_context_new(
            loop,
            pw_properties_new(PW_KEY_CONFIG_NAME, "client-rt.conf", PW_KEY_APP_NAME, "Head unit", nullptr),
            0);
    if (!d->context || pw_thread_loop_start(d->loop) < 0) {
        error = std::string("PipeWire's library doesn't start: ") + std::strerror(errno);
        stop();
        return false;
    }
    pw_thread_loop_lock(d->loop);
    d->pause = firstPause;
    d->lost = false;
    d->saidLost = d->saidNoDevice = false;
    d->timer = pw_loop_add_timer(
        loop,
        [](void* self, std::uint64_t) {
            auto* const p = static_cast<Private*>(self);
            p->disconnect();
            std::string why;
            if (!p->connect(why)) {
                p->lost = false;
                p->reconnectLater(why.c_str());
            }
        },
        d.get());
    const bool connected = d->connect(error);
    if (!connected && d->wait)
        d->reconnectLater(error.c_str());
    pw_thread_loop_unlock(d->loop);
    if (!connected && !d->wait) {
        stop();
        return false;
    }
    return true;
}

void PipeWireOutput::stop()
{
    if (d->loop) {
        pw_thread_loop_lock(d->loop);
        d->disconnect();
        if (d->timer)
            pw_loop_destroy_source(pw_thread_loop_get_loop(d->loop), d->timer);
        d->timer = nullptr;
        pw_thread_loop_unlock(d->loop);
        pw_thread_loop_stop(d->loop);
    }
    if (d->context)
        pw_context_destroy(d->context);
    d->context = nullptr;
    if (d->loop)
        pw_thread_loop_destroy(d->loop);
    d->loop = nullptr;
}

bool PipeWireOutput::pulling() const
{
    return !d->lost && d->streams.streaming();
}

void PipeWireOutput::wake()
{
    if (!d->loop)
        return;
    pw_thread_loop_lock(d->loop);
    d->streams.wake();
    pw_thread_loop_unlock(d->loop);
}

std::string PipeWireOutput::status() const
{
    if (d->streams.rate() == 0 || !d->loop || d->lost)
        return "PipeWire, waiting for the sound server";
    std::string text = "PipeWire, " + std::to_string(d->streams.rate()) + " Hz, ";
    if (!d->linked)
        return text + "no device";
    switch (d->streams.layout()) {
    case SpeakerFeed::Layout::Surround:
        return text + "5.1";
    case SpeakerFeed::Layout::Mono:
        return text + "mono";
    case SpeakerFeed::Layout::Stereo:
        break;
    }
    return text + "stereo";
}

} // namespace hvaudio
