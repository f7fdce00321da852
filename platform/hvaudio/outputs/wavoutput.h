#pragma once

#include "platform/hvaudio/files/wavwriter.h"
#include "platform/hvaudio/outputs/pacedoutput.h"

namespace hvaudio {

/// Writes what the unit plays, as it plays it, to a WAV file: FL FR LFE BL BR, 32 bit float.
class WavOutput final : public PacedOutput
{
public:
    /// The file is made by `start`, which says when that fails.
    explicit WavOutput(std::string path);
    ~WavOutput() override;
    std::string status() const override;

protected:
    bool open(double rate, std::string& error) override;
    void close() override;
    void deliver(const float* const out[dsp::speakerCount], int frames) override;

private:
    const std::string m_path;
    std::unique_ptr<WavWriter> m_writer;
    std::atomic<bool> m_full{false};
};

} // namespace hvaudio
