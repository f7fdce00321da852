#pragma once

#include "platform/hvaudio/files/soundfile.h"
#include "platform/hvaudio/player.h"

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace hvaudio {

/// What plays as one source of the unit.
class Source
{
public:
    virtual ~Source() = default;
    /// [RT] Fills both sides; `in` is what other programs play into the unit, null for silence. False, with
    /// nothing written, when there is nothing but silence.
    virtual bool render(const float* const in[2], float* left, float* right, int frames) noexcept = 0;
    /// Reads ahead, on a thread that may wait; true when there may be more to do soon.
    virtual bool readAhead() { return false; }
};

/// White noise through pairs of poles and zeros that stand closer than two octaves: -3 dB per octave within
/// 0.3 dB from 20 Hz to 0.4 of the rate, whatever the rate. -20 dBFS RMS, the sides independent; `seed`
/// chooses the noise.
std::unique_ptr<Source> makePinkNoise(double rate, unsigned seed = 1);
/// Logarithmic sweep from 20 Hz to 20 kHz (0.45 of the rate where that is less) in 10 s after A. Farina,
/// "Simultaneous measurement of impulse response and distortion with a swept-sine technique", 2000; the same
/// on both sides, -20 dBFS peak, with soft ends, repeated.
std::unique_ptr<Source> makeSweep(double rate);
/// What comes in.
std::unique_ptr<Source> makeInput();
/// A sound file, repeated for ever. Reads 1.3 s ahead; the first part is read here. Null and a sentence in
/// `error` when the file can't be read.
std::unique_ptr<Source> makeFileSource(const std::string& path, double rate, std::string& error);

/// The sources by their ids. One of them sounds; when what plays as it is exchanged, the old sound fades out
/// and the new one in, 5 ms each. A change of the id is hard: the engine has faded out when it asks for it.
class Sources
{
public:
    /// [OFF] All fades in this rate; the sources themselves must be made anew where they depend on it.
    void prepare(double rate) noexcept;

    /// [CT] One thread at a time. id: 0 .. Player::sourceIds - 1. Null is silence.
    void set(int id, std::shared_ptr<Source> source);
    /// [CT] What `set` was given last for each id, for reading ahead.
    std::vector<std::shared_ptr<Source>> all() const;

    /// [RT] As `Source::render`.
    bool render(int id, const float* const in[2], float* left, float* right, int frames) noexcept;

private:
    /// [RT] Takes up what is wanted now; false when the control side has changed its mind meanwhile.
    bool take(Source* source, int id) noexcept;
    void discardUnused();

    // Control side.
    mutable std::mutex mutex_;
    std::array<std::shared_ptr<Source>, Player::sourceIds> owned_;
    std::vector<std::shared_ptr<Source>> retired_; ///< until the audio side has let them go

    // Between the sides. The audio side says in `sounding_` which one it uses before it uses it and looks
    // again whether that is still wanted; the control side first takes it out of `wanted_` and then looks at
    // `sounding_`. So one of them always notices.
    std::array<std::atomic<Source*>, Player::sourceIds> wanted_ = {};
    std::atomic<Source*> sounding_{nullptr};

    // Audio side.
    int id_ = -1;
    int fadeFrames_ = 240;
    int level_ = 0; ///< 0..fadeFrames_
};

} // namespace hvaudio
