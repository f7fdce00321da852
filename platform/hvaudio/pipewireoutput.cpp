#include "hvaudio/pipewireoutput.h"

#include "hvaudio/graphwatch.h"
#include "hvaudio/speakerfeed.h"

#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>
#include <spa/param/latency-utils.h>
#include <spa/param/props.h>

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstring>

namespace hvaudio {

namespace {

/// In the order of SpeakerFeed::Channel.
constexpr std::uint32_t positions[] = {SPA_AUDIO_CHANNEL_FL,  SPA_AUDIO_CHANNEL_FR, SPA_AUDIO_CHANNEL_FC,
                                       SPA_AUDIO_CHANNEL_LFE, SPA_AUDIO_CHANNEL_RL, SPA_AUDIO_CHANNEL_RR};
static_assert(sizeof positions / sizeof *positions == SpeakerFeed::ChannelCount);

constexpr double firstPause = 0.1, longestPause = 5;
constexpr double defaultRate = 48000;

double rateOf(const spa_dict* props)
{
    const char* const text = props ? spa_dict_lookup(props, "default.clock.rate") : nullptr;
    const double rate = text ? std::strtod(text, nullptr) : 0;
    return rate > 0 ? rate : defaultRate;
}

/// Builds a parameter into the buffer that the caller keeps until it is used.
const spa_pod* audioFormat(double rate, int channels, std::uint8_t* buffer, std::uint32_t size)
{
    spa_audio_info_raw info = {};
    info.format = SPA_AUDIO_FORMAT_F32P;
    info.rate = std::uint32_t(rate);
    info.channels = std::uint32_t(channels);
    for (int i = 0; i < channels; ++i)
        info.position[i] = positions[i];
    spa_pod_builder builder;
    spa_pod_builder_init(&builder, buffer, size);
    return spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &info);
}

float* samplesOf(spa_buffer* buffer, std::uint32_t channel)
{
    return channel < buffer->n_datas ? static_cast<float*>(buffer->datas[channel].data) : nullptr;
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
    void stateChanged(pw_stream* of, pw_stream_state state, const char* error);
    void makeStreams(double rate);
    void lookAtLinks();
    void tellLatency(pw_stream* to, spa_latency_info info, spa_direction direction);
    void passLatency(pw_stream* to, const spa_pod* param, spa_direction direction);
    void say(LogLevel level, const std::string& text) const
    {
        if (log)
            log(level, text);
    }

    // [RT]
    void comesIn() noexcept;
    void goesOut() noexcept;

    const Log log;
    const bool wait;
    Feed* feed = nullptr;

    pw_thread_loop* loop = nullptr;
    pw_context* context = nullptr;
    pw_core* core = nullptr;
    pw_stream* sink = nullptr;   ///< what players play into
    pw_stream* stream = nullptr; ///< to the device
    spa_source* timer = nullptr;
    spa_hook coreHook = {}, sinkHook = {}, streamHook = {};
    double pause = firstPause;
    std::atomic<bool> lost{false}; ///< the connection is to be made anew
    bool saidLost = false, saidNoDevice = false;

    GraphWatch watch{[this] { lookAtLinks(); },
                     // Ports that it made stay, and a successor (WirePlumber 0.4) waits for ever for those of
                     // the sink to be made. New streams have none yet.
                     [this] { reconnectLater("the session manager has gone", false); }};

    std::atomic<int> rate{0};
    std::atomic<bool> streaming{false};
    std::atomic<bool> linked{false};

    /// Both streams see the same number in the same cycle.
    static std::uint64_t cycle(const std::atomic<spa_io_position*>& position) noexcept
    {
        const spa_io_position* const now = position.load(std::memory_order_relaxed);
        return now ? now->clock.nsec : 0;
    }

    // Audio side.
    std::atomic<spa_io_position*> sinkPosition{nullptr}, streamPosition{nullptr};
    SpeakerFeed speakers;
};

bool PipeWireOutput::Private::connect(std::string& error)
{
    static const pw_core_events coreEvents = [] {
        pw_core_events events = {};
        events.version = PW_VERSION_CORE_EVENTS;
        events.info = [](void* self, const pw_core_info* info) {
            auto* const d = static_cast<Private*>(self);
            if (d->sink || d->lost || !(info->change_mask & PW_CORE_CHANGE_MASK_PROPS))
                return;
            d->makeStreams(rateOf(info->props));
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
    streaming = linked = false;
    // Their own end is nothing to listen to.
    if (sink) {
        spa_hook_remove(&sinkHook);
        pw_stream_destroy(sink);
    }
    if (stream) {
        spa_hook_remove(&streamHook);
        pw_stream_destroy(stream);
    }
    sink = stream = nullptr;
    sinkPosition = streamPosition = nullptr;
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
    streaming = linked = false;
    if (!saidLost)
        say(LogLevel::Warning,
            std::string("sound output lost (") + (why ? why : "no reason given") + "), trying again");
    saidLost = true;
    const double seconds = pauseFirst ? pause : 0;
    timespec due = {time_t(seconds), long((seconds - double(time_t(seconds))) * 1e9)};
    due.tv_nsec = std::max(due.tv_nsec, 1L); // 0 would be never
    pw_loop_update_timer(pw_thread_loop_get_loop(loop), timer, &due, nullptr, false);
    pause = std::min(2 * pause, longestPause);
}

void PipeWireOutput::Private::stateChanged(pw_stream* of, pw_stream_state state, const char* error)
{
    if (state == PW_STREAM_STATE_UNCONNECTED) {
        reconnectLater(error ? error : "taken away");
    } else if (state == PW_STREAM_STATE_ERROR && pw_stream_get_state(of, nullptr) == state) {
        reconnectLater(error);
    } else if (state == PW_STREAM_STATE_ERROR && !saidNoDevice) {
        // The session manager's way to tell that it has no device now. The stream stays: it is connected
        // when there is one, and other programs keep the sink that they play to.
        say(LogLevel::Warning, std::string("no device to play to (") + (error ? error : "no reason given") +
                                   "), waiting for one");
        saidNoDevice = true;
    }
}

void PipeWireOutput::Private::makeStreams(double serverRate)
{
    static const pw_stream_events sinkEvents = [] {
        pw_stream_events events = {};
        events.version = PW_VERSION_STREAM_EVENTS;
        events.io_changed = [](void* self, std::uint32_t id, void* area, std::uint32_t) {
            if (id == SPA_IO_Position)
                static_cast<Private*>(self)->sinkPosition = static_cast<spa_io_position*>(area);
        };
        events.process = [](void* self) { static_cast<Private*>(self)->comesIn(); };
        events.state_changed = [](void* self, pw_stream_state, pw_stream_state now, const char* error) {
            auto* const d = static_cast<Private*>(self);
            d->stateChanged(d->sink, now, error);
        };
        events.param_changed = [](void* self, std::uint32_t id, const spa_pod* param) {
            auto* const d = static_cast<Private*>(self);
            if (id == SPA_PARAM_Latency && param)
                d->passLatency(d->stream, param, SPA_DIRECTION_OUTPUT);
        };
        return events;
    }();
    static const pw_stream_events streamEvents = [] {
        pw_stream_events events = {};
        events.version = PW_VERSION_STREAM_EVENTS;
        events.io_changed = [](void* self, std::uint32_t id, void* area, std::uint32_t) {
            if (id == SPA_IO_Position)
                static_cast<Private*>(self)->streamPosition = static_cast<spa_io_position*>(area);
        };
        events.process = [](void* self) { static_cast<Private*>(self)->goesOut(); };
        events.state_changed = [](void* self, pw_stream_state, pw_stream_state now, const char* error) {
            auto* const d = static_cast<Private*>(self);
            d->streaming = now == PW_STREAM_STATE_STREAMING;
            if (now == PW_STREAM_STATE_STREAMING) {
                d->pause = firstPause;
                if (d->saidLost)
                    d->say(LogLevel::Info, "sound output is back");
                d->saidLost = false;
            }
            d->stateChanged(d->stream, now, error);
        };
        events.param_changed = [](void* self, std::uint32_t id, const spa_pod* param) {
            auto* const d = static_cast<Private*>(self);
            if (id == SPA_PARAM_Latency && param)
                d->passLatency(d->sink, param, SPA_DIRECTION_INPUT);
        };
        return events;
    }();

    // Servers run at rates that the processor doesn't know, too; then the server converts.
    if (!feed->prepare(serverRate)) {
        serverRate = defaultRate;
        feed->prepare(serverRate);
    }
    rate = int(serverRate);
    speakers.reset(*feed, serverRate);

    // One group: both run in the same cycle. One link group: the session manager doesn't connect the stream
    // to the sink, even when that is the default device.
    const std::string group = "headunit-" + std::to_string(getpid());
    const auto common = [&](const char* name, const char* description) {
        pw_properties* const props = pw_properties_new(nullptr, nullptr);
        pw_properties_set(props, PW_KEY_NODE_NAME, name);
        pw_properties_set(props, PW_KEY_NODE_DESCRIPTION, description);
        pw_properties_set(props, PW_KEY_APP_NAME, "Head unit");
        pw_properties_set(props, PW_KEY_MEDIA_TYPE, "Audio");
        pw_properties_set(props, PW_KEY_NODE_GROUP, group.c_str());
        pw_properties_set(props, "node.link-group", group.c_str());
        pw_properties_setf(props, PW_KEY_NODE_LATENCY, "512/%d", rate.load());
        return props;
    };
    pw_properties* const sinkProps = common("headunit", "Head unit");
    pw_properties_set(sinkProps, PW_KEY_MEDIA_CLASS, "Audio/Sink");
    pw_properties_set(sinkProps, PW_KEY_NODE_VIRTUAL, "true");
    sink = pw_stream_new(core, "Head unit", sinkProps);

    pw_properties* const streamProps = common("headunit-output", "Head unit output");
    pw_properties_set(streamProps, PW_KEY_MEDIA_CATEGORY, "Playback");
    // No media role: session managers keep volume and target of all streams of one role together, so a player
    // that is sent to the unit would send the unit to itself.
    // What a device lacks is folded here, so the session manager links channels of the same name.
    pw_properties_set(streamProps, PW_KEY_STREAM_DONT_REMIX, "true");
    stream = pw_stream_new(core, "Head unit output", streamProps);
    if (!sink || !stream) {
        reconnectLater(std::strerror(errno));
        return;
    }
    pw_stream_add_listener(sink, &sinkHook, &sinkEvents, this);
    pw_stream_add_listener(stream, &streamHook, &streamEvents, this);

    std::uint8_t buffer[1024];
    const auto flags = PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS;
    const spa_pod* format = audioFormat(serverRate, 2, buffer, sizeof buffer);
    int result = pw_stream_connect(sink, PW_DIRECTION_INPUT, PW_ID_ANY, pw_stream_flags(flags), &format, 1);
    if (result >= 0) {
        format = audioFormat(serverRate, SpeakerFeed::ChannelCount, buffer, sizeof buffer);
        result = pw_stream_connect(stream, PW_DIRECTION_OUTPUT, PW_ID_ANY,
                                   pw_stream_flags(flags | PW_STREAM_FLAG_AUTOCONNECT), &format, 1);
    }
    if (result < 0) {
        reconnectLater(std::strerror(-result));
        return;
    }
    // Until a neighbour is heard, which happens only where its latency isn't 0.
    tellLatency(sink, {}, SPA_DIRECTION_INPUT);
    tellLatency(stream, {}, SPA_DIRECTION_OUTPUT);
}

/// Tells a stream's neighbours how far away the other end is: what the other stream has heard from its own
/// neighbours, and the way through bridge and feed.
void PipeWireOutput::Private::tellLatency(pw_stream* to, spa_latency_info info, spa_direction direction)
{
    info.direction = direction;
    info.min_quantum += 1; // the bridge
    info.max_quantum += 1;
    info.min_rate += std::uint32_t(feed->latencyFrames());
    info.max_rate += std::uint32_t(feed->latencyFrames());
    std::uint8_t buffer[1024];
    spa_pod_builder builder;
    spa_pod_builder_init(&builder, buffer, sizeof buffer);
    const spa_pod* param = spa_latency_build(&builder, SPA_PARAM_Latency, &info);
    pw_stream_update_params(to, &param, 1);
}

void PipeWireOutput::Private::passLatency(pw_stream* to, const spa_pod* param, spa_direction direction)
{
    spa_latency_info info = {};
    if (to && spa_latency_parse(param, &info) >= 0 && info.direction == direction)
        tellLatency(to, info, direction);
}

void PipeWireOutput::Private::lookAtLinks()
{
    if (!stream)
        return;
    const GraphWatch::Linked now = watch.linked(pw_stream_get_node_id(stream));
    linked = now.any;
    if (now.any)
        saidNoDevice = false;
    if (now.rearLeft && now.rearRight && now.low)
        speakers.setLayout(SpeakerFeed::Layout::Surround);
    else
        speakers.setLayout(now.left != now.right ? SpeakerFeed::Layout::Mono : SpeakerFeed::Layout::Stereo);
}

void PipeWireOutput::Private::comesIn() noexcept
{
    while (pw_buffer* const held = pw_stream_dequeue_buffer(sink)) {
        spa_buffer* const buffer = held->buffer;
        const spa_chunk* const chunk = buffer->n_datas > 0 ? buffer->datas[0].chunk : nullptr;
        const float *left = samplesOf(buffer, 0), *right = samplesOf(buffer, 1);
        if (chunk && left) {
            const std::uint32_t offset = std::min(chunk->offset, buffer->datas[0].maxsize);
            const std::uint32_t size = std::min(chunk->size, buffer->datas[0].maxsize - offset);
            const std::uint32_t start = offset / sizeof(float);
            speakers.push(cycle(sinkPosition), left + start, right ? right + start : left + start,
                          int(size / sizeof(float)));
        }
        pw_stream_queue_buffer(sink, held);
    }
}

void PipeWireOutput::Private::goesOut() noexcept
{
    pw_buffer* const held = pw_stream_dequeue_buffer(stream);
    if (!held)
        return;
    spa_buffer* const buffer = held->buffer;
    float* channels[SpeakerFeed::ChannelCount] = {};
    for (int i = 0; i < SpeakerFeed::ChannelCount; ++i)
        channels[i] = samplesOf(buffer, std::uint32_t(i));
    std::uint64_t frames = buffer->n_datas > 0 ? buffer->datas[0].maxsize / sizeof(float) : 0;
    frames = held->requested > 0 ? std::min(frames, held->requested) : std::min<std::uint64_t>(frames, 1024);
    speakers.fill(cycle(streamPosition), channels, int(frames));
    for (std::uint32_t i = 0; i < buffer->n_datas; ++i) {
        buffer->datas[i].chunk->offset = 0;
        buffer->datas[i].chunk->stride = sizeof(float);
        buffer->datas[i].chunk->size = std::uint32_t(frames * sizeof(float));
    }
    pw_stream_queue_buffer(stream, held);
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
    return d->streaming;
}

std::string PipeWireOutput::status() const
{
    if (d->rate == 0 || !d->loop || d->lost)
        return "PipeWire, waiting for the sound server";
    std::string text = "PipeWire, " + std::to_string(d->rate) + " Hz, ";
    if (!d->linked)
        return text + "no device";
    switch (d->speakers.layout()) {
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
