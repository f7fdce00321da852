#include "platform/hvaudio/dsp/precision.h"

#include <QtTest>

using namespace hvaudio::dsp;

/// When the filters change between single and double precision.
class TestPrecision : public QObject
{
    Q_OBJECT

private slots:
    void startsInDouble();
    void singleComesOnlyAfterAWhileInWhichAllKeepEnough();
    void doubleComesWhenOneSpeakerKeepsTooLittle_data();
    void doubleComesWhenOneSpeakerKeepsTooLittle();
    void subwooferMayKeepLess();
    void quietSoundsCountLikeLoudOnes();
    void gainBehindTheMeasurementPlaysNoPart();
    void speakersThatAreTurnedDownAreNotAsked();
    void silenceChangesNothing();
    void loudMusicBeforeAQuietToneDoesNotDelayTheChange();
    void decisionsDoNotDependOnPieces();
    void clearIsAFreshStart();
};

namespace {

constexpr double rate = 48000;

/// A stationary sound: what goes in on both sides, and what each speaker keeps of it.
struct Sound
{
    double in = 1;
    double kept[speakerCount] = {1, 1, 1, 1, 1};
    float gain[speakerCount] = {1, 1, 1, 1, 1};
};

Sound losing(int speaker, double kept)
{
    Sound sound;
    sound.kept[speaker] = kept;
    return sound;
}

void play(Precision& precision, const Sound& sound, int frames, int piece = 512)
{
    for (int done = 0; done < frames;) {
        const int count = std::min({piece, frames - done, precision.room()});
        const double in[2] = {sound.in * count, sound.in * count};
        double out[speakerCount];
        for (int i = 0; i < speakerCount; ++i) {
            const double own = i == Subwoofer ? in[0] + in[1] : in[i & 1];
            out[i] = own * sound.kept[i] * sound.gain[i] * sound.gain[i];
        }
        precision.heard(in, out, sound.gain);
        precision.advance(count);
        done += count;
    }
}

/// In single precision.
Precision calm()
{
    Precision precision;
    precision.prepare(rate);
    play(precision, Sound(), int(rate));
    return precision;
}

} // namespace

void TestPrecision::startsInDouble()
{
    Precision precision;
    QVERIFY(precision.isDouble());
    precision.prepare(rate);
    QVERIFY(precision.isDouble());
}

void TestPrecision::singleComesOnlyAfterAWhileInWhichAllKeepEnough()
{
    Precision precision;
    precision.prepare(rate);
    play(precision, Sound(), int(0.15 * rate));
    QVERIFY(precision.isDouble());
    play(precision, losing(RearLeft, 0.001), int(0.3 * rate)); // starts the while anew
    play(precision, Sound(), int(0.15 * rate));
    QVERIFY(precision.isDouble());
    play(precision, Sound(), int(1 * rate));
    QVERIFY(!precision.isDouble());
}

void TestPrecision::doubleComesWhenOneSpeakerKeepsTooLittle_data()
{
    QTest::addColumn<int>("speaker");
    for (int i = 0; i < speakerCount; ++i)
        QTest::addRow("speaker %d", i) << i;
}

void TestPrecision::doubleComesWhenOneSpeakerKeepsTooLittle()
{
    QFETCH(int, speaker);
    Precision precision = calm();
    QVERIFY(!precision.isDouble());
    play(precision, losing(speaker, 0.2), int(rate));
    QVERIFY(!precision.isDouble());
    play(precision, losing(speaker, 0.002), int(rate));
    QVERIFY(precision.isDouble());
    // Not back at the edge, but well above it.
    play(precision, losing(speaker, speaker == Subwoofer ? 0.011 : 0.055), int(2 * rate));
    QVERIFY(precision.isDouble());
    play(precision, losing(speaker, 0.2), int(2 * rate));
    QVERIFY(!precision.isDouble());
}

void TestPrecision::subwooferMayKeepLess()
{
    Precision precision = calm();
    play(precision, losing(Subwoofer, 0.03), int(rate));
    QVERIFY(!precision.isDouble());
    play(precision, losing(FrontRight, 0.03), int(rate));
    QVERIFY(precision.isDouble());
}

void TestPrecision::quietSoundsCountLikeLoudOnes()
{
    Precision precision = calm();
    Sound quiet = losing(FrontLeft, 0.01);
    quiet.in = 1e-9;
    precision.clear();
    play(precision, Sound{1e-9}, int(rate));
    QVERIFY(!precision.isDouble());
    play(precision, quiet, int(rate));
    QVERIFY(precision.isDouble());
}

void TestPrecision::gainBehindTheMeasurementPlaysNoPart()
{
    Precision precision = calm();
    Sound sound;
    sound.gain[RearRight] = 0.001f;
    sound.gain[FrontLeft] = -1;
    play(precision, sound, int(rate));
    QVERIFY(!precision.isDouble());
    sound.kept[RearRight] = 0.001;
    play(precision, sound, int(rate));
    QVERIFY(precision.isDouble());
}

void TestPrecision::speakersThatAreTurnedDownAreNotAsked()
{
    Precision precision = calm();
    Sound sound = losing(FrontLeft, 0);
    sound.gain[FrontLeft] = 0;
    play(precision, sound, int(rate));
    QVERIFY(!precision.isDouble());
    // Once it is turned up it is like one after silence.
    sound.gain[FrontLeft] = 1;
    play(precision, sound, Precision::windowFrames);
    QVERIFY(precision.isDouble());
}

void TestPrecision::silenceChangesNothing()
{
    Precision precision = calm();
    play(precision, Sound{0}, int(rate));
    QVERIFY(!precision.isDouble());
    play(precision, losing(FrontLeft, 0.001), int(rate));
    QVERIFY(precision.isDouble());
    play(precision, Sound{0}, int(rate));
    QVERIFY(precision.isDouble());
}

void TestPrecision::loudMusicBeforeAQuietToneDoesNotDelayTheChange()
{
    Precision precision = calm();
    Sound tone = losing(FrontLeft, 0.001);
    tone.in = 1e-8;
    play(precision, tone, int(0.25 * rate));
    QVERIFY(precision.isDouble());
}

void TestPrecision::decisionsDoNotDependOnPieces()
{
    const auto frameOfTheChange = [](int piece) {
        Precision precision = calm();
        int frames = 0;
        while (!precision.isDouble() && frames < int(rate)) {
            const int count = std::min(piece, precision.room());
            play(precision, losing(FrontLeft, 0.001), count, piece);
            frames += count;
        }
        return frames;
    };
    const int wanted = frameOfTheChange(1024);
    QVERIFY(wanted > 0 && wanted < 24000);
    for (int piece : {1, 7, 64, 1000})
        QCOMPARE(frameOfTheChange(piece), wanted);
}

void TestPrecision::clearIsAFreshStart()
{
    Precision precision = calm();
    precision.clear();
    QVERIFY(precision.isDouble());
    play(precision, Sound(), int(0.15 * rate));
    QVERIFY(precision.isDouble());
}

QTEST_GUILESS_MAIN(TestPrecision)
#include "tst_precision.moc"
