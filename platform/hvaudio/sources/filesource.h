#pragma once

#include "platform/hvaudio/files/soundfile.h"
#include "platform/hvaudio/sources/ring.h"
#include "platform/hvaudio/sources/source.h"

#include <atomic>
#include <memory>
#include <string>

namespace hvaudio {

/// A sound file, repeated for ever, with up to 1.3 s of it read ahead.
class FileSource final : public Source
{
public:
    /// [CT] Opens the file and reads its first part; rate in Hz, above 0. Waits for the medium. Null and a
    /// sentence in `error` when the file can't be read.
    static std::unique_ptr<FileSource> open(const std::string& path, double rate, std::string& error);

    /// What the medium is late with is silent. False once a file that can't be repeated has ended.
    bool render(const float* const in[2], float* left, float* right, int frames) noexcept override;

    /// [CT] One thread at a time: reads as much as there is room for, waits for the medium, and returns how
    /// many frames that were.
    int readAhead();
    /// [ANY] True when the file gives nothing more: it can't be read from its start again.
    bool isExhausted() const noexcept { return m_exhausted; }

private:
    explicit FileSource(std::unique_ptr<SoundFile> file);
    int fill(int frames);

    const std::unique_ptr<SoundFile> m_file;
    Ring<StereoFrame> m_ahead;
    std::atomic<bool> m_exhausted{false};
};

} // namespace hvaudio
