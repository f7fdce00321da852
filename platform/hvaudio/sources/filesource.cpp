#include "platform/hvaudio/sources/filesource.h"

#include "platform/hvaudio/files/soundfile.h"
#include "platform/hvaudio/sources/ring.h"

#include <algorithm>
#include <array>

namespace hvaudio {

namespace {

class FileSource final : public Source
{
public:
    explicit FileSource(std::unique_ptr<SoundFile> file)
        : m_file(std::move(file))
        , m_ahead(65536)
    {
        fill(firstFrames);
    }

    bool render(const float* const*, float* left, float* right, int frames) noexcept override
    {
        StereoFrame piece[128];
        for (int done = 0; done < frames;) {
            const int want = std::min(128, frames - done);
            const int got = m_ahead.read(piece, want);
            for (int n = 0; n < got; ++n) {
                left[done + n] = piece[n].left;
                right[done + n] = piece[n].right;
            }
            // The disk is late: silence until it has caught up.
            std::fill(left + done + got, left + done + want, 0.0f);
            std::fill(right + done + got, right + done + want, 0.0f);
            done += want;
        }
        return true;
    }

    bool readAhead() override
    {
        fill(m_ahead.writable());
        return !m_exhausted;
    }

private:
    static constexpr int firstFrames = 8192;

    void fill(int frames)
    {
        std::array<StereoFrame, 1024> piece;
        bool restarted = false;
        while (frames > 0 && !m_exhausted) {
            const int want = std::min(frames, int(piece.size()));
            const int got = m_file->read(piece.data(), want);
            m_ahead.write(piece.data(), got);
            frames -= got;
            if (got == want) {
                restarted = false;
                continue;
            }
            // The end: once more from the start, unless the start has nothing to give any more.
            m_exhausted = (got == 0 && restarted) || !m_file->rewind();
            restarted = true;
        }
    }

    const std::unique_ptr<SoundFile> m_file;
    Ring<StereoFrame> m_ahead;
    bool m_exhausted = false;
};

} // namespace

std::unique_ptr<Source> makeFileSource(const std::string& path, double rate, std::string& error)
{
    auto file = SoundFile::open(path, rate, SoundFile::Quality::Playing, error);
    if (!file)
        return nullptr;
    return std::make_unique<FileSource>(std::move(file));
}

} // namespace hvaudio
