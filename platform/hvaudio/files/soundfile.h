#pragma once

#include "platform/hvaudio/files/stereoframe.h"
#include "platform/hvaudio/threads.h"

#include <memory>
#include <string>

namespace hvaudio {

/// Reads a sound file as stereo at a wished rate. Formats are those of libsndfile: WAV, FLAC, Ogg (Vorbis,
/// Opus), MP3, AIFF and others. Rates are converted by libsamplerate's band-limited interpolation.
///
/// Down-mix to left and right, after Rec. ITU-R BS.775: one channel goes to both sides; centre and surround
/// channels count 0.7071 to their side (the centre to both); the low-frequency channel is left out; the whole
/// is divided by the sum of one side's weights, so that nothing can get louder than full scale. Which channel
/// is which comes from the file where it says so, else from the usual order of so many channels: mono, L R,
/// L R C, L R RL RR, L R C RL RR, 5.1, 6.1, 7.1.
///
/// One thread at a time; not for the audio thread.
class SoundFile
{
public:
    enum class Quality {
        Playing,   ///< 97 dB signal to noise, quick enough to follow the sound
        Rendering, ///< 145 dB
    };

    /// rate in Hz; 0 keeps the file's own. Null, and one readable sentence in `error`, when the file can't be
    /// read, has no sound, or has more than 8 channels or a rate beyond 1000..768000 Hz. What is no regular
    /// file (a pipe, a device) is refused and not waited for, so this may be called where a pipe would freeze
    /// a screen.
    static std::unique_ptr<SoundFile> open(const std::string& path, double rate, Quality quality,
                                           std::string& error);
    virtual ~SoundFile() = default;
    SoundFile(const SoundFile&) = delete;
    SoundFile& operator=(const SoundFile&) = delete;

    /// Of the file, 1 to 8.
    virtual int channels() const = 0;
    /// Of the file, in Hz.
    virtual int fileRate() const = 0;
    /// Of what `read` gives, in Hz.
    virtual double rate() const = 0;
    /// Frames of the file read so far, at its own rate.
    virtual long long fileFramesRead() const = 0;
    /// When the end has come: whether there should have been more, as far as libsndfile knows: the file
    /// couldn't be read any further, or a FLAC says how many frames it has and lacks some. False before the
    /// end. Other formats end where they are cut off without a word.
    virtual bool isCutShort() const = 0;

    /// Fewer frames than asked for mean the end. Samples that aren't numbers are given as 0.
    virtual int read(StereoFrame* frames, int count) = 0;
    /// Begins again at the start; false when the file doesn't let itself be read again.
    virtual bool rewind() = 0;

protected:
    SoundFile() = default;
};

} // namespace hvaudio
