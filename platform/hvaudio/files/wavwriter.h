#pragma once

#include "platform/hvaudio/files/regularfile.h"

#include <memory>
#include <string>

namespace hvaudio {

/// Writes a WAV file of 32 bit floats: the five speakers in the standard's order, FL FR LFE BL BR, with its
/// channel mask (0x3B), so that players know which is which; or left and right. A file beyond 4 GB
/// becomes RF64, the same with longer fields. One thread at a time; not for the audio thread.
class WavWriter
{
public:
    /// Rate in Hz, rounded to a whole number; channels 5 or 2. Null and a sentence in `error` when the
    /// file can't be written, or is something other than a regular file: the header is completed at the end,
    /// for which pipes have no way back.
    static std::unique_ptr<WavWriter> create(const std::string& path, double rate, int channels,
                                             std::string& error);
    /// Into an empty file that stays the caller's and is open for longer than this; `name` is what messages
    /// call it.
    static std::unique_ptr<WavWriter> create(int descriptor, const std::string& name, double rate,
                                             int channels, std::string& error);
    /// Completes the file as far as it was written.
    virtual ~WavWriter() = default;
    WavWriter(const WavWriter&) = delete;
    WavWriter& operator=(const WavWriter&) = delete;

    /// One pointer a channel, five of them in the order of `dsp::Speaker`; full scale is 1. False when the
    /// medium is full or gone.
    virtual bool write(const float* const* channels, int frames) = 0;
    /// Completes the file; false and a sentence in `error` when that fails. Nothing can be written
    /// afterwards.
    virtual bool finish(std::string& error) = 0;

protected:
    WavWriter() = default;

private:
    Descriptor m_own;
};

} // namespace hvaudio
