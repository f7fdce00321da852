#include "headunit/sound/speakerresponses.h"

#include "platform/hvaudio/dsp/response.h"

#include <algorithm>

namespace headunit {

using namespace hvaudio::dsp;

SpeakerResponses::SpeakerResponses(const Snapshot& snapshot, double rate)
    : m_snapshot(snapshot)
    , m_rate(rate)
{
}

double SpeakerResponses::factor(Speaker speaker, double hz) const
{
    return hz < m_rate / 2 ? std::abs(responseOf(m_snapshot, speaker, hz, m_rate)) : 0;
}

double SpeakerResponses::sum(double hz) const
{
    return hz < m_rate / 2 ? std::abs(sumAtSeat(m_snapshot, hz, m_rate)) : 0;
}

bool SpeakerResponses::operator==(const SpeakerResponses& other) const
{
    const Snapshot &a = m_snapshot, &b = other.m_snapshot;
    return m_rate == other.m_rate &&
           std::equal(a.parameters.data(), a.parameters.data() + parameterCount, b.parameters.data()) &&
           a.filters == b.filters && a.delayTap == b.delayTap && a.sourceFactor == b.sourceFactor &&
           a.source == b.source;
}

} // namespace headunit
