#include "platform/hvaudio/outputs/pipewire/pipewirestreams.h"

#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>
#include <spa/param/props.h>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace hvaudio {

namespace {

/// In the order of SpeakerFeed::Channel.
constexpr std::uint32_t positions[] = {SPA_AUDIO_CHANNEL_FL,  SPA_AUDIO_CHANNEL_FR, SPA_AUDIO_CHANNEL_FC,
                                       SPA_AUDIO_CHANNEL_LFE, SPA_AUDIO_CHANNEL_RL, SPA_AUDIO_CHANNEL_RR};
static_assert(sizeof positions / sizeof *positions == SpeakerFeed::ChannelCount);

constexpr double usualRate = 48000;

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

/// Both streams see the same number in the same cycle.
std::uint64_t cycle(const std::atomic<spa_io_position*>& position) noexcept
{
    const spa_io_position* const now = position.load(std::memory_order_relaxed);
    return now ? now->clock.nsec : 0;
}

} // namespace

PipeWireStreams::PipeWireStreams(Listener listener)
    : listener_(std::move(listener))
{
}

PipeWireStreams::~PipeWireStreams()
{
    destroy();
}

void PipeWireStreams::destroy()
{
    streaming_ = false;
    // Their own end is nothing to listen to.
    if (sink_)
        spa_hook_remove(&sinkHook_);
    if (stream_)
        spa_hook_remove(&streamHook_);
    sinkPosition_ = streamPosition_ = nullptr;
    if (sink_)
        pw_stream_destroy(sink_);
    if (stream_)
        pw_stream_destroy(stream_);
    sink_ = stream_ = nullptr;
    sinkHook_ = streamHook_ = {};
}

std::uint32_t PipeWireStreams::outputNode() const
{
    return stream_ ? pw_stream_get_node_id(stream_) : SPA_ID_INVALID;
}

void PipeWireStreams::stateChanged(pw_stream* of, int state, const char* error)
{
    if (state == PW_STREAM_STATE_UNCONNECTED) {
        streaming_ = false;
        listener_.ended(error ? error : "taken away");
    } else if (state == PW_STREAM_STATE_ERROR && pw_stream_get_state(of, nullptr) == state) {
        streaming_ = false;
        listener_.ended(error);
    } else if (state == PW_STREAM_STATE_ERROR) {
        // Told, but not entered: so a session manager says that it has no device now.
        listener_.noDevice(error);
    } else if (of == stream_) {
        streaming_ = state == PW_STREAM_STATE_STREAMING;
        if (streaming_)
            listener_.playing();
    }
}

bool PipeWireStreams::make(pw_core* core, Feed& feed, double serverRate, std::string& error)
{
    static const pw_stream_events sinkEvents = [] {
        pw_stream_events events = {};
        events.version = PW_VERSION_STREAM_EVENTS;
        events.io_changed = [](void* self, std::uint32_t id, void* area, std::uint32_t) {
            if (id == SPA_IO_Position)
                static_cast<PipeWireStreams*>(self)->sinkPosition_ = static_cast<spa_io_position*>(area);
        };
        events.process = [](void* self) { static_cast<PipeWireStreams*>(self)->comesIn(); };
        events.state_changed = [](void* self, pw_stream_state, pw_stream_state now, const char* error) {
            auto* const d = static_cast<PipeWireStreams*>(self);
            d->stateChanged(d->sink_, now, error);
        };
        events.param_changed = [](void* self, std::uint32_t id, const spa_pod* param) {
            auto* const d = static_cast<PipeWireStreams*>(self);
            if (id == SPA_PARAM_Latency && param)
                d->passLatency(d->stream_, param, SPA_DIRECTION_OUTPUT);
        };
        return events;
    }();
    static const pw_stream_events streamEvents = [] {
        pw_stream_events events = {};
        events.version = PW_VERSION_STREAM_EVENTS;
        events.io_changed = [](void* self, std::uint32_t id, void* area, std::uint32_t) {
            if (id == SPA_IO_Position)
                static_cast<PipeWireStreams*>(self)->streamPosition_ = static_cast<spa_io_position*>(area);
        };
        events.process = [](void* self) { static_cast<PipeWireStreams*>(self)->goesOut(); };
        events.state_changed = [](void* self, pw_stream_state, pw_stream_state now, const char* error) {
            auto* const d = static_cast<PipeWireStreams*>(self);
            d->stateChanged(d->stream_, now, error);
        };
        events.param_changed = [](void* self, std::uint32_t id, const spa_pod* param) {
            auto* const d = static_cast<PipeWireStreams*>(self);
            if (id == SPA_PARAM_Latency && param)
                d->passLatency(d->sink_, param, SPA_DIRECTION_INPUT);
        };
        return events;
    }();

    // Servers run at rates that the processor doesn't know, too; then the server converts.
    feed_ = &feed;
    if (!feed.prepare(serverRate)) {
        serverRate = usualRate;
        feed.prepare(serverRate);
    }
    rate_ = int(serverRate);
    speakers_.reset(feed, serverRate);

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
        pw_properties_setf(props, PW_KEY_NODE_LATENCY, "512/%d", rate_.load());
        return props;
    };
    pw_properties* const sinkProps = common("headunit", "Head unit");
    pw_properties_set(sinkProps, PW_KEY_MEDIA_CLASS, "Audio/Sink");
    pw_properties_set(sinkProps, PW_KEY_NODE_VIRTUAL, "true");
    sink_ = pw_stream_new(core, "Head unit", sinkProps);

    pw_properties* const streamProps = common("headunit-output", "Head unit output");
    pw_properties_set(streamProps, PW_KEY_MEDIA_CATEGORY, "Playback");
    // No media role: session managers keep volume and target of all streams of one role together, so a player
    // that is sent to the unit would send the unit to itself.
    // What a device lacks is folded here, so the session manager links channels of the same name.
    pw_properties_set(streamProps, PW_KEY_STREAM_DONT_REMIX, "true");
    stream_ = pw_stream_new(core, "Head unit output", streamProps);
    if (!sink_ || !stream_) {
        error = std::strerror(errno);
        return false;
    }
    pw_stream_add_listener(sink_, &sinkHook_, &sinkEvents, this);
    pw_stream_add_listener(stream_, &streamHook_, &streamEvents, this);

    std::uint8_t buffer[1024];
    const auto flags = PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS;
    const spa_pod* format = audioFormat(serverRate, 2, buffer, sizeof buffer);
    int result = pw_stream_connect(sink_, PW_DIRECTION_INPUT, PW_ID_ANY, pw_stream_flags(flags), &format, 1);
    if (result >= 0) {
        format = audioFormat(serverRate, SpeakerFeed::ChannelCount, buffer, sizeof buffer);
        result = pw_stream_connect(stream_, PW_DIRECTION_OUTPUT, PW_ID_ANY,
                                   pw_stream_flags(flags | PW_STREAM_FLAG_AUTOCONNECT), &format, 1);
    }
    if (result < 0) {
        error = std::strerror(-result);
        return false;
    }
    // Until a neighbour is heard, which happens only where its latency isn't 0.
    tellLatency(sink_, {}, SPA_DIRECTION_INPUT);
    tellLatency(stream_, {}, SPA_DIRECTION_OUTPUT);
    return true;
}

/// Tells a stream's neighbours how far away the other end is: what the other stream has heard from its own
/// neighbours, and the way through bridge and feed.
void PipeWireStreams::tellLatency(pw_stream* to, spa_latency_info info, spa_direction direction)
{
    info.direction = direction;
    info.min_quantum += 1; // the bridge
    info.max_quantum += 1;
    info.min_rate += std::uint32_t(feed_->latencyFrames());
    info.max_rate += std::uint32_t(feed_->latencyFrames());
    std::uint8_t buffer[1024];
    spa_pod_builder builder;
    spa_pod_builder_init(&builder, buffer, sizeof buffer);
    const spa_pod* param = spa_latency_build(&builder, SPA_PARAM_Latency, &info);
    pw_stream_update_params(to, &param, 1);
}

void PipeWireStreams::passLatency(pw_stream* to, const spa_pod* param, spa_direction direction)
{
    spa_latency_info info = {};
    if (to && spa_latency_parse(param, &info) >= 0 && info.direction == direction)
        tellLatency(to, info, direction);
}

void PipeWireStreams::comesIn() noexcept
{
    while (pw_buffer* const held = pw_stream_dequeue_buffer(sink_)) {
        spa_buffer* const buffer = held->buffer;
        const spa_chunk* const chunk = buffer->n_datas > 0 ? buffer->datas[0].chunk : nullptr;
        const float *left = samplesOf(buffer, 0), *right = samplesOf(buffer, 1);
        if (chunk && left) {
            const std::uint32_t offset = std::min(chunk->offset, buffer->datas[0].maxsize);
            const std::uint32_t size = std::min(chunk->size, buffer->datas[0].maxsize - offset);
            const std::uint32_t start = offset / sizeof(float);
            speakers_.push(cycle(sinkPosition_), left + start, right ? right + start : left + start,
                           int(size / sizeof(float)));
        }
        pw_stream_queue_buffer(sink_, held);
    }
}

void PipeWireStreams::goesOut() noexcept
{
    pw_buffer* const held = pw_stream_dequeue_buffer(stream_);
    if (!held)
        return;
    spa_buffer* const buffer = held->buffer;
    float* channels[SpeakerFeed::ChannelCount] = {};
    for (int i = 0; i < SpeakerFeed::ChannelCount; ++i)
        channels[i] = samplesOf(buffer, std::uint32_t(i));
    std::uint64_t frames = buffer->n_datas > 0 ? buffer->datas[0].maxsize / sizeof(float) : 0;
    frames = held->requested > 0 ? std::min(frames, held->requested) : std::min<std::uint64_t>(frames, 1024);
    speakers_.fill(cycle(streamPosition_), channels, int(frames));
    for (std::uint32_t i = 0; i < buffer->n_datas; ++i) {
        buffer->datas[i].chunk->offset = 0;
        buffer->datas[i].chunk->stride = sizeof(float);
        buffer->datas[i].chunk->size = std::uint32_t(frames * sizeof(float));
    }
    pw_stream_queue_buffer(stream_, held);
}

} // namespace hvaudio
