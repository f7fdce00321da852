#include "tests/platform/hvaudio/files/files.h"
#include "tests/platform/hvaudio/files/nodes.h"

#include "platform/hvaudio/dsp/engine.h"
#include "platform/hvaudio/files/render.h"

#include <QtTest>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <utility>

#include <sys/resource.h>

using namespace hvaudio;

namespace {

/// Everything open and neutral.
dsp::Settings neutral()
{
    dsp::Settings settings;
    settings.mainDb = 0;
    settings.subwoofer.lowPass.hz = 0;
    settings.subwoofer.attenuation = 0;
    return settings;
}

/// No file can become longer than this meanwhile, as on a medium that gets full.
class MediumOf
{
public:
    explicit MediumOf(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit room = {bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &room);
    }
    ~MediumOf() { setrlimit(RLIMIT_FSIZE, &m_before); }

private:
    rlimit m_before = {};
};

} // namespace

class TestRender : public QObject
{
    Q_OBJECT

private slots:
    void neutralSettingsGiveTheInputOnFiveSpeakers();
    void playersKnowWhichSpeakerIsWhich();
    void rateIsKeptWhereTheProcessorKnowsIt_data();
    void rateIsKeptWhereTheProcessorKnowsIt();
    void settingsAreHeard();
    void stereoIsTheFold();
    void muteAndPowerDontSilenceTheRendering();
    void limiterIsRemarked();
    void cutInputIsRemarkedWithItsSeconds();
    void sizeThatAPipeLeavesOpenIsNotRemarked();
    void bothRemarksAreMade();
    void failureLeavesNoFileAndAnOldOneAsItWas();
    void outputIsReplacedWhereItsLinkLeads();
    void inputAsOutputIsRefusedByAnyName();

private:
    std::string path(const char* name) const { return m_folder.filePath(name).toStdString(); }
    std::string noise(int rate, int frames, float level = 0.1f) const;
    /// Of five speakers, in the order of dsp::Speaker.
    files::Contents speakersOf(const char* name) const
    {
        files::Contents contents = files::read(path(name));
        const auto file = std::exchange(contents.channels, {});
        for (const std::size_t place : {0, 1, 3, 4, 2})
            contents.channels.push_back(file.at(place));
        return contents;
    }
    QStringList entries() const
    {
        return QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System, QDir::Name);
    }
    bool renders(const RenderJob& job)
    {
        m_error.clear();
        return render(job, m_report, m_error);
    }

    QTemporaryDir m_folder;
    RenderReport m_report;
    std::string m_error;
};

std::string TestRender::noise(int rate, int frames, float level) const
{
    std::vector<float> samples;
    unsigned state = 1;
    for (int n = 0; n < 2 * frames; ++n) {
        state = state * 1664525u + 1013904223u;
        samples.push_back(level * (float(state >> 8) / 8388608.0f - 1));
    }
    return files::write(path("in.wav"), SF_FORMAT_WAV | SF_FORMAT_FLOAT, rate, 2, samples);
}

void TestRender::neutralSettingsGiveTheInputOnFiveSpeakers()
{
    QVERIFY2(renders({noise(48000, 48000), path("out.wav"), neutral(), false}), m_error.c_str());
    const auto in = files::read(path("in.wav")), out = speakersOf("out.wav");
    QCOMPARE(out.info.channels, 5);
    QCOMPARE(out.info.format & SF_FORMAT_SUBMASK, int(SF_FORMAT_FLOAT));
    QCOMPARE(out.info.samplerate, 48000);
    QCOMPARE(int(out.info.frames), 48000 + 4800);
    QCOMPARE(m_report.frames, (long long)(out.info.frames));
    QVERIFY(m_report.remark.empty());
    for (int n = 0; n < 48000; ++n) {
        const float left = in.channels[0][n], right = in.channels[1][n];
        const float wanted[5] = {left, right, left, right, (left + right) / 2};
        for (int c = 0; c < 5; ++c)
            QVERIFY2(
                std::abs(out.channels[c][n] - wanted[c]) < 2e-6,
                qPrintable(QString("%1 %2: %3 %4").arg(c).arg(n).arg(out.channels[c][n]).arg(wanted[c])));
    }
}

void TestRender::playersKnowWhichSpeakerIsWhich()
{
    // Each speaker at a level of its own.
    dsp::Settings settings = neutral();
    settings.subwoofer.attenuation = 20;
    settings.cabin[dsp::RearLeft].attenuation = 6;
    settings.cabin[dsp::RearRight].attenuation = 12;
    settings.cabin[dsp::FrontRight].attenuation = 3;
    QVERIFY2(renders({noise(48000, 48000), path("out.wav"), settings, false}), m_error.c_str());
    const auto in = files::read(path("in.wav")), out = files::read(path("out.wav"));
    const double db[] = {0, -3, -20, -6, -12}; // FL FR LFE BL BR
    for (std::size_t c = 0; c < std::size(db); ++c) {
        const float left = in.channels[0][9], right = in.channels[1][9];
        const float from = c == 2 ? (left + right) / 2 : c == 0 || c == 3 ? left : right;
        QVERIFY2(std::abs(out.channels[c][9] - from * std::pow(10, db[c] / 20)) < 2e-6,
                 qPrintable(QString::number(c)));
    }
    QVERIFY2(renders({path("in.wav"), path("two.wav"), settings, true}), m_error.c_str());

    // The header's own words: a format with extensions, and its mask of channels.
    const auto maskOf = [this](const char* name) {
        QFile file(m_folder.filePath(name));
        const QByteArray head = file.open(QIODevice::ReadOnly) ? file.read(200) : QByteArray();
        const int format = head.indexOf("fmt ") + 8;
        return head.mid(format, 2) == QByteArray("\xfe\xff") ? int(head.at(format + 20)) : -1;
    };
    QCOMPARE(maskOf("out.wav"), 0x3b);
    QCOMPARE(maskOf("two.wav"), 0x3);
    // And what programs make of it, where they are installed.
    const auto says = [this](const char* program, const QStringList& arguments) {
        QProcess process;
        process.start(program, arguments + QStringList{m_folder.filePath("out.wav")});
        process.waitForFinished(20000);
        return process.readAllStandardOutput();
    };
    if (!QStandardPaths::findExecutable("soxi").isEmpty())
        QCOMPARE(says("soxi", {"-c"}).trimmed(), QByteArray("5"));
    if (!QStandardPaths::findExecutable("ffprobe").isEmpty()) {
        const QByteArray layout = says(
            "ffprobe", {"-v", "error", "-show_entries", "stream=channels,channel_layout", "-of", "default"});
        QVERIFY2(layout.contains("channels=5") && layout.contains("(FL+FR+LFE+BL+BR)"), layout);
    }
    if (!QStandardPaths::findExecutable("sndfile-info").isEmpty()) {
        const QByteArray info = says("sndfile-info", {});
        QVERIFY2(info.contains("0x3B"), info);
    }
}

void TestRender::rateIsKeptWhereTheProcessorKnowsIt_data()
{
    QTest::addColumn<int>("in");
    QTest::addColumn<int>("out");
    for (int rate : {44100, 48000, 96000})
        QTest::addRow("%d", rate) << rate << rate;
    for (int rate : {8000, 22050, 37800, 192000})
        QTest::addRow("%d", rate) << rate << 48000;
}

void TestRender::rateIsKeptWhereTheProcessorKnowsIt()
{
    QFETCH(int, in);
    QFETCH(int, out);
    QVERIFY2(renders({noise(in, in / 2), path("out.wav"), neutral(), false}), m_error.c_str());
    const auto result = files::read(path("out.wav"));
    QCOMPARE(result.info.samplerate, out);
    QVERIFY(std::abs(double(result.info.frames) - 0.6 * out) <= 2);
    QCOMPARE(int(m_report.inputRate), in);
}

void TestRender::settingsAreHeard()
{
    // An impulse through the rendering shows the response that the processor computes for these settings.
    std::vector<float> samples(2 * 48000, 0.0f);
    samples[0] = samples[1] = 0.01f;
    const std::string in =
        files::write(path("impulse.wav"), SF_FORMAT_WAV | SF_FORMAT_FLOAT, 48000, 2, samples);
    dsp::Settings settings = neutral();
    settings.equalizer = {6, 0, -4, 0, 3, 8, 0, -6, 0, 5, 0, -3, 2};
    settings.cabin[dsp::RearLeft].highPass = {80, 4};
    settings.cabin[dsp::RearLeft].delayMs = 2.5;
    settings.balance = 6 / 15.0;
    settings.subwoofer.lowPass.hz = 80;
    QVERIFY2(renders({in, path("out.wav"), settings, false}), m_error.c_str());
    const auto out = speakersOf("out.wav");

    dsp::Engine engine;
    engine.prepare(48000);
    settings.power = true;
    engine.set(settings);
    for (int speaker = 0; speaker < dsp::speakerCount; ++speaker)
        for (double hz : {40.0, 100.0, 250.0, 1000.0, 4000.0, 10000.0}) {
            double re = 0, im = 0;
            for (std::size_t n = 0; n < out.channels[speaker].size(); ++n) {
                re += out.channels[speaker][n] * std::cos(2 * M_PI * hz * double(n) / 48000) / 0.01;
                im += out.channels[speaker][n] * std::sin(2 * M_PI * hz * double(n) / 48000) / 0.01;
            }
            const double wanted = 20 * std::log10(std::abs(engine.response(dsp::Speaker(speaker), hz)));
            const double measured = 20 * std::log10(std::hypot(re, im));
            QVERIFY2(std::abs(measured - wanted) < 0.1 || (wanted < -80 && measured < -80),
                     qPrintable(QString("%1, %2 Hz: %3 instead of %4 dB")
                                    .arg(speaker)
                                    .arg(hz)
                                    .arg(measured)
                                    .arg(wanted)));
        }
    // Its delay is kept: the rear left speaker begins 2.5 ms later than the front one.
    const auto first = [&](int speaker) {
        const auto& channel = out.channels[std::size_t(speaker)];
        return std::max_element(channel.begin(), channel.end(),
                                [](float a, float b) { return std::abs(a) < std::abs(b); }) -
               channel.begin();
    };
    QCOMPARE(int(first(dsp::RearLeft) - first(dsp::RearRight)), 120);
}

void TestRender::stereoIsTheFold()
{
    const std::string in = noise(48000, 20000);
    QVERIFY2(renders({in, path("five.wav"), neutral(), false}), m_error.c_str());
    QVERIFY2(renders({in, path("two.wav"), neutral(), true}), m_error.c_str());
    const auto five = speakersOf("five.wav"), two = files::read(path("two.wav"));
    QCOMPARE(two.info.channels, 2);
    QCOMPARE(two.info.frames, five.info.frames);
    for (std::size_t n = 0; n < two.channels[0].size(); ++n)
        for (std::size_t side : {0, 1}) {
            const float wanted =
                0.25f * (five.channels[side][n] + five.channels[2 + side][n]) + 0.5f * five.channels[4][n];
            QVERIFY(std::abs(two.channels[side][n] - wanted) < 1e-6f);
        }
}

void TestRender::muteAndPowerDontSilenceTheRendering()
{
    dsp::Settings settings = neutral();
    settings.power = false;
    settings.mute = true;
    QVERIFY2(renders({noise(48000, 10000), path("out.wav"), settings, false}), m_error.c_str());
    const auto in = files::read(path("in.wav")), out = files::read(path("out.wav"));
    QVERIFY(std::abs(out.channels[0][0] - in.channels[0][0]) < 1e-5f); // from the first frame on
}

void TestRender::limiterIsRemarked()
{
    dsp::Settings settings = neutral();
    settings.sourceDb = 10;
    QVERIFY2(renders({noise(48000, 20000, 0.9f), path("out.wav"), settings, false}), m_error.c_str());
    QVERIFY2(m_report.remark.find("limiter") != std::string::npos, m_report.remark.c_str());
    for (const auto& channel : files::read(path("out.wav")).channels)
        for (float x : channel)
            QVERIFY(std::abs(x) <= std::pow(10.0f, -0.1f / 20));
}

void TestRender::cutInputIsRemarkedWithItsSeconds()
{
    std::vector<float> samples;
    for (int n = 0; n < 4 * 48000; ++n)
        samples.insert(samples.end(), 2, float(0.1 * std::sin(n * 0.05) + 0.05 * std::sin(n * 0.31)));
    const std::string in = files::write(path("cut"), SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 48000, 2, samples);
    QVERIFY2(renders({in, path("out.wav"), neutral(), false}), m_error.c_str());
    QVERIFY2(m_report.remark.empty(), m_report.remark.c_str());

    QFile file(m_folder.filePath("cut"));
    QVERIFY(file.resize(file.size() * 55 / 100));
    QVERIFY2(renders({in, path("out.wav"), neutral(), false}), m_error.c_str());
    const double seconds = double(m_report.frames) / m_report.rate - 0.1; // what rings out
    QVERIFY(seconds > 0.4 && seconds < 3);
    const QRegularExpression remark("^the input is cut short after ([0-9]+\\.[0-9]) s$");
    const auto match = remark.match(QString::fromStdString(m_report.remark));
    QVERIFY2(match.hasMatch() && std::abs(match.captured(1).toDouble() - seconds) < 0.06,
             qPrintable(QString("%1: %2").arg(seconds).arg(m_report.remark.c_str())));
}

void TestRender::sizeThatAPipeLeavesOpenIsNotRemarked()
{
    const QByteArray size(4, char(0xff));
    const std::string in = noise(48000, 48000);
    QFile file(QString::fromStdString(in));
    QVERIFY(file.open(QIODevice::ReadWrite));
    const int at = file.readAll().indexOf("data") + 4;
    QVERIFY(file.seek(4) && file.write(size) == 4 && file.seek(at) && file.write(size) == 4);
    file.close();
    QVERIFY2(renders({in, path("out.wav"), neutral(), false}), m_error.c_str());
    QVERIFY2(m_report.remark.empty(), m_report.remark.c_str());
    QVERIFY(m_report.frames >= 48000 + 4800);
}

void TestRender::bothRemarksAreMade()
{
    const auto loud = files::read(noise(48000, 48000, 0.9f)).channels;
    const std::string in = files::write(path("cut"), SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 48000, 1, loud[0]);
    QVERIFY(QFile::resize(QString::fromStdString(in), QFileInfo(path("cut").c_str()).size() / 2));
    dsp::Settings settings = neutral();
    settings.sourceDb = 10;
    QVERIFY2(renders({in, path("out.wav"), settings, false}), m_error.c_str());
    const QString remark = QString::fromStdString(m_report.remark);
    QVERIFY2(remark.contains(QRegularExpression("cut short after 0\\.[45] s; the limiter took up to")),
             qPrintable(remark));
}

void TestRender::failureLeavesNoFileAndAnOldOneAsItWas()
{
    QFile old(m_folder.filePath("old.wav"));
    QVERIFY(old.open(QIODevice::WriteOnly));
    old.write("precious");
    old.close();
    QVERIFY(!renders({path("missing.wav"), path("old.wav"), neutral(), false}));
    QVERIFY2(m_error.find("missing.wav") != std::string::npos, m_error.c_str());
    QVERIFY(old.open(QIODevice::ReadOnly));
    QCOMPARE(old.readAll(), QByteArray("precious"));

    // A folder that doesn't exist, a folder, a medium that gets full, over an old file and where none was.
    const std::string in = noise(48000, 200000);
    QVERIFY(nodes::pipe(path("pipe")));
    const QStringList before = entries();
    for (const std::string& out : {path("no/such/folder.wav"), m_folder.path().toStdString(), path("pipe"),
                                   path("old.wav"), path("full.wav")}) {
        const MediumOf room(1000000);
        QVERIFY2(!renders({in, out, neutral(), false}), out.c_str());
        QVERIFY2(m_error.find("'" + out + "'") != std::string::npos, m_error.c_str());
    }
    QVERIFY2(m_error.find("full") != std::string::npos, m_error.c_str());
    QCOMPARE(entries(), before);
    QVERIFY(nodes::kind(path("pipe")) == S_IFIFO);
    QVERIFY(old.seek(0));
    QCOMPARE(old.readAll(), QByteArray("precious"));
}

void TestRender::outputIsReplacedWhereItsLinkLeads()
{
    const std::string in = noise(48000, 1000);
    QFile old(m_folder.filePath("linked.wav"));
    QVERIFY(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
    old.close();
    QVERIFY(QFile::link("linked.wav", m_folder.filePath("link.wav")));
    QVERIFY2(renders({in, path("link.wav"), neutral(), false}), m_error.c_str());
    QVERIFY(nodes::kind(path("link.wav")) == S_IFLNK);
    QCOMPARE((long long)(files::read(path("linked.wav")).info.frames), m_report.frames);
}

void TestRender::inputAsOutputIsRefusedByAnyName()
{
    const std::string in = noise(48000, 100);
    QVERIFY(QFile::link("in.wav", m_folder.filePath("same-link.wav")));
    QCOMPARE(link(in.c_str(), path("same-file.wav").c_str()), 0);
    const QStringList before = entries();
    for (const char* name : {"in.wav", "same-link.wav", "same-file.wav"})
        for (const auto& job : {std::make_pair(in, path(name)), {path(name), in}}) {
            QVERIFY(!renders({job.first, job.second, neutral(), false}));
            QVERIFY2(m_error.find("it is the file that is read") != std::string::npos, m_error.c_str());
        }
    QCOMPARE(int(files::read(in).info.frames), 100);
    QCOMPARE(entries(), before);
}

QTEST_GUILESS_MAIN(TestRender)
#include "tst_render.moc"
