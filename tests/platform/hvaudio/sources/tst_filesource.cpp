#include "platform/hvaudio/sources/filesource.h"

#include "tests/platform/hvaudio/files/files.h"

#include <QtTest>

using namespace hvaudio;

namespace {

std::vector<float> left(Source& source, int frames)
{
    std::vector<float> left(std::size_t(frames), 0.0f), right(left);
    const float* const in[2] = {};
    source.render(in, left.data(), right.data(), frames);
    return left;
}

} // namespace

class TestFileSource : public QObject
{
    Q_OBJECT

private slots:
    void fileIsRepeatedWithoutAGap();
    void fileThatCantBeReadIsRefused();
};

void TestFileSource::fileIsRepeatedWithoutAGap()
{
    QTemporaryDir folder;
    // Lengths that fit no block, one of them shorter than any.
    for (int length : {7, 1000, 100003}) {
        std::vector<float> samples;
        for (int n = 0; n < length; ++n)
            samples.push_back(float(n + 1) / float(length));
        const std::string path = files::write(folder.filePath("loop.wav").toStdString(),
                                              SF_FORMAT_WAV | SF_FORMAT_FLOAT, 48000, 1, samples);
        std::string error;
        const auto source = FileSource::open(path, 48000, error);
        QVERIFY2(source, error.c_str());
        for (int n = 0; n < 3 * length + 20000;) {
            const auto out = left(*source, 4096);
            for (float x : out) {
                QCOMPARE(x, samples[std::size_t(n % length)]);
                ++n;
            }
            QVERIFY(source->readAhead() > 0 && !source->isExhausted());
        }
    }
}

void TestFileSource::fileThatCantBeReadIsRefused()
{
    std::string error;
    QVERIFY(!FileSource::open("/nowhere/at-all.flac", 48000, error));
    QVERIFY2(error.find("/nowhere/at-all.flac") != std::string::npos, error.c_str());
}

QTEST_GUILESS_MAIN(TestFileSource)
#include "tst_filesource.moc"
