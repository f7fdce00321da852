#pragma once

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
/// MP3 without a tag. Not for the
/// audio thread.
bool endsEarly(int descriptor);

} // namespace hvaudio
