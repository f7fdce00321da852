#include "platform/hvaudio/dsp/chain.h"

#include "platform/hvaudio/dsp/scopedflush.h"

#include <algorithm>
#include <cstring>
#include <utility>

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
    law_ = GlideLaw(rate, glideMs);
    const int longestTap = int(longestDelaySeconds * rate) + 2 + subwooferLead;
    delay_.prepare(rate, longestTap);
    limiter_.prepare(rate);
    source_.prepare(rate);
    ducker_.prepare(rate);
    beeper_.prepare(rate);
    ringOut_ = longestTap + latencyFrames() + int(0.1 * rate);
    now_ = first_ = next_ = step_ = Parameters();
    newest_ = wanted_ = Snapshot();
    snapshotWaiting_ = beepWanted_ = false;
    left_ = 0;
    gliding_ = lowPass_ = moving_ = false;
    deaf_ = true;
    std::fill(std::begin(bus_), std::end(bus_), Line{0, 0});
    clearSound();
    offset_ = window_ = 0;
}

int Chain::latencyFrames() const noexcept
{
    // 1 is the all-pass'.
    return cascadeLatency + crossoverLatency + 1 + limiter_.latencyFrames();
}

void Chain::clearSound() noexcept
{
    memory_ = {};
    delay_.clear();
    limiter_.clear();
    idle_ = true;
    loud_ = false;
    quiet_ = 0;
}

void Chain::aim(const Snapshot& snapshot) noexcept
{
    newest_ = snapshot;
    snapshotWaiting_ = true;
}

void Chain::settle() noexcept
{
    if (snapshotWaiting_)
        takeSnapshot();
    left_ = 0;
    now_ = first_ = next_ = wanted_.parameters;
    delay_.jump();
    source_.jump(wanted_.source, wanted_.sourceFactor);
    lowPass_ = wanted_.lowPassUsed;
    moving_ = gliding_ = false;
    deaf_ = allSilent(now_);
    bus_[0] = {now_.bus[0] * source_.factor() * ducker_.factor(), 0};
    for (int i = 0; i < promptCount; ++i)
        bus_[1 + i] = {now_.bus[1 + i], 0};
    clearSound();
    offset_ = 0;
}

void Chain::jumpUnheard() noexcept
{
    // Nothing is audible: only the speakers' gains have a way to go. Otherwise a volume that was turned down
    // while the power was off would be heard on its way down.
    double gain[8];
    std::memcpy(gain, now_.speakerGain, sizeof gain);
    now_ = wanted_.parameters;
    std::memcpy(now_.speakerGain, gain, sizeof gain);
    first_ = next_ = now_;
    memory_ = {};
    delay_.jump();
    source_.jumpUnheard(wanted_.source, wanted_.sourceFactor);
}

/// What is switched on again meanwhile waits for silence: it starts at its own volume, and what is fading out
/// may be louder.
bool Chain::switchingOff() const noexcept
{
    return !wanted_.power && !allSilent(now_);
}

void Chain::takeSnapshot() noexcept
{
    snapshotWaiting_ = false;
    wanted_ = newest_;
    left_ = law_.points;
    for (int i = 0; i < speakerCount; ++i)
        delay_.aim(i, wanted_.delayTap[i]);
    if (wanted_.lowPassUsed && !lowPass_) {
        // It starts from rest: what it remembers is from its last use.
        std::fill(memory_.low.first, memory_.low.first + subwooferLane, 0);
        std::fill(memory_.low.second, memory_.low.second + subwooferLane, 0);
        lowPass_ = true;
    }
    if (allSilent(now_))
        jumpUnheard();
    source_.aim(wanted_.source, wanted_.sourceFactor);
}

void Chain::advanceGrid() noexcept
{
    if (gliding_)
        now_ = next_; // exactly, whatever adding up the steps left
    if (snapshotWaiting_ && !(newest_.power && switchingOff()))
        takeSnapshot();
    if (beepWanted_)
        beeper_.trigger();
    beepWanted_ = false;

    const bool glided = std::exchange(gliding_, left_ > 0);
    if (gliding_ != glided)
        gliding_ ? toStateForm(memory_, now_) : toDirectForm(memory_, now_);
    if (gliding_) {
        if (--left_ == 0)
            first_ = next_ = wanted_.parameters;
        else
            advanceGlide(law_.share, wanted_.parameters.data(), first_.data(), next_.data(), parameterCount);
        stepBetween(now_.data(), next_.data(), step_.data(), parameterCount);
    } else {
        lowPass_ = wanted_.lowPassUsed;
        deaf_ = allSilent(now_);
    }
    const double programme = now_.bus[0] * source_.factor() * ducker_.factor();
    source_.advanceGrid();
    ducker_.advanceGrid();
    beeper_.advanceGrid();
    const double programmeNext = next_.bus[0] * source_.factor() * ducker_.factor();
    bus_[0] = {programme, (programmeNext - programme) / gridFrames};
    for (int i = 1; i <= promptCount; ++i)
        bus_[i] = {now_.bus[i], (next_.bus[i] - now_.bus[i]) / gridFrames};
    const bool fading = delay_.advanceGrid();
    moving_ = gliding_ || fading || source_.moving() || ducker_.moving() || beeper_.sounding();
    deaf_ &= !moving_;
}

bool Chain::silentInput(const Block& block, int start, int frames) const noexcept
{
    if (deaf_)
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
    source_.newBlock();
    bool prompts = false;
    for (const auto& prompt : block.prompt)
        prompts |= prompt[0] != nullptr;
    for (int done = 0; done < block.frames;) {
        if (idle_) {
            const int rest = block.frames - done;
            if (!snapshotWaiting_ && !beepWanted_ && silentInput(block, done, rest)) {
                for (float* out : block.out)
                    if (out)
                        std::memset(out + done, 0, size_t(rest) * sizeof(float));
                offset_ = (offset_ + rest) % gridFrames;
                window_ = (window_ + rest) % windowFrames;
                return;
            }
            idle_ = false;
        }
        if (offset_ == 0)
            advanceGrid();
        const bool toNextPoint = moving_ || prompts || snapshotWaiting_ || beepWanted_;
        const int frames = std::min({block.frames - done, (toNextPoint ? gridFrames : pieceFrames) - offset_,
                                     windowFrames - window_});
        processPiece(block, done, frames, meters);
        done += frames;
        offset_ = (offset_ + frames) % gridFrames;
        window_ += frames;
        if (window_ == windowFrames)
            endWindow();
    }
}

/// What has rung out is forgotten at a window's end, so at the same frame whatever the block size.
void Chain::endWindow() noexcept
{
    window_ = 0;
    quiet_ = loud_ ? 0 : std::min(quiet_ + windowFrames, ringOut_);
    loud_ = false;
    if (quiet_ >= ringOut_ && !moving_ && !limiter_.working())
        clearSound();
}

void Chain::filterPiece(const Block& block, int start, int frames) noexcept
{
    alignas(64) double pairs[2 * pieceFrames];
    const auto at = [start](const float* signal) { return signal ? signal + start : nullptr; };
    const auto line = [this](int bus) { return Line{bus_[bus].from, bus_[bus].step, offset_}; };

    kernel_->gather(at(block.programme[0]), at(block.programme[1]), line(0), pairs, frames);
    if (gliding_)
        kernel_->glidingCascade(pairs, frames, now_, step_, memory_);
    else
        kernel_->cascade(pairs, frames, wanted_.direct, memory_);
    for (int i = 0; i < promptCount; ++i)
        if (const float* left = at(block.prompt[i][0])) {
            const float* right = block.prompt[i][1] ? at(block.prompt[i][1]) : left;
            ducker_.notePrompt(i, addPairs(left, right, line(1 + i), pairs, frames));
        }
    if (beeper_.sounding())
        beeper_.add(pairs, frames, offset_);
    if (gliding_)
        kernel_->glidingCrossover(pairs, delay_.inputs(), frames, now_, step_, memory_);
    else
        kernel_->crossover(pairs, delay_.inputs(), frames, wanted_.direct, now_, memory_, lowPass_);
}

void Chain::processPiece(const Block& block, int start, int frames, Meters& meters) noexcept
{
    const bool silent = silentInput(block, start, frames);
    filterPiece(block, start, frames);

    float peak[speakerCount];
    delay_.read(limiter_.inputs(), frames, offset_, peak);
    loud_ |= !silent || *std::max_element(peak, peak + speakerCount) >= inaudible;

    float* out[speakerCount];
    for (int i = 0; i < speakerCount; ++i)
        out[i] = block.out[i] ? block.out[i] + start : nullptr;
    const float gain = limiter_.process(out, frames, offset_, peak);
    for (int i = 0; i < speakerCount; ++i)
        meters.peak[i] = std::max(meters.peak[i], peak[i]);
    meters.gain = std::min(meters.gain, gain);
}

} // namespace hvaudio::dsp
