#include "platform/hvaudio/dsp/limiter.h"

#include "platform/hvaudio/dsp/kernel/detector.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace hvaudio::dsp {

namespace {

constexpr double meanSeconds = 0.001;
constexpr double shortestHoldSeconds = 0.010, longestHoldSeconds = 0.032;
constexpr float holdCrests = 1.25f;     ///< hold over the distance of crests
constexpr double crestsSeconds = 0.3;   ///< time constant of forgetting that distance
constexpr float crestTolerance = 1.06f; ///< a crest is what needs all of the gain that is held, within 0.5 dB
constexpr int recoveryHolds = 15;       ///< time constant of the way up, in holds
constexpr float nearlyOne = 0.9999f;    ///< where the way up ends in exactly 1

/// What never needs the detector.
constexpr float surelyBelow = Limiter::ceiling / detector::mostBetween;

int nextPowerOfTwo(double atLeast)
{
    int n = 1;
    while (n < atLeast)
        n *= 2;
    return n;
}

/// The gain that brings this down to the ceiling, a hair below it so that the product's rounding stays there.
float neededFor(float top) noexcept
{
    return top > Limiter::ceiling ? Limiter::ceiling * 0.9999999f / top : 1.0f;
}

template <int count>
float largestOf(const float* v) noexcept
{
    float largest = v[0];
    for (int i = 1; i < count; ++i)
        largest = std::max(largest, v[i]);
    return largest;
}

} // namespace

void LimiterGain::prepare(double rate, int lookAhead)
{
    m_lookAhead = lookAhead;
    m_shortestHold = int(std::ceil(rate * shortestHoldSeconds / cellFrames));
    m_longestHold = int(std::ceil(rate * longestHoldSeconds / cellFrames));
    m_forgetting = float(cellFrames / (rate * crestsSeconds));
    m_needs.assign(std::size_t(nextPowerOfTwo(m_lookAhead + m_longestHold + 2)), Need{});
    m_slows.resize(std::size_t(lookAhead / 2));
    m_sums.resize(m_slows.size());
    m_share = 1 / double(m_sums.size() * m_sums.size());
    clear();
}

void LimiterGain::clear() noexcept
{
    m_first = m_last = m_cell = 0;
    m_before = m_now = 1;
    m_sinceCrest = 0;
    m_crests = 0;
    const auto mean = double(m_slows.size());
    std::fill(m_slows.begin(), m_slows.end(), 1);
    std::fill(m_sums.begin(), m_sums.end(), mean);
    m_sum = mean;
    m_sumOfSums = mean * mean;
    m_place = 0;
    m_slow = m_from = m_to = 1;
    m_ones = 2 * int(m_slows.size());
    m_working = false;
}

/// Where the need has been largest, and is about all that is held, the sound has a crest.
void LimiterGain::followCrests(float needed) noexcept
{
    const bool crest = m_now < m_before && m_now < needed && m_now <= crestTolerance * m_slow;
    m_crests -= m_forgetting * m_crests;
    ++m_sinceCrest;
    if (crest) {
        if (m_sinceCrest <= m_longestHold)
            m_crests = std::max(m_crests, float(m_sinceCrest));
        m_sinceCrest = 0;
    }
    if (needed != m_now)
        m_before = m_now;
    m_now = needed;
}

void LimiterGain::nextCell(float needed) noexcept
{
    followCrests(needed);
    const int hold = std::clamp(int(holdCrests * m_crests), m_shortestHold, m_longestHold);
    const long long mask = (long long)(m_needs.size()) - 1;
    while (m_first != m_last && m_needs[std::size_t(m_first & mask)].cell < m_cell - m_lookAhead - 1 - hold)
        ++m_first;
    if (needed < 1) {
        while (m_first != m_last && m_needs[std::size_t((m_last - 1) & mask)].gain >= needed)
            --m_last;
        m_needs[std::size_t(m_last++ & mask)] = {m_cell - 1, needed};
    }
    ++m_cell;

    m_slow += (1 - m_slow) / float(recoveryHolds * hold);
    if (m_slow > nearlyOne)
        m_slow = 1;
    if (m_first != m_last)
        m_slow = std::min(m_slow, m_needs[std::size_t(m_first & mask)].gain);
    m_sum += double(m_slow) - std::exchange(m_slows[m_place], double(m_slow));
    m_sumOfSums += m_sum - std::exchange(m_sums[m_place], m_sum);
    m_place = (m_place + 1) & (m_sums.size() - 1);
    m_from = m_to;
    m_to = float(m_sumOfSums * m_share);
    m_ones = m_slow == 1 ? m_ones + 1 : 0;
    // The line has arrived at 1 as well when one more cell than the means see has been at 1.
    m_working = m_first != m_last || m_ones < 2 * int(m_sums.size());
    if (!m_working) {
        m_crests = 0;
        m_sinceCrest = m_longestHold; // the next crest is the first
    }
}

float LimiterGain::held() const noexcept
{
    const long long mask = (long long)(m_needs.size()) - 1;
    long long i = m_first;
    while (i != m_last && m_needs[std::size_t(i & mask)].cell < m_cell - 1 - m_shortestHold)
        ++i;
    return i != m_last ? m_needs[std::size_t(i & mask)].gain : 1.0f;
}

void LimiterGain::line(float* gains) const noexcept
{
    for (int n = 0; n < cellFrames; ++n)
        gains[n] = m_from + (m_to - m_from) * (float(n) / cellFrames);
}

void Limiter::prepare(double rate)
{
    // A power of two, so that dividing by it is exact.
    m_lookAhead = 2 * nextPowerOfTwo(rate * meanSeconds / cellFrames);
    m_history.prepare(speakerCount, latencyFrames());
    m_cabin.prepare(rate, m_lookAhead);
    m_subwoofer.prepare(rate, m_lookAhead);
    clear();
}

void Limiter::clear() noexcept
{
    m_history.clear();
    m_cabin.clear();
    m_subwoofer.clear();
    m_cabinTop = m_subwooferTop = 0;
    std::fill(std::begin(m_bend), std::end(m_bend), 0.0f);
    m_calm = 2 * cellFrames;
}

float* const* Limiter::inputs() noexcept
{
    for (int i = 0; i < speakerCount; ++i)
        m_inputs[i] = m_history.next(i);
    return m_inputs;
}

void Limiter::startCell() noexcept
{
    m_cabin.nextCell(neededFor(m_cabinTop));
    m_subwoofer.nextCell(neededFor(m_subwooferTop));
}

/// Measures the cell that ends `end` frames behind the place of the newest ones.
void Limiter::endCell(int end) noexcept
{
    const float* cell[speakerCount];
    for (int i = 0; i < speakerCount; ++i)
        cell[i] = m_history.before(i, cellFrames - end);
    float top[speakerCount], most[speakerCount];
    m_kernel->measure(cell, m_bend, top, most);
    m_cabinTop = found<cabinSpeakerCount>(cell, top, most, m_cabin);
    m_subwooferTop = found<1>(cell + Subwoofer, top + Subwoofer, most + Subwoofer, m_subwoofer);
}

/// What a group needs. The detector is asked only where its answer can lower a gain that isn't held down
/// already, and a cell for which it isn't asked is held for what its samples need. What it finds beyond the
/// samples is taken up bit by bit, so that nothing hangs on whether it was asked where it finds little.
template <int count>
float Limiter::found(const float* const* cell, const float* top, const float* most,
                     const LimiterGain& gain) const noexcept
{
    const float samples = detector::margin * largestOf<count>(top), held = ceiling / gain.held();
    float all = samples;
    const auto matters = [&](float bound) {
        return bound > samples && detector::margin * bound > std::max(all, held);
    };
    if (!matters(largestOf<count>(most)))
        return all;
    for (int i = 0; i < count; ++i)
        if (matters(most[i])) {
            const float between = m_kernel->largestBetween(cell[i]);
            all = std::max(all, std::min(detector::margin * between, 3 * between - 2 * samples));
        }
    return all;
}

float Limiter::process(float* const out[speakerCount], int frames, int offset,
                       float peak[speakerCount]) noexcept
{
    const int late = latencyFrames();
    const bool calm = largestOf<speakerCount>(peak) <= surelyBelow;
    const bool idle =
        !working() && calm && m_calm == 2 * cellFrames && m_cabinTop <= ceiling && m_subwooferTop <= ceiling;
    // What a loud frame does is seen with its own cell and the next.
    m_calm = calm ? std::min(m_calm + frames, 2 * cellFrames) : 0;
    float smallest = 1;
    if (idle) {
        for (int i = 0; i < speakerCount; ++i) {
            if (out[i])
                std::memcpy(out[i], m_history.before(i, late), std::size_t(frames) * sizeof(float));
            m_bend[i] = 4 * surelyBelow; // no more than that
        }
    } else {
        // A cell's line begins with the cell, which may be in front of the piece.
        alignas(64) float gain[2][pieceFrames + 2 * cellFrames], unwanted[pieceFrames];
        for (int done = 0; done < frames;) {
            if (offset == 0)
                startCell();
            const int at = cellFrames + done, count = std::min(frames - done, cellFrames - offset);
            m_cabin.line(&gain[0][at - offset]);
            m_subwoofer.line(&gain[1][at - offset]);
            for (const auto& line : gain)
                smallest = std::min({smallest, line[at], line[at + count - 1]});
            done += count;
            offset = (offset + count) % cellFrames;
            if (offset == 0)
                endCell(done);
        }
        for (int i = 0; i < speakerCount; ++i)
            peak[i] = m_kernel->applyGain(m_history.before(i, late), gain[i == Subwoofer] + cellFrames,
                                          out[i] ? out[i] : unwanted, frames, ceiling);
    }
    m_history.advance(frames);
    return smallest;
}

} // namespace hvaudio::dsp
