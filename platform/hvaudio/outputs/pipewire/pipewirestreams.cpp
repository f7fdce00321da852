#include "platform/hvaudio/outputs/pipewire/pipewirestreams.h"

#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>
#include <spa/param/props.h>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>

namespace hvaudio {

namespace {

/// In the order of SpeakerFeed::Channel.
constexpr std::uint32_t positions[] = {SPA_AUDIO_CHANNEL_FL,  SPA_AUDIO_CHANNEL_FR, SPA_AUDIO_CHANNEL_FC,
                                       SPA_AUDIO_CHANNEL_LFE, SPA_AUDIO_CHANNEL_RL, SPA_AUDIO_CHANNEL_RR};
static_assert(std::size(positions) == SpeakerFeed::ChannelCount);

constexpr double usualRate = 48000;
constexpr int restAfterSeconds = 3;

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
    : m_listener(std::move(listener))
{
}

PipeWireStreams::~PipeWireStreams()
{
    destroy();
}

void PipeWireStreams::destroy()
{
    m_streaming = false;
    // Their own end is nothing to listen to.
    if (m_sink)
        spa_hook_remove(&m_sinkHook);
    if (m_stream)
        spa_hook_remove(&m_streamHook);
    m_sinkPosition = m_streamPosition = nullptr;
    if (m_sink)
        pw_stream_destroy(m_sink);
    if (m_stream)
        pw_stream_destroy(m_stream);
    m_sink = m_stream = nullptr;
    m_sinkHook = m_streamHook = {};
    if (m_signal)
        pw_loop_destroy_source(m_loop, m_signal);
    m_signal = nullptr;
}

std::uint32_t PipeWireStreams::outputNode() const
{
    return m_stream ? pw_stream_get_node_id(m_stream) : SPA_ID_INVALID;
}

std::uint32_t PipeWireStreams::sinkNode() const
{
    return m_sink ? pw_stream_get_node_id(m_sink) : SPA_ID_INVALID;
}

void PipeWireStreams::stateChanged(pw_stream* of, int state, const char* error)
{
    if (state == PW_STREAM_STATE_UNCONNECTED) {
        m_streaming = false;
        m_listener.ended(error ? error : "taken away");
    } else if (state == PW_STREAM_STATE_ERROR && pw_stream_get_state(of, nullptr) == state) {
        m_streaming = false;
        m_listener.ended(error);
    } else if (state == PW_STREAM_STATE_ERROR) {
        // Told, but not entered: so a session manager says that it has no device now.
        m_listener.noDevice(error);
    } else if (of == m_stream) {
        m_streaming = state == PW_STREAM_STATE_STREAMING;
        if (m_streaming)
            m_listener.playing();
        else if (!m_resting)
            m_brokenOff = true;
    }
}

// Only functions without a capture can be handed over, so each stream has its own.
template <PipeWireStreams::Stream which>
pw_stream_events PipeWireStreams::eventsOf()
{
    constexpr bool isSink = which == Stream::Sink;
    pw_stream_events events = {};
    events.version = PW_VERSION_STREAM_EVENTS;
    events.io_changed = [](void* self, std::uint32_t id, void* area, std::uint32_t) {
        if (id == SPA_IO_Position)
            static_cast<PipeWireStreams*>(self)->positionChanged(which, static_cast<spa_io_position*>(area));
    };
    events.process = [](void* self) {
        auto* const d = static_cast<PipeWireStreams*>(self);
        isSink ? d->comesIn() : d->goesOut();
    };
    events.state_changed = [](void* self, pw_stream_state, pw_stream_state now, const char* error) {
        auto* const d = static_cast<PipeWireStreams*>(self);
        d->stateChanged(isSink ? d->m_sink : d->m_stream, now, error);
    };
    events.param_changed = [](void* self, std::uint32_t id, const spa_pod* param) {
        auto* const d = static_cast<PipeWireStreams*>(self);
        if (id == SPA_PARAM_Latency && param)
            d->passLatency(isSink ? d->m_stream : d->m_sink, param,
                           isSink ? SPA_DIRECTION_OUTPUT : SPA_DIRECTION_INPUT);
        if (id == SPA_PARAM_Format)
            (isSink ? d->m_sinkHasFormat : d->m_streamHasFormat) = param != nullptr;
    };
    return events;
}

bool PipeWireStreams::make(pw_loop* loop, pw_core* core, Feed& feed, double serverRate, std::string& error)
{
    prepare(feed, serverRate);
    m_loop = loop;
    m_signal = pw_loop_add_event(
        loop, [](void* self, std::uint64_t) { static_cast<PipeWireStreams*>(self)->restOrWake(); }, this);
    m_resting = m_wantsRest = m_playedInto = m_sinkHasFormat = m_streamHasFormat = false;
    m_quietFrames = 0;
    if (!makeNodes(core)) {
        error = std::strerror(errno);
        return false;
    }
    if (const int result = connect(); result < 0) {
        error = std::strerror(-result);
        return false;
    }
    // Until a neighbour is heard, which happens only where its latency isn't 0.
    tellLatency(m_sink, {}, SPA_DIRECTION_INPUT);
    tellLatency(m_stream, {}, SPA_DIRECTION_OUTPUT);
    return true;
}

/// Servers run at rates that the processor doesn't know, too; then the server converts.
void PipeWireStreams::prepare(Feed& feed, double serverRate)
{
    m_feed = &feed;
    if (!feed.prepare(serverRate)) {
        serverRate = usualRate;
        feed.prepare(serverRate);
    }
    m_rate = int(serverRate);
    m_speakers.reset(feed, serverRate);
}

bool PipeWireStreams::makeNodes(pw_core* core)
{
    static const pw_stream_events sinkEvents = eventsOf<Stream::Sink>(),
                                  streamEvents = eventsOf<Stream::Output>();
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
        pw_properties_setf(props, PW_KEY_NODE_LATENCY, "512/%d", m_rate.load());
        return props;
    };
    pw_properties* const sinkProps = common("headunit", "Head unit");
    pw_properties_set(sinkProps, PW_KEY_MEDIA_CLASS, "Audio/Sink");
    pw_properties_set(sinkProps, PW_KEY_NODE_VIRTUAL, "true");
    m_sink = pw_stream_new(core, "Head unit", sinkProps);

    pw_properties* const streamProps = common("headunit-output", "Head unit output");
    pw_properties_set(streamProps, PW_KEY_MEDIA_CATEGORY, "Playback");
    // No media role: session managers keep volume and target of all streams of one role together, so a player
    // that is sent to the unit would send the unit to itself.
    // What a device lacks is folded here, so the session manager links channels of the same name.
    pw_properties_set(streamProps, PW_KEY_STREAM_DONT_REMIX, "true");
    m_stream = pw_stream_new(core, "Head unit output", streamProps);
    if (!m_sink || !m_stream)
        return false;
    pw_stream_add_listener(m_sink, &m_sinkHook, &sinkEvents, this);
    pw_stream_add_listener(m_stream, &m_streamHook, &streamEvents, this);
    return true;
}

int PipeWireStreams::connect()
{
    std::uint8_t buffer[1024];
    const auto flags = PW_STREAM_FLAG_MAP_BUFFERS | PW_STREAM_FLAG_RT_PROCESS;
    const spa_pod* format = audioFormat(m_rate, 2, buffer, sizeof buffer);
    const int result =
        pw_stream_connect(m_sink, PW_DIRECTION_INPUT, PW_ID_ANY, pw_stream_flags(flags), &format, 1);
    if (result < 0)
        return result;
    format = audioFormat(m_rate, SpeakerFeed::ChannelCount, buffer, sizeof buffer);
    return pw_stream_connect(m_stream, PW_DIRECTION_OUTPUT, PW_ID_ANY,
                             pw_stream_flags(flags | PW_STREAM_FLAG_AUTOCONNECT), &format, 1);
}

void PipeWireStreams::positionChanged(Stream of, spa_io_position* position)
{
    (of == Stream::Sink ? m_sinkPosition : m_streamPosition) = position;
    if (position && !m_sinkHasFormat && !m_streamHasFormat)
        followRate(position->clock.rate.denom);
}

void PipeWireStreams::followRate(double graphRate)
{
    const SpeakerFeed::Layout layout = m_speakers.layout();
    if (graphRate == m_rate || !m_feed->prepare(graphRate))
        return;
    m_rate = int(graphRate);
    m_speakers.reset(*m_feed, graphRate);
    m_speakers.setLayout(layout);
    std::uint8_t buffer[1024];
    const spa_pod* format = audioFormat(graphRate, 2, buffer, sizeof buffer);
    pw_stream_update_params(m_sink, &format, 1);
    format = audioFormat(graphRate, SpeakerFeed::ChannelCount, buffer, sizeof buffer);
    pw_stream_update_params(m_stream, &format, 1);
    tellLatency(m_sink, {}, SPA_DIRECTION_INPUT);
    tellLatency(m_stream, {}, SPA_DIRECTION_OUTPUT);
}

/// Tells a stream's neighbours how far away the other end is: what the other stream has heard from its own
/// neighbours, and the way through bridge and feed.
void PipeWireStreams::tellLatency(pw_stream* to, spa_latency_info info, spa_direction direction)
{
    info.direction = direction;
    info.min_quantum += 1; // the bridge
    info.max_quantum += 1;
    info.min_rate += std::uint32_t(m_feed->latencyFrames());
    info.max_rate += std::uint32_t(m_feed->latencyFrames());
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

void PipeWireStreams::wake()
{
    ++m_wakes;
    restOrWake();
}

void PipeWireStreams::setPlayedInto(bool played)
{
    if (!m_playedInto.exchange(played) && played)
        wake();
}

/// An inactive stream costs neither this process nor the server anything, and keeps its links.
void PipeWireStreams::restOrWake()
{
    if (!m_stream)
        return;
    const bool called = m_wakes != m_wakesAtWish;
    if (m_wantsRest.exchange(false) && !called && !m_resting) {
        m_resting = true;
        pw_stream_set_active(m_stream, false);
    } else if (m_resting && called) {
        m_resting = false;
        ++m_wakes; // the silence is counted anew
        pw_stream_set_active(m_stream, true);
    }
}

void PipeWireStreams::watchSilence(unsigned wakes, int frames) noexcept
{
    if (wakes != m_wakesAtWish.load(std::memory_order_relaxed) || m_playedInto || !m_feed->silent() ||
        !m_feed->unobserved()) {
        m_wakesAtWish.store(wakes, std::memory_order_relaxed);
        m_quietFrames = 0;
        return;
    }
    const int enough = restAfterSeconds * m_rate;
    if (m_quietFrames < enough && (m_quietFrames += frames) >= enough) {
        m_wantsRest = true;
        pw_loop_signal_event(m_loop, m_signal);
    }
}

void PipeWireStreams::comesIn() noexcept
{
    while (pw_buffer* const held = pw_stream_dequeue_buffer(m_sink)) {
        spa_buffer* const buffer = held->buffer;
        const spa_chunk* const chunk = buffer->n_datas > 0 ? buffer->datas[0].chunk : nullptr;
        const float *left = samplesOf(buffer, 0), *right = samplesOf(buffer, 1);
        if (chunk && left) {
            const std::uint32_t offset = std::min(chunk->offset, buffer->datas[0].maxsize);
            const std::uint32_t size = std::min(chunk->size, buffer->datas[0].maxsize - offset);
            const int start = int(offset / sizeof(float)), frames = int(size / sizeof(float));
            left += start;
            right = right ? right + start : left;
            m_speakers.push(cycle(m_sinkPosition), left, right, frames);
        }
        pw_stream_queue_buffer(m_sink, held);
    }
}

void PipeWireStreams::goesOut() noexcept
{
    pw_buffer* const held = pw_stream_dequeue_buffer(m_stream);
    if (!held)
        return;
    spa_buffer* const buffer = held->buffer;
    float* channels[SpeakerFeed::ChannelCount] = {};
    for (int i = 0; i < SpeakerFeed::ChannelCount; ++i)
        channels[i] = samplesOf(buffer, std::uint32_t(i));
    std::uint64_t frames = buffer->n_datas > 0 ? buffer->datas[0].maxsize / sizeof(float) : 0;
    frames = held->requested > 0 ? std::min(frames, held->requested) : std::min<std::uint64_t>(frames, 1024);
    const spa_io_position* const position = m_streamPosition.load(std::memory_order_relaxed);
    const bool otherClock =
        position && (position->clock.id != m_clock || position->clock.rate.denom != m_clockRate);
    if (otherClock) {
        m_clock = position->clock.id;
        m_clockRate = position->clock.rate.denom;
    }
    if (m_brokenOff.exchange(false, std::memory_order_relaxed) || otherClock)
        m_speakers.enter();
    const unsigned wakes = m_wakes;
    m_speakers.fill(cycle(m_streamPosition), channels, int(frames));
    watchSilence(wakes, int(frames));
    for (std::uint32_t i = 0; i < buffer->n_datas; ++i) {
        buffer->datas[i].chunk->offset = 0;
        buffer->datas[i].chunk->stride = sizeof(float);
        buffer->datas[i].chunk->size = std::uint32_t(frames * sizeof(float));
    }
    pw_stream_queue_buffer(m_stream, held);
}

} // namespace hvaudio
