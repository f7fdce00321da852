#include "platform/hvaudio/sources/sources.h"

#include "platform/hvaudio/sources/smoothstep.h"

#include <algorithm>

namespace hvaudio {

void Sources::prepare(double rate) noexcept
{
    m_fadeFrames = std::max(1, int(0.005 * rate));
    m_sounding.store(nullptr);
    m_id = -1;
}

void Sources::set(int id, std::shared_ptr<Source> source)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_wanted[id].store(source.get());
    std::swap(m_owned[id], source);
    if (source)
        m_retired.push_back(std::move(source));
    discardUnused();
}

void Sources::discardUnused()
{
    m_retired.erase(std::remove_if(m_retired.begin(), m_retired.end(),
                                   [this](const auto& source) { return m_sounding.load() != source.get(); }),
                    m_retired.end());
}

bool Sources::takeUp(Source* source, int id) noexcept
{
    m_sounding.store(source);
    if (m_wanted[id].load() == source)
        return true;
    m_sounding.store(nullptr);
    return false;
}

bool Sources::render(int id, const float* const in[2], float* left, float* right, int frames) noexcept
{
    if (id < 0 || id >= sourceIds) {
        m_sounding.store(nullptr);
        m_id = -1;
        return false;
    }
    if (id != m_id) {
        m_id = id;
        takeUp(m_wanted[id].load(), id);
        m_level = m_fadeFrames;
    }
    Source* source = m_sounding.load();
    bool any = false;
    for (int done = 0; done < frames;) {
        Source* const wanted = m_wanted[id].load();
        if (source != wanted && (m_level == 0 || !source)) {
            m_level = 0;
            if (!takeUp(wanted, id)) {
                // Exchanged in this very moment: the next block has another look.
                std::fill(left + done, left + frames, 0.0f);
                std::fill(right + done, right + frames, 0.0f);
                return any;
            }
            source = wanted;
        }
        const bool leaving = source != wanted;
        const bool moving = leaving || m_level < m_fadeFrames;
        const int count = !moving   ? frames - done
                          : leaving ? std::min(frames - done, m_level)
                                    : std::min(frames - done, m_fadeFrames - m_level);
        const float* const rest[2] = {in[0] ? in[0] + done : nullptr, in[1] ? in[1] + done : nullptr};
        const bool sounds = source && source->render(rest, left + done, right + done, count);
        if (!sounds) {
            std::fill(left + done, left + done + count, 0.0f);
            std::fill(right + done, right + done + count, 0.0f);
        }
        for (int n = 0; moving && n < count; ++n) {
            m_level += leaving ? -1 : 1;
            const float factor = smoothStep(float(m_level) / float(m_fadeFrames));
            left[done + n] *= factor;
            right[done + n] *= factor;
        }
        any |= sounds;
        done += count;
    }
    return any;
}

} // namespace hvaudio
