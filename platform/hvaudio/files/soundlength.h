#pragma once

#include <cstdint>
#include <optional>

namespace hvaudio {

/// Whether a sound file ends before the end that it promises itself: by the size of its sound in WAV (also
/// RIFX, RF64, BW64, Wave64), AIFF, CAF and AU, by the mark of the last page in Ogg, in MP3 by the encoder's
/// tag (Xing, Info, VBRI) or, without one, by the length of the last frame. Decoders don't tell: they correct
/// a size that is too large without a word, or don't know how long the file should have been.
///
/// False where nothing is promised: a size of 0 or one of the largest possible ones is what writers leave in
/// the header when they write into a pipe and can't come back to it. False for all other formats, too.
///
/// descriptor: of a regular file, open for reading; its position stays. Reads a few kilobytes, but all of an
/// MP3 without a tag. Not for the audio thread.
bool endsEarly(int descriptor);

/// A number in a file's header, and what should stand there.
struct HeaderNumber
{
    std::uint64_t at; ///< bytes from the file's start
    int bytes;        ///< 4 or 8
    bool bigEndian;
    std::uint64_t value;
};

/// The size of the sound where a writer left it open, as that of all that follows. None where the header
/// holds a size, or where the sound is really empty: at the file's end, or before another chunk. The formats
/// with chunks (WAV and its kin, AIFF, CAF); descriptor as above.
std::optional<HeaderNumber> sizeLeftOpen(int descriptor);

/// Where an MP3 without a tag has its first frame, in bytes from the file's start; none for everything else.
/// Nothing in such a file says how long it is. Descriptor as above.
std::optional<std::uint64_t> untaggedMp3(int descriptor);

} // namespace hvaudio
