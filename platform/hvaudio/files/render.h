#pragma once

#include "platform/hvaudio/dsp/settings.h"
#include "platform/hvaudio/export.h"

#include <functional>
#include <string>

namespace hvaudio {

/// Renders a sound file as the unit would play it.
///
/// The engine runs at the file's own rate when that is 44100, 48000 or 96000 Hz, else at 48000. The result is
/// a WAV of 32 bit floats, FL FR LFE BL BR with its channel mask, or folded to left and right (fold.h). Its
/// first frame is the input's first frame (the processor's own latency is taken out); it is 0.1 s longer than
/// the input, in which delays and filters ring out.
struct RenderJob
{
    std::string in, out;
    dsp::Settings settings; ///< used as if powered and not muted; the first frame sounds as all others do
    bool stereo = false;
    std::function<bool()> stopped = {}; ///< asked often; true ends the work as a failure. May be empty
};

struct RenderReport
{
    long long frames = 0; ///< written
    double rate = 0;      ///< of the output, in Hz
    int channels = 0;     ///< of the input
    double inputRate = 0; ///< Hz
    double elapsed = 0;   ///< seconds the work took
    std::string remark;   ///< empty, or what is worth knowing: the input was cut short, the limiter worked
};

/// False, and one readable sentence in `error`, when the input can't be read or the output can't be written;
/// then no output file is left, and one that stood there before is as it was. The output is a new file, or
/// takes the place of a regular file other than the input, by whatever names and links (replacement.h). Not
/// for the audio thread.
HVAUDIO_EXPORT bool render(const RenderJob& job, RenderReport& report, std::string& error);

} // namespace hvaudio
