#pragma once

#include "platform/hvaudio/sources/source.h"
#include "platform/hvaudio/sources/sourcekind.h"

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace hvaudio {

/// The sources by their ids. One of them sounds; when what plays as it is exchanged, the old sound fades out
/// and the new one in, 5 ms each. A change of the id is hard: the engine has faded out when it asks for it.
class Sources
{
public:
    /// [OFF] All fades in this rate, in Hz; the sources themselves must be made anew where they depend on it.
    void prepare(double rate) noexcept;

    /// [CT] Several at once are fine. id: 0 .. sourceIds - 1, nothing else. Null is silence.
    void set(int id, std::shared_ptr<Source> source);
    /// [RT] As `Source::render`; silence for ids out of range.
    bool render(int id, const float* const in[2], float* left, float* right, int frames) noexcept;

private:
    /// [RT] Takes up what is wanted now; false when the control side has changed its mind meanwhile.
    bool takeUp(Source* source, int id) noexcept;
    void discardUnused();

    // Control side.
    std::mutex m_mutex;
    std::array<std::shared_ptr<Source>, sourceIds> m_owned;
    std::vector<std::shared_ptr<Source>> m_retired; ///< until the audio side has let them go

    // Between the sides. The audio side says in `m_sounding` which one it uses before it uses it and looks
    // again whether that is still wanted; the control side first takes it out of `m_wanted` and then looks at
    // `m_sounding`. So one of them always notices.
    std::array<std::atomic<Source*>, sourceIds> m_wanted = {};
    std::atomic<Source*> m_sounding{nullptr};

    // Audio side.
    int m_id = -1;
    int m_fadeFrames = 240;
    int m_level = 0; ///< 0..m_fadeFrames
};

} // namespace hvaudio
