#pragma once

#include "platform/hvaudio/files/soundlength.h"

#include <cstdint>
#include <optional>

#include <sndfile.h>

namespace hvaudio {

/// A sound file as libsndfile reads all of it, where it would stop early on the file as it is: a size of 0
/// that a writer left open reads as the true one, and an MP3 without a tag begins with its first frame and
/// seems to go on for long, because libsndfile plays no more than it guesses from the first frame. The file
/// itself stays as it is. One thread at a time.
class SoundBytes
{
public:
    /// The descriptor stays the caller's and open for longer than this.
    explicit SoundBytes(int descriptor);

    /// Whether there is anything to be corrected; libsndfile reads the file itself otherwise.
    bool isNeeded() const { return size_.has_value() || mp3_; }
    /// As `sf_open_fd`; what is returned is the caller's, and reads from here until it is closed.
    SNDFILE* open(SF_INFO* info);

private:
    static SoundBytes* self(void* data) { return static_cast<SoundBytes*>(data); }
    sf_count_t read(void* to, sf_count_t count);
    sf_count_t seek(sf_count_t offset, int whence);

    const int descriptor_;
    std::optional<HeaderNumber> size_;
    bool mp3_ = false;
    std::int64_t first_ = 0;  ///< byte of the file that is read as the first one
    std::int64_t length_ = 0; ///< bytes, as it is told
    std::int64_t at_ = 0;
};

} // namespace hvaudio
