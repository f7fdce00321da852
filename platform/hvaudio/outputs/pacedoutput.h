#pragma once

#include "platform/hvaudio/outputs/output.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace hvaudio {

/// An output without a device: a thread of its own pulls 10 ms every 10 ms. A thread that was held up catches
/// up to 100 ms, and lets the rest go. It sleeps while the output rests.
class PacedOutput : public Output
{
public:
    ~PacedOutput() override;
    bool start(Feed& feed, std::string& error) override;
    void stop() override;
    bool pulling() const override { return m_running && !m_resting; }
    void wake() override;

protected:
    /// [CT] Before the thread starts and after it has ended; rate in Hz. False with a sentence in `error`.
    virtual bool open(double rate, std::string& error) = 0;
    virtual void close() = 0;
    /// On the pulling thread: what has been pulled, in the order of `dsp::Speaker`.
    virtual void deliver(const float* const out[dsp::speakerCount], int frames) = 0;

    /// On the pulling thread, between two blocks: true when no more of them are needed until `wake`.
    virtual bool mayRest(const Feed&) const { return false; }

private:
    void run(Feed& feed);
    std::thread m_thread;
    std::atomic<bool> m_running{false}, m_resting{false};
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_woken = false; ///< since the last block began
};

} // namespace hvaudio
