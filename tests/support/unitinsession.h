#pragma once

#include "tests/support/unitonpipewire.h"

#include "platform/hvaudio/files/wavwriter.h"
#include "platform/hvaudio/player.h"

#include <memory>

namespace unitonpipewire {

constexpr double leftHz = 500, rightHz = 2000;
/// Of the rear pair, 6 dB less than in front; of the subwoofer, which has the mean of both sides.
inline const double rear = std::pow(10, -6 / 20.0);
constexpr double low = 0.5;
/// Each side's own tone, and the other side's by the subwoofer.
inline const double foldOwn = 0.25 * (1 + rear) + 0.5 * low;
constexpr double foldOther = 0.5 * low;

/// A tone on either side.
inline bool writeSides(const QString& path, double seconds)
{
    std::string error;
    const auto writer = hvaudio::WavWriter::create(path.toStdString(), rate, 2, error);
    if (!writer)
        return false;
    std::vector<float> left(std::size_t(seconds * rate)), right(left.size());
    for (std::size_t n = 0; n < left.size(); ++n) {
        left[n] = float(toneLevel * std::sin(2 * M_PI * leftHz * double(n) / rate));
        right[n] = float(toneLevel * std::sin(2 * M_PI * rightHz * double(n) / rate));
    }
    const float* const channels[2] = {left.data(), right.data()};
    return writer->write(channels, int(left.size())) && writer->finish(error);
}

/// The unit's sound in a graph as a desktop has it, with a session manager and no device. Begun before each
/// test and ended after it.
class UnitInSession
{
protected:
    /// False when daemon or session manager don't come.
    bool begin()
    {
        m_lines = std::make_unique<Lines>();
        m_server = std::make_unique<PrivatePipeWire>(QStringLiteral(TEST_SUPPORT) + "/pipewire",
                                                     PrivatePipeWire::Managed);
        return m_server->start();
    }
    void end()
    {
        m_player.reset();
        m_server.reset();
    }
    /// Lets the unit play what other programs do, the rear pair 6 dB less than the front.
    bool start()
    {
        m_player = std::make_unique<hvaudio::Player>(m_lines->log());
        hvaudio::dsp::Settings settings;
        settings.power = true;
        settings.mainDb = 0;
        settings.subwoofer.lowPass.hz = 0;
        settings.subwoofer.attenuation = 0;
        settings.cabin[hvaudio::dsp::RearLeft].attenuation = 6;
        settings.cabin[hvaudio::dsp::RearRight].attenuation = 6;
        m_player->setSettings(settings);
        return m_player->setSource(settings.source, hvaudio::SourceKind::Input) &&
               m_player->start("pipewire");
    }
    bool waitForStatus(const QString& status) const
    {
        return PrivatePipeWire::waitFor([&] { return QString::fromStdString(m_player->status()) == status; });
    }
    /// Until the unit plays at a level that a test's sound has.
    bool waitForSound() const
    {
        m_player->takeMeters();
        return PrivatePipeWire::waitFor(
            [&] { return m_player->takeMeters().peak[hvaudio::dsp::FrontLeft] > 0.05f; });
    }
    /// As a user does: the player names the unit, or nothing at all.
    Heard hearFrom(const QString& sink, const QStringList& channels, const QString& target = "headunit")
    {
        return hear(*m_server, sink, channels, [&](double seconds) {
            if (!writeSides(m_server->path("sides.wav"), seconds))
                return false;
            QProcess cat;
            QStringList arguments = {"-p"};
            if (!target.isEmpty())
                arguments << "--target" << target;
            startTied(cat, "pw-cat", arguments << m_server->path("sides.wav"));
            const bool ended = cat.waitForFinished(20000);
            if (!ended) {
                sendSignal(cat, SIGKILL);
                cat.waitForFinished();
            }
            return ended;
        });
    }
    /// Empty when a channel has the two tones in these amplitudes, of those that were played.
    static QString differs(const Heard& heard, const QStringList& channels, const QString& channel,
                           double left, double right)
    {
        if (heard.start == 0)
            return "nothing heard";
        const auto& signal = heard.channels[std::size_t(channels.indexOf(channel))];
        const double hasLeft = amplitudeAt(signal, heard.start, pieceLength, leftHz, rate) / toneLevel;
        const double hasRight = amplitudeAt(signal, heard.start, pieceLength, rightHz, rate) / toneLevel;
        if (std::abs(hasLeft - left) < 0.01 && std::abs(hasRight - right) < 0.01)
            return {};
        return QString("%1: left %2 instead of %3, right %4 instead of %5")
            .arg(channel)
            .arg(hasLeft)
            .arg(left)
            .arg(hasRight)
            .arg(right);
    }
    static QString differsFromFold(const Heard& heard)
    {
        return differs(heard, two, "FL", foldOwn, foldOther) + differs(heard, two, "FR", foldOther, foldOwn);
    }

    std::unique_ptr<Lines> m_lines;
    std::unique_ptr<PrivatePipeWire> m_server;
    std::unique_ptr<hvaudio::Player> m_player;
};

} // namespace unitonpipewire
