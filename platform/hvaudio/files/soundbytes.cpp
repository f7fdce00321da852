#include "platform/hvaudio/files/soundbytes.h"

#include <algorithm>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

namespace hvaudio {

namespace {

/// The decoder of MP3 looks for a label (ID3v1) in so many bytes at the very end, and must find some.
constexpr std::int64_t labelBytes = 128;

} // namespace

SoundBytes::SoundBytes(int descriptor)
    : descriptor_(descriptor)
    , size_(sizeLeftOpen(descriptor))
{
    // Frames of 320 kbit/s may be followed by such of 8: this many times more than the first one says.
    constexpr std::int64_t mostFramesOfGuess = 64;
    struct stat is = {};
    fstat(descriptor, &is);
    length_ = is.st_size;
    if (const auto frame = size_ ? std::nullopt : untaggedMp3(descriptor)) {
        mp3_ = true;
        first_ = std::int64_t(*frame);
        length_ = (length_ - first_) * mostFramesOfGuess;
    }
}

SNDFILE* SoundBytes::open(SF_INFO* info)
{
    SF_VIRTUAL_IO io = {};
    io.get_filelen = [](void* data) { return sf_count_t(self(data)->length_); };
    io.seek = [](sf_count_t offset, int whence, void* data) { return self(data)->seek(offset, whence); };
    io.read = [](void* to, sf_count_t count, void* data) { return self(data)->read(to, count); };
    io.write = [](const void*, sf_count_t, void*) { return sf_count_t(0); };
    io.tell = [](void* data) { return sf_count_t(self(data)->at_); };
    at_ = 0;
    return sf_open_virtual(&io, SFM_READ, info, this);
}

sf_count_t SoundBytes::read(void* to, sf_count_t count)
{
    if (mp3_ && at_ >= length_ - labelBytes) {
        const std::int64_t zeros = std::clamp<std::int64_t>(length_ - at_, 0, count);
        std::memset(to, 0, std::size_t(zeros));
        at_ += zeros;
        return zeros;
    }
    const std::int64_t from = first_ + at_;
    const ssize_t got = pread(descriptor_, to, std::size_t(std::max<sf_count_t>(count, 0)), off_t(from));
    if (got <= 0)
        return 0;
    for (int i = 0; size_ && i < size_->bytes; ++i) {
        const std::int64_t place = std::int64_t(size_->at) + i - from;
        const int shift = 8 * (size_->bigEndian ? size_->bytes - 1 - i : i);
        if (place >= 0 && place < got)
            static_cast<unsigned char*>(to)[place] = static_cast<unsigned char>(size_->value >> shift);
    }
    at_ += got;
    return got;
}

sf_count_t SoundBytes::seek(sf_count_t offset, int whence)
{
    const std::int64_t base = whence == SEEK_CUR ? at_ : whence == SEEK_END ? length_ : 0;
    if (base + offset < 0)
        return -1;
    return at_ = base + offset;
}

} // namespace hvaudio
