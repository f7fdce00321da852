// Bytes that are to be a sound file: sound that ends, or one sentence.
#include "tests/faults/fuzz/fuzz.h"

#include "platform/hvaudio/files/soundfile.h"

#include <cmath>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

using namespace hvaudio;

namespace {

/// A few bytes may stand for hours of silence.
constexpr int mostFrames = 40000;
/// That are looked at when it is read for the second time.
constexpr int fewFrames = 2000;

/// One file for all inputs. Its name makes the library try what it only knows by names.
class Input
{
public:
    Input()
    {
        const char* folder = std::getenv("TMPDIR");
        m_path = std::string(folder ? folder : "/tmp") + "/fuzz-XXXXXX.mp3";
        m_fd = mkstemps(m_path.data(), 4);
        fuzz::require(m_fd >= 0, "can't make " + m_path);
    }
    ~Input()
    {
        close(m_fd);
        unlink(m_path.c_str());
    }
    const std::string& holding(const std::uint8_t* data, std::size_t size) const
    {
        fuzz::require(ftruncate(m_fd, 0) == 0 && pwrite(m_fd, data, size, 0) == ssize_t(size),
                      "can't write " + m_path);
        return m_path;
    }

private:
    std::string m_path;
    int m_fd;
};

void read(SoundFile& file, int frames)
{
    std::vector<StereoFrame> piece(777);
    for (int done = 0; done < frames; done += int(piece.size())) {
        const int got = file.read(piece.data(), int(piece.size()));
        fuzz::require(got >= 0 && got <= int(piece.size()), "more frames than were asked for");
        for (int n = 0; n < got; ++n)
            fuzz::require(std::isfinite(piece[n].left) && std::isfinite(piece[n].right), "no number");
        if (got < int(piece.size())) {
            fuzz::require(file.read(piece.data(), 1) == 0, "frames behind the end");
            return;
        }
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Input input;
    const std::string& path = input.holding(data, size);
    for (const double rate : {0.0, 44100.0}) {
        std::string error;
        const auto file = SoundFile::open(path, rate, SoundFile::Quality::Playing, error);
        fuzz::require((file == nullptr) != error.empty(), "a file or an error, one of them");
        if (!file) {
            fuzz::require(error.find('\n') == std::string::npos, "the error is no sentence");
            fuzz::answered(error.substr(error.rfind(':') + 1));
            continue;
        }
        fuzz::require(file->channels() >= 1 && file->channels() <= 8, "so many channels");
        read(*file, mostFrames);
        fuzz::answered(std::to_string(file->channels()) + ' ' + std::to_string(file->fileRate()) + ' ' +
                       std::to_string(file->fileFramesRead() / 1000) + (file->isCutShort() ? "!" : ""));
        if (file->rewind())
            read(*file, fewFrames);
    }
    return 0;
}
