#include "platform/hvaudio/sources/filesource.h"

#include <algorithm>
#include <array>

namespace hvaudio {

namespace {

constexpr int aheadFrames = 65536, firstFrames = 8192;

} // namespace

std::unique_ptr<FileSource> FileSource::open(const std::string& path, double rate, std::string& error)
{
    auto file = SoundFile::open(path, rate, SoundFile::Quality::Playing, error);
    return file ? std::unique_ptr<FileSource>(new FileSource(std::move(file))) : nullptr;
}

FileSource::FileSource(std::unique_ptr<SoundFile> file)
    : m_file(std::move(file))
    , m_ahead(aheadFrames)
{
    fill(firstFrames);
}

bool FileSource::render(const float* const*, float* left, float* right, int frames) noexcept
{
    if (m_exhausted && m_ahead.readable() == 0)
        return false;
    StereoFrame piece[128];
    for (int done = 0; done < frames;) {
        const int want = std::min(128, frames - done);
        const int got = m_ahead.read(piece, want);
        for (int n = 0; n < got; ++n) {
            left[done + n] = piece[n].left;
            right[done + n] = piece[n].right;
        }
        std::fill(left + done + got, left + done + want, 0.0f);
        std::fill(right + done + got, right + done + want, 0.0f);
        done += want;
    }
    return true;
}

int FileSource::readAhead()
{
    return fill(m_ahead.writable());
}

int FileSource::fill(int frames)
{
    std::array<StereoFrame, 1024> piece;
    bool restarted = false;
    int filled = 0;
    while (filled < frames && !m_exhausted) {
        const int want = std::min(frames - filled, int(piece.size()));
        const int got = m_file->read(piece.data(), want);
        m_ahead.write(piece.data(), got);
        filled += got;
        if (got == want) {
            restarted = false;
            continue;
        }
        // The end: once more from the start, unless the start has nothing to give any more.
        m_exhausted = (got == 0 && restarted) || !m_file->rewind();
        restarted = true;
    }
    return filled;
}

} // namespace hvaudio
