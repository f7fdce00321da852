#include "platform/hvaudio/dsp/limiter.h"

#include "platform/hvaudio/dsp/kernel/detector.h"

#include <algorithm>
#include <cmath>
#include <cstring>

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

} // namespace

void LimiterGain::prepare(double rate, int lookAhead)
{
    m_lookAhead = lookAhead;
    m_shortestHold = int(std::ceil(rate * shortestHoldSeconds / gridFrames));
    m_longestHold = int(std::ceil(rate * longestHoldSeconds / gridFrames));
    m_forgetting = float(gridFrames / (rate * crestsSeconds));
    m_needs.assign(std::size_t(nextPowerOfTwo(m_lookAhead + m_longestHold + 2)), Need{});
    const int mean = lookAhead / 2;
    m_slow.assign(std::size_t(2 * mean - 1), 1.0f);
    m_weights.resize(m_slow.size());
    for (int i = 0; i < 2 * mean - 1; ++i)
        m_weights[std::size_t(i)] = float(std::min(i + 1, 2 * mean - 1 - i)) / float(mean * mean);
    clear();
}

void LimiterGain::clear() noexcept
{
    m_first = m_last = m_cell = 0;
    m_before = m_now = 1;
    m_sinceCrest = 0;
    m_crests = 0;
    std::fill(m_slow.begin(), m_slow.end(), 1.0f);
    m_from = m_to = 1;
    m_ones = int(m_slow.size());
    m_working = false;
}

/// Where the need has been largest, and is about all that is held, the sound has a crest.
void LimiterGain::followCrests(float needed) noexcept
{
    const bool crest = m_now < m_before && m_now < needed && m_now <= crestTolerance * m_slow.back();
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

    float slow = m_slow.back();
    slow += (1 - slow) / float(recoveryHolds * hold);
    if (slow > nearlyOne)
        slow = 1;
    if (m_first != m_last)
        slow = std::min(slow, m_needs[std::size_t(m_first & mask)].gain);
    std::copy(m_slow.begin() + 1, m_slow.end(), m_slow.begin());
    m_slow.back() = slow;

    float mean = 0;
    for (std::size_t i = 0; i < m_slow.size(); ++i)
        mean += m_weights[i] * m_slow[i];
    m_from = m_to;
    m_to = mean;
    m_ones = slow == 1 ? m_ones + 1 : 0;
    // The line has arrived at 1 as well when one more cell than the mean sees has been at 1.
    m_working = m_first != m_last || m_ones <= int(m_slow.size());
    if (!m_working) {
        m_crests = 0;
        m_sinceCrest = m_longestHold; // the next crest is the first
    }
}

void Limiter::prepare(double rate)
{
    // A power of two, so that the weights are exact and a row of ones gives exactly 1.
    m_lookAhead = 2 * nextPowerOfTwo(rate * meanSeconds / gridFrames);
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
    std::fill(std::begin(m_before), std::end(m_before), 0.0f);
    m_alert = 0;
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
    m_cabinTop = m_subwooferTop = 0;
}

/// Measures the cell that ends `end` frames behind the place of the newest ones.
void Limiter::endCell(int end) noexcept
{
    if (m_alert > 0)
        --m_alert;
    float top[speakerCount];
    for (int i = 0; i < speakerCount; ++i) {
        top[i] = m_kernel->largestOf(m_history.before(i, gridFrames - end));
        // What lies between this cell and the next is seen with the next.
        if (top[i] > surelyBelow)
            m_alert = 1;
        float& group = i == Subwoofer ? m_subwooferTop : m_cabinTop;
        group = std::max(group, top[i]);
    }
    for (int i = 0; i < speakerCount; ++i) {
        float& group = i == Subwoofer ? m_subwooferTop : m_cabinTop;
        // The detector is asked only where its answer can matter.
        if (std::max(top[i], m_before[i]) * detector::mostBetween > std::max(group, ceiling))
            group = std::max(group, m_kernel->largestBetween(m_history.before(i, gridFrames - end)));
        m_before[i] = top[i];
    }
}

float Limiter::process(float* const out[speakerCount], int frames, int offset,
                       float peak[speakerCount]) noexcept
{
    const int late = latencyFrames();
    const float largest = *std::max_element(peak, peak + speakerCount);
    const bool idle = !working() && m_alert == 0 && m_cabinTop <= ceiling && m_subwooferTop <= ceiling;
    float smallest = 1;
    if (idle && largest <= surelyBelow) {
        for (int i = 0; i < speakerCount; ++i)
            if (out[i])
                std::memcpy(out[i], m_history.before(i, late), std::size_t(frames) * sizeof(float));
    } else {
        alignas(64) float gain[2][pieceFrames], unwanted[pieceFrames];
        for (int done = 0; done < frames;) {
            if (offset == 0)
                startCell();
            const int count = std::min(frames - done, gridFrames - offset);
            for (int n = 0; n < count; ++n) {
                gain[0][done + n] = m_cabin.at(offset + n);
                gain[1][done + n] = m_subwoofer.at(offset + n);
            }
            for (const auto& line : gain)
                smallest = std::min({smallest, line[done], line[done + count - 1]});
            done += count;
            offset = (offset + count) % gridFrames;
            if (offset == 0)
                endCell(done);
            else if (largest > surelyBelow)
                m_alert = std::max(m_alert, 1); // the cell isn't over
        }
        for (int i = 0; i < speakerCount; ++i)
            peak[i] = m_kernel->applyGain(m_history.before(i, late), gain[i == Subwoofer],
                                          out[i] ? out[i] : unwanted, frames, ceiling);
    }
    m_history.advance(frames);
    return smallest;
}

} // namespace hvaudio::dsp
