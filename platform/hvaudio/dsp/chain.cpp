#include "platform/hvaudio/dsp/chain.h"

#include "platform/hvaudio/dsp/scopedflush.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace hvaudio::dsp {

namespace {

constexpr double glideMs = 10;
constexpr double longestDelaySeconds = 0.010;
/// What has rung out is noticed at the end of one of these.
constexpr int windowFrames = 1024;
/// Output below this (-140 dBFS) counts as rung out.
constexpr float inaudible = 1e-7f;

bool allSilent(const Parameters& p)
{
    return std::all_of(p.speakerGain, p.speakerGain + speakerCount, [](double gain) { return gain == 0; });
}

} // namespace

void Chain::prepare(double rate)
{
    m_law = GlideLaw(rate, glideMs);
    const int longestTap = int(longestDelaySeconds * rate) + 2 + subwooferLead;
    m_delay.prepare(rate, longestTap);
    m_limiter.prepare(rate);
    m_source.prepare(rate);
    m_ducker.prepare(rate);
    m_beeper.prepare(rate);
    m_ringOut = longestTap + latencyFrames() + int(0.1 * rate);
    m_now = m_first = m_next = m_step = Parameters();
    m_newest = m_wanted = Snapshot();
    m_snapshotWaiting = m_beepWanted = false;
    m_left = 0;
    m_gliding = m_filtersWaiting = m_moving = false;
    m_running.filters = Filters();
    m_fade = Fade(rate);
    m_deaf = true;
    std::fill(std::begin(m_bus), std::end(m_bus), Line{0, 0});
    clearSound();
    m_offset = m_window = 0;
}

int Chain::latencyFrames() const noexcept
{
    // 1 is the all-pass'.
    return cascadeLatency + crossoverLatency + 1 + m_limiter.latencyFrames();
}

void Chain::clearSound() noexcept
{
    m_running.memory = m_incoming.memory = {};
    m_delay.clear();
    m_limiter.clear();
    m_idle = true;
    m_loud = false;
    m_quiet = 0;
}

void Chain::aim(const Snapshot& snapshot) noexcept
{
    m_newest = snapshot;
    m_snapshotWaiting = true;
}

void Chain::settle() noexcept
{
    if (m_snapshotWaiting)
        takeSnapshot();
    m_left = 0;
    m_now = m_first = m_next = m_wanted.parameters;
    m_running.filters = m_wanted.filters;
    m_fade.stop();
    m_delay.jump();
    m_source.jump(m_wanted.source, m_wanted.sourceFactor);
    m_moving = m_gliding = m_filtersWaiting = false;
    m_deaf = allSilent(m_now);
    m_bus[0] = {m_now.bus[0] * m_source.factor() * m_ducker.factor(), 0};
    for (int i = 0; i < promptCount; ++i)
        m_bus[1 + i] = {m_now.bus[1 + i], 0};
    clearSound();
    m_offset = 0;
}

void Chain::jumpUnheard() noexcept
{
    // Nothing is audible: only the speakers' gains have a way to go. Otherwise a volume that was turned down
    // while the power was off would be heard on its way down.
    double gain[8];
    std::memcpy(gain, m_now.speakerGain, sizeof gain);
    m_now = m_wanted.parameters;
    std::memcpy(m_now.speakerGain, gain, sizeof gain);
    m_first = m_next = m_now;
    m_running = {m_wanted.filters, {}};
    m_fade.stop();
    m_filtersWaiting = false;
    m_delay.jump();
    m_source.jumpUnheard(m_wanted.source, m_wanted.sourceFactor);
}

/// What is switched on again meanwhile waits for silence: it starts at its own volume, and what is fading out
/// may be louder.
bool Chain::switchingOff() const noexcept
{
    return !m_wanted.power && !allSilent(m_now);
}

void Chain::takeSnapshot() noexcept
{
    m_snapshotWaiting = false;
    m_wanted = m_newest;
    if (m_left > 0 || !std::equal(m_now.data(), m_now.data() + parameterCount, m_wanted.parameters.data()))
        m_left = m_law.points;
    m_filtersWaiting = true;
    for (int i = 0; i < speakerCount; ++i)
        m_delay.aim(i, m_wanted.delayTap[i]);
    if (allSilent(m_now))
        jumpUnheard();
    m_source.aim(m_wanted.source, m_wanted.sourceFactor);
}

void Chain::changeFilters() noexcept
{
    m_filtersWaiting = false;
    if (m_running.filters == m_wanted.filters)
        return;
    m_incoming = {m_wanted.filters, m_running.memory};
    toStateForm(m_incoming.memory, m_running.filters);
    toDirectForm(m_incoming.memory, m_incoming.filters);
    if (!m_running.filters.lowPass) {
        // They start from rest: what they remember is from their last use.
        SectionMemory<lowLanes>& low = m_incoming.memory.low;
        std::fill(low.first, low.first + subwooferLane, 0);
        std::fill(low.second, low.second + subwooferLane, 0);
    }
    m_fade.start();
}

void Chain::advanceGrid() noexcept
{
    if (m_gliding)
        m_now = m_next;
    if (m_fade.advance())
        m_running = m_incoming;
    if (m_snapshotWaiting && !(m_newest.power && switchingOff()))
        takeSnapshot();
    if (m_beepWanted)
        m_beeper.trigger();
    m_beepWanted = false;

    if (m_filtersWaiting && !m_fade.running())
        changeFilters();

    m_gliding = m_left > 0;
    if (m_gliding) {
        if (--m_left == 0)
            m_first = m_next = m_wanted.parameters;
        else
            advanceGlide(m_law.share, m_wanted.parameters.data(), m_first.data(), m_next.data(),
                         parameterCount);
        stepBetween(m_now.data(), m_next.data(), m_step.data(), parameterCount);
    } else {
        m_deaf = allSilent(m_now);
    }
    const double programme = m_now.bus[0] * m_source.factor() * m_ducker.factor();
    m_source.advanceGrid();
    m_ducker.advanceGrid();
    m_beeper.advanceGrid();
    const double programmeNext = m_next.bus[0] * m_source.factor() * m_ducker.factor();
    m_bus[0] = {programme, (programmeNext - programme) / gridFrames};
    for (int i = 1; i <= promptCount; ++i)
        m_bus[i] = {m_now.bus[i], (m_next.bus[i] - m_now.bus[i]) / gridFrames};
    const bool fading = m_delay.advanceGrid();
    m_moving = m_gliding || fading || m_source.moving() || m_ducker.moving() || m_beeper.sounding();
    m_deaf &= !m_moving && !m_fade.running();
}

bool Chain::silentInput(const Block& block, int start, int frames) const noexcept
{
    if (m_deaf)
        return true;
    const auto silent = [=](const float* signal) { return !signal || allZero(signal + start, frames); };
    bool all = silent(block.programme[0]) && silent(block.programme[1]);
    for (int i = 0; i < promptCount && all; ++i)
        all = silent(block.prompt[i][0]) && silent(block.prompt[i][1]);
    return all;
}

void Chain::process(const Block& block, Meters& meters) noexcept
{
    const ScopedFlush flush;
    m_source.newBlock();
    bool prompts = false;
    for (const auto& prompt : block.prompt)
        prompts |= prompt[0] != nullptr;
    for (int done = 0; done < block.frames;) {
        if (m_idle) {
            const int rest = block.frames - done;
            if (!m_snapshotWaiting && !m_beepWanted && silentInput(block, done, rest)) {
                for (float* out : block.out)
                    if (out)
                        std::memset(out + done, 0, size_t(rest) * sizeof(float));
                m_offset = (m_offset + rest) % gridFrames;
                m_window = (m_window + rest) % windowFrames;
                return;
            }
            m_idle = false;
        }
        if (m_offset == 0)
            advanceGrid();
        const bool toNextPoint = m_moving || prompts || m_snapshotWaiting || m_beepWanted;
        int most = toNextPoint ? gridFrames : pieceFrames;
        if (m_fade.running())
            most = std::min(most, m_fade.frames());
        const int frames = std::min({block.frames - done, most - m_offset, windowFrames - m_window});
        processPiece(block, done, frames, meters);
        done += frames;
        const int points = (m_offset + frames) / gridFrames;
        m_offset = (m_offset + frames) % gridFrames;
        m_fade.skip(m_offset == 0 ? points - 1 : points);
        m_window += frames;
        if (m_window == windowFrames)
            endWindow();
    }
}

/// What has rung out is forgotten at a window's end, so at the same frame whatever the block size.
void Chain::endWindow() noexcept
{
    m_window = 0;
    m_quiet = m_loud ? 0 : std::min(m_quiet + windowFrames, m_ringOut);
    m_loud = false;
    if (m_quiet >= m_ringOut && !m_moving && !m_fade.running() && !m_limiter.working())
        clearSound();
}

void Chain::filterPiece(const Block& block, int start, int frames) noexcept
{
    alignas(64) double pairs[2][2 * pieceFrames], added[2 * pieceFrames];
    const auto at = [start](const float* signal) { return signal ? signal + start : nullptr; };
    const auto line = [this](int bus) { return Line{m_bus[bus].from, m_bus[bus].step, m_offset}; };

    bool adding = m_beeper.sounding();
    for (const auto& prompt : block.prompt)
        adding |= prompt[0] != nullptr;
    if (adding) {
        std::fill(added, added + 2 * frames, 0);
        for (int i = 0; i < promptCount; ++i)
            if (const float* left = at(block.prompt[i][0])) {
                const float* right = block.prompt[i][1] ? at(block.prompt[i][1]) : left;
                m_ducker.notePrompt(i, addPairs(left, right, line(1 + i), added, frames));
            }
        if (m_beeper.sounding())
            m_beeper.add(added, frames, m_offset);
    }

    m_kernel->gather(at(block.programme[0]), at(block.programme[1]), line(0), pairs[0], frames);
    if (m_fade.running())
        std::copy_n(pairs[0], 2 * frames, pairs[1]);
    const Lines levels{m_now, m_gliding ? &m_step : nullptr, m_offset};
    const auto run = [&](Running& running, double* own, float* const out[speakerCount]) {
        m_kernel->cascade(own, frames, running.filters, running.memory);
        if (adding)
            std::transform(own, own + 2 * frames, added, own, std::plus<double>());
        m_kernel->crossover(own, out, frames, running.filters, levels, running.memory);
    };
    float* const* const out = m_delay.inputs();
    run(m_running, pairs[0], out);
    if (!m_fade.running())
        return;
    float incoming[speakerCount][pieceFrames];
    float* const to[speakerCount] = {incoming[0], incoming[1], incoming[2], incoming[3], incoming[4]};
    run(m_incoming, pairs[1], to);
    for (int i = 0; i < speakerCount; ++i)
        m_fade.mix(*m_kernel, out[i], to[i], out[i], frames, m_offset);
}

void Chain::processPiece(const Block& block, int start, int frames, Meters& meters) noexcept
{
    const bool silent = silentInput(block, start, frames);
    filterPiece(block, start, frames);

    float peak[speakerCount];
    m_delay.read(m_limiter.inputs(), frames, m_offset, peak);
    m_loud |= !silent || *std::max_element(peak, peak + speakerCount) >= inaudible;

    float* out[speakerCount];
    for (int i = 0; i < speakerCount; ++i)
        out[i] = block.out[i] ? block.out[i] + start : nullptr;
    const float gain = m_limiter.process(out, frames, m_offset % cellFrames, peak);
    for (int i = 0; i < speakerCount; ++i)
        meters.peak[i] = std::max(meters.peak[i], peak[i]);
    meters.gain = std::min(meters.gain, gain);
}

} // namespace hvaudio::dsp
