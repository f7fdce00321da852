#include "tests/platform/hvaudio/files/files.h"

#include "platform/hvaudio/files/soundlength.h"

#include <QtEndian>
#include <QtTest>

#include <cmath>

#include <sys/mman.h>
#include <unistd.h>

using namespace hvaudio;

namespace {

QByteArray big(quint32 number)
{
    const quint32 swapped = qToBigEndian(number);
    return QByteArray(reinterpret_cast<const char*>(&swapped), 4);
}

QByteArray little(quint32 number)
{
    const quint32 swapped = qToLittleEndian(number);
    return QByteArray(reinterpret_cast<const char*>(&swapped), 4);
}

/// What a function says of a file with these contents. It lies in memory: thousands of them are looked at.
template <typename Function>
auto of(Function function, const QByteArray& contents)
{
    const int file = memfd_create("sound", MFD_CLOEXEC);
    if (file < 0 || write(file, contents.constData(), std::size_t(contents.size())) != contents.size())
        qFatal("can't write into memory");
    const auto result = function(file);
    close(file);
    return result;
}

bool ends(const QByteArray& contents)
{
    return of(endsEarly, contents);
}

} // namespace

class TestSoundLength : public QObject
{
    Q_OBJECT

private slots:
    void cutFileEndsEarlyAndAWholeOneDoesNot_data();
    void cutFileEndsEarlyAndAWholeOneDoesNot();
    void sizeThatAStreamLeavesOpenPromisesNothing_data();
    void sizeThatAStreamLeavesOpenPromisesNothing();
    void longFormOfASizeCounts_data();
    void longFormOfASizeCounts();
    void whatStandsBehindTheSoundDoesNotMatter_data();
    void whatStandsBehindTheSoundDoesNotMatter();
    void chunksBeforeTheSoundArePassed();
    void sizeLeftOpenIsThatOfAllThatFollows_data();
    void sizeLeftOpenIsThatOfAllThatFollows();
    void sizeThatIsMeantIsNotOpen_data();
    void sizeThatIsMeantIsNotOpen();
    void firstFrameOfAnMp3WithoutATagIsFound();
    void mp3WithoutATagEndsWithinAFrame();
    void mp3TagOfTheOtherKindCounts();
    void mp3BehindItsLabelIsFound();
    void oggIsCutBetweenPages();
    void flacIsLeftToItsDecoder();
    void nonsenseIsSurvived();
    void positionStays();

private:
    /// Two seconds of two sines in stereo.
    QByteArray sound(int format);
    QByteArray mp3() { return sound(SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III); }

    QTemporaryDir folder;
};

QByteArray TestSoundLength::sound(int format)
{
    std::vector<float> samples;
    for (int n = 0; n < 96000; ++n)
        for (const double hz : {440.0, 3000.0})
            samples.push_back(float(0.3 * std::sin(2 * M_PI * hz * n / 48000)));
    const std::string path = files::write(folder.filePath("sound").toStdString(), format, 48000, 2, samples);
    QFile file(QString::fromStdString(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void TestSoundLength::cutFileEndsEarlyAndAWholeOneDoesNot_data()
{
    QTest::addColumn<int>("format");
    // clang-format off
    QTest::newRow("WAV, 16 bit")     << int(SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    QTest::newRow("WAV, float")      << int(SF_FORMAT_WAV | SF_FORMAT_FLOAT);
    QTest::newRow("WAV, extensible") << int(SF_FORMAT_WAVEX | SF_FORMAT_PCM_24);
    QTest::newRow("WAV, big endian") << int(SF_FORMAT_WAV | SF_FORMAT_PCM_16 | SF_ENDIAN_BIG);
    QTest::newRow("RF64")            << int(SF_FORMAT_RF64 | SF_FORMAT_FLOAT);
    QTest::newRow("Wave64")          << int(SF_FORMAT_W64 | SF_FORMAT_PCM_16);
    QTest::newRow("AIFF")            << int(SF_FORMAT_AIFF | SF_FORMAT_PCM_16);
    QTest::newRow("AIFC")            << int(SF_FORMAT_AIFF | SF_FORMAT_FLOAT);
    QTest::newRow("CAF")             << int(SF_FORMAT_CAF | SF_FORMAT_PCM_16);
    QTest::newRow("AU")              << int(SF_FORMAT_AU | SF_FORMAT_PCM_16);
    QTest::newRow("Ogg, Vorbis")     << int(SF_FORMAT_OGG | SF_FORMAT_VORBIS);
    QTest::newRow("Ogg, Opus")       << int(SF_FORMAT_OGG | SF_FORMAT_OPUS);
    QTest::newRow("MP3")             << int(SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III);
    // clang-format on
}

void TestSoundLength::cutFileEndsEarlyAndAWholeOneDoesNot()
{
    QFETCH(int, format);
    const QByteArray whole = sound(format);
    QVERIFY(whole.size() > 5000);
    QVERIFY(!ends(whole));
    for (const int percent : {30, 50, 65, 90, 99})
        QVERIFY2(ends(whole.left(whole.size() * percent / 100)), qPrintable(QString::number(percent)));
}

void TestSoundLength::sizeThatAStreamLeavesOpenPromisesNothing_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("size");
    const int wav = SF_FORMAT_WAV | SF_FORMAT_PCM_16, aiff = SF_FORMAT_AIFF | SF_FORMAT_PCM_16;
    // clang-format off
    QTest::newRow("WAV: none")                     << wav  << QByteArray("data") << little(0);
    QTest::newRow("WAV: the largest")              << wav  << QByteArray("data") << little(0xffffffff);
    QTest::newRow("WAV: the largest of frames")    << wav  << QByteArray("data") << little(0xffffffd8);
    QTest::newRow("WAV: the largest with a sign")  << wav  << QByteArray("data") << little(0x7fffffff);
    QTest::newRow("WAV: SoX's")                    << wav  << QByteArray("data") << little(0x7ffff000);
    QTest::newRow("WAV: arecord's")                << wav  << QByteArray("data") << little(0x80000000);
    QTest::newRow("AIFF: none")                    << aiff << QByteArray("SSND") << big(0);
    QTest::newRow("AIFF: SoX's")                   << aiff << QByteArray("SSND") << big(0x7f000008);
    QTest::newRow("AU: the largest") << int(SF_FORMAT_AU  | SF_FORMAT_PCM_16) << QByteArray(".snd") << QByteArray();
    QTest::newRow("CAF: -1")         << int(SF_FORMAT_CAF | SF_FORMAT_PCM_16) << QByteArray("data") << QByteArray(8, char(0xff));
    QTest::newRow("Wave64: the largest") << int(SF_FORMAT_W64 | SF_FORMAT_PCM_16)
        << QByteArray::fromHex("64617461f3acd3118cd100c04f8edb8a") << QByteArray::fromHex("ffffffffffffff7f");
    // clang-format on
}

void TestSoundLength::sizeThatAStreamLeavesOpenPromisesNothing()
{
    QFETCH(int, format);
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, size);
    QByteArray stream = sound(format);
    int at = stream.indexOf(before);
    QVERIFY(at >= 0);
    at += before.size();
    if (size.isEmpty()) { // AU: behind the place of the sound
        at += 4;
        size = big(0xffffffff);
    }
    stream.replace(at, size.size(), size);
    QVERIFY(!ends(stream));
    QVERIFY(!ends(stream.left(stream.size() / 2)));
    // A size that says something, in the same place, is believed.
    stream.replace(at, size.size(), QByteArray(size.size(), 1));
    QVERIFY(ends(stream));
}

void TestSoundLength::longFormOfASizeCounts_data()
{
    QTest::addColumn<QByteArray>("size");
    QTest::addColumn<bool>("early");
    QTest::newRow("as many") << QByteArray::fromHex("e803000000000000") << false;
    QTest::newRow("one more") << QByteArray::fromHex("e903000000000000") << true;
    QTest::newRow("more than 32 bits hold") << QByteArray::fromHex("0000000001000000") << true;
    QTest::newRow("none") << QByteArray(8, 0) << false;
    QTest::newRow("the largest") << QByteArray(8, char(0xff)) << false;
}

void TestSoundLength::longFormOfASizeCounts()
{
    QFETCH(QByteArray, size);
    QFETCH(bool, early);
    for (const char* magic : {"RF64", "BW64"}) {
        const QByteArray file = magic + little(0xffffffff) + "WAVEds64" + little(28) + QByteArray(8, 0) +
                                size + QByteArray(12, 0) + "data" + little(0xffffffff) + QByteArray(1000, 0);
        QCOMPARE(ends(file), early);
    }
}

void TestSoundLength::whatStandsBehindTheSoundDoesNotMatter_data()
{
    QTest::addColumn<int>("format");
    QTest::newRow("WAV") << int(SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    QTest::newRow("Ogg") << int(SF_FORMAT_OGG | SF_FORMAT_VORBIS);
    QTest::newRow("MP3") << int(SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III);
}

void TestSoundLength::whatStandsBehindTheSoundDoesNotMatter()
{
    QFETCH(int, format);
    QVERIFY(!ends(sound(format) + "TAG" + QByteArray(125, 'x')));
}

void TestSoundLength::chunksBeforeTheSoundArePassed()
{
    // One of odd length, which is padded, and one in whose contents the word stands.
    const QByteArray head = "RIFF" + little(0) + "WAVELIST" + little(3) + QByteArray(4, 'x') + "JUNK" +
                            little(12) + "data" + little(9999) + "xxxx";
    QVERIFY(!ends(head + "data" + little(100) + QByteArray(100, 0)));
    QVERIFY(ends(head + "data" + little(101) + QByteArray(100, 0)));
    // One that is itself cut off: there is no sound at all, and its reader says so.
    QVERIFY(!ends("RIFF" + little(0) + "WAVELIST" + little(300) + QByteArray(100, 'x')));
}

void TestSoundLength::sizeLeftOpenIsThatOfAllThatFollows_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<quint64>("at");
    QTest::addColumn<int>("bytes");
    QTest::addColumn<bool>("bigEndian");
    QTest::addColumn<quint64>("value");
    const QByteArray all8(8, char(0xff)), guid(12, 'g');
    // clang-format off
    QTest::newRow("WAV, none")        << "RIFF" + little(0) + "WAVEdata" + little(0)          << quint64(16) << 4 << false << quint64(1000);
    QTest::newRow("WAV, the largest") << "RIFF" + little(0) + "WAVEdata" + little(0xffffffff) << quint64(16) << 4 << false << quint64(1000);
    QTest::newRow("WAV, big endian")  << "RIFX" + big(0) + "WAVEdata" + big(0)                << quint64(16) << 4 << true  << quint64(1000);
    QTest::newRow("AIFF")             << "FORM" + big(0) + "AIFFSSND" + big(0)                << quint64(16) << 4 << true  << quint64(1000);
    QTest::newRow("CAF")              << QByteArray("caff") + QByteArray(4, 0) + "data" + all8 << quint64(12) << 8 << true  << quint64(1000);
    QTest::newRow("Wave64, which counts name and size") << "riff" + guid + QByteArray(8, 0) + "wave" + guid + "data" + guid + QByteArray(8, 0)
                                                                                             << quint64(56) << 8 << false << quint64(1024);
    QTest::newRow("RF64, in its long form") << "RF64" + little(0xffffffff) + "WAVEds64" + little(28) + QByteArray(28, 0) + "data" + little(0xffffffff)
                                                                                             << quint64(28) << 8 << false << quint64(1000);
    // clang-format on
}

void TestSoundLength::sizeLeftOpenIsThatOfAllThatFollows()
{
    QFETCH(QByteArray, head);
    QFETCH(quint64, at);
    QFETCH(int, bytes);
    QFETCH(bool, bigEndian);
    QFETCH(quint64, value);
    const auto size = of(sizeLeftOpen, head + QByteArray(1000, 0));
    QVERIFY(size);
    QCOMPARE(quint64(size->at), at);
    QCOMPARE(size->bytes, bytes);
    QCOMPARE(size->bigEndian, bigEndian);
    QCOMPARE(quint64(size->value), value);
}

void TestSoundLength::sizeThatIsMeantIsNotOpen_data()
{
    QTest::addColumn<QByteArray>("file");
    const QByteArray head = "RIFF" + little(0) + "WAVEdata";
    QTest::newRow("all there") << head + little(1000) + QByteArray(1000, 0);
    QTest::newRow("more than there is") << head + little(2000) + QByteArray(1000, 0);
    QTest::newRow("none, at the end") << head + little(0);
    QTest::newRow("none, before another chunk") << head + little(0) + "LIST" + little(8) + "INFOxxxx";
    QTest::newRow("no sound at all") << "RIFF" + little(0) + "WAVELIST" + little(4) + "INFO";
    QTest::newRow("another format") << ".snd" + big(24) + big(0xffffffff) + QByteArray(1000, 0);
    QTest::newRow("empty") << QByteArray();
}

void TestSoundLength::sizeThatIsMeantIsNotOpen()
{
    QFETCH(QByteArray, file);
    QVERIFY(!of(sizeLeftOpen, file));
}

void TestSoundLength::firstFrameOfAnMp3WithoutATagIsFound()
{
    const QByteArray tagged = mp3(), plain = files::withoutTag(tagged);
    QVERIFY(!plain.isEmpty() && plain.size() < tagged.size());
    QVERIFY(!of(untaggedMp3, tagged));
    QCOMPARE(of(untaggedMp3, plain).value_or(99), std::uint64_t(0));
    QCOMPARE(of(untaggedMp3, QByteArray(3000, 0) + plain).value_or(0), std::uint64_t(3000));
    QVERIFY(!of(untaggedMp3, QByteArray(3000, 0)));
    for (const int format : {SF_FORMAT_WAV | SF_FORMAT_PCM_16, SF_FORMAT_FLAC | SF_FORMAT_PCM_16,
                             SF_FORMAT_OGG | SF_FORMAT_VORBIS, SF_FORMAT_AU | SF_FORMAT_PCM_16})
        QVERIFY(!of(untaggedMp3, sound(format)));
}

void TestSoundLength::mp3WithoutATagEndsWithinAFrame()
{
    const QByteArray plain = files::withoutTag(mp3());
    QVERIFY(plain.size() > 3000);
    QVERIFY(!ends(plain));
    QVERIFY(!ends(plain + "TAG" + QByteArray(125, 'x')));
    QVERIFY(!ends(QByteArray(3000, 0) + plain));
    QVERIFY(ends(plain.left(plain.size() - 1)));
    int early = 0;
    for (int cut = 1; cut <= 100; ++cut)
        early += ends(plain.left(plain.size() / 2 + cut));
    QVERIFY2(early >= 90, qPrintable(QString::number(early))); // the rest falls between two frames
}

void TestSoundLength::mp3TagOfTheOtherKindCounts()
{
    QByteArray file = mp3();
    int at = file.indexOf("Xing");
    at = at < 0 ? file.indexOf("Info") : at;
    QVERIFY(at > 0);
    const quint32 size = quint32(file.size() - file.indexOf('\xff'));
    file.replace(at, 18, "VBRI" + QByteArray(6, 0) + big(size) + big(80));
    QVERIFY(!ends(file));
    file.replace(at, 18, "VBRI" + QByteArray(6, 0) + big(size + 1) + big(80));
    QVERIFY(ends(file));
}

void TestSoundLength::mp3BehindItsLabelIsFound()
{
    // Two of them. The first has a footer, and its 300 bytes (2 * 128 + 44) would pass for frames.
    const QByteArray footed = QByteArray::fromHex("4944330400100000022c") + QByteArray(300, '\xff') +
                              QByteArray::fromHex("3344490400100000022c");
    const QByteArray plain = QByteArray::fromHex("4944330300000000000a") + QByteArray(10, 'x');
    const QByteArray file = footed + plain + mp3();
    QVERIFY(!ends(file));
    QVERIFY(ends(file.left(file.size() - 1)));
}

void TestSoundLength::oggIsCutBetweenPages()
{
    const QByteArray whole = sound(SF_FORMAT_OGG | SF_FORMAT_VORBIS);
    const int last = whole.lastIndexOf("OggS");
    QVERIFY(last > 1000);
    QVERIFY(ends(whole.left(last)));
    QVERIFY(ends(whole.left(last + 2)));
    QVERIFY(ends(whole.left(last + 4)));
    QVERIFY(ends(whole.left(last + 20)));
    QVERIFY(ends(whole.left(last + 28)));
    QVERIFY(ends(whole.left(whole.size() - 1)));
}

void TestSoundLength::flacIsLeftToItsDecoder()
{
    const QByteArray whole = sound(SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    QVERIFY(!ends(whole) && !ends(whole.left(whole.size() / 2)));
}

void TestSoundLength::nonsenseIsSurvived()
{
    unsigned state = 1;
    const auto random = [&state] { return char((state = state * 1664525u + 1013904223u) >> 24); };
    for (const char* magic : {"RIFF", "RIFX", "RF64", "BW64", "riff", "FORM", "caff", ".snd", "OggS", "fLaC",
                              "ID3", "\xff\xfb", ""})
        for (int length = 0; length < 200; ++length)
            for (const bool noise : {false, true}) {
                QByteArray file = magic;
                while (file.size() < length)
                    file.append(noise ? random() : '\0');
                ends(file);
                of(sizeLeftOpen, file);
                of(untaggedMp3, file);
            }
    // Chunks without end.
    QVERIFY(!ends("RIFF" + QByteArray(1000000, 0)));
    // An Ogg file's last page is looked for where it can be.
    QVERIFY(!ends("OggS" + QByteArray(1000000, 'x')));
}

void TestSoundLength::positionStays()
{
    QFile file(folder.filePath("position"));
    QVERIFY(file.open(QIODevice::ReadWrite) && file.write(mp3()) > 1000 && file.flush());
    QCOMPARE(lseek(file.handle(), 123, SEEK_SET), off_t(123));
    QVERIFY(!endsEarly(file.handle()));
    QCOMPARE(lseek(file.handle(), 0, SEEK_CUR), off_t(123));
    QVERIFY(!endsEarly(-1));
}

QTEST_GUILESS_MAIN(TestSoundLength)
#include "tst_soundlength.moc"
