#pragma once

#include "hvaudio/audioservice.h"
#include "platform/hvaudio/player.h"

#include <QString>

/// The words of the sound processor for those parts of the unit that include none of its headers.
namespace headunit {

using hvaudio::HeardFrame;
using hvaudio::SourceKind;
using hvaudio::dsp::Meters;
using hvaudio::dsp::Prompt;
using hvaudio::dsp::promptCount;
using hvaudio::dsp::Speaker;
using hvaudio::dsp::speakerCount;
using hvaudio::dsp::SubwooferSettings;

using hvaudio::dsp::FrontLeft;
using hvaudio::dsp::FrontRight;
using hvaudio::dsp::RearLeft;
using hvaudio::dsp::RearRight;
using hvaudio::dsp::Subwoofer;

/// What plays as a source.
struct SourceChoice
{
    SourceKind kind = SourceKind::Input;
    QString path; ///< of a file, absolute; empty for any other kind
};

inline bool operator==(const SourceChoice& a, const SourceChoice& b)
{
    return a.kind == b.kind && a.path == b.path;
}

} // namespace headunit
