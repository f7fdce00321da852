#include "platform/hvaudio/outputs/pipewire/graphwatch.h"

#include <pipewire/extensions/metadata.h>
#include <pipewire/pipewire.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

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
    for (auto& link : m_links)
        forget(link.second);
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
        watchLink(id, props);
        m_linksChanged();
    } else if (is(type, PW_TYPE_INTERFACE_Metadata) &&
               is(spa_dict_lookup(props, PW_KEY_METADATA_NAME), "default")) {
        m_defaults = id;
    }
}

void GraphWatch::watchLink(std::uint32_t id, const spa_dict* props)
{
    static const pw_link_events events = [] {
        pw_link_events e = {};
        e.version = PW_VERSION_LINK_EVENTS;
        e.info = [](void* self, const pw_link_info* info) {
            auto* const link = static_cast<Link*>(self);
            if (std::exchange(link->carries, info->state == PW_LINK_STATE_ACTIVE) != link->carries)
                link->watch->m_linksChanged();
        };
        return e;
    }();
    Link& link = m_links[id];
    link = {numberOf(props, PW_KEY_LINK_OUTPUT_PORT), numberOf(props, PW_KEY_LINK_INPUT_NODE), this};
    link.proxy =
        static_cast<pw_proxy*>(pw_registry_bind(m_registry, id, PW_TYPE_INTERFACE_Link, PW_VERSION_LINK, 0));
    if (link.proxy)
        pw_proxy_add_object_listener(link.proxy, &link.hook, &events, &link);
}

void GraphWatch::forget(Link& link)
{
    if (!link.proxy)
        return;
    spa_hook_remove(&link.hook);
    pw_proxy_destroy(link.proxy);
}

void GraphWatch::goes(std::uint32_t id)
{
    m_ports.erase(id);
    if (const auto link = m_links.find(id); link != m_links.end()) {
        forget(link->second);
        m_links.erase(link);
        m_linksChanged();
    }
    if (id == m_defaults) {
        m_defaults = SPA_ID_INVALID;
        m_managerGone();
    }
}

GraphWatch::Linked GraphWatch::linked(std::uint32_t node) const
{
    Linked result;
    for (const auto& link : m_links) {
        const auto port = m_ports.find(link.second.outputPort);
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

bool GraphWatch::playedInto(std::uint32_t node) const
{
    return std::any_of(m_links.begin(), m_links.end(), [node](const auto& link) {
        return link.second.inputNode == node && link.second.carries;
    });
}

} // namespace hvaudio
