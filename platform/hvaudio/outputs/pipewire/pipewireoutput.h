#pragma once

#include "platform/hvaudio/outputs/log.h"
#include "platform/hvaudio/outputs/output.h"

#include <memory>

namespace hvaudio {

/// Plays by PipeWire.
///
///     players -> sink "Head unit" -> [bridge] -> feed -> stream "Head unit output" -> default device
///
/// The sink is one that any player can choose. The stream has the channels FL FR FC LFE RL RR; FC is silent,
/// LFE is the subwoofer. When the device takes the rear pair and LFE, each speaker goes to its channel;
/// otherwise all five are folded to FL and FR (fold.h), for a mono device both sides to one, changing over in
/// 10 ms. The rate is the server's.
///
/// The feed is pulled by the server's own cycle, on the one thread that PipeWire runs for this process's
/// nodes; connecting, and waiting for a server that has gone, happen on a control thread, with pauses that
/// grow from 0.1 s to 5 s. When the device goes, the session manager moves the stream; without a device
/// nothing is pulled, and the sink stays. When the session manager itself goes, both nodes are made anew for
/// the next one. While nothing is to be heard and nobody plays into the sink, be it silence, the stream to
/// the device rests; it wakes as soon as somebody does or the feed has news. The latency of the feed is added
/// to what either side reports to the other.
///
/// Session-manager-free graphs: PIPEWIRE_PROPS and the `stream.properties` of the client's configuration are
/// heeded, so `adapter.auto-port-config = { mode = dsp }` gives the ports that a session manager would.
class PipeWireOutput final : public Output
{
public:
    /// `wait`: a server that isn't there when it starts is waited for; else `start` fails.
    explicit PipeWireOutput(Log log, bool wait);
    ~PipeWireOutput() override;

    bool start(Feed& feed, std::string& error) override;
    void stop() override;
    bool pulling() const override;
    void wake() override;
    std::string status() const override;

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace hvaudio
