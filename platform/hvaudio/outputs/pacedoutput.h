#pragma once

#include "platform/hvaudio/outputs/output.h"

#include <atomic>
#include <memory>
#include <thread>

namespace hvaudio {

/// An output without a device: a thread of its own pulls 10 ms every 10 ms. A thread that was held up catches
/// up to 100 ms, and lets the rest go.
class PacedOutput : public Output
{
public:
    ~PacedOutput() override;
    bool start(Feed& feed, std::string& error) override;
    void stop() override;
    bool pulling() const override { return running_; }

protected:
    /// [CT] Before the thread starts and after it has ended.
    virtual bool open(double rate, std::string& error) = 0;
    virtual void close() = 0;
    /// On the pulling thread.
    virtual void take(const float* const out[dsp::speakerCount], int frames) = 0;

private:
    void run(Feed& feed);
    std::thread thread_;
    std::atomic<bool> running_{false};
};

/// No sound output; the sound is made, measured and dropped.
class NullOutput final : public PacedOutput
{
public:
    ~NullOutput() override;
    std::string status() const override;

protected:
    bool open(double rate, std::string& error) override;
    void close() override {}
    void take(const float* const[dsp::speakerCount], int) override {}
};

/// Writes what the unit plays, as it plays it, to a WAV file: 5 channels FL FR RL RR SUB, 32 bit float.
class WavOutput final : public PacedOutput
{
public:
    explicit WavOutput(std::string path);
    ~WavOutput() override;
    std::string status() const override;

protected:
    bool open(double rate, std::string& error) override;
    void close() override;
    void take(const float* const out[dsp::speakerCount], int frames) override;

private:
    const std::string path_;
    std::unique_ptr<class WavWriter> writer_;
    std::atomic<bool> full_{false};
};

} // namespace hvaudio
