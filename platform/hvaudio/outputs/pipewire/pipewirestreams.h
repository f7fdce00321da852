#pragma once

#include "platform/hvaudio/outputs/pipewire/speakerfeed.h"

#include <spa/param/latency-utils.h>
#include <spa/utils/hook.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>

struct pw_core;
struct pw_loop;
struct pw_stream;
struct pw_stream_events;
struct spa_io_position;
struct spa_pod;
struct spa_source;

namespace hvaudio {

/// The unit's two nodes in a PipeWire graph: the sink "Head unit" that players play into, and the stream
/// "Head unit output" to the device, with the way between them. All calls, and all that it calls, are on the
/// loop's thread or on another one that has locked the loop, unless marked otherwise.
///
/// When the graph goes over to another rate the server takes the formats from both nodes and asks for new
/// ones; between the two the feed is prepared for that rate. Where the nodes are moved to a device of another
/// rate without that, the server converts. Either way what is heard next begins with a silent cycle and rises
/// in 10 ms; the end of what was heard before is the server's doing. After a rest, which begins in silence,
/// nothing is held back.
class PipeWireStreams
{
public:
    struct Listener
    {
        /// The nodes are of no use any more. Called from within their own events: destroy them later.
        std::function<void(const char* why)> ended;
        /// The session manager has no device; the nodes stay, and are connected when there is one.
        std::function<void(const char* why)> noDevice;
        /// The device pulls, for the first time or again.
        std::function<void()> playing;
    };
    explicit PipeWireStreams(Listener listener);
    ~PipeWireStreams();
    PipeWireStreams(const PipeWireStreams&) = delete;
    PipeWireStreams& operator=(const PipeWireStreams&) = delete;

    /// Prepares the feed for the server's rate in Hz and makes the nodes. On failure false and the reason;
    /// `destroy` then, too. The feed must outlive them.
    bool make(pw_loop* loop, pw_core* core, Feed& feed, double serverRate, std::string& error);
    /// Before the core is disconnected. Calling it twice is harmless.
    void destroy();
    /// True between `make` and `destroy`.
    bool made() const { return m_sink; }
    /// Numbers of the nodes in the graph, while they are made.
    std::uint32_t outputNode() const;
    std::uint32_t sinkNode() const;
    void setLayout(SpeakerFeed::Layout layout) { m_speakers.setLayout(layout); }
    /// The feed has news: the output plays again when it rests. It rests after 3 s in which the feed was
    /// silent and unobserved, and nobody played into the sink; its nodes and links stay as they are.
    void wake();
    /// Whether somebody plays into the sink, be it silence. One who is about to sound calls for the output
    /// before it does, since what came while it rests would be heard late or never.
    void setPlayedInto(bool played);

    /// [ANY]
    SpeakerFeed::Layout layout() const { return m_speakers.layout(); }
    /// [ANY] The device pulls.
    bool streaming() const { return m_streaming; }
    /// [ANY] Rate of the feed in Hz; 0 before the first `make`.
    int rate() const { return m_rate; }

private:
    enum class Stream {
        Sink,
        Output,
    };
    template <Stream which>
    static pw_stream_events eventsOf();
    void prepare(Feed& feed, double serverRate);
    /// False with a reason in errno.
    bool makeNodes(pw_core* core);
    /// Below 0 on failure, the negated reason of errno.
    int connect();
    void stateChanged(pw_stream* of, int state, const char* error);
    void tellLatency(pw_stream* to, spa_latency_info info, spa_direction direction);
    void positionChanged(Stream of, spa_io_position* position);
    /// Offers both nodes in the graph's rate, while neither has a format.
    void followRate(double graphRate);
    void passLatency(pw_stream* to, const spa_pod* param, spa_direction direction);
    void restOrWake();
    void comesIn() noexcept;                         // [RT]
    void goesOut() noexcept;                         // [RT]
    void watchSilence(unsigned wakes, int) noexcept; // [RT]

    const Listener m_listener;
    Feed* m_feed = nullptr;
    pw_stream* m_sink = nullptr;   ///< what players play into
    pw_stream* m_stream = nullptr; ///< to the device
    spa_hook m_sinkHook = {}, m_streamHook = {};
    std::atomic<int> m_rate{0};
    std::atomic<bool> m_streaming{false};
    bool m_sinkHasFormat = false, m_streamHasFormat = false;
    pw_loop* m_loop = nullptr;
    spa_source* m_signal = nullptr; ///< by which the audio side calls `restOrWake`

    // Between the sides. A wish to rest counts as long as nothing has called for the output since.
    std::atomic<unsigned> m_wakes{0}, m_wakesAtWish{0};
    std::atomic<bool> m_resting{false}, m_wantsRest{false}, m_playedInto{false};
    std::atomic<bool> m_brokenOff{false}; ///< the stream was stopped, not to rest: what comes next enters
    // Of the audio side.
    int m_quietFrames = 0;
    std::uint32_t m_clock = 0, m_clockRate = 0; ///< of the last block's driver
    std::atomic<spa_io_position*> m_sinkPosition{nullptr}, m_streamPosition{nullptr};
    SpeakerFeed m_speakers;
};

} // namespace hvaudio
