#include "tests/platform/hvaudio/files/files.h"
#include "tests/support/audiothreadtrap.h"
#include "tests/support/slowmedium.h"
#include "tests/support/wakeups.h"

#include "platform/hvaudio/player.h"

#include <QtTest>

#include <cmath>
#include <mutex>
#include <thread>

using namespace hvaudio;

namespace {

/// An output that pulls when the test says so.
class ManualOutput final : public Output
{
public:
    explicit ManualOutput(ManualOutput** self, double rate = 48000)
        : m_rate(rate)
    {
        *self = this;
    }
    bool start(Feed& feed, std::string& error) override
    {
        m_feed = feed.prepare(m_rate) ? &feed : nullptr;
        error = m_feed ? "" : "no such rate";
        return m_feed;
    }
    void stop() override { m_feed = nullptr; }
    bool pulling() const override { return false; }
    std::string status() const override { return "by hand"; }

    /// Front left of so many frames.
    std::vector<float> pull(int frames, const std::vector<float>& in = {})
    {
        std::vector<float> samples(std::size_t(frames) * dsp::speakerCount);
        float* out[dsp::speakerCount];
        for (int i = 0; i < dsp::speakerCount; ++i)
            out[i] = samples.data() + std::size_t(i) * std::size_t(frames);
        const float* const from[2] = {in.empty() ? nullptr : in.data(), in.empty() ? nullptr : in.data()};
        onAudioThread = true;
        m_feed->pull(from, out, frames);
        onAudioThread = false;
        samples.resize(std::size_t(frames));
        return samples;
    }

private:
    const double m_rate;
    Feed* m_feed = nullptr;
};

dsp::Settings neutral()
{
    dsp::Settings settings;
    settings.power = true;
    settings.source = 18;
    settings.mainDb = 0;
    settings.promptDb = {0, 0, 0, 0};
    settings.subwoofer.lowPass.hz = 0;
    settings.subwoofer.attenuation = 0;
    return settings;
}

double rms(const std::vector<float>& signal)
{
    double sum = 0;
    for (float x : signal)
        sum += double(x) * double(x);
    return std::sqrt(sum / double(signal.size()));
}

} // namespace

class TestPlayer : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void sourceOfTheSettingsIsHeard();
    void fileThatCantBeReadLeavesTheOldSource();
    void mediumThatDoesNotAnswerHoldsUpNobody();
    void promptSoundsOnItsChannelAndDucksTheProgramme();
    void beepIsHeard();
    void anotherRateKeepsTheSources();
    void listenedFramesAreWhatWentInAndOut();
    void lateListenerIsToldOfTheGap();
    void unknownOutputIsRefusedAndPlaysToNone();
    void wavOutputWritesWhatIsPlayed();
    void nothingWakesUpWhileNobodyHearsAnything_data();
    void nothingWakesUpWhileNobodyHearsAnything();
    void restingOutputIsThereWhenItIsMeasured();
    void audioThreadOnlyComputesWhileTheShellChangesEverything();

private:
    std::unique_ptr<Player> player;
    ManualOutput* output = nullptr;
    /// Logged so far, by whatever thread.
    QStringList lines()
    {
        const std::lock_guard<std::mutex> lock(m_logging);
        return m_lines;
    }
    std::mutex m_logging;
    QStringList m_lines;
};

void TestPlayer::init()
{
    player.reset();
    m_lines.clear();
    player = std::make_unique<Player>([this](LogLevel, const std::string& line) {
        const std::lock_guard<std::mutex> lock(m_logging);
        m_lines << QString::fromStdString(line);
    });
    player->setSettings(neutral());
    QVERIFY(player->start(std::make_unique<ManualOutput>(&output)));
    output->pull(48000); // power-on is a ramp
}

void TestPlayer::sourceOfTheSettingsIsHeard()
{
    QVERIFY(player->setSource(18, SourceKind::PinkNoise));
    QVERIFY(player->setSource(6, SourceKind::Sweep));
    QVERIFY(player->setSource(7, SourceKind::Input));
    output->pull(4800);
    QVERIFY(std::abs(rms(output->pull(48000)) / 0.1 - 1) < 0.2);

    dsp::Settings settings = neutral();
    settings.source = 7;
    player->setSettings(settings);
    const std::vector<float> in(4800, 0.05f);
    for (int n = 0; n < 10; ++n)
        output->pull(4800, in);
    const auto heard = output->pull(4800, in);
    QVERIFY2(std::abs(heard.back() - 0.05f) < 0.001f, qPrintable(QString::number(heard.back())));

    settings.source = 99; // nothing plays there
    player->setSettings(settings);
    for (int n = 0; n < 10; ++n)
        output->pull(4800, in);
    QCOMPARE(rms(output->pull(4800, in)), 0.0);
    QVERIFY(player->engine().idle());
    QVERIFY(lines().isEmpty());
}

void TestPlayer::fileThatCantBeReadLeavesTheOldSource()
{
    QVERIFY(player->setSource(18, SourceKind::PinkNoise));
    std::string error;
    QVERIFY(!player->setSource(18, SourceKind::File, "/nowhere.ogg", &error));
    QVERIFY(!error.empty());
    QCOMPARE(lines().size(), 1);
    QCOMPARE(player->sourceKind(18), SourceKind::PinkNoise);
    output->pull(4800);
    QVERIFY(rms(output->pull(4800)) > 0.03);
    QVERIFY(!player->setSource(-1, SourceKind::Sweep) && !player->setSource(32, SourceKind::Sweep));
    QCOMPARE(lines().size(), 3);
}

void TestPlayer::mediumThatDoesNotAnswerHoldsUpNobody()
{
    const QTemporaryDir folder;
    const std::string path =
        files::write(folder.filePath("hangs.wav").toStdString(), SF_FORMAT_WAV | SF_FORMAT_FLOAT, 48000, 2,
                     std::vector<float>(96000, 0.25f));
    slowmedium::hang("hangs.wav");
    QVERIFY(player->setSource(18, SourceKind::File, path)); // it returns
    QCOMPARE(player->sourceKind(18), SourceKind::File);
    QCOMPARE(rms(output->pull(4800)), 0.0);
    // Other files are played meanwhile.
    const std::string other =
        files::write(folder.filePath("other.wav").toStdString(), SF_FORMAT_WAV | SF_FORMAT_FLOAT, 48000, 2,
                     std::vector<float>(96000, 0.25f));
    QVERIFY(player->setSource(6, SourceKind::File, other));
    dsp::Settings settings = neutral();
    settings.source = 6;
    player->setSettings(settings);
    QVERIFY(QTest::qWaitFor([&] { return std::abs(rms(output->pull(480)) - 0.25) < 0.01; }));
    QTRY_COMPARE_WITH_TIMEOUT(lines().size(), 1, 10000);
    QVERIFY2(lines().first().contains("hangs.wav"), qPrintable(lines().first()));
    QCOMPARE(player->sourceKind(18), SourceKind::Silence);
    QVERIFY(player->sourcePath(18).empty());
    slowmedium::answer();
}

void TestPlayer::promptSoundsOnItsChannelAndDucksTheProgramme()
{
    player->setSource(18, SourceKind::PinkNoise);
    output->pull(4800);
    const double before = rms(output->pull(48000));
    // Navigation's own channel is all but silent, so only the ducking is heard.
    dsp::Settings settings = neutral();
    settings.promptDb[dsp::Navi] = -58.8;
    player->setSettings(settings);
    player->prompt(dsp::Navi);
    QVERIFY(player->promptSounds(dsp::Navi));
    // The chime is made when it is first wanted.
    QVERIFY(QTest::qWaitFor([&] { return rms(output->pull(4800)) < 0.4 * before; }));
    const double during = rms(output->pull(24000));
    QVERIFY2(during < 0.4 * before, qPrintable(QString("%1 after %2").arg(during).arg(before)));
    for (int n = 0; n < 5; ++n)
        output->pull(24000);
    QVERIFY(!player->promptSounds(dsp::Navi));
    QVERIFY(rms(output->pull(48000)) > 0.7 * before);

    settings.promptDb[dsp::Navi] = 0;
    settings.mainDb = dsp::silentDb;
    player->setSettings(settings);
    output->pull(48000);
    player->prompt(dsp::Navi, true);
    for (int n = 0; n < 10; ++n)
        QVERIFY(rms(output->pull(72000)) > 0.01);
    player->endPrompt(dsp::Navi);
    output->pull(9600);
    QVERIFY(!player->promptSounds(dsp::Navi));
}

void TestPlayer::beepIsHeard()
{
    QCOMPARE(rms(output->pull(4800)), 0.0);
    player->beep();
    QVERIFY(rms(output->pull(4800)) > 0.01);
}

void TestPlayer::anotherRateKeepsTheSources()
{
    player->setSource(18, SourceKind::PinkNoise);
    QVERIFY(player->start(std::make_unique<ManualOutput>(&output, 96000)));
    QCOMPARE(player->engine().rate(), 96000.0);
    output->pull(96000);
    QVERIFY(std::abs(rms(output->pull(96000)) / 0.1 - 1) < 0.3);
    QVERIFY(!player->start(std::make_unique<ManualOutput>(&output, 1)));
    QCOMPARE(QString::fromStdString(player->status()), QString("no sound output"));
}

void TestPlayer::listenedFramesAreWhatWentInAndOut()
{
    player->setSource(18, SourceKind::Input);
    std::vector<float> in;
    for (int n = 0; n < 4096; ++n)
        in.push_back(0.1f * float(std::sin(0.05 * n)));
    output->pull(4096, in);
    std::vector<HeardFrame> frames(10000);
    QCOMPARE(player->fetchHeard(frames.data(), 10000), 0); // nobody listened
    player->listen(true);
    const auto out = output->pull(4096, in);
    bool gap = true;
    QCOMPARE(player->fetchHeard(frames.data(), 10000, &gap), 4096);
    QVERIFY(!gap);
    for (std::size_t n = 0; n < 4096; ++n) {
        QCOMPARE(frames[n].programme[0], in[n]);
        QCOMPARE(frames[n].speaker[dsp::FrontLeft], out[n]);
    }
    player->listen(false);
    output->pull(4096, in);
    QCOMPARE(player->fetchHeard(frames.data(), 10000), 0);
}

void TestPlayer::lateListenerIsToldOfTheGap()
{
    player->listen(true);
    for (int n = 0; n < 20; ++n)
        output->pull(4096);
    std::vector<HeardFrame> frames(100000);
    bool gap = false;
    QCOMPARE(player->fetchHeard(frames.data(), 100000, &gap), 0);
    QVERIFY(gap);
    output->pull(1000);
    QCOMPARE(player->fetchHeard(frames.data(), 100000, &gap), 1000);
    QVERIFY(!gap);
}

void TestPlayer::unknownOutputIsRefusedAndPlaysToNone()
{
    QVERIFY(!player->start("loudspeaker"));
    QCOMPARE(lines().size(), 1);
    QCOMPARE(QString::fromStdString(player->status()), QString("no sound output"));
    QVERIFY(!player->start("/no/such/folder/x.wav"));
    QCOMPARE(lines().size(), 2);
    QVERIFY(player->started());
}

void TestPlayer::wavOutputWritesWhatIsPlayed()
{
    const QTemporaryDir folder;
    const std::string path = folder.filePath("played.wav").toStdString();
    player->setSource(18, SourceKind::PinkNoise);
    QVERIFY(player->start(path));
    player->takeMeters();
    // Not QTRY_VERIFY, which would look a second time at meters that have started anew.
    QVERIFY(QTest::qWaitFor([&] { return player->takeMeters().peak[dsp::RearRight] > 0.05f; }, 5000));
    player->stop();
    const auto contents = files::read(path);
    QCOMPARE(contents.info.channels, 5);
    QVERIFY(contents.info.frames > 480);
    // It begins in silence and ends in it.
    QVERIFY(std::abs(contents.channels[0].front()) < 1e-3f);
    QVERIFY(std::abs(contents.channels[0].back()) < 1e-3f);
    QVERIFY(rms(contents.channels[3]) > 0.001);
}

void TestPlayer::nothingWakesUpWhileNobodyHearsAnything_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("nothing plays") << int(SourceKind::Silence);
    QTest::newRow("other programs") << int(SourceKind::Input);
    QTest::newRow("a file") << int(SourceKind::File);
    QTest::newRow("noise") << int(SourceKind::PinkNoise);
}

void TestPlayer::nothingWakesUpWhileNobodyHearsAnything()
{
    QFETCH(int, kind);
    const QTemporaryDir folder;
    const std::string path =
        files::write(folder.filePath("a.wav").toStdString(), SF_FORMAT_WAV | SF_FORMAT_FLOAT, 44100, 2,
                     std::vector<float>(96000, 0.25f));
    QVERIFY(player->setSource(18, SourceKind(kind), path));
    QVERIFY(player->start("none"));
    QVERIFY(player->takeMeters().gain > 0); // it has been looked at, and isn't any more
    QVERIFY(nothingWakesUp());
}

void TestPlayer::restingOutputIsThereWhenItIsMeasured()
{
    QVERIFY(player->setSource(18, SourceKind::PinkNoise));
    QVERIFY(player->start("none"));
    std::vector<HeardFrame> frames(4096);
    for (int time = 0; time < 3; ++time) {
        QVERIFY(QTest::qWaitFor([&] { return player->takeMeters().peak[dsp::FrontLeft] > 0.05f; }));
        player->listen(true);
        int count = 0;
        QVERIFY(QTest::qWaitFor([&] { return (count += player->fetchHeard(frames.data(), 4096)) > 9600; }));
        player->listen(false);
        // A chime comes to its end, though nobody measures.
        player->prompt(dsp::Voice);
        QVERIFY(QTest::qWaitFor([&] { return !player->promptSounds(dsp::Voice); }));
    }
}

void TestPlayer::audioThreadOnlyComputesWhileTheShellChangesEverything()
{
    const QTemporaryDir folder;
    std::vector<float> samples(48000, 0.1f);
    const std::string path = files::write(folder.filePath("a.wav").toStdString(),
                                          SF_FORMAT_WAV | SF_FORMAT_FLOAT, 44100, 2, samples);
    forgetTrapped();
    bool filtered = false;
    std::atomic<bool> ends{false};
    std::thread audio([&] {
        filtered = trapSystemCalls();
        const std::vector<float> in(2048, 0.1f);
        for (int n = 0; !ends; ++n) {
            // The output's own vectors are made outside of what is trapped.
            output->pull(1 + n * 37 % 2048, in);
        }
    });
    std::vector<HeardFrame> heard(4096);
    QElapsedTimer running;
    running.start();
    for (int n = 0; running.elapsed() < 2000; ++n) {
        dsp::Settings settings = neutral();
        settings.source = n % 4;
        settings.equalizer[n % dsp::bandCount] = n % 21 - 10;
        player->setSettings(settings);
        player->setSource(n % 4, SourceKind(n / 4 % 5), path);
        player->prompt(dsp::Prompt(n % dsp::promptCount), n % 2);
        player->endPrompt(dsp::Prompt(n / 2 % dsp::promptCount));
        player->beep();
        player->listen(n % 3);
        player->fetchHeard(heard.data(), int(heard.size()));
        player->takeMeters();
    }
    ends = true;
    audio.join();
    QVERIFY(filtered);
    QVERIFY2(trapped == 0, whatWasTrapped().c_str());
}

QTEST_GUILESS_MAIN(TestPlayer)
#include "tst_player.moc"
