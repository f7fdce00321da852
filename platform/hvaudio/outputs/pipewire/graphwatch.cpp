#include "platform/hvaudio/outputs/pipewire/graphwatch.h"

#include <pipewire/extensions/metadata.h>
#include <pipewire/pipewire.h>

#include <cstdlib>
#include <cstring>

namespace hvaudio {

namespace {

bool is(const char* text, const char* expected)
{
    return text && std::strcmp(text, expected) == 0;
}

std::uint32_t numberOf(const spa_dict* props, const char* key)
{
    const char* const text = spa_dict_lookup(props, key);
    return text ? std::uint32_t(std::strtoul(text, nullptr, 10)) : SPA_ID_INVALID;
}

} // namespace

GraphWatch::GraphWatch(std::function<void()> linksChanged, std::function<void()> managerGone)
    : m_linksChanged(std::move(linksChanged))
    , m_managerGone(std::move(managerGone))
    , m_defaults(SPA_ID_INVALID)
{
}

GraphWatch::~GraphWatch()
{
    stop();
}

void GraphWatch::start(pw_core* core)
{
    static const pw_registry_events events = [] {
        pw_registry_events e = {};
        e.version = PW_VERSION_REGISTRY_EVENTS;
        e.global = [](void* self, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
                      const spa_dict* props) {
            if (props)
                static_cast<GraphWatch*>(self)->appears(id, type, props);
        };
        e.global_remove = [](void* self, std::uint32_t id) { static_cast<GraphWatch*>(self)->goes(id); };
        return e;
    }();
    stop();
    m_registry = pw_core_get_registry(core, PW_VERSION_REGISTRY, 0);
    pw_registry_add_listener(m_registry, &m_hook, &events, this);
}

void GraphWatch::stop()
{
    if (m_registry) {
        spa_hook_remove(&m_hook);
        pw_proxy_destroy(reinterpret_cast<pw_proxy*>(m_registry));
        m_registry = nullptr;
    }
    m_ports.clear();
    m_links.clear();
    m_defaults = SPA_ID_INVALID;
}

void GraphWatch::appears(std::uint32_t id, const char* type, const spa_dict* props)
{
    if (is(type, PW_TYPE_INTERFACE_Port)) {
        const char* const channel = spa_dict_lookup(props, PW_KEY_AUDIO_CHANNEL);
        if (channel && is(spa_dict_lookup(props, PW_KEY_PORT_DIRECTION), "out"))
            m_ports[id] = {numberOf(props, PW_KEY_NODE_ID), channel};
    } else if (is(type, PW_TYPE_INTERFACE_Link)) {
        m_links[id] = numberOf(props, PW_KEY_LINK_OUTPUT_PORT);
        m_linksChanged();
    } else if (is(type, PW_TYPE_INTERFACE_Metadata) &&
               is(spa_dict_lookup(props, PW_KEY_METADATA_NAME), "default")) {
        m_defaults = id;
    }
}

void GraphWatch::goes(std::uint32_t id)
{
    m_ports.erase(id);
    if (m_links.erase(id) > 0)
        m_linksChanged();
    if (id == m_defaults) {
        m_defaults = SPA_ID_INVALID;
        m_managerGone();
    }
}

GraphWatch::Linked GraphWatch::linked(std::uint32_t node) const
{
    Linked result;
    for (const auto& link : m_links) {
        const auto port = m_ports.find(link.second);
        if (port == m_ports.end() || port->second.node != node)
            continue;
        const std::string& channel = port->second.channel;
        result.any = true;
        result.left |= channel == "FL";
        result.right |= channel == "FR";
        result.rearLeft |= channel == "RL";
        result.rearRight |= channel == "RR";
        result.low |= channel == "LFE";
    }
    return result;
}

} // namespace hvaudio
