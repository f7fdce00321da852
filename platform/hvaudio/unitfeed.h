#pragma once

#include "platform/hvaudio/dsp/block.h"
#include "platform/hvaudio/dsp/engine.h"
#include "platform/hvaudio/heardframe.h"
#include "platform/hvaudio/outputs/feed.h"
#include "platform/hvaudio/outputs/log.h"
#include "platform/hvaudio/sources/backgroundfile.h"
#include "platform/hvaudio/sources/chimes.h"
#include "platform/hvaudio/sources/ring.h"
#include "platform/hvaudio/sources/sourcekind.h"
#include "platform/hvaudio/sources/sources.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

namespace hvaudio {

/// What an output of the unit pulls: the sources by their ids and the prompts, through the engine. Who
/// changes anything that the next pull is to find wakes the output afterwards.
class UnitFeed final : public Feed
{
public:
    /// `log` may be empty.
    explicit UnitFeed(Log log);

    bool prepare(double rate) override;
    int latencyFrames() const noexcept override { return m_engine.latencyFrames(); }
    void pull(const float* const in[2], float* const out[dsp::speakerCount], int frames) noexcept override;
    bool silent() const noexcept override { return m_silent.load(std::memory_order_relaxed); }
    bool unobserved() const noexcept override;
    void resumed() override;

    /// [CT] One line into the log, where there is one.
    void say(LogLevel level, const std::string& text) const;
    const Log& log() const { return m_log; }
    dsp::Engine& engine() { return m_engine; }
    Chimes& chimes() { return m_chimes; }

    /// [CT] As in `Player`, but nothing is said; one thread at a time.
    bool setSource(int id, SourceKind kind, const std::string& path, std::string& error);
    SourceKind sourceKind(int id) const;
    std::string sourcePath(int id) const;

    /// [CT] Somebody measures for the next second of sound; true when nobody did.
    bool measure() noexcept;
    /// [CT] As in `Player`.
    void listen(bool on);
    int fetchHeard(HeardFrame* frames, int count, bool* gap);

private:
    static constexpr int pieceFrames = 1024;
    struct Slot
    {
        SourceKind kind = SourceKind::Silence;
        std::string path;
        std::shared_ptr<BackgroundFile> file; ///< where the kind is one
    };
    /// The source for a slot at the engine's rate, a file's begun to be opened; null is silence.
    std::shared_ptr<Source> make(Slot& slot, int id) const;
    /// Wants `m_slotsMutex`. False for an id out of range, and for a file that can't be read.
    bool plays(int id) const;
    /// [RT] True when a source plays, be it silence.
    bool pullPiece(const float* const in[2], float* const out[dsp::speakerCount], int start,
                   int frames) noexcept;
    void keep(const dsp::Block& block) noexcept; // [RT]

    const Log m_log;
    dsp::Engine m_engine;
    Sources m_sources;
    Chimes m_chimes;

    mutable std::mutex m_slotsMutex;
    Slot m_slots[sourceIds];

    std::atomic<bool> m_silent{false};
    std::atomic<bool> m_listening{false};
    std::atomic<int> m_measured{0}; ///< frames that are still played for the sake of the meters
    std::atomic<bool> m_gap{false};
    std::unique_ptr<Ring<HeardFrame>> m_heard; ///< made when somebody first listens, and kept

    // Audio side.
    float m_programme[2][pieceFrames], m_prompts[dsp::promptCount][pieceFrames],
        m_unwanted[dsp::speakerCount][pieceFrames];
};

} // namespace hvaudio
