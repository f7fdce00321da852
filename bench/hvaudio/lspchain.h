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
                descriptor_ = d;
        if (!descriptor_)
            throw std::runtime_error(std::string("no plug-in ") + label);
        handle_ = descriptor_->instantiate(descriptor_, rate);
        values_.resize(descriptor_->PortCount);
        for (unsigned long port = 0; port < descriptor_->PortCount; ++port) {
            if (LADSPA_IS_PORT_AUDIO(descriptor_->PortDescriptors[port])) {
                (LADSPA_IS_PORT_INPUT(descriptor_->PortDescriptors[port]) ? ins_ : outs_).push_back(port);
                continue;
            }
            values_[port] = defaultOf(descriptor_->PortRangeHints[port]);
            descriptor_->connect_port(handle_, port, &values_[port]);
        }
        descriptor_->activate(handle_);
    }
    ~LspPlugin()
    {
        descriptor_->deactivate(handle_);
        descriptor_->cleanup(handle_);
    }
    LspPlugin(const LspPlugin&) = delete;

    /// Sets the control whose name starts so.
    void set(const std::string& name, float value)
    {
        for (unsigned long port = 0; port < descriptor_->PortCount; ++port)
            if (LADSPA_IS_PORT_CONTROL(descriptor_->PortDescriptors[port]) &&
                std::strncmp(descriptor_->PortNames[port], name.c_str(), name.size()) == 0) {
                values_[port] = value;
                return;
            }
        throw std::runtime_error("no control " + name);
    }
    /// `from` and `to` hold a pointer for each audio port; they may be the same.
    void run(float* const* from, float* const* to, int frames)
    {
        for (size_t i = 0; i < ins_.size(); ++i)
            descriptor_->connect_port(handle_, ins_[i], from[i]);
        for (size_t i = 0; i < outs_.size(); ++i)
            descriptor_->connect_port(handle_, outs_[i], to[i]);
        descriptor_->run(handle_, (unsigned long)frames);
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

    const LADSPA_Descriptor* descriptor_ = nullptr;
    LADSPA_Handle handle_ = nullptr;
    std::vector<float> values_;
    std::vector<unsigned long> ins_, outs_;
};

class LspChain
{
public:
    explicit LspChain(unsigned long rate)
        : equalizer_("para_equalizer_x16_stereo", rate)
    {
        const float gains[] = {6, 4, 2, -1, -3, -2, 1, 3, 5, -4, 2, -6, 4};
        for (int i = 0; i < 13; ++i)
            filter(equalizer_, i, 1, 0, float(bandHz[size_t(i)]), gains[i], 1.41f);
        filter(equalizer_, 13, 5, 0, 100, 6, 0.707f);
        filter(equalizer_, 14, 3, 0, 10000, 3, 0.707f);
        equalizer_.set("Input gain", 0.5f);
        const float delays[speakerCount] = {2.1f, 3.4f, 5.6f, 7.8f, 10};
        for (int i = 0; i < speakerCount; ++i) {
            crossover_.push_back(std::make_unique<LspPlugin>("para_equalizer_x16_mono", rate));
            filter(*crossover_.back(), 0, i == 4 ? 4 : 2, 1, 80, 0, 0);
            delay_.push_back(std::make_unique<LspPlugin>("comp_delay_mono", rate));
            delay_.back()->set("Mode", 2);
            delay_.back()->set("Time", delays[i]);
            limiter_.push_back(std::make_unique<LspPlugin>("limiter_mono", rate));
            limiter_.back()->set("Automatic level regulation", 0);
            limiter_.back()->set("Threshold", 0.98f);
        }
    }

    void process(const float* left, const float* right, float* const out[speakerCount], int frames)
    {
        bus_[0].assign(left, left + frames);
        bus_[1].assign(right, right + frames);
        float* bus[2] = {bus_[0].data(), bus_[1].data()};
        equalizer_.run(bus, bus, frames);
        const float gain[speakerCount] = {0.9f, 0.8f, 0.7f, 0.6f, 0.35f};
        for (int i = 0; i < speakerCount; ++i) {
            const float* from = bus_[i & 1].data();
            for (int n = 0; n < frames; ++n)
                out[i][n] = gain[i] * (i == 4 ? bus_[0][size_t(n)] + bus_[1][size_t(n)] : from[n]);
            float* one[1] = {out[i]};
            crossover_[size_t(i)]->run(one, one, frames);
            delay_[size_t(i)]->run(one, one, frames);
            limiter_[size_t(i)]->run(one, one, frames);
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

    LspPlugin equalizer_;
    std::vector<std::unique_ptr<LspPlugin>> crossover_, delay_, limiter_;
    std::vector<float> bus_[2];
};

} // namespace peers
