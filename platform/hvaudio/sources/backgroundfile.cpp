#include "platform/hvaudio/sources/backgroundfile.h"

#include "platform/hvaudio/sources/filesource.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace hvaudio {

namespace {

constexpr std::chrono::milliseconds pause(100), longestEnd(500);
/// So many pauses without anything to read, and the file isn't played.
constexpr int calmPauses = 20;

} // namespace

struct BackgroundFile::Shared
{
    using Lock = std::unique_lock<std::mutex>;

    static void open(const std::shared_ptr<Shared>& self)
    {
        std::string why;
        auto opened = FileSource::open(self->path, self->rate, why);
        const Lock lock(self->mutex);
        if (self->state == Opening::UnderWay && opened) {
            self->file = std::move(opened);
            self->playing.store(self->file.get(), std::memory_order_release);
            self->state = Opening::Done;
        } else if (self->state == Opening::UnderWay) {
            self->fail(why);
        }
        self->changed.notify_all();
    }

    static void run(const std::shared_ptr<Shared>& self)
    {
        Lock lock(self->mutex);
        const bool settled = self->changed.wait_for(
            lock, self->limit, [&] { return self->ends || self->state != Opening::UnderWay; });
        if (!settled)
            self->fail("can't read '" + self->path + "': its medium doesn't answer");
        if (self->state == Opening::Failed && self->unattended && !self->ends) {
            lock.unlock();
            self->report(self->error + "; its source is silent");
            lock.lock();
        }
        if (self->state == Opening::Done)
            self->readAhead(lock);
        self->ended = true;
        self->changed.notify_all();
    }

    void readAhead(Lock& lock)
    {
        for (int calm = 0; !ends && !file->isExhausted();) {
            called = false;
            lock.unlock();
            const int frames = file->readAhead();
            lock.lock();
            calm = frames > 0 ? 0 : calm + 1;
            const auto due = [this] { return ends || called; };
            if (calm >= calmPauses)
                changed.wait(lock, due);
            else
                changed.wait_for(lock, pause, due);
            if (called)
                calm = 0;
        }
    }

    /// Wants `mutex`.
    void fail(const std::string& why)
    {
        error = why;
        state = Opening::Failed;
        failed = true;
    }

    std::string path;
    double rate;
    std::function<void(const std::string&)> report;
    Clock::duration limit;

    std::mutex mutex;
    std::condition_variable changed;
    Opening state = Opening::UnderWay;
    std::string error;
    std::unique_ptr<FileSource> file;
    bool unattended = false; ///< who waited in `opened` has left
    bool called = false, ends = false, ended = false;

    std::atomic<bool> failed{false};
    std::atomic<FileSource*> playing{nullptr};
};

BackgroundFile::BackgroundFile(const std::string& path, double rate,
                               std::function<void(const std::string&)> report, Clock::duration limit)
    : m_shared(std::make_shared<Shared>())
{
    m_shared->path = path;
    m_shared->rate = rate;
    m_shared->report = std::move(report);
    m_shared->limit = limit;
    std::thread(Shared::run, m_shared).detach();
    std::thread(Shared::open, m_shared).detach();
}

BackgroundFile::~BackgroundFile()
{
    Shared::Lock lock(m_shared->mutex);
    m_shared->ends = true;
    m_shared->changed.notify_all();
    m_shared->changed.wait_for(lock, longestEnd, [this] { return m_shared->ended; });
}

BackgroundFile::Opening BackgroundFile::opened(Clock::duration patience, std::string& error)
{
    Shared::Lock lock(m_shared->mutex);
    m_shared->changed.wait_for(lock, patience, [this] { return m_shared->state != Opening::UnderWay; });
    m_shared->unattended = m_shared->state == Opening::UnderWay;
    error = m_shared->error;
    return m_shared->state;
}

bool BackgroundFile::hasFailed() const noexcept
{
    return m_shared->failed;
}

void BackgroundFile::wake()
{
    {
        const Shared::Lock lock(m_shared->mutex);
        m_shared->called = true;
    }
    m_shared->changed.notify_all();
}

bool BackgroundFile::render(const float* const in[2], float* left, float* right, int frames) noexcept
{
    if (FileSource* const file = m_shared->playing.load(std::memory_order_acquire))
        return file->render(in, left, right, frames);
    if (m_shared->failed)
        return false;
    std::fill(left, left + frames, 0.0f);
    std::fill(right, right + frames, 0.0f);
    return true;
}

} // namespace hvaudio
