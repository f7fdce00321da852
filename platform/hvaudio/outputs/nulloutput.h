#pragma once

#include "platform/hvaudio/outputs/pacedoutput.h"

namespace hvaudio {

/// No sound output; the sound is made, measured and dropped. While nobody measures it none is made.
class NullOutput final : public PacedOutput
{
public:
    ~NullOutput() override;
    std::string status() const override;

protected:
    bool open(double rate, std::string& error) override;
    void close() override {}
    void deliver(const float* const[dsp::speakerCount], int) override {}
    bool mayRest(const Feed& feed) const override { return feed.unobserved(); }
};

} // namespace hvaudio
