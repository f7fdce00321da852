#include "tests/support/unitonpipewire.h"
#include "tests/support/wakeups.h"

#include "platform/hvaudio/files/wavwriter.h"
#include "platform/hvaudio/outputs/pipewire/pipewireoutput.h"
#include "platform/hvaudio/player.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace hvaudio;
using namespace unitonpipewire;

namespace {

/// Everything open and neutral: what is heard is what was set.
dsp::Settings neutral()
{
    dsp::Settings settings;
    settings.power = true;
    settings.source = 18;
    settings.mainDb = 0;
    settings.subwoofer.lowPass.hz = 0;
    settings.subwoofer.attenuation = 0;
    return settings;
}

} // namespace

class TestPipeWireOutput : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_server.reset(); }
    void sinkIsOneThatPlayersChooseAndTellsItsLatency();
    void fileFromPlayerIsHeardWithTheCurveThatWasSet();
    void deviceWithoutRearAndSubwooferGetsTheFold();
    void ownSourceSoundsWithoutAnyPlayer();
    void latencyIsTheOneThatIsTold();
    void daemonThatIsKilledAndStartedAgainIsPlayedToAgain();
    void deviceThatGoesAndComesBackIsPlayedToAgain();
    void withoutDaemonAutoSaysSoOnceAndPlaysToNone();
    void withoutDaemonPipeWireWaitsForIt();
    void stopWhilePlayingEndsInSilenceAndTakesTheSinkAway();
    void silentUnitSleepsAndWakesByWhatIsToBeHeard();

private:
    bool waitForStatus(Player& player, const QString& status) const
    {
        return PrivatePipeWire::waitFor([&] { return QString::fromStdString(player.status()) == status; });
    }
    /// Starts the daemon and a neutral unit that plays this into the device of five speakers.
    bool plays(Player& player, SourceKind kind) const;
    /// Waits until the unit has made a sound.
    bool soundArrives(Player& player) const;

    std::unique_ptr<PrivatePipeWire> m_server;
    std::unique_ptr<Lines> m_lines;
};

void TestPipeWireOutput::init()
{
    m_lines = std::make_unique<Lines>();
    m_server = std::make_unique<PrivatePipeWire>(QStringLiteral(TEST_SUPPORT) + "/pipewire");
}

bool TestPipeWireOutput::plays(Player& player, SourceKind kind) const
{
    player.setSettings(neutral());
    return m_server->start() && player.setSource(neutral().source, kind) && player.start("pipewire") &&
           linkUnitTo("out-sink", five);
}

bool TestPipeWireOutput::soundArrives(Player& player) const
{
    player.takeMeters();
    return PrivatePipeWire::waitFor([&] { return player.takeMeters().peak[dsp::FrontLeft] > 0.01f; });
}

void TestPipeWireOutput::sinkIsOneThatPlayersChooseAndTellsItsLatency()
{
    QVERIFY(m_server->start());
    Player player(m_lines->log());
    QVERIFY(player.start("pipewire"));
    QVERIFY(PrivatePipeWire::waitForPorts({"headunit:playback_FL", "headunit:playback_FR"}));

    QJsonArray told;
    const auto dump = [&] {
        bool sink = false;
        told = {};
        const auto all = QJsonDocument::fromJson(PrivatePipeWire::output("pw-dump", {}).toUtf8()).array();
        for (const QJsonValue& object : all) {
            const QJsonObject info = object["info"].toObject();
            const QJsonObject props = info["props"].toObject();
            if (props["node.name"] == "headunit")
                sink = props["media.class"] == "Audio/Sink" && props["node.description"] == "Head unit";
            if (props["port.alias"] == "Head unit:playback_FL")
                told = info["params"].toObject()["Latency"].toArray();
        }
        return sink && !told.isEmpty() && told[0].toObject()["minRate"].toInt() > 0;
    };
    QVERIFY2(PrivatePipeWire::waitFor(dump), qPrintable(PrivatePipeWire::output("pw-dump", {}).left(20000)));
    const QJsonObject input = told[0].toObject();
    QCOMPARE(input["direction"].toString(), QString("Input"));
    QCOMPARE(input["minRate"].toInt(), player.engine().latencyFrames());
    QCOMPARE(input["maxRate"].toInt(), player.engine().latencyFrames());
    QCOMPARE(input["minQuantum"].toDouble(), 1.0);
    QCOMPARE(input["maxQuantum"].toDouble(), 1.0);
    QCOMPARE(QString::fromStdString(player.status()), QString("PipeWire, 48000 Hz, no device"));
}

void TestPipeWireOutput::fileFromPlayerIsHeardWithTheCurveThatWasSet()
{
    QVERIFY(m_server->start());
    Player player(m_lines->log());
    dsp::Settings settings = neutral();
    settings.equalizer = {6, 0, -4, 0, 3, 8, 0, -6, 0, 5, 0, -3, 2};
    player.setSettings(settings);
    QVERIFY(player.setSource(settings.source, SourceKind::Input));
    QVERIFY(player.start("pipewire"));
    QVERIFY(linkUnitTo("out-sink", five));
    QVERIFY(waitForStatus(player, "PipeWire, 48000 Hz, 5.1"));

    const Heard heard = hearTones(*m_server, "out-sink", five);
    QVERIFY(heard.start > 0);
    for (int channel = 0; channel < five.size(); ++channel)
        for (int band = 0; band < dsp::bandCount; ++band) {
            const double level = amplitudeAt(heard.channels[std::size_t(channel)], heard.start, pieceLength,
                                             dsp::bandHz[band], rate);
            const double db = 20 * std::log10(level / toneLevel);
            QVERIFY2(std::abs(db - settings.equalizer[band]) < 0.6,
                     qPrintable(QString("%1, %2 Hz: %3 dB instead of %4")
                                    .arg(five[channel])
                                    .arg(dsp::bandHz[band])
                                    .arg(db)
                                    .arg(settings.equalizer[band])));
        }
}

void TestPipeWireOutput::deviceWithoutRearAndSubwooferGetsTheFold()
{
    QVERIFY(m_server->start());
    Player player(m_lines->log());
    dsp::Settings settings = neutral();
    // 12 dB less in front, and a silent subwoofer: left = 0.25 (0.251 + 1).
    settings.cabin[dsp::FrontLeft].attenuation = 12;
    settings.cabin[dsp::FrontRight].attenuation = 12;
    settings.subwoofer.silent = true;
    player.setSettings(settings);
    QVERIFY(player.setSource(settings.source, SourceKind::Input));
    QVERIFY(player.start("pipewire"));
    QVERIFY(linkUnitTo("test-sink", two));
    QVERIFY(waitForStatus(player, "PipeWire, 48000 Hz, stereo"));

    const Heard heard = hearTones(*m_server, "test-sink", two);
    QVERIFY(heard.start > 0);
    for (const auto& channel : heard.channels) {
        const double level = amplitudeAt(channel, heard.start, pieceLength, 1000, rate) / toneLevel;
        QVERIFY2(std::abs(level - 0.25 * (std::pow(10, -12 / 20.0) + 1)) < 0.002,
                 qPrintable(QString::number(level)));
    }
}

void TestPipeWireOutput::ownSourceSoundsWithoutAnyPlayer()
{
    Player player(m_lines->log());
    QVERIFY(plays(player, SourceKind::PinkNoise));
    QVERIFY(soundArrives(player));
}

void TestPipeWireOutput::latencyIsTheOneThatIsTold()
{
    Player player(m_lines->log());
    QVERIFY(plays(player, SourceKind::Input));

    // Noise from a file, once through the unit and once past it into the other channel of one recording.
    const QString path = m_server->path("noise.wav");
    {
        std::string error;
        const auto writer = WavWriter::create(path.toStdString(), rate, 2, error);
        QVERIFY(writer);
        std::vector<float> samples(std::size_t(3 * rate));
        quint32 state = 1;
        for (float& x : samples) {
            state = state * 1664525u + 1013904223u;
            x = 0.1f * (float(state >> 8) / 8388608.0f - 1);
        }
        const float* const channels[2] = {samples.data(), samples.data()};
        QVERIFY(writer->write(channels, int(samples.size())) && writer->finish(error));
    }
    Recording recording(m_server->path("rec.wav"), two);
    QVERIFY(recording.ready());
    QVERIFY(PrivatePipeWire::link("headunit-output:output_FL", "rec:input_FL"));
    QVERIFY(playIntoUnit(path, {"rec:input_FR"}));
    const auto heard = recording.stop();

    // Pieces in which nothing was lost are found again exactly, but for the processor's rounding.
    const auto &late = heard[0], &direct = heard[1];
    constexpr std::size_t count = 4096;
    int delay = -1;
    for (std::size_t start = count; delay < 0 && start + 3 * count < std::min(direct.size(), late.size());
         start += count) {
        double energy = 0;
        for (std::size_t n = 0; n < count; ++n)
            energy += double(direct[start + n]) * double(direct[start + n]);
        for (std::size_t lag = 0; energy > 1 && delay < 0 && lag < 2 * count; ++lag) {
            double sum = 0;
            for (std::size_t n = 0; n < count; ++n)
                sum += double(direct[start + n]) * double(late[start + n + lag]);
            if (sum > 0.99 * energy)
                delay = int(lag);
        }
    }
    QCOMPARE(delay, player.engine().latencyFrames() + PrivatePipeWire::quantum);
}

void TestPipeWireOutput::daemonThatIsKilledAndStartedAgainIsPlayedToAgain()
{
    Player player(m_lines->log());
    QVERIFY(plays(player, SourceKind::PinkNoise));
    QVERIFY(soundArrives(player));
    for (int round = 0; round < 2; ++round) {
        m_server->end(round == 0 ? SIGKILL : SIGTERM);
        QVERIFY(waitForStatus(player, "PipeWire, waiting for the sound server"));
        QVERIFY(m_server->start());
        QVERIFY(linkUnitTo("out-sink", five));
        QVERIFY(waitForStatus(player, "PipeWire, 48000 Hz, 5.1"));
        QVERIFY(soundArrives(player));
    }
    QCOMPARE(m_lines->all().filter("lost").size(), 2);
    QCOMPARE(m_lines->all().filter("back").size(), 2);
}

void TestPipeWireOutput::deviceThatGoesAndComesBackIsPlayedToAgain()
{
    Player player(m_lines->log());
    QVERIFY(plays(player, SourceKind::PinkNoise));
    QVERIFY(soundArrives(player));

    PrivatePipeWire::output("pw-cli", {"destroy", "out-sink"});
    QVERIFY(waitForStatus(player, "PipeWire, 48000 Hz, no device"));
    QVERIFY(!PrivatePipeWire::ports().contains("out-sink:playback_FL"));

    // Another device takes over: a stereo one, that was there already.
    QVERIFY(linkUnitTo("test-sink", two));
    QVERIFY(waitForStatus(player, "PipeWire, 48000 Hz, stereo"));
    QVERIFY(soundArrives(player));
}

void TestPipeWireOutput::withoutDaemonAutoSaysSoOnceAndPlaysToNone()
{
    Player player(m_lines->log());
    player.setSettings(neutral());
    QVERIFY(player.setSource(18, SourceKind::PinkNoise));
    QVERIFY(player.start("auto"));
    QCOMPARE(QString::fromStdString(player.status()), QString("no sound output"));
    QVERIFY(soundArrives(player));
    QCOMPARE(m_lines->all().size(), 1);
    QVERIFY2(m_lines->all().first().contains("without sound output"), qPrintable(m_lines->all().first()));
}

void TestPipeWireOutput::withoutDaemonPipeWireWaitsForIt()
{
    Player player(m_lines->log());
    player.setSettings(neutral());
    QVERIFY(player.setSource(18, SourceKind::PinkNoise));
    QVERIFY(player.start("pipewire"));
    QCOMPARE(QString::fromStdString(player.status()), QString("PipeWire, waiting for the sound server"));
    QVERIFY(m_server->start());
    QVERIFY(linkUnitTo("out-sink", five));
    QVERIFY(soundArrives(player));
    QCOMPARE(m_lines->all().size(), 2);
}

void TestPipeWireOutput::stopWhilePlayingEndsInSilenceAndTakesTheSinkAway()
{
    Player player(m_lines->log());
    QVERIFY(plays(player, SourceKind::PinkNoise));
    QVERIFY(soundArrives(player));
    player.stop();
    QVERIFY(player.engine().idle());
    QVERIFY(!player.started());
    QVERIFY(
        PrivatePipeWire::waitFor([] { return !PrivatePipeWire::ports().contains("headunit:playback_FL"); }));
    // And once more from the start.
    QVERIFY(player.start("pipewire"));
    QVERIFY(linkUnitTo("out-sink", five));
    QVERIFY(soundArrives(player));
}

void TestPipeWireOutput::silentUnitSleepsAndWakesByWhatIsToBeHeard()
{
    Player player(m_lines->log());
    QVERIFY(plays(player, SourceKind::Input));
    QVERIFY(waitForStatus(player, "PipeWire, 48000 Hz, 5.1"));
    QVERIFY(nothingWakesUp());
    QCOMPARE(PrivatePipeWire::links().filter("headunit-output:").size(), 5);
    QVERIFY(waitForStatus(player, "PipeWire, 48000 Hz, 5.1"));
    // By what another program plays.
    const Heard heard = hearTones(*m_server, "out-sink", five);
    QVERIFY(heard.start > 0);
    // By a key, though nobody measures: what the sink gets tells. The tone of 50 ms is whole, but that a busy
    // machine may lose a cycle of it.
    std::ptrdiff_t frames = 0;
    for (int attempt = 0; attempt < 5 && frames < 0.045 * rate; ++attempt) {
        QVERIFY(nothingWakesUp());
        Recording recording(m_server->path("beep.wav"), {"FL"});
        QVERIFY(recording.ready());
        QVERIFY(PrivatePipeWire::link("out-sink:monitor_FL", "rec:input_FL"));
        player.beep();
        QVERIFY(player.engine().idle());
        QVERIFY(PrivatePipeWire::waitFor([&] { return !player.engine().idle(); }));
        QVERIFY(PrivatePipeWire::waitFor([&] { return player.engine().idle(); }));
        const auto beep = recording.stop()[0];
        const auto loud = [](float x) { return std::abs(x) > 0.05f; };
        const auto first = std::find_if(beep.begin(), beep.end(), loud);
        QVERIFY(first != beep.end());
        frames = std::find_if(beep.rbegin(), beep.rend(), loud).base() - first;
    }
    QVERIFY2(frames >= 0.045 * rate, qPrintable(QString::number(frames)));
    // By another source.
    QVERIFY(nothingWakesUp());
    QVERIFY(player.setSource(18, SourceKind::PinkNoise));
    QVERIFY(soundArrives(player));
    QVERIFY(m_lines->all().isEmpty());
}

QTEST_GUILESS_MAIN(TestPipeWireOutput)
#include "tst_pipewireoutput.moc"
