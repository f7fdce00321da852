// The unit on a desktop as it is: a session manager gives it its ports, connects it to the default device,
// and connects players to it. Nothing is linked by hand but the recorder.

#include "tests/support/unitinsession.h"
#include "tests/support/wakeups.h"

#include <QRegularExpression>

#include <algorithm>
#include <numeric>

using namespace hvaudio;
using namespace unitonpipewire;

namespace {

const QStringList six = {"FL", "FR", "FC", "LFE", "RL", "RR"};
const QStringList eight = {"FL", "FR", "FC", "LFE", "RL", "RR", "SL", "SR"};
const QStringList side = {"FL", "FR", "FC", "LFE", "SL", "SR"};
const QStringList mono = {"MONO"};

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

class TestPipeWireSession : public QObject, UnitInSession
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(begin()); }
    void cleanup() { end(); }
    void playerThatChoosesTheUnitIsHeardAtTheDefaultDevice();
    void outputFollowsTheDefaultDeviceAndItsChannels_data();
    void outputFollowsTheDefaultDeviceAndItsChannels();
    void deviceThatGoesGivesWayToTheOther();
    void sinkStaysWhereThereIsNoDeviceAndPlaysToTheFirstThatComes();
    void unitAsDefaultDeviceTakesPlayersAndPlaysToARealOne();
    void silentUnitSleepsAndFollowsTheDevices();
    void soundOfOthersIsHeardFromItsFirstFrame_data();
    void soundOfOthersIsHeardFromItsFirstFrame();
    void nodeThatIsRemovedComesBack();
    void sessionManagerThatRestartsFindsTheUnitAgain();
    void daemonAndSessionManagerThatRestartFindTheUnitAgain();
};

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
