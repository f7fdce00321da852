#include "tests/platform/hvaudio/files/files.h"
#include "tests/platform/hvaudio/files/nodes.h"

#include "platform/hvaudio/files/soundfile.h"

#include <QtTest>

#include <atomic>
#include <chrono>
#include <cmath>
#include <future>
#include <numeric>
#include <thread>

#include <fcntl.h>

using namespace hvaudio;

namespace {

std::vector<StereoFrame> readAll(SoundFile& file)
{
    std::vector<StereoFrame> all, piece(777);
    for (;;) {
        const int got = file.read(piece.data(), int(piece.size()));
        all.insert(all.end(), piece.begin(), piece.begin() + got);
        if (got < int(piece.size()))
            return all;
    }
}

std::unique_ptr<SoundFile> open(const std::string& path, std::string& error, double rate = 0)
{
    return SoundFile::open(path, rate, SoundFile::Quality::Rendering, error);
}

std::vector<float> sine(int frames, int channels, double hz, double rate)
{
    std::vector<float> samples;
    for (int n = 0; n < frames; ++n)
        samples.insert(samples.end(), std::size_t(channels), float(0.5 * std::sin(2 * M_PI * hz * n / rate)));
    return samples;
}

} // namespace

class TestSoundFile : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_error.clear(); }
    void everyFormatIsRead_data();
    void everyFormatIsRead();
    void channelsAreMixedDownByTheStatedLaw_data();
    void channelsAreMixedDownByTheStatedLaw();
    void nineChannelsAreRefused();
    void ratesAreConverted_data();
    void ratesAreConverted();
    void unreadableFilesAreRefusedWithAMessage_data();
    void unreadableFilesAreRefusedWithAMessage();
    void whatIsNoFileIsRefusedWithoutWaiting_data();
    void whatIsNoFileIsRefusedWithoutWaiting();
    void writerOfAPipeIsNotWokenByTheRefusal();
    void mp3BehindSomethingElseIsKnownByItsName();
    void truncatedFileGivesWhatItHas_data();
    void truncatedFileGivesWhatItHas();
    void damagedMp3ComesToItsEnd_data();
    void damagedMp3ComesToItsEnd();
    void framesThatFlacPromisesAndLacksAreTold();
    void lengthThatAPipeLeavesOpenIsNoFault();
    void soundBehindAnOpenSizeIsReadToTheEnd_data();
    void soundBehindAnOpenSizeIsReadToTheEnd();
    void notANumberIsSilence();
    void rewindReadsTheSameAgain();

private:
    std::string path(const char* name) const { return m_folder.filePath(name).toStdString(); }
    QTemporaryDir m_folder;
    std::string m_error;
};

void TestSoundFile::everyFormatIsRead_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<double>("tolerance");
    // clang-format off
    QTest::newRow("WAV, 16 bit")   << int(SF_FORMAT_WAV | SF_FORMAT_PCM_16)              << 1e-4;
    QTest::newRow("WAV, 24 bit")   << int(SF_FORMAT_WAV | SF_FORMAT_PCM_24)              << 1e-6;
    QTest::newRow("WAV, float")    << int(SF_FORMAT_WAV | SF_FORMAT_FLOAT)               << 1e-9;
    QTest::newRow("AIFF, 16 bit")  << int(SF_FORMAT_AIFF | SF_FORMAT_PCM_16)             << 1e-4;
    QTest::newRow("FLAC")          << int(SF_FORMAT_FLAC | SF_FORMAT_PCM_16)             << 1e-4;
    QTest::newRow("Ogg, Vorbis")   << int(SF_FORMAT_OGG | SF_FORMAT_VORBIS)              << 0.05;
    QTest::newRow("Ogg, Opus")     << int(SF_FORMAT_OGG | SF_FORMAT_OPUS)                << 0.05;
    QTest::newRow("MP3")           << int(SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III)     << 0.05;
    // clang-format on
}

void TestSoundFile::everyFormatIsRead()
{
    QFETCH(int, format);
    QFETCH(double, tolerance);
    const auto written = sine(48000, 2, 440, 48000);
    const std::string file = files::write(path("any"), format, 48000, 2, written);
    QVERIFY(!file.empty());
    const auto sound = open(file, m_error);
    QVERIFY2(sound, m_error.c_str());
    QCOMPARE(sound->channels(), 2);
    QCOMPARE(sound->fileRate(), 48000);
    const auto all = readAll(*sound);
    QVERIFY(all.size() >= 48000 - 1200 && all.size() <= 48000 + 2400); // coders pad
    // Level and pitch in the middle; lossy formats may be shifted by their delay.
    double re = 0, im = 0;
    for (int n = 12000; n < 36000; ++n) {
        re += all[std::size_t(n)].left * std::cos(2 * M_PI * 440 * n / 48000) / 12000;
        im += all[std::size_t(n)].left * std::sin(2 * M_PI * 440 * n / 48000) / 12000;
    }
    QVERIFY2(std::abs(std::hypot(re, im) - 0.5) < std::max(tolerance, 1e-4),
             qPrintable(QString::number(std::hypot(re, im))));
    if (tolerance < 0.01)
        for (std::size_t n = 0; n < all.size(); ++n)
            QVERIFY(std::abs(all[n].right - written[2 * n + 1]) < float(tolerance));
}

void TestSoundFile::channelsAreMixedDownByTheStatedLaw_data()
{
    using Weights = QVector<double>;
    const double s = std::sqrt(0.5);
    QTest::addColumn<Weights>("left");
    QTest::addColumn<Weights>("right");
    // clang-format off
    QTest::newRow("mono")            << Weights{1}                      << Weights{1};
    QTest::newRow("stereo")          << Weights{1, 0}                   << Weights{0, 1};
    QTest::newRow("with centre")     << Weights{1, 0, s}                << Weights{0, 1, s};
    QTest::newRow("four corners")    << Weights{1, 0, s, 0}             << Weights{0, 1, 0, s};
    QTest::newRow("five")            << Weights{1, 0, s, s, 0}          << Weights{0, 1, s, 0, s};
    QTest::newRow("5.1")             << Weights{1, 0, s, 0, s, 0}       << Weights{0, 1, s, 0, 0, s};
    QTest::newRow("6.1")             << Weights{1, 0, s, 0, s, s, 0}    << Weights{0, 1, s, 0, s, 0, s};
    QTest::newRow("7.1")             << Weights{1, 0, s, 0, s, 0, s, 0} << Weights{0, 1, s, 0, 0, s, 0, s};
    // clang-format on
}

void TestSoundFile::channelsAreMixedDownByTheStatedLaw()
{
    QFETCH(QVector<double>, left);
    QFETCH(QVector<double>, right);
    const int channels = left.size();
    // One frame for each channel in which it alone is 1.
    std::vector<float> samples(std::size_t(channels * channels));
    for (int c = 0; c < channels; ++c)
        samples[std::size_t(c * channels + c)] = 1;
    const std::string file =
        files::write(path("channels.wav"), SF_FORMAT_WAV | SF_FORMAT_FLOAT, 48000, channels, samples);
    const auto sound = open(file, m_error);
    QVERIFY2(sound, m_error.c_str());
    const auto all = readAll(*sound);
    QCOMPARE(int(all.size()), channels);
    const double sumLeft = std::accumulate(left.begin(), left.end(), 0.0);
    const double sumRight = std::accumulate(right.begin(), right.end(), 0.0);
    for (int c = 0; c < channels; ++c) {
        QVERIFY(std::abs(all[std::size_t(c)].left - left[c] / sumLeft) < 1e-6);
        QVERIFY(std::abs(all[std::size_t(c)].right - right[c] / sumRight) < 1e-6);
    }
}

void TestSoundFile::nineChannelsAreRefused()
{
    const std::string file = files::write(path("nine.wav"), SF_FORMAT_WAV | SF_FORMAT_FLOAT, 48000, 9,
                                          std::vector<float>(90, 0.1f));
    QVERIFY(!open(file, m_error));
    QVERIFY2(QString::fromStdString(m_error).contains("9 channels"), m_error.c_str());
}

void TestSoundFile::ratesAreConverted_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<double>("to");
    for (int from : {8000, 11025, 22050, 37800, 44100, 48000, 96000, 192000, 47999})
        for (double to : {44100.0, 48000.0, 96000.0})
            QTest::addRow("%d to %d", from, int(to)) << from << to;
}

void TestSoundFile::ratesAreConverted()
{
    QFETCH(int, from);
    QFETCH(double, to);
    const std::string file = files::write(path("rate.wav"), SF_FORMAT_WAV | SF_FORMAT_FLOAT, from, 1,
                                          sine(from / 2, 1, 1000, from));
    const auto sound = open(file, m_error, to);
    QVERIFY2(sound, m_error.c_str());
    QCOMPARE(sound->rate(), to);
    const auto all = readAll(*sound);
    QVERIFY2(std::abs(double(all.size()) - double(from / 2) * to / from) <= 2,
             qPrintable(QString::number(all.size())));
    // The same sine, at the same time.
    double worst = 0;
    for (int n = int(0.1 * to); n < int(0.4 * to); ++n)
        worst = std::max(
            worst, std::abs(double(all[std::size_t(n)].left) - 0.5 * std::sin(2 * M_PI * 1000 * n / to)));
    QVERIFY2(worst < 1e-4, qPrintable(QString::number(worst)));
}

void TestSoundFile::unreadableFilesAreRefusedWithAMessage_data()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<QString>("says");
    QByteArray header;
    {
        const std::string file =
            files::write(path("header.wav"), SF_FORMAT_WAV | SF_FORMAT_PCM_16, 48000, 2, {});
        QFile whole(QString::fromStdString(file));
        QVERIFY(whole.open(QIODevice::ReadOnly));
        header = whole.readAll();
    }
    // clang-format off
    QTest::newRow("not there")              << QByteArray()                             << "can't read";
    QTest::newRow("empty")                  << QByteArray("")                           << "can't";
    QTest::newRow("text")                   << QByteArray("this is not a sound\n")      << "can't read";
    QTest::newRow("header cut short")       << header.left(20)                          << "can't";
    QTest::newRow("header without sound")   << header                                   << "no sound";
    QTest::newRow("Ogg page of nonsense")   << QByteArray("OggS") + QByteArray(200, 'x') << "can't read";
    QTest::newRow("FLAC of nonsense")       << QByteArray("fLaC") + QByteArray(200, 'x') << "can't";
    // clang-format on
}

void TestSoundFile::unreadableFilesAreRefusedWithAMessage()
{
    QFETCH(QByteArray, contents);
    QFETCH(QString, says);
    const QString name = m_folder.filePath("unreadable");
    QFile::remove(name);
    if (!contents.isNull()) {
        QFile file(name);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(contents);
    }
    QVERIFY(!open(name.toStdString(), m_error));
    const QString text = QString::fromStdString(m_error);
    QVERIFY2(text.contains(says) && text.contains(name) && !text.contains('\n'), m_error.c_str());
}

void TestSoundFile::whatIsNoFileIsRefusedWithoutWaiting_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("says");
    QTest::newRow("pipe that nobody writes") << "pipe"
                                             << "it is a pipe";
    QTest::newRow("link to it") << "link"
                                << "it is a pipe";
    QTest::newRow("socket") << "socket"
                            << "it is a socket";
    QTest::newRow("folder") << "."
                            << "it is a folder";
}

void TestSoundFile::whatIsNoFileIsRefusedWithoutWaiting()
{
    QFETCH(QString, name);
    QFETCH(QString, says);
    QTemporaryDir place;
    const std::string base = place.path().toStdString() + "/";
    QVERIFY(nodes::pipe(base + "pipe") && nodes::socket(base + "socket"));
    QVERIFY(QFile::link("pipe", place.filePath("link")));
    QVERIFY(!open(base + name.toStdString(), m_error)); // whoever waits here waits for ever
    const QString text = QString::fromStdString(m_error);
    QVERIFY2(text.contains(says) && text.contains("'" + place.path() + "/" + name + "'"), m_error.c_str());
}

void TestSoundFile::writerOfAPipeIsNotWokenByTheRefusal()
{
    QTemporaryDir place;
    const std::string pipe = place.path().toStdString() + "/pipe.wav";
    QVERIFY(nodes::pipe(pipe));
    std::atomic<int> writer{-2};
    std::thread waiting([&] { writer = ::open(pipe.c_str(), O_WRONLY | O_CLOEXEC); });
    std::string error;
    int opened = 0;
    for (int n = 0; n < 2000; ++n)
        opened += open(pipe, error) ? 1 : 0;
    const bool woken = writer.load() != -2;
    // Its real reader comes at last.
    const int reader = ::open(pipe.c_str(), O_RDONLY | O_CLOEXEC);
    waiting.join();
    QCOMPARE(opened, 0);
    QVERIFY(!woken);
    QVERIFY(writer.load() >= 0);
    close(writer.load());
    close(reader);
}

void TestSoundFile::mp3BehindSomethingElseIsKnownByItsName()
{
    const std::string file = files::write(path("plain.mp3"), SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 48000,
                                          2, sine(48000, 2, 440, 48000));
    QFile whole(QString::fromStdString(file));
    QVERIFY(whole.open(QIODevice::ReadWrite));
    const QByteArray contents = whole.readAll();
    QVERIFY(whole.seek(0) && whole.write(QByteArray(3000, 0) + contents) == 3000 + contents.size());
    whole.close();
    const auto sound = open(file, m_error);
    QVERIFY2(sound, m_error.c_str());
    QVERIFY(readAll(*sound).size() > 40000);
}

void TestSoundFile::truncatedFileGivesWhatItHas_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<double>("rate");
    // clang-format off
    QTest::newRow("WAV")                << int(SF_FORMAT_WAV | SF_FORMAT_PCM_16)          << 0.0;
    QTest::newRow("WAV, converted")     << int(SF_FORMAT_WAV | SF_FORMAT_PCM_16)          << 44100.0;
    QTest::newRow("FLAC")               << int(SF_FORMAT_FLAC | SF_FORMAT_PCM_16)         << 0.0;
    QTest::newRow("Ogg, Vorbis")        << int(SF_FORMAT_OGG | SF_FORMAT_VORBIS)          << 0.0;
    QTest::newRow("Ogg, Opus")          << int(SF_FORMAT_OGG | SF_FORMAT_OPUS)            << 0.0;
    QTest::newRow("MP3")                << int(SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III) << 0.0;
    // clang-format on
}

void TestSoundFile::truncatedFileGivesWhatItHas()
{
    QFETCH(int, format);
    QFETCH(double, rate);
    const std::string file = files::write(path("cut"), format, 48000, 2, sine(480000, 2, 440, 48000));
    std::size_t whole = 0;
    for (const bool cut : {false, true}) {
        if (cut)
            QVERIFY(QFile::resize(QString::fromStdString(file), QFileInfo(path("cut").c_str()).size() / 2));
        const auto sound = open(file, m_error, rate);
        QVERIFY2(sound, m_error.c_str());
        const auto all = readAll(*sound);
        QVERIFY(sound->rewind());
        QCOMPARE(readAll(*sound).size(), all.size());
        if (!cut) {
            whole = all.size();
            continue;
        }
        QVERIFY2(all.size() > whole / 10 && all.size() < whole * 3 / 4,
                 qPrintable(QString::number(all.size())));
        const double hz = 440 * 48000 / sound->rate() / 48000;
        double re = 0, im = 0; // lossy formats may be shifted by their delay
        for (int n = 4000; n < 14000; ++n) {
            re += all[std::size_t(n)].left * std::cos(2 * M_PI * hz * n) / 5000;
            im += all[std::size_t(n)].left * std::sin(2 * M_PI * hz * n) / 5000;
        }
        QVERIFY2(std::abs(std::hypot(re, im) - 0.5) < 0.05, qPrintable(QString::number(std::hypot(re, im))));
    }
}

void TestSoundFile::damagedMp3ComesToItsEnd_data()
{
    QTest::addColumn<double>("rate");
    QTest::newRow("as it is") << 0.0;
    QTest::newRow("converted") << 44100.0;
}

void TestSoundFile::damagedMp3ComesToItsEnd()
{
    QFETCH(double, rate);
    QFile good(QString::fromStdString(files::write(
        path("good.mp3"), SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 48000, 2, sine(240000, 2, 440, 48000))));
    QVERIFY(good.open(QIODevice::ReadOnly));
    const QByteArray whole = good.readAll();
    for (unsigned seed = 1; seed <= 12; ++seed) {
        // 2 to 8 KB of noise somewhere in it.
        unsigned state = seed;
        const auto random = [&state] { return (state = state * 1664525u + 1013904223u) >> 8; };
        QByteArray damaged = whole;
        const int length = 2048 + int(random() % 6144),
                  start = int(random() % unsigned(whole.size() - length));
        for (int n = 0; n < length; ++n)
            damaged[start + n] = char(random());
        QFile file(m_folder.filePath("damaged.mp3"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(damaged) == damaged.size());
        file.close();
        // On a thread of its own, so that one that never comes back is a failure and no more.
        const auto lengths = std::make_shared<std::promise<std::vector<std::size_t>>>();
        auto done = lengths->get_future();
        std::thread([lengths, rate, from = path("damaged.mp3")] {
            std::string error;
            std::vector<std::size_t> frames;
            if (const auto sound = open(from, error, rate)) {
                frames = {readAll(*sound).size(), readAll(*sound).size()};
                frames.push_back(sound->rewind() ? readAll(*sound).size() : 0);
            }
            lengths->set_value(frames);
        }).detach();
        QVERIFY2(done.wait_for(std::chrono::seconds(20)) == std::future_status::ready,
                 qPrintable(QString("seed %1 is never read to its end").arg(seed)));
        const std::vector<std::size_t> frames = done.get();
        if (frames.empty())
            continue; // it wasn't known for a sound any more
        const QByteArray row = QByteArray::number(seed);
        QVERIFY2(frames[0] <= 260000, row);
        QVERIFY2(frames[1] == 0, row);                       // the end stays the end
        QVERIFY2(frames[2] > 0 && frames[2] <= 260000, row); // until it is rewound
    }
}

void TestSoundFile::framesThatFlacPromisesAndLacksAreTold()
{
    const std::string file = files::write(path("cut.flac"), SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 48000, 2,
                                          sine(480000, 2, 440, 48000));
    for (const bool cut : {false, true}) {
        if (cut)
            QVERIFY(QFile::resize(QString::fromStdString(file), QFileInfo(file.c_str()).size() / 2));
        const auto sound = open(file, m_error);
        QVERIFY2(sound, m_error.c_str());
        QVERIFY(!sound->isCutShort());
        readAll(*sound);
        QCOMPARE(sound->isCutShort(), cut);
        QVERIFY(sound->rewind());
        QVERIFY(!sound->isCutShort()); // nobody has seen its end yet
        readAll(*sound);
        QCOMPARE(sound->isCutShort(), cut);
    }
}

void TestSoundFile::lengthThatAPipeLeavesOpenIsNoFault()
{
    // FLAC: 36 bits of the first block's fields hold the number of frames.
    const std::string file = files::write(path("stream.flac"), SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 48000, 2,
                                          sine(48000, 2, 440, 48000));
    QFile flac(QString::fromStdString(file));
    QVERIFY(flac.open(QIODevice::ReadWrite) && flac.seek(21));
    const char upper = char(flac.read(1)[0] & 0xf0);
    QVERIFY(flac.seek(21) && flac.write(upper + QByteArray(4, 0)) == 5);
    flac.close();
    for (const bool cut : {false, true}) {
        // Within a block the decoder notices, all the same.
        if (cut)
            QVERIFY(flac.resize(flac.size() / 2));
        const auto sound = open(file, m_error);
        QVERIFY2(sound, m_error.c_str());
        const auto all = readAll(*sound);
        QVERIFY(cut ? all.size() > 10000 : all.size() == 48000);
        QCOMPARE(sound->isCutShort(), cut);
    }
}

void TestSoundFile::soundBehindAnOpenSizeIsReadToTheEnd_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("size");
    const QByteArray none(4, 0), largest(4, char(0xff));
    const int pcm = SF_FORMAT_PCM_16;
    // clang-format off
    QTest::newRow("WAV, the largest") << int(SF_FORMAT_WAV | pcm)                 << QByteArray("data") << largest;
    QTest::newRow("AIFF, none")       << int(SF_FORMAT_AIFF | pcm)                << QByteArray("SSND") << none;
    QTest::newRow("Wave64, none")     << int(SF_FORMAT_W64 | pcm) << QByteArray::fromHex("64617461f3acd3118cd100c04f8edb8a") << QByteArray(8, 0);
    // clang-format on
}

void TestSoundFile::soundBehindAnOpenSizeIsReadToTheEnd()
{
    QFETCH(int, format);
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, size);
    const auto written = sine(30000, 2, 440, 48000);
    QFile file(QString::fromStdString(files::write(path("stream"), format, 48000, 2, written)));
    QVERIFY(file.open(QIODevice::ReadWrite));
    const int at = file.readAll().indexOf(before);
    QVERIFY(at > 0 && file.seek(at + before.size()) && file.write(size) == size.size());
    file.close();
    const auto sound = open(path("stream"), m_error);
    QVERIFY2(sound, m_error.c_str());
    for (int time = 0; time < 2; ++time) {
        const auto all = readAll(*sound);
        QVERIFY(!sound->isCutShort());
        QVERIFY2(all.size() >= 30000 && all.size() < 30010, qPrintable(QString::number(all.size())));
        for (std::size_t n = 0; n < 30000; ++n)
            QVERIFY(std::abs(all[n].right - written[2 * n + 1]) < 1e-4f);
        QVERIFY(sound->rewind());
    }
}

void TestSoundFile::notANumberIsSilence()
{
    std::vector<float> samples(200, 0.25f);
    samples[20] = NAN;
    samples[21] = INFINITY;
    const std::string file =
        files::write(path("nan.wav"), SF_FORMAT_WAV | SF_FORMAT_FLOAT, 48000, 2, samples);
    const auto sound = open(file, m_error, 44100);
    QVERIFY2(sound, m_error.c_str());
    for (const StereoFrame& frame : readAll(*sound))
        QVERIFY(std::isfinite(frame.left) && std::isfinite(frame.right));
}

void TestSoundFile::rewindReadsTheSameAgain()
{
    const std::string file = files::write(path("again.flac"), SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 44100, 2,
                                          sine(5000, 2, 700, 44100));
    const auto sound = open(file, m_error, 48000);
    QVERIFY2(sound, m_error.c_str());
    const auto first = readAll(*sound);
    QVERIFY(sound->rewind());
    const auto second = readAll(*sound);
    QCOMPARE(first.size(), second.size());
    for (std::size_t n = 0; n < first.size(); ++n)
        QVERIFY(first[n].left == second[n].left);
}

QTEST_GUILESS_MAIN(TestSoundFile)
#include "tst_soundfile.moc"
