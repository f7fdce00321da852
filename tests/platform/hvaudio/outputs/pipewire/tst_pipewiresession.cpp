// The unit on a desktop as it is: a session manager gives it its ports, connects it to the default device,
// and connects players to it. Nothing is linked by hand but the recorder.

#include "tests/support/unitonpipewire.h"
#include "tests/support/wakeups.h"

#include "platform/hvaudio/files/wavwriter.h"
#include "platform/hvaudio/outputs/pipewire/pipewireoutput.h"
#include "platform/hvaudio/player.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <memory>
#include <numeric>
#include <utility>

using namespace hvaudio;
using namespace unitonpipewire;

namespace {

const QStringList six = {"FL", "FR", "FC", "LFE", "RL", "RR"};
const QStringList eight = {"FL", "FR", "FC", "LFE", "RL", "RR", "SL", "SR"};
const QStringList side = {"FL", "FR", "FC", "LFE", "SL", "SR"};
const QStringList mono = {"MONO"};

constexpr double leftHz = 500, rightHz = 2000;
/// Of the rear pair, 6 dB less than in front; of the subwoofer, which has the mean of both sides.
const double rear = std::pow(10, -6 / 20.0);
constexpr double low = 0.5;
/// Each side's own tone, and the other side's by the subwoofer.
const double foldOwn = 0.25 * (1 + rear) + 0.5 * low;
constexpr double foldOther = 0.5 * low;

/// A tone on either side.
bool writeSides(const QString& path, double seconds)
{
    std::string error;
    const auto writer = WavWriter::create(path.toStdString(), rate, 2, error);
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

/// Silence, and from `start` to `end` noise of which no two pieces are alike and which stands at its level
/// from its first frame on; in seconds. Empty when it can't be written.
std::vector<float> writeNoise(const QString& path, double start, double end)
{
    std::vector<float> samples(std::size_t(end * rate));
    quint32 state = 1;
    for (std::size_t n = std::size_t(start * rate); n < samples.size(); ++n) {
        state = state * 1664525u + 1013904223u;
        samples[n] = state >> 31 ? 0.1f : -0.1f;
    }
    std::string error;
    const auto writer = WavWriter::create(path.toStdString(), rate, 2, error);
    const float* const sides[2] = {samples.data(), samples.data()};
    if (!writer || !writer->write(sides, int(samples.size())) || !writer->finish(error))
        samples.clear();
    return samples;
}

/// How many frames of the noise, which begins at `start`, were played before the first one that was heard; -1
/// when none is found again.
int framesLost(const std::vector<float>& heard, const std::vector<float>& noise, int start)
{
    const auto first =
        std::find_if(heard.begin(), heard.end(), [](float sample) { return std::abs(sample) > 1e-4f; });
    // Behind the bridge's fade.
    constexpr int behind = 600, count = 400;
    if (heard.end() - first < behind + count)
        return -1;
    const float* const piece = &*first + behind;
    const double energy = std::inner_product(piece, piece + count, piece, 0.0);
    for (int n = 0; n + count < int(noise.size()); ++n) {
        const float* const played = noise.data() + n;
        const double both = std::inner_product(piece, piece + count, played, 0.0),
                     own = std::inner_product(played, played + count, played, 0.0);
        if (energy > 0 && both > 0.99 * std::sqrt(energy * own))
            return n - behind - start;
    }
    return -1;
}

} // namespace

class TestPipeWireSession : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void playerThatChoosesTheUnitIsHeardAtTheDefaultDevice();
    void outputFollowsTheDefaultDeviceAndItsChannels_data();
    void outputFollowsTheDefaultDeviceAndItsChannels();
    void deviceThatGoesGivesWayToTheOther();
    void sinkStaysWhereThereIsNoDeviceAndPlaysToTheFirstThatComes();
    void unitAsDefaultDeviceTakesPlayersAndPlaysToARealOne();
    void silentUnitSleepsAndFollowsTheDevices();
    void soundOfOthersIsHeardFromItsFirstFrame_data();
    void soundOfOthersIsHeardFromItsFirstFrame();
    void processorFollowsTheRateOfTheGraphWhileItPlays();
    void deviceOfAnotherRateIsEnteredFromSilence();
    void nodeThatIsRemovedComesBack();
    void sessionManagerThatRestartsFindsTheUnitAgain();
    void daemonAndSessionManagerThatRestartFindTheUnitAgain();

private:
    bool start();
    bool waitForStatus(const QString& status) const
    {
        return PrivatePipeWire::waitFor([&] { return QString::fromStdString(m_player->status()) == status; });
    }
    /// As a user does: the player names the unit, or nothing at all.
    Heard hearFrom(const QString& sink, const QStringList& channels, const QString& target = "headunit");
    /// Empty when a channel has the two tones in these amplitudes, of those that were played.
    static QString differs(const Heard& heard, const QStringList& channels, const QString& channel,
                           double left, double right);
    static QString differsFromFold(const Heard& heard);

    std::unique_ptr<Lines> m_lines;
    std::unique_ptr<PrivatePipeWire> m_server;
    std::unique_ptr<Player> m_player;
};

void TestPipeWireSession::init()
{
    m_lines = std::make_unique<Lines>();
    m_server = std::make_unique<PrivatePipeWire>(QStringLiteral(TEST_SUPPORT) + "/pipewire",
                                                 PrivatePipeWire::Managed);
    QVERIFY(m_server->start());
}

void TestPipeWireSession::cleanup()
{
    m_player.reset();
    m_server.reset();
}

bool TestPipeWireSession::start()
{
    m_player = std::make_unique<Player>(m_lines->log());
    dsp::Settings settings;
    settings.power = true;
    settings.mainDb = 0;
    settings.subwoofer.lowPass.hz = 0;
    settings.subwoofer.attenuation = 0;
    settings.cabin[dsp::RearLeft].attenuation = 6;
    settings.cabin[dsp::RearRight].attenuation = 6;
    m_player->setSettings(settings);
    return m_player->setSource(settings.source, SourceKind::Input) && m_player->start("pipewire");
}

Heard TestPipeWireSession::hearFrom(const QString& sink, const QStringList& channels, const QString& target)
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

QString TestPipeWireSession::differs(const Heard& heard, const QStringList& channels, const QString& channel,
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

QString TestPipeWireSession::differsFromFold(const Heard& heard)
{
    return differs(heard, two, "FL", foldOwn, foldOther) + differs(heard, two, "FR", foldOther, foldOwn);
}

void TestPipeWireSession::playerThatChoosesTheUnitIsHeardAtTheDefaultDevice()
{
    const Device device("cabin", two);
    QVERIFY(start());
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, stereo"));
    const QString shown = PrivatePipeWire::output("wpctl", {"status"});
    QVERIFY2(shown.contains(". Head unit "), qPrintable(shown));
    QCOMPARE(differsFromFold(hearFrom("cabin", two)), QString());
    QVERIFY2(m_lines->all().isEmpty(), qPrintable(m_lines->all().join('\n')));
}

void TestPipeWireSession::outputFollowsTheDefaultDeviceAndItsChannels_data()
{
    QTest::addColumn<QStringList>("channels");
    QTest::addColumn<QString>("status");
    QTest::addColumn<QStringList>("rears"); // the device's names of them
    QTest::newRow("5.1 with rear speakers") << six << "5.1" << QStringList{"RL", "RR"};
    QTest::newRow("5.1 with side speakers") << side << "5.1" << QStringList{"SL", "SR"};
    QTest::newRow("7.1") << eight << "5.1" << QStringList{"RL", "RR"};
    QTest::newRow("without subwoofer") << QStringList{"FL", "FR", "RL", "RR"} << "stereo" << QStringList();
    QTest::newRow("mono") << mono << "mono" << QStringList();
}

void TestPipeWireSession::outputFollowsTheDefaultDeviceAndItsChannels()
{
    QFETCH(QStringList, channels);
    QFETCH(QString, status);
    QFETCH(QStringList, rears);
    const Device stereo("cabin", two), other("other", channels);
    QVERIFY(stereo.makeDefault());
    QVERIFY(start());
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, stereo"));
    QVERIFY(other.makeDefault());
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, " + status));

    const Heard heard = hearFrom("other", channels);
    for (const QString& channel : channels) {
        QString fault;
        if (channel == "MONO")
            fault = differs(heard, channels, channel, (foldOwn + foldOther) / 2, (foldOwn + foldOther) / 2);
        else if (status == "5.1" && channel == "LFE")
            fault = differs(heard, channels, channel, low, low);
        else if (channel == "FL")
            fault = status == "5.1" ? differs(heard, channels, channel, 1, 0) : differsFromFold(heard);
        else if (channel == "FR")
            fault = status == "5.1" ? differs(heard, channels, channel, 0, 1) : QString();
        else if (rears.contains(channel))
            fault = differs(heard, channels, channel, channel == rears[0] ? rear : 0,
                            channel == rears[1] ? rear : 0);
        else
            fault = differs(heard, channels, channel, 0, 0);
        QCOMPARE(fault, QString());
    }

    QVERIFY(stereo.makeDefault());
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, stereo"));
    // Four channels say "stereo" as well.
    QVERIFY(PrivatePipeWire::waitFor(
        [] { return PrivatePipeWire::links().contains("headunit-output:output_FL -> cabin:playback_FL"); }));
    QCOMPARE(differsFromFold(hearFrom("cabin", two)), QString());
}

void TestPipeWireSession::deviceThatGoesGivesWayToTheOther()
{
    const Device stereo("cabin", two);
    Device surround("surround", six);
    QVERIFY(surround.makeDefault());
    QVERIFY(start());
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, 5.1"));
    surround.unplug();
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, stereo"));
    QCOMPARE(differsFromFold(hearFrom("cabin", two)), QString());
    // The user's choice holds when it is back.
    QVERIFY(surround.plug());
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, 5.1"));
    QCOMPARE(differs(hearFrom("surround", six), six, "RL", rear, 0), QString());
}

void TestPipeWireSession::sinkStaysWhereThereIsNoDeviceAndPlaysToTheFirstThatComes()
{
    QVERIFY(start());
    QVERIFY(PrivatePipeWire::waitFor([&] { return m_lines->all().size() == 1; }));
    QVERIFY2(m_lines->all().first().startsWith("no device to play to"), qPrintable(m_lines->all().first()));
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, no device"));
    QVERIFY(PrivatePipeWire::waitForPorts({"headunit:playback_FL", "headunit:playback_FR"}));
    // The program, its sink and its stream, by their numbers.
    const auto numbers = [] {
        QStringList result;
        const QString shown = PrivatePipeWire::output("wpctl", {"status"});
        auto each = QRegularExpression("(\\d+)\\. Head unit ").globalMatch(shown);
        while (each.hasNext())
            result << each.next().captured(1);
        return result;
    };
    const QStringList before = numbers();
    QCOMPARE(before.size(), 3);

    Device device("cabin", two);
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, stereo"));
    QCOMPARE(differsFromFold(hearFrom("cabin", two)), QString());
    device.unplug();
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, no device"));
    QVERIFY(PrivatePipeWire::ports().contains("headunit:playback_FL"));
    QVERIFY(device.plug());
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, stereo"));
    QCOMPARE(differsFromFold(hearFrom("cabin", two)), QString());
    // The same ones all the time, and nothing more to say.
    QCOMPARE(numbers(), before);
    QCOMPARE(m_lines->all().size(), 1);
}

void TestPipeWireSession::unitAsDefaultDeviceTakesPlayersAndPlaysToARealOne()
{
    const Device device("cabin", two);
    QVERIFY(start());
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, stereo"));
    QVERIFY(Device::makeDefault("headunit"));
    QCOMPARE(differsFromFold(hearFrom("cabin", two, QString())), QString());
    const QStringList own = PrivatePipeWire::links().filter("headunit-output:");
    QCOMPARE(own.size(), 2);
    QCOMPARE(own.filter(" -> cabin:").size(), 2);
}

void TestPipeWireSession::silentUnitSleepsAndFollowsTheDevices()
{
    const Device stereo("cabin", two);
    Device surround("surround", six);
    QVERIFY(surround.makeDefault());
    QVERIFY(start());
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, 5.1"));
    QVERIFY(nothingWakesUp());
    surround.unplug();
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, stereo"));
    QCOMPARE(differsFromFold(hearFrom("cabin", two)), QString());
    QVERIFY(nothingWakesUp());
    QVERIFY(surround.plug());
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, 5.1"));
    QCOMPARE(differs(hearFrom("surround", six), six, "RL", rear, 0), QString());
    QVERIFY2(m_lines->all().isEmpty(), qPrintable(m_lines->all().join('\n')));
}

void TestPipeWireSession::soundOfOthersIsHeardFromItsFirstFrame_data()
{
    QTest::addColumn<double>("silence");
    QTest::newRow("of a player that starts while the unit rests") << 0.0;
    QTest::newRow("of one that has been silent for long enough to rest") << 4.0;
}

void TestPipeWireSession::soundOfOthersIsHeardFromItsFirstFrame()
{
    QFETCH(double, silence);
    const Device device("cabin", two);
    QVERIFY(start());
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, stereo"));
    const QString path = m_server->path("noise.wav");
    const std::vector<float> noise = writeNoise(path, silence, silence + 0.5);
    QVERIFY(!noise.empty());
    // A busy machine may hold up player or recorder; what the unit lost would be lost each time.
    int lost = -1;
    for (int attempt = 0; attempt < 5 && lost != 0; ++attempt) {
        QVERIFY(nothingWakesUp());
        Recording recording(m_server->path("rec.wav"), {"FL"});
        QVERIFY(recording.ready());
        QVERIFY(PrivatePipeWire::link("cabin:monitor_FL", "rec:input_FL"));
        QProcess cat;
        startTied(cat, "pw-cat", {"-p", "--target", "headunit", path});
        QVERIFY(cat.waitForFinished(20000));
        lost = framesLost(recording.stop()[0], noise, int(silence * rate));
    }
    QCOMPARE(lost, 0);
}

void TestPipeWireSession::processorFollowsTheRateOfTheGraphWhileItPlays()
{
    const Device device("cabin", two);
    QVERIFY(start());
    QVERIFY(m_player->setSource(6, SourceKind::Sweep));
    dsp::Settings settings = m_player->engine().settings();
    const int input = std::exchange(settings.source, 6);
    m_player->setSettings(settings);
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, stereo"));
    for (const int other : {44100, 96000, 48000}) {
        QVERIFY(
            PrivatePipeWire::waitFor([&] { return m_player->takeMeters().peak[dsp::FrontLeft] > 0.05f; }));
        PrivatePipeWire::output("pw-metadata",
                                {"-n", "settings", "0", "clock.force-rate", QString::number(other)});
        QVERIFY(waitForStatus(QString("PipeWire, %1 Hz, stereo").arg(other)));
        QCOMPARE(m_player->engine().rate(), double(other));
        QVERIFY(
            PrivatePipeWire::waitFor([&] { return m_player->takeMeters().peak[dsp::FrontLeft] > 0.05f; }));
        if (other != 44100)
            continue;
        // And what others play comes through both conversions at its pitch and level.
        settings.source = input;
        m_player->setSettings(settings);
        QCOMPARE(differsFromFold(hearFrom("cabin", two)), QString());
        settings.source = 6;
        m_player->setSettings(settings);
    }
    QVERIFY2(m_lines->all().isEmpty(), qPrintable(m_lines->all().join('\n')));
}

void TestPipeWireSession::deviceOfAnotherRateIsEnteredFromSilence()
{
    PrivatePipeWire::output("pw-metadata",
                            {"-n", "settings", "0", "clock.allowed-rates", "[ 44100, 48000 ]"});
    const Device device("cabin", two), other("other", two);
    QVERIFY(device.makeDefault());
    QVERIFY(start());
    // A level that stands from its first sample on.
    std::string error;
    const QString path = m_server->path("square.wav");
    const auto writer = WavWriter::create(path.toStdString(), rate, 2, error);
    QVERIFY2(writer, error.c_str());
    std::vector<float> samples(std::size_t(2 * rate));
    for (std::size_t n = 0; n < samples.size(); ++n)
        samples[n] = n % 96 < 48 ? 0.1f : -0.1f;
    const float* const channels[2] = {samples.data(), samples.data()};
    QVERIFY(writer->write(channels, int(samples.size())) && writer->finish(error));
    QVERIFY(m_player->setSource(m_player->engine().settings().source, SourceKind::File, path.toStdString()));
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, stereo"));
    QVERIFY(PrivatePipeWire::waitFor([&] { return m_player->takeMeters().peak[dsp::FrontLeft] > 0.05f; }));
    // Somebody else's music at 44100 Hz holds the other device at its rate.
    const QString silence = m_server->path("silence.wav");
    const auto held = WavWriter::create(silence.toStdString(), 44100, 2, error);
    std::vector<float> nothing(std::size_t(60 * 44100));
    const float* const none[2] = {nothing.data(), nothing.data()};
    QVERIFY(held->write(none, int(nothing.size())) && held->finish(error));
    QProcess cat;
    startTied(cat, "pw-cat", {"-p", "--target", "other", "-P", "{ node.name = holder }", silence});
    QVERIFY(PrivatePipeWire::waitFor(
        [] { return PrivatePipeWire::links().contains("holder:output_FL -> other:playback_FL"); }));

    Recording recording(m_server->path("entrance.wav"), {"FL"});
    QVERIFY(recording.ready());
    QVERIFY(PrivatePipeWire::link("other:monitor_FL", "rec:input_FL"));
    QVERIFY(other.makeDefault());
    QVERIFY(PrivatePipeWire::waitFor(
        [] { return PrivatePipeWire::links().contains("headunit-output:output_FL -> other:playback_FL"); }));
    m_player->takeMeters();
    QVERIFY(PrivatePipeWire::waitFor([&] { return m_player->takeMeters().peak[dsp::FrontLeft] > 0.05f; }));
    // Some of it, for the level that it comes to.
    const auto recorded = [this] { return QFileInfo(m_server->path("entrance.wav")).size(); };
    QVERIFY(PrivatePipeWire::waitFor(
        [&, enough = recorded() + qint64(0.3 * rate * sizeof(float))] { return recorded() > enough; }));
    const std::vector<float> heard = recording.stop()[0];
    sendSignal(cat, SIGTERM);
    cat.waitForFinished(5000);
    const auto loud = [](float level) { return [level](float x) { return std::abs(x) > level; }; };
    const float level = std::abs(*std::max_element(heard.begin(), heard.end()));
    QVERIFY2(level > 0.05f, qPrintable(QString::number(level)));
    const auto first = std::find_if(heard.begin(), heard.end(), loud(0.0005f));
    const auto half = std::find_if(first, heard.end(), loud(level / 2));
    // 10 ms, of which the first hundredth can't be seen.
    QVERIFY2(half - first > rate * 0.002, qPrintable(QString::number(half - first)));
}

void TestPipeWireSession::nodeThatIsRemovedComesBack()
{
    const Device device("cabin", two);
    QVERIFY(start());
    for (const char* const node : {"headunit-output", "headunit"}) {
        QVERIFY(waitForStatus("PipeWire, 48000 Hz, stereo"));
        const int said = m_lines->all().size();
        PrivatePipeWire::output("pw-cli", {"destroy", node});
        QVERIFY(PrivatePipeWire::waitFor([&] { return m_lines->all().size() >= said + 2; }));
        QVERIFY2(m_lines->all().last().contains("back"), qPrintable(m_lines->all().join('\n')));
        QVERIFY(waitForStatus("PipeWire, 48000 Hz, stereo"));
    }
    QCOMPARE(differsFromFold(hearFrom("cabin", two)), QString());
}

void TestPipeWireSession::sessionManagerThatRestartsFindsTheUnitAgain()
{
    Device device("cabin", two);
    QVERIFY(start());
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, stereo"));
    for (int signal : {SIGTERM, SIGKILL}) {
        // The devices are the session manager's own, so they go with it.
        m_server->endManager(signal);
        device.unplug();
        QVERIFY(m_server->startManager());
        QVERIFY(device.plug());
        QVERIFY(waitForStatus("PipeWire, 48000 Hz, stereo"));
        QCOMPARE(differsFromFold(hearFrom("cabin", two)), QString());
    }
}

void TestPipeWireSession::daemonAndSessionManagerThatRestartFindTheUnitAgain()
{
    Device device("cabin", two);
    QVERIFY(start());
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, stereo"));
    m_server->end(SIGTERM);
    m_server->endManager(SIGTERM);
    QVERIFY(waitForStatus("PipeWire, waiting for the sound server"));
    QVERIFY(m_server->start());
    QVERIFY(device.plug());
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, stereo"));
    QCOMPARE(differsFromFold(hearFrom("cabin", two)), QString());
}

QTEST_GUILESS_MAIN(TestPipeWireSession)
#include "tst_pipewiresession.moc"
