#include "hvaudio/pipewireoutput.h"

#include "hvaudio/fold.h"
#include "hvaudio/inputbridge.h"

#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>
#include <spa/param/latency-utils.h>
#include <spa/param/props.h>

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <map>
#include <mutex>

namespace hvaudio {

namespace {

constexpr int playChannels = 6;
/// Order of the stream's channels, and which speaker each carries; -1 = silence.
constexpr struct
{
    std::uint32_t position;
    const char* name;
    int speaker;
} places[playChannels] = {
    {SPA_AUDIO_CHANNEL_FL, "FL", dsp::FrontLeft},
    {SPA_AUDIO_CHANNEL_FR, "FR", dsp::FrontRight},
    {SPA_AUDIO_CHANNEL_FC, "FC", -1},
    {SPA_AUDIO_CHANNEL_LFE, "LFE", dsp::Subwoofer},
    {SPA_AUDIO_CHANNEL_RL, "RL", dsp::RearLeft},
    {SPA_AUDIO_CHANNEL_RR, "RR", dsp::RearRight},
};

constexpr int pieceFrames = 1024;
constexpr double firstPause = 0.1, longestPause = 5;
constexpr double defaultRate = 48000;

std::uint32_t numberOf(const spa_dict* props, const char* key)
{
    const char* const text = props ? spa_dict_lookup(props, key) : nullptr;
    return text ? std::uint32_t(std::strtoul(text, nullptr, 10)) : SPA_ID_INVALID;
}

/// Builds a parameter into the buffer that the caller keeps until it is used.
const spa_pod* audioFormat(double rate, int channels, std::uint8_t* buffer, std::uint32_t size)
{
    spa_audio_info_raw info = {};
    info.format = SPA_AUDIO_FORMAT_F32P;
    info.rate = std::uint32_t(rate);
    info.channels = std::uint32_t(channels);
    for (int i = 0; i < channels; ++i)
        info.position[i] = places[i].position;
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
    void reconnectLater(const char* why);
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
    void fill(float* const channels[playChannels], int frames) noexcept;

    const Log log;
    const bool wait;
    Feed* feed = nullptr;

    pw_thread_loop* loop = nullptr;
    pw_context* context = nullptr;
    pw_core* core = nullptr;
    pw_registry* registry = nullptr;
    pw_stream* sink = nullptr;   ///< what players play into
    pw_stream* stream = nullptr; ///< to the device
    spa_source* timer = nullptr;
    spa_hook coreHook = {}, registryHook = {}, sinkHook = {}, streamHook = {};
    double pause = firstPause;
    std::atomic<bool> lost{false}; ///< the connection is to be made anew
    bool saidLost = false;

    struct Port
    {
        std::uint32_t node;
        std::string channel;
    };
    std::map<std::uint32_t, Port> ports;          ///< all output ports of the graph
    std::map<std::uint32_t, std::uint32_t> links; ///< link to output port

    std::atomic<int> rate{0};
    std::atomic<bool> streaming{false};
    std::atomic<bool> linked{false}, wide{false};

    /// Both streams see the same number in the same cycle.
    static std::uint64_t cycle(const std::atomic<spa_io_position*>& position) noexcept
    {
        const spa_io_position* const now = position.load(std::memory_order_relaxed);
        return now ? now->clock.nsec : 0;
    }

    // Audio side.
    std::atomic<spa_io_position*> sinkPosition{nullptr}, streamPosition{nullptr};
    InputBridge bridge;
    float folded = 1; ///< 1 = all in FL and FR
    float foldStep = 1.0f / 480;
    float input[2][pieceFrames];
    float speakers[dsp::speakerCount][pieceFrames];
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
            const std::uint32_t serverRate = numberOf(info->props, "default.clock.rate");
            d->makeStreams(serverRate == SPA_ID_INVALID ? defaultRate : double(serverRate));
        };
        events.error = [](void* self, std::uint32_t id, int, int res, const char* message) {
            // Faults of a stream come to its own listener.
            if (id == PW_ID_CORE && res == -EPIPE)
                static_cast<Private*>(self)->reconnectLater(message);
        };
        return events;
    }();
    static const pw_registry_events registryEvents = [] {
        pw_registry_events events = {};
        events.version = PW_VERSION_REGISTRY_EVENTS;
        events.global = [](void* self, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
                           const spa_dict* props) {
            auto* const d = static_cast<Private*>(self);
            if (std::strcmp(type, PW_TYPE_INTERFACE_Port) == 0) {
                const char* const direction = spa_dict_lookup(props, PW_KEY_PORT_DIRECTION);
                const char* const channel = spa_dict_lookup(props, PW_KEY_AUDIO_CHANNEL);
                if (direction && channel && std::strcmp(direction, "out") == 0)
                    d->ports[id] = {numberOf(props, PW_KEY_NODE_ID), channel};
            } else if (std::strcmp(type, PW_TYPE_INTERFACE_Link) == 0) {
                d->links[id] = numberOf(props, PW_KEY_LINK_OUTPUT_PORT);
                d->lookAtLinks();
            }
        };
        events.global_remove = [](void* self, std::uint32_t id) {
            auto* const d = static_cast<Private*>(self);
            d->ports.erase(id);
            if (d->links.erase(id) > 0)
                d->lookAtLinks();
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
    registry = pw_core_get_registry(core, PW_VERSION_REGISTRY, 0);
    pw_registry_add_listener(registry, &registryHook, &registryEvents, this);
    return true;
}

void PipeWireOutput::Private::disconnect()
{
    streaming = linked = wide = false;
    for (pw_stream** const each : {&sink, &stream}) {
        if (*each)
            pw_stream_destroy(*each);
        *each = nullptr;
    }
    sinkPosition = streamPosition = nullptr;
    if (registry) {
        spa_hook_remove(&registryHook);
        pw_proxy_destroy(reinterpret_cast<pw_proxy*>(registry));
        registry = nullptr;
    }
    if (core) {
        spa_hook_remove(&coreHook);
        pw_core_disconnect(core);
        core = nullptr;
    }
    ports.clear();
    links.clear();
}

/// Called from within the connection's own events, so the work is left to the timer.
void PipeWireOutput::Private::reconnectLater(const char* why)
{
    if (lost)
        return;
    lost = true;
    streaming = linked = wide = false;
    if (!saidLost)
        say(LogLevel::Warning,
            std::string("sound output lost (") + (why ? why : "no reason given") + "), trying again");
    saidLost = true;
    timespec due = {time_t(pause), long((pause - double(time_t(pause))) * 1e9)};
    pw_loop_update_timer(pw_thread_loop_get_loop(loop), timer, &due, nullptr, false);
    pause = std::min(2 * pause, longestPause);
}

void PipeWireOutput::Private::makeStreams(double serverRate)
{
    static const auto stateChanged = [](Private* d, pw_stream_state state, const char* error) {
        if (state == PW_STREAM_STATE_ERROR)
            d->reconnectLater(error);
    };
    static const pw_stream_events sinkEvents = [] {
        pw_stream_events events = {};
        events.version = PW_VERSION_STREAM_EVENTS;
        events.io_changed = [](void* self, std::uint32_t id, void* area, std::uint32_t) {
            if (id == SPA_IO_Position)
                static_cast<Private*>(self)->sinkPosition = static_cast<spa_io_position*>(area);
        };
        events.process = [](void* self) { static_cast<Private*>(self)->comesIn(); };
        events.state_changed = [](void* self, pw_stream_state, pw_stream_state now, const char* error) {
            stateChanged(static_cast<Private*>(self), now, error);
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
            stateChanged(d, now, error);
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
    bridge.reset(serverRate);
    folded = 1;
    foldStep = float(1 / (0.01 * serverRate));

    // One group: both run in the same cycle. One link group: the session manager doesn't connect the stream
    // to the sink, even when that is the default device.
    const std::string group = "headunit-" + std::to_string(getpid());
    const auto common = [&](const char* name, const char* description) {
        pw_properties* const props = pw_properties_new(nullptr, nullptr);
        pw_properties_set(props, PW_KEY_NODE_NAME, name);
        pw_properties_set(props, PW_KEY_NODE_DESCRIPTION, description);
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
    pw_properties_set(streamProps, PW_KEY_MEDIA_ROLE, "Music");
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
        format = audioFormat(serverRate, playChannels, buffer, sizeof buffer);
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
    const std::uint32_t node = pw_stream_get_node_id(stream);
    bool rearLeft = false, rearRight = false, low = false, any = false;
    for (const auto& link : links) {
        const auto port = ports.find(link.second);
        if (port == ports.end() || port->second.node != node)
            continue;
        any = true;
        rearLeft |= port->second.channel == "RL";
        rearRight |= port->second.channel == "RR";
        low |= port->second.channel == "LFE";
    }
    linked = any;
    wide = rearLeft && rearRight && low;
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
            bridge.push(cycle(sinkPosition), left + start, right ? right + start : left + start,
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
    float* channels[playChannels] = {};
    for (int i = 0; i < playChannels; ++i)
        channels[i] = samplesOf(buffer, std::uint32_t(i));
    std::uint64_t frames = buffer->n_datas > 0 ? buffer->datas[0].maxsize / sizeof(float) : 0;
    frames = held->requested > 0 ? std::min(frames, held->requested) : std::min<std::uint64_t>(frames, 1024);
    bridge.begin(cycle(streamPosition), int(frames));
    fill(channels, int(frames));
    for (std::uint32_t i = 0; i < buffer->n_datas; ++i) {
        buffer->datas[i].chunk->offset = 0;
        buffer->datas[i].chunk->stride = sizeof(float);
        buffer->datas[i].chunk->size = std::uint32_t(frames * sizeof(float));
    }
    pw_stream_queue_buffer(stream, held);
}

void PipeWireOutput::Private::fill(float* const channels[playChannels], int frames) noexcept
{
    for (int done = 0; done < frames;) {
        const int count = std::min(frames - done, pieceFrames);
        const bool any = bridge.pull(input[0], input[1], count);
        const float* const in[2] = {any ? input[0] : nullptr, any ? input[1] : nullptr};
        float* out[dsp::speakerCount];
        for (int i = 0; i < dsp::speakerCount; ++i)
            out[i] = speakers[i];
        feed->pull(in, out, count);

        const float aim = wide.load(std::memory_order_relaxed) ? 0.0f : 1.0f;
        const bool steady = folded == aim;
        float foldedSides[2][pieceFrames];
        if (!steady || folded == 1) {
            float* const sides[2] = {foldedSides[0], foldedSides[1]};
            dsp::foldToStereo(out, sides, count);
        }
        const float from = folded;
        const float step = aim > from ? foldStep : -foldStep;
        for (int i = 0; i < playChannels; ++i) {
            if (!channels[i])
                continue;
            float* const to = channels[i] + done;
            const int speaker = places[i].speaker;
            if (speaker < 0) {
                std::fill(to, to + count, 0.0f);
                continue;
            }
            const float* const own = out[speaker];
            const float* const sides = speaker == dsp::FrontLeft    ? foldedSides[0]
                                       : speaker == dsp::FrontRight ? foldedSides[1]
                                                                    : nullptr;
            if (steady && folded == 0) {
                std::copy(own, own + count, to);
            } else if (steady) {
                if (sides)
                    std::copy(sides, sides + count, to);
                else
                    std::fill(to, to + count, 0.0f);
            } else {
                for (int n = 0; n < count; ++n) {
                    const float share = smoothStep(std::clamp(from + step * float(n), 0.0f, 1.0f));
                    to[n] = own[n] * (1 - share) + (sides ? sides[n] * share : 0.0f);
                }
            }
        }
        if (!steady)
            folded = std::clamp(from + step * float(count), 0.0f, 1.0f);
        done += count;
    }
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
        d->context =
            pw_context_new(loop, pw_properties_new(PW_KEY_CONFIG_NAME, "client-rt.conf", nullptr), 0);
    if (!d->context || pw_thread_loop_start(d->loop) < 0) {
        error = std::string("PipeWire's library doesn't start: ") + std::strerror(errno);
        stop();
        return false;
    }
    pw_thread_loop_lock(d->loop);
    d->pause = firstPause;
    d->lost = false;
    d->saidLost = false;
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
    return text + (d->wide ? "5.1" : "stereo");
}

} // namespace hvaudio
