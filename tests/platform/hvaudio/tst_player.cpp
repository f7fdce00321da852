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
    std::unique_ptr<Player> m_player;
    ManualOutput* m_output = nullptr;
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
    m_player.reset();
    m_lines.clear();
    m_player = std::make_unique<Player>([this](LogLevel, const std::string& line) {
        const std::lock_guard<std::mutex> lock(m_logging);
        m_lines << QString::fromStdString(line);
    });
    m_player->setSettings(neutral());
    QVERIFY(m_player->start(std::make_unique<ManualOutput>(&m_output)));
    m_output->pull(48000); // power-on is a ramp
}

void TestPlayer::sourceOfTheSettingsIsHeard()
{
    QVERIFY(m_player->setSource(18, SourceKind::PinkNoise));
    QVERIFY(m_player->setSource(6, SourceKind::Sweep));
    QVERIFY(m_player->setSource(7, SourceKind::Input));
    m_output->pull(4800);
    QVERIFY(std::abs(rms(m_output->pull(48000)) / 0.1 - 1) < 0.2);

    dsp::Settings settings = neutral();
    settings.source = 7;
    m_player->setSettings(settings);
    const std::vector<float> in(4800, 0.05f);
    for (int n = 0; n < 10; ++n)
        m_output->pull(4800, in);
    const auto heard = m_output->pull(4800, in);
    QVERIFY2(std::abs(heard.back() - 0.05f) < 0.001f, qPrintable(QString::number(heard.back())));

    settings.source = 99; // nothing plays there
    m_player->setSettings(settings);
    for (int n = 0; n < 10; ++n)
        m_output->pull(4800, in);
    QCOMPARE(rms(m_output->pull(4800, in)), 0.0);
    QVERIFY(m_player->engine().idle());
    QVERIFY(lines().isEmpty());
}

void TestPlayer::fileThatCantBeReadLeavesTheOldSource()
{
    QVERIFY(m_player->setSource(18, SourceKind::PinkNoise));
    std::string error;
    QVERIFY(!m_player->setSource(18, SourceKind::File, "/nowhere.ogg", &error));
    QVERIFY(!error.empty());
    QCOMPARE(lines().size(), 1);
    QCOMPARE(m_player->sourceKind(18), SourceKind::PinkNoise);
    m_output->pull(4800);
    QVERIFY(rms(m_output->pull(4800)) > 0.03);
    QVERIFY(!m_player->setSource(-1, SourceKind::Sweep) && !m_player->setSource(32, SourceKind::Sweep));
    QCOMPARE(lines().size(), 3);
}

void TestPlayer::mediumThatDoesNotAnswerHoldsUpNobody()
{
    const QTemporaryDir folder;
    const std::string path =
        files::write(folder.filePath("hangs.wav").toStdString(), SF_FORMAT_WAV | SF_FORMAT_FLOAT, 48000, 2,
                     std::vector<float>(96000, 0.25f));
    slowmedium::hang("hangs.wav");
    QVERIFY(m_player->setSource(18, SourceKind::File, path)); // it returns
    QCOMPARE(m_player->sourceKind(18), SourceKind::File);
    QCOMPARE(rms(m_output->pull(4800)), 0.0);
    // Other files are played meanwhile.
    const std::string other =
        files::write(folder.filePath("other.wav").toStdString(), SF_FORMAT_WAV | SF_FORMAT_FLOAT, 48000, 2,
                     std::vector<float>(96000, 0.25f));
    QVERIFY(m_player->setSource(6, SourceKind::File, other));
    dsp::Settings settings = neutral();
    settings.source = 6;
    m_player->setSettings(settings);
    QVERIFY(QTest::qWaitFor([&] { return std::abs(rms(m_output->pull(480)) - 0.25) < 0.01; }));
    QTRY_COMPARE_WITH_TIMEOUT(lines().size(), 1, 10000);
    QVERIFY2(lines().first().contains("hangs.wav"), qPrintable(lines().first()));
    QCOMPARE(m_player->sourceKind(18), SourceKind::Silence);
    QVERIFY(m_player->sourcePath(18).empty());
    slowmedium::answer();
}

void TestPlayer::promptSoundsOnItsChannelAndDucksTheProgramme()
{
    m_player->setSource(18, SourceKind::PinkNoise);
    m_output->pull(4800);
    const double before = rms(m_output->pull(48000));
    // Navigation's own channel is all but silent, so only the ducking is heard.
    dsp::Settings settings = neutral();
    settings.promptDb[dsp::Navi] = -58.8;
    m_player->setSettings(settings);
    m_player->prompt(dsp::Navi);
    QVERIFY(m_player->promptSounds(dsp::Navi));
    // The chime is made when it is first wanted.
    QVERIFY(QTest::qWaitFor([&] { return rms(m_output->pull(4800)) < 0.4 * before; }));
    const double during = rms(m_output->pull(24000));
    QVERIFY2(during < 0.4 * before, qPrintable(QString("%1 after %2").arg(during).arg(before)));
    for (int n = 0; n < 5; ++n)
        m_output->pull(24000);
    QVERIFY(!m_player->promptSounds(dsp::Navi));
    QVERIFY(rms(m_output->pull(48000)) > 0.7 * before);

    settings.promptDb[dsp::Navi] = 0;
    settings.mainDb = dsp::silentDb;
    m_player->setSettings(settings);
    m_output->pull(48000);
    m_player->prompt(dsp::Navi, true);
    for (int n = 0; n < 10; ++n)
        QVERIFY(rms(m_output->pull(72000)) > 0.01);
    m_player->endPrompt(dsp::Navi);
    m_output->pull(9600);
    QVERIFY(!m_player->promptSounds(dsp::Navi));
}

void TestPlayer::beepIsHeard()
{
    QCOMPARE(rms(m_output->pull(4800)), 0.0);
    m_player->beep();
    QVERIFY(rms(m_output->pull(4800)) > 0.01);
}

void TestPlayer::anotherRateKeepsTheSources()
{
    m_player->setSource(18, SourceKind::PinkNoise);
    QVERIFY(m_player->start(std::make_unique<ManualOutput>(&m_output, 96000)));
    QCOMPARE(m_player->engine().rate(), 96000.0);
    m_output->pull(96000);
    QVERIFY(std::abs(rms(m_output->pull(96000)) / 0.1 - 1) < 0.3);
    QVERIFY(!m_player->start(std::make_unique<ManualOutput>(&m_output, 1)));
    QCOMPARE(QString::fromStdString(m_player->status()), QString("no sound output"));
}

void TestPlayer::listenedFramesAreWhatWentInAndOut()
{
    m_player->setSource(18, SourceKind::Input);
    std::vector<float> in;
    for (int n = 0; n < 4096; ++n)
        in.push_back(0.1f * float(std::sin(0.05 * n)));
    m_output->pull(4096, in);
    std::vector<HeardFrame> frames(10000);
    QCOMPARE(m_player->fetchHeard(frames.data(), 10000), 0); // nobody listened
    m_player->listen(true);
    const auto out = m_output->pull(4096, in);
    bool gap = true;
    QCOMPARE(m_player->fetchHeard(frames.data(), 10000, &gap), 4096);
    QVERIFY(!gap);
    for (std::size_t n = 0; n < 4096; ++n) {
        QCOMPARE(frames[n].programme[0], in[n]);
        QCOMPARE(frames[n].speaker[dsp::FrontLeft], out[n]);
    }
    m_player->listen(false);
    m_output->pull(4096, in);
    QCOMPARE(m_player->fetchHeard(frames.data(), 10000), 0);
}

void TestPlayer::lateListenerIsToldOfTheGap()
{
    m_player->listen(true);
    for (int n = 0; n < 20; ++n)
        m_output->pull(4096);
    std::vector<HeardFrame> frames(100000);
    bool gap = false;
    QCOMPARE(m_player->fetchHeard(frames.data(), 100000, &gap), 0);
    QVERIFY(gap);
    m_output->pull(1000);
    QCOMPARE(m_player->fetchHeard(frames.data(), 100000, &gap), 1000);
    QVERIFY(!gap);
}

void TestPlayer::unknownOutputIsRefusedAndPlaysToNone()
{
    QVERIFY(!m_player->start("loudspeaker"));
    QCOMPARE(lines().size(), 1);
    QCOMPARE(QString::fromStdString(m_player->status()), QString("no sound output"));
    QVERIFY(!m_player->start("/no/such/folder/x.wav"));
    QCOMPARE(lines().size(), 2);
    QVERIFY(m_player->started());
}

void TestPlayer::wavOutputWritesWhatIsPlayed()
{
    const QTemporaryDir folder;
    const std::string path = folder.filePath("played.wav").toStdString();
    m_player->setSource(18, SourceKind::PinkNoise);
    QVERIFY(m_player->start(path));
    m_player->takeMeters();
    // Not QTRY_VERIFY, which would look a second time at meters that have started anew.
    QVERIFY(QTest::qWaitFor([&] { return m_player->takeMeters().peak[dsp::RearRight] > 0.05f; }, 5000));
    m_player->stop();
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
    QVERIFY(m_player->setSource(18, SourceKind(kind), path));
    QVERIFY(m_player->start("none"));
    QVERIFY(m_player->takeMeters().gain > 0); // it has been looked at, and isn't any more
    QVERIFY(nothingWakesUp());
}

void TestPlayer::restingOutputIsThereWhenItIsMeasured()
{
    QVERIFY(m_player->setSource(18, SourceKind::PinkNoise));
    QVERIFY(m_player->start("none"));
    std::vector<HeardFrame> frames(4096);
    for (int time = 0; time < 3; ++time) {
        QVERIFY(QTest::qWaitFor([&] { return m_player->takeMeters().peak[dsp::FrontLeft] > 0.05f; }));
        m_player->listen(true);
        int count = 0;
        QVERIFY(QTest::qWaitFor([&] { return (count += m_player->fetchHeard(frames.data(), 4096)) > 9600; }));
        m_player->listen(false);
        // A chime comes to its end, though nobody measures.
        m_player->prompt(dsp::Voice);
        QVERIFY(QTest::qWaitFor([&] { return !m_player->promptSounds(dsp::Voice); }));
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
            m_output->pull(1 + n * 37 % 2048, in);
        }
    });
    std::vector<HeardFrame> heard(4096);
    QElapsedTimer running;
    running.start();
    for (int n = 0; running.elapsed() < 2000; ++n) {
        dsp::Settings settings = neutral();
        settings.source = n % 4;
        settings.equalizer[n % dsp::bandCount] = n % 21 - 10;
        m_player->setSettings(settings);
        m_player->setSource(n % 4, SourceKind(n / 4 % 5), path);
        m_player->prompt(dsp::Prompt(n % dsp::promptCount), n % 2);
        m_player->endPrompt(dsp::Prompt(n / 2 % dsp::promptCount));
        m_player->beep();
        m_player->listen(n % 3);
        m_player->fetchHeard(heard.data(), int(heard.size()));
        m_player->takeMeters();
    }
    ends = true;
    audio.join();
    QVERIFY(filtered);
    QVERIFY2(trapped == 0, whatWasTrapped().c_str());
}

QTEST_GUILESS_MAIN(TestPlayer)
#include "tst_player.moc"
