#pragma once

#include "tests/support/privatepipewire.h"

#include "platform/hvaudio/dsp/settings.h"
#include "platform/hvaudio/files/wavwriter.h"
#include "platform/hvaudio/outputs/log.h"

#include <QStringList>

#include <mutex>

/// What the tests of the unit on a PipeWire daemon share: a file of tones, its way into the unit, and finding
/// the tones again in what leaves it.
namespace unitonpipewire {

/// Log lines, which come from several threads.
struct Lines
{
    hvaudio::Log log()
    {
        return [this](hvaudio::LogLevel, const std::string& line) {
            const std::lock_guard<std::mutex> lock(mutex);
            lines << QString::fromStdString(line);
        };
    }
    QStringList all()
    {
        const std::lock_guard<std::mutex> lock(mutex);
        return lines;
    }
    std::mutex mutex;
    QStringList lines;
};

constexpr double rate = 48000;
inline const QStringList five = {"FL", "FR", "RL", "RR", "LFE"};
inline const QStringList two = {"FL", "FR"};

/// Amplitude of each tone.
constexpr double toneLevel = 0.02;

/// Writes a sine at each centre of the equalizer's bands, all of one level, in stereo.
inline bool writeTones(const QString& path, double seconds)
{
    std::string error;
    const auto writer = hvaudio::WavWriter::create(path.toStdString(), rate, 2, error);
    if (!writer)
        return false;
    std::vector<float> samples(std::size_t(seconds * rate));
    for (std::size_t n = 0; n < samples.size(); ++n) {
        double x = 0;
        for (int band = 0; band < hvaudio::dsp::bandCount; ++band)
            x += toneLevel * std::sin(2 * M_PI * hvaudio::dsp::bandHz[std::size_t(band)] * double(n) / rate +
                                      band * band);
        samples[n] = float(x);
    }
    const float* const channels[2] = {samples.data(), samples.data()};
    return writer->write(channels, int(samples.size())) && writer->finish(error);
}

/// Half a second of a recording of the tones in which nothing was lost: pw-cat reads and writes files on a
/// thread that a busy machine may hold up. Found by how much of the energy is in the tones; 0 when there is
/// none.
constexpr std::size_t pieceLength = std::size_t(rate / 2);
inline std::size_t cleanPiece(const std::vector<float>& signal)
{
    std::size_t best = 0;
    double bestShare = 0.999;
    for (std::size_t start = 1; start + pieceLength < signal.size(); start += std::size_t(rate / 10)) {
        double all = 0, tones = 0;
        for (std::size_t n = 0; n < pieceLength; ++n) {
            const double window = 1 - std::cos(2 * M_PI * double(n) / double(pieceLength));
            all += window * double(signal[start + n]) * double(signal[start + n]) / double(pieceLength);
        }
        for (double hz : hvaudio::dsp::bandHz)
            tones += std::pow(amplitudeAt(signal, start, pieceLength, hz, rate), 2) / 2;
        if (const double share = tones / all; all > 1e-5 && share < 1.001 && share > bestShare) {
            bestShare = share;
            best = start;
        }
    }
    return best;
}

/// Plays a file into the unit and returns at its end.
inline bool playIntoUnit(const QString& path, const QStringList& alsoTo = {})
{
    QProcess cat;
    startTied(cat, "pw-cat", {"-p", "--target", "0", "-P", "{ node.name = player }", path});
    if (!PrivatePipeWire::waitForPorts({"player:output_FL", "player:output_FR"}))
        return false;
    for (const QString& port : alsoTo)
        if (!PrivatePipeWire::link("player:output_FL", port))
            return false;
    for (const QString& channel : two)
        PrivatePipeWire::output("pw-link", {"player:output_" + channel, "headunit:playback_" + channel});
    return cat.waitForFinished(20000);
}

inline bool linkUnitTo(const QString& sink, const QStringList& channels)
{
    bool ok = PrivatePipeWire::waitForPorts({"headunit-output:output_LFE"});
    for (const QString& channel : channels)
        ok = ok && PrivatePipeWire::link("headunit-output:output_" + channel, sink + ":playback_" + channel);
    return ok;
}

struct Heard
{
    std::vector<std::vector<float>> channels;
    std::size_t start = 0; ///< of the clean piece; 0: there is none
};

/// Plays so many seconds of tones by `play` and records what the sink gets. Again and longer, five times at
/// most, when a busy machine let neither player nor recorder have an undisturbed half second.
inline Heard hear(PrivatePipeWire& server, const QString& sink, const QStringList& channels,
                  const std::function<bool(double seconds)>& play)
{
    Heard heard;
    for (const double seconds : {1.0, 3.0, 3.0, 3.0, 3.0}) {
        if (heard.start > 0)
            break;
        Recording recording(server.path("rec.wav"), channels);
        if (!recording.ready())
            return heard;
        for (const QString& channel : channels)
            if (!PrivatePipeWire::link(sink + ":monitor_" + channel, "rec:input_" + channel))
                return heard;
        if (!play(seconds))
            return heard;
        heard.channels = recording.stop();
        heard.start = cleanPiece(heard.channels[0]);
    }
    return heard;
}

/// All tones, linked into the unit by hand.
inline Heard hearTones(PrivatePipeWire& server, const QString& sink, const QStringList& channels)
{
    const QString tones = server.path("tones.wav");
    return hear(server, sink, channels,
                [&](double seconds) { return writeTones(tones, seconds) && playIntoUnit(tones); });
}

} // namespace unitonpipewire
