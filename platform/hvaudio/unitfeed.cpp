#include "platform/hvaudio/unitfeed.h"

#include "platform/hvaudio/dsp/block.h"
#include "platform/hvaudio/dsp/meters.h"
#include "platform/hvaudio/dsp/scopedflush.h"
#include "platform/hvaudio/sources/inputsource.h"
#include "platform/hvaudio/sources/pinknoise.h"
#include "platform/hvaudio/sources/sweep.h"

#include <algorithm>
#include <chrono>

namespace hvaudio {

namespace {

constexpr int heardFrames = 32768;
constexpr double rateBeforeStart = 48000;
/// Of a caller that wants a file to play.
constexpr std::chrono::milliseconds patience(200);

} // namespace

UnitFeed::UnitFeed(Log log)
    : m_log(std::move(log))
{
    m_engine.prepare(rateBeforeStart);
    m_sources.prepare(rateBeforeStart);
    m_chimes.prepare(rateBeforeStart);
}

void UnitFeed::say(LogLevel level, const std::string& text) const
{
    if (m_log)
        m_log(level, text);
}

std::shared_ptr<Source> UnitFeed::make(Slot& slot, int id) const
{
    const double rate = m_engine.rate();
    switch (slot.kind) {
    case SourceKind::Silence:
        return nullptr;
    case SourceKind::File:
        slot.file = std::make_shared<BackgroundFile>(slot.path, rate, [to = m_log](const std::string& why) {
            if (to)
                to(LogLevel::Warning, why);
        });
        return slot.file;
    case SourceKind::PinkNoise:
        return makePinkNoise(rate, unsigned(id + 1));
    case SourceKind::Sweep:
        return makeSweep(rate);
    case SourceKind::Input:
        return makeInput();
    }
    return nullptr;
}

bool UnitFeed::prepare(double rate)
{
    // The shell may be setting a source meanwhile; nobody pulls.
    const std::lock_guard<std::mutex> lock(m_slotsMutex);
    const bool changed = rate != m_engine.rate();
    if (!m_engine.prepare(rate))
        return false;
    m_sources.prepare(rate);
    m_chimes.prepare(rate);
    for (int id = 0; changed && id < sourceIds; ++id) {
        m_sources.set(id, make(m_slots[id], id));
        std::string error;
        if (m_slots[id].file && m_slots[id].file->opened({}, error) == BackgroundFile::Opening::Failed)
            say(LogLevel::Warning, error);
    }
    m_silent = false;
    return true;
}

bool UnitFeed::unobserved() const noexcept
{
    return !m_listening.load(std::memory_order_relaxed) && m_measured.load(std::memory_order_relaxed) <= 0 &&
           !m_chimes.anySounds();
}

void UnitFeed::resumed()
{
    const std::lock_guard<std::mutex> lock(m_slotsMutex);
    for (const Slot& slot : m_slots)
        if (slot.file)
            slot.file->wake();
}

void UnitFeed::pull(const float* const in[2], float* const out[dsp::speakerCount], int frames) noexcept
{
    const dsp::ScopedFlush flush;
    bool plays = false;
    for (int done = 0; done < frames;) {
        const int count = std::min(frames - done, pieceFrames);
        plays |= pullPiece(in, out, done, count);
        done += count;
    }
    m_silent.store(!plays && m_engine.idle() && !m_chimes.anySounds(), std::memory_order_relaxed);
    if (m_measured.load(std::memory_order_relaxed) > 0)
        m_measured.fetch_sub(frames, std::memory_order_relaxed);
}

bool UnitFeed::pullPiece(const float* const in[2], float* const out[dsp::speakerCount], int start,
                         int frames) noexcept
{
    const float* const from[2] = {in[0] ? in[0] + start : nullptr, in[1] ? in[1] + start : nullptr};
    dsp::Block block;
    block.frames = frames;
    const bool plays =
        m_sources.render(m_engine.audibleSource(), from, m_programme[0], m_programme[1], frames);
    if (plays) {
        block.programme[0] = m_programme[0];
        block.programme[1] = m_programme[1];
    }
    for (int i = 0; i < dsp::promptCount; ++i)
        if (m_chimes.render(dsp::Prompt(i), m_prompts[i], frames))
            block.prompt[i][0] = m_prompts[i];
    const bool kept = m_listening.load(std::memory_order_acquire);
    for (int i = 0; i < dsp::speakerCount; ++i)
        block.out[i] = out[i] ? out[i] + start : kept ? m_unwanted[i] : nullptr;
    m_engine.process(block);
    if (kept)
        keep(block);
    return plays;
}

void UnitFeed::keep(const dsp::Block& block) noexcept
{
    HeardFrame piece[64];
    for (int done = 0; done < block.frames;) {
        const int count = std::min(block.frames - done, 64);
        for (int n = 0; n < count; ++n) {
            for (int s = 0; s < 2; ++s)
                piece[n].programme[s] = block.programme[s] ? block.programme[s][done + n] : 0;
            for (int i = 0; i < dsp::speakerCount; ++i)
                piece[n].speaker[i] = block.out[i][done + n];
        }
        // A listener that is late gets the older frames whole; what comes until it has made room is lost.
        if (m_heard->write(piece, count) < count) {
            m_gap.store(true, std::memory_order_relaxed);
            return;
        }
        done += count;
    }
}

bool UnitFeed::setSource(int id, SourceKind kind, const std::string& path, std::string& error)
{
    if (id < 0 || id >= sourceIds) {
        error = "no source " + std::to_string(id);
        return false;
    }
    Slot slot = {kind, kind == SourceKind::File ? path : std::string(), nullptr};
    std::unique_lock<std::mutex> lock(m_slotsMutex);
    const double rate = m_engine.rate();
    std::shared_ptr<Source> source = make(slot, id);
    // Nobody else waits for the medium.
    lock.unlock();
    if (slot.file && slot.file->opened(patience, error) == BackgroundFile::Opening::Failed)
        return false;
    lock.lock();
    if (m_engine.rate() != rate) {
        source = make(slot, id);
        if (slot.file && slot.file->opened({}, error) == BackgroundFile::Opening::Failed)
            return false;
    }
    m_sources.set(id, std::move(source));
    std::swap(m_slots[id], slot);
    return true;
}

bool UnitFeed::plays(int id) const
{
    return id >= 0 && id < sourceIds && !(m_slots[id].file && m_slots[id].file->hasFailed());
}

SourceKind UnitFeed::sourceKind(int id) const
{
    const std::lock_guard<std::mutex> lock(m_slotsMutex);
    return plays(id) ? m_slots[id].kind : SourceKind::Silence;
}

std::string UnitFeed::sourcePath(int id) const
{
    const std::lock_guard<std::mutex> lock(m_slotsMutex);
    return plays(id) ? m_slots[id].path : std::string();
}

bool UnitFeed::measure() noexcept
{
    return m_measured.exchange(int(m_engine.rate())) <= 0;
}

void UnitFeed::listen(bool on)
{
    if (!m_heard)
        m_heard = std::make_unique<Ring<HeardFrame>>(heardFrames);
    m_listening.store(on);
    m_heard->read(nullptr, m_heard->readable());
    m_gap.store(false);
}

int UnitFeed::fetchHeard(HeardFrame* frames, int count, bool* gap)
{
    // After a gap, what comes before and after it must not be taken for one piece: the older part goes.
    const bool lost = m_gap.exchange(false);
    if (lost)
        m_heard->read(nullptr, m_heard->readable());
    if (gap)
        *gap = lost;
    return m_heard ? m_heard->read(frames, count) : 0;
}

} // namespace hvaudio
