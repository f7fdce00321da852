#pragma once

#include <spa/utils/hook.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>

struct pw_core;
struct pw_proxy;
struct pw_registry;
struct spa_dict;

namespace hvaudio {

/// Watches a PipeWire graph for what the links of nodes are, and for its session manager. All calls, and
/// all that it calls, are on the loop's thread or on another one that has locked the loop.
class GraphWatch
{
public:
    /// Called on every change of a link, when one is made, begins or ceases to carry sound, or goes, and when
    /// the session manager has gone.
    GraphWatch(std::function<void()> linksChanged, std::function<void()> managerGone);
    ~GraphWatch();

    /// The core must outlive the watch or its `stop`. Starting a started one forgets all first.
    void start(pw_core* core);
    /// Before the core is disconnected. Forgets all. Calling it twice is harmless.
    void stop();

    /// Which output channels of a node, say "FL", have a link.
    struct Linked
    {
        bool left = false, right = false, rearLeft = false, rearRight = false, low = false, any = false;
    };
    /// `node`: its number in the graph; nothing is linked of one that isn't there.
    Linked linked(std::uint32_t node) const;
    /// True while a link carries sound into a node, be it silence: one from a stream that is paused doesn't.
    bool playedInto(std::uint32_t node) const;

private:
    void appears(std::uint32_t id, const char* type, const spa_dict* props);
    void goes(std::uint32_t id);

    struct Port
    {
        std::uint32_t node;
        std::string channel;
    };
    struct Link
    {
        std::uint32_t outputPort, inputNode;
        GraphWatch* watch;
        pw_proxy* proxy = nullptr;
        spa_hook hook = {};
        bool carries = false; ///< sound
    };
    void watchLink(std::uint32_t id, const spa_dict* props);
    void forget(Link& link);

    const std::function<void()> m_linksChanged, m_managerGone;
    pw_registry* m_registry = nullptr;
    spa_hook m_hook = {};
    std::map<std::uint32_t, Port> m_ports; ///< all output ports of the graph
    std::map<std::uint32_t, Link> m_links; ///< all of the graph; each stays where it is, for its hook
    std::uint32_t m_defaults;              ///< the session manager's table of default devices
};

} // namespace hvaudio
