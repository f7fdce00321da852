#pragma once

#include "platform/hvaudio/dsp/settings.h"

#include <dlfcn.h>
#include <glob.h>
#include <ladspa.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

/// The chain put together from the LSP project's LADSPA plug-ins, which are loaded where they are installed.
namespace peers {

using hvaudio::dsp::bandHz;
using hvaudio::dsp::speakerCount;

class LspPlugin
{
public:
    LspPlugin(const char* label, unsigned long rate)
    {
        static const LADSPA_Descriptor_Function descriptors = open();
        for (unsigned long i = 0; const LADSPA_Descriptor* d = descriptors(i); ++i)
            if (std::string(d->Label) == std::string("http://lsp-plug.in/plugins/ladspa/") + label)
                m_descriptor = d;
        if (!m_descriptor)
            throw std::runtime_error(std::string("no plug-in ") + label);
        m_handle = m_descriptor->instantiate(m_descriptor, rate);
        m_values.resize(m_descriptor->PortCount);
        for (unsigned long port = 0; port < m_descriptor->PortCount; ++port) {
            if (LADSPA_IS_PORT_AUDIO(m_descriptor->PortDescriptors[port])) {
                (LADSPA_IS_PORT_INPUT(m_descriptor->PortDescriptors[port]) ? m_ins : m_outs).push_back(port);
                continue;
            }
            m_values[port] = defaultOf(m_descriptor->PortRangeHints[port]);
            m_descriptor->connect_port(m_handle, port, &m_values[port]);
        }
        m_descriptor->activate(m_handle);
    }
    ~LspPlugin()
    {
        m_descriptor->deactivate(m_handle);
        m_descriptor->cleanup(m_handle);
    }
    LspPlugin(const LspPlugin&) = delete;

    /// Sets the control whose name starts so.
    void set(const std::string& name, float value)
    {
        for (unsigned long port = 0; port < m_descriptor->PortCount; ++port)
            if (LADSPA_IS_PORT_CONTROL(m_descriptor->PortDescriptors[port]) &&
                std::strncmp(m_descriptor->PortNames[port], name.c_str(), name.size()) == 0) {
                m_values[port] = value;
                return;
            }
        throw std::runtime_error("no control " + name);
    }
    /// `from` and `to` hold a pointer for each audio port; they may be the same.
    void run(float* const* from, float* const* to, int frames)
    {
        for (size_t i = 0; i < m_ins.size(); ++i)
            m_descriptor->connect_port(m_handle, m_ins[i], from[i]);
        for (size_t i = 0; i < m_outs.size(); ++i)
            m_descriptor->connect_port(m_handle, m_outs[i], to[i]);
        m_descriptor->run(m_handle, (unsigned long)frames);
    }

private:
    static LADSPA_Descriptor_Function open()
    {
        glob_t found;
        if (glob("/usr/lib*/ladspa/lsp-plugins-ladspa*.so", 0, nullptr, &found) != 0)
            throw std::runtime_error("the LSP LADSPA plug-ins aren't installed");
        void* library = dlopen(found.gl_pathv[0], RTLD_NOW);
        globfree(&found);
        if (!library)
            throw std::runtime_error(dlerror());
        return reinterpret_cast<LADSPA_Descriptor_Function>(dlsym(library, "ladspa_descriptor"));
    }
    static float defaultOf(const LADSPA_PortRangeHint& hint)
    {
        const auto h = hint.HintDescriptor;
        if (LADSPA_IS_HINT_DEFAULT_1(h))
            return 1;
        if (LADSPA_IS_HINT_DEFAULT_100(h))
            return 100;
        if (LADSPA_IS_HINT_DEFAULT_MINIMUM(h))
            return hint.LowerBound;
        if (LADSPA_IS_HINT_DEFAULT_MAXIMUM(h))
            return hint.UpperBound;
        if (LADSPA_IS_HINT_DEFAULT_MIDDLE(h))
            return 0.5f * (hint.LowerBound + hint.UpperBound);
        if (LADSPA_IS_HINT_DEFAULT_LOW(h))
            return 0.75f * hint.LowerBound + 0.25f * hint.UpperBound;
        if (LADSPA_IS_HINT_DEFAULT_HIGH(h))
            return 0.25f * hint.LowerBound + 0.75f * hint.UpperBound;
        return 0;
    }

    const LADSPA_Descriptor* m_descriptor = nullptr;
    LADSPA_Handle m_handle = nullptr;
    std::vector<float> m_values;
    std::vector<unsigned long> m_ins, m_outs;
};

class LspChain
{
public:
    explicit LspChain(unsigned long rate)
        : m_equalizer("para_equalizer_x16_stereo", rate)
    {
        const float gains[] = {6, 4, 2, -1, -3, -2, 1, 3, 5, -4, 2, -6, 4};
        for (int i = 0; i < 13; ++i)
            filter(m_equalizer, i, 1, 0, float(bandHz[size_t(i)]), gains[i], 1.41f);
        filter(m_equalizer, 13, 5, 0, 100, 6, 0.707f);
        filter(m_equalizer, 14, 3, 0, 10000, 3, 0.707f);
        m_equalizer.set("Input gain", 0.5f);
        const float delays[speakerCount] = {2.1f, 3.4f, 5.6f, 7.8f, 10};
        for (int i = 0; i < speakerCount; ++i) {
            m_crossover.push_back(std::make_unique<LspPlugin>("para_equalizer_x16_mono", rate));
            filter(*m_crossover.back(), 0, i == 4 ? 4 : 2, 1, 80, 0, 0);
            m_delay.push_back(std::make_unique<LspPlugin>("comp_delay_mono", rate));
            m_delay.back()->set("Mode", 2);
            m_delay.back()->set("Time", delays[i]);
            m_limiter.push_back(std::make_unique<LspPlugin>("limiter_mono", rate));
            m_limiter.back()->set("Automatic level regulation", 0);
            m_limiter.back()->set("Threshold", 0.98f);
        }
    }

    void process(const float* left, const float* right, float* const out[speakerCount], int frames)
    {
        m_bus[0].assign(left, left + frames);
        m_bus[1].assign(right, right + frames);
        float* bus[2] = {m_bus[0].data(), m_bus[1].data()};
        m_equalizer.run(bus, bus, frames);
        const float gain[speakerCount] = {0.9f, 0.8f, 0.7f, 0.6f, 0.35f};
        for (int i = 0; i < speakerCount; ++i) {
            const float* from = m_bus[i & 1].data();
            for (int n = 0; n < frames; ++n)
                out[i][n] = gain[i] * (i == 4 ? m_bus[0][size_t(n)] + m_bus[1][size_t(n)] : from[n]);
            float* one[1] = {out[i]};
            m_crossover[size_t(i)]->run(one, one, frames);
            m_delay[size_t(i)]->run(one, one, frames);
            m_limiter[size_t(i)]->run(one, one, frames);
        }
    }

private:
    static void filter(LspPlugin& plugin, int i, int type, int slope, float hz, float gainDb, float q)
    {
        const std::string number = std::to_string(i);
        plugin.set("Filter type " + number, float(type));
        plugin.set("Filter slope " + number, float(slope));
        plugin.set("Frequency " + number, hz);
        plugin.set("Gain " + number, std::pow(10.0f, gainDb / 20));
        plugin.set("Quality factor " + number, q);
    }

    LspPlugin m_equalizer;
    std::vector<std::unique_ptr<LspPlugin>> m_crossover, m_delay, m_limiter;
    std::vector<float> m_bus[2];
};

} // namespace peers
