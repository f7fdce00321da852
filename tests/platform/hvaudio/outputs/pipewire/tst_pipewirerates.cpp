// The unit while the rate of the graph that it plays in changes.

#include "tests/support/unitinsession.h"

#include <QFileInfo>

#include <algorithm>
#include <utility>

using namespace hvaudio;
using namespace unitonpipewire;

namespace {

constexpr float nothing = 0.0005f;
/// In frames: of 10 ms the first hundredth of the level can't be seen.
constexpr int leastRise = int(0.002 * rate);

/// Frames from the first sound after the longest silence, which what breaks off and begins anew has between
/// them, to half the level that it comes to; -1 when no sound comes after a silence.
int riseAfterSilence(const std::vector<float>& heard)
{
    int longest = 100, quiet = 0, first = -1;
    for (int n = 0; n < int(heard.size()); ++n) {
        const bool sounds = std::abs(heard[std::size_t(n)]) > nothing;
        if (sounds && quiet > longest) {
            longest = quiet;
            first = n;
        }
        quiet = sounds ? 0 : quiet + 1;
    }
    if (first < 0)
        return -1;
    const auto loud = [](float level) { return [level](float x) { return std::abs(x) > level; }; };
    const float level = *std::max_element(heard.begin() + first, heard.end());
    return int(std::find_if(heard.begin() + first, heard.end(), loud(level / 2)) - heard.begin()) - first;
}

void setInGraph(const QString& name, const QString& value)
{
    PrivatePipeWire::output("pw-metadata", {"-n", "settings", "0", name, value});
}

} // namespace

class TestPipeWireRates : public QObject, UnitInSession
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(begin()); }
    void cleanup() { end(); }
    void processorFollowsTheRateOfTheGraphWhileItPlays();
    void forcedRateIsEnteredFromSilence();
    void deviceOfAnotherRateIsEnteredFromSilence();

private:
    /// Plays a level that stands from its first sample on.
    bool playSquare();
    /// Until the recording "entrance.wav" has grown by enough to see a level in.
    bool waitForRecorded() const;
};

bool TestPipeWireRates::playSquare()
{
    std::string error;
    const QString path = m_server->path("square.wav");
    const auto writer = WavWriter::create(path.toStdString(), rate, 2, error);
    std::vector<float> samples(std::size_t(2 * rate));
    for (std::size_t n = 0; n < samples.size(); ++n)
        samples[n] = n % 96 < 48 ? 0.1f : -0.1f;
    const float* const channels[2] = {samples.data(), samples.data()};
    return writer && writer->write(channels, int(samples.size())) && writer->finish(error) &&
           m_player->setSource(m_player->engine().settings().source, SourceKind::File, path.toStdString()) &&
           waitForStatus("PipeWire, 48000 Hz, stereo") && waitForSound();
}

bool TestPipeWireRates::waitForRecorded() const
{
    const auto recorded = [this] { return QFileInfo(m_server->path("entrance.wav")).size(); };
    return PrivatePipeWire::waitFor(
        [&, enough = recorded() + qint64(0.3 * rate * sizeof(float))] { return recorded() > enough; });
}

void TestPipeWireRates::processorFollowsTheRateOfTheGraphWhileItPlays()
{
    const Device device("cabin", two);
    QVERIFY(start());
    QVERIFY(m_player->setSource(6, SourceKind::Sweep));
    dsp::Settings settings = m_player->engine().settings();
    const int input = std::exchange(settings.source, 6);
    m_player->setSettings(settings);
    QVERIFY(waitForStatus("PipeWire, 48000 Hz, stereo"));
    for (const int other : {44100, 96000, 48000}) {
        QVERIFY(waitForSound());
        setInGraph("clock.force-rate", QString::number(other));
        QVERIFY(waitForStatus(QString("PipeWire, %1 Hz, stereo").arg(other)));
        QCOMPARE(m_player->engine().rate(), double(other));
        QVERIFY(waitForSound());
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

void TestPipeWireRates::forcedRateIsEnteredFromSilence()
{
    const Device device("cabin", two);
    QVERIFY(start());
    QVERIFY(playSquare());
    for (const int other : {44100, 48000}) {
        Recording recording(m_server->path("entrance.wav"), {"FL"});
        QVERIFY(recording.ready());
        QVERIFY(PrivatePipeWire::link("cabin:monitor_FL", "rec:input_FL"));
        QVERIFY(waitForRecorded());
        setInGraph("clock.force-rate", QString::number(other));
        QVERIFY(waitForStatus(QString("PipeWire, %1 Hz, stereo").arg(other)));
        QVERIFY(waitForSound() && waitForRecorded());
        std::vector<float> heard = recording.stop()[0];
        // Not the recorder's own beginning.
        heard.erase(heard.begin(), std::find_if(heard.begin(), heard.end(),
                                                [](float sample) { return std::abs(sample) > nothing; }));
        const int rise = riseAfterSilence(heard);
        QVERIFY2(rise > leastRise, qPrintable(QString::number(rise)));
    }
}

void TestPipeWireRates::deviceOfAnotherRateIsEnteredFromSilence()
{
    setInGraph("clock.allowed-rates", "[ 44100, 48000 ]");
    const Device device("cabin", two), other("other", two);
    QVERIFY(device.makeDefault());
    QVERIFY(start());
    QVERIFY(playSquare());
    // Somebody else's music at 44100 Hz holds the other device at its rate.
    std::string error;
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
    QVERIFY(waitForSound() && waitForRecorded());
    const int rise = riseAfterSilence(recording.stop()[0]);
    sendSignal(cat, SIGTERM);
    cat.waitForFinished(5000);
    QVERIFY2(rise > leastRise, qPrintable(QString::number(rise)));
}

QTEST_GUILESS_MAIN(TestPipeWireRates)
#include "tst_pipewirerates.moc"
