#include "tests/platform/hvaudio/dsp/sound.h"

#include "platform/hvaudio/dsp/design.h"
#include "platform/hvaudio/dsp/fold.h"
#include "platform/hvaudio/dsp/loudness.h"

#include <QtTest>

using namespace sound;

/// Balance and fader, volume, source gain, loudness and the fold to stereo.
class TestLevels : public QObject
{
    Q_OBJECT

private slots:
    void centreIsZeroDecibelsEverywhere();
    void nearSideStaysAndFarSideFallsToSilence_data();
    void nearSideStaysAndFarSideFallsToSilence();
    void balanceAndFaderLeaveTheSubwooferAlone();
    void silenceIsSilentAndZeroDecibelsAreAll();
    void volumeStepsAreEven();
    void sourceLevelIsInDecibels();
    void leftAndRightStayApart();
    void subwooferHearsTheMeanOfBothSides();
    void equalLoudnessMatchesTheStandard_data();
    void equalLoudnessMatchesTheStandard();
    void loudnessFollowsTheContour_data();
    void loudnessFollowsTheContour();
    void loudnessDoesNothingAtFullVolume();
    void loudnessGrowsOverTheWholeKnob();
    void nothingGetsLouderAsTheVolumeFalls();
    void outOfRangeSettingsAreClampedAndNamed();
    void foldKeepsACrossoverFlat_data();
    void foldKeepsACrossoverFlat();
    void foldWorksInPlaceAndWithMissingSpeakers();
};

static double levelDb(Rig& rig, Speaker speaker)
{
    return responseDb(rig.play(impulse(4096))[speaker], 1000);
}

void TestLevels::centreIsZeroDecibelsEverywhere()
{
    Rig rig;
    for (int i = 0; i < speakerCount; ++i)
        QVERIFY(std::abs(levelDb(rig, Speaker(i))) < 0.001);
}

void TestLevels::nearSideStaysAndFarSideFallsToSilence_data()
{
    QTest::addColumn<bool>("fader");
    QTest::addColumn<int>("sign");
    QTest::newRow("balance to the left") << false << -1;
    QTest::newRow("balance to the right") << false << 1;
    QTest::newRow("fader to the rear") << true << -1;
    QTest::newRow("fader to the front") << true << 1;
}

void TestLevels::nearSideStaysAndFarSideFallsToSilence()
{
    QFETCH(bool, fader);
    QFETCH(int, sign);
    double before = 0.01;
    for (int value = 0; value <= 15; ++value) {
        Settings s = flat();
        (fader ? s.fader : s.balance) = sign * value / 15.0;
        Rig rig(s);
        const Speakers out = rig.play(impulse(4096));
        double far = 0;
        for (int i = 0; i < cabinSpeakerCount; ++i) {
            const bool right = i & 1, front = i < 2;
            const bool near = fader ? front == (sign > 0) : right == (sign > 0);
            if (near)
                QVERIFY(std::abs(responseDb(out[i], 1000)) < 0.001);
            else
                far = responseDb(out[i], 1000);
            if (!near && value == 15)
                QCOMPARE(peak(out[i]), 0.0f);
        }
        if (value < 15)
            QVERIFY2(value == 0 || (far < before && far > before - 7),
                     qPrintable(QString("%1: %2 dB after %3 dB").arg(value).arg(far).arg(before)));
        before = far;
    }
}

void TestLevels::balanceAndFaderLeaveTheSubwooferAlone()
{
    Settings s = flat();
    s.balance = 1;
    s.fader = -1;
    Rig rig(s);
    QVERIFY(std::abs(levelDb(rig, Subwoofer)) < 0.001);
}

void TestLevels::silenceIsSilentAndZeroDecibelsAreAll()
{
    Settings s = flat();
    Rig rig(s);
    QVERIFY(std::abs(levelDb(rig, FrontLeft)) < 0.001);
    s.mainDb = silentDb;
    rig.set(s);
    QCOMPARE(peak(rig.play(whiteNoise(0.5, 4096, 1))[FrontLeft]), 0.0f);
}

void TestLevels::volumeStepsAreEven()
{
    Settings s = flat();
    Rig rig(s);
    double before = 0;
    for (int volume = 49; volume >= 1; --volume) {
        s.mainDb = volumeDb(volume);
        rig.set(s);
        const double got = levelDb(rig, RearLeft);
        QVERIFY2(std::abs(before - got - 1.2) < 0.001, qPrintable(QString::number(before - got)));
        before = got;
    }
}

void TestLevels::sourceLevelIsInDecibels()
{
    for (int level = -5; level <= 10; ++level) {
        Settings s = flat();
        s.sourceDb = level;
        Rig rig(s);
        QVERIFY(std::abs(levelDb(rig, FrontRight) - level) < 0.001);
    }
}

void TestLevels::leftAndRightStayApart()
{
    Rig rig;
    const Speakers out = rig.play(impulse(4096), silence(4096));
    QVERIFY(peak(out[FrontLeft]) > 0 && peak(out[RearLeft]) > 0);
    QCOMPARE(peak(out[FrontRight]), 0.0f);
    QCOMPARE(peak(out[RearRight]), 0.0f);
}

void TestLevels::subwooferHearsTheMeanOfBothSides()
{
    Rig rig;
    QVERIFY(std::abs(responseDb(rig.play(impulse(4096), silence(4096))[Subwoofer], 1000) + 6.0206) < 0.001);
}

void TestLevels::equalLoudnessMatchesTheStandard_data()
{
    QTest::addColumn<double>("hz");
    QTest::addColumn<double>("phon");
    QTest::addColumn<double>("level");
    // The standard's annex B, to 0.1 dB.
    QTest::newRow("1 kHz is its own measure at 40 phon") << 1000.0 << 40.0 << 40.0;
    QTest::newRow("1 kHz is its own measure at 80 phon") << 1000.0 << 80.0 << 80.0;
    QTest::newRow("20 Hz at 20 phon") << 20.0 << 20.0 << 89.6;
    QTest::newRow("100 Hz at 20 phon") << 100.0 << 20.0 << 48.4;
    QTest::newRow("20 Hz at 40 phon") << 20.0 << 40.0 << 99.9;
    QTest::newRow("100 Hz at 40 phon") << 100.0 << 40.0 << 64.4;
    QTest::newRow("3150 Hz at 40 phon") << 3150.0 << 40.0 << 35.6;
    QTest::newRow("12.5 kHz at 40 phon") << 12500.0 << 40.0 << 51.5;
}

void TestLevels::equalLoudnessMatchesTheStandard()
{
    QFETCH(double, hz);
    QFETCH(double, phon);
    QFETCH(double, level);
    QVERIFY2(std::abs(equalLoudnessLevel(hz, phon) - level) < 0.06,
             qPrintable(QString::number(equalLoudnessLevel(hz, phon))));
}

void TestLevels::loudnessFollowsTheContour_data()
{
    QTest::addColumn<int>("volume");
    QTest::addColumn<double>("rate");
    for (double rate : {8000.0, 22050.0, 32000.0, 44100.0, 48000.0, 96000.0})
        for (int volume : {1, 5, 10, 20, 25, 30, 40, 45})
            QTest::addRow("volume %d at %g", volume, rate) << volume << rate;
}

void TestLevels::loudnessFollowsTheContour()
{
    QFETCH(int, volume);
    QFETCH(double, rate);
    Settings s = flat();
    s.mainDb = volumeDb(volume);
    s.loudness = true;
    Rig rig(s, rate);
    const Signal out = rig.play(impulse(int(rate)))[FrontLeft];
    const double middle = responseDb(out, 1000, rate);
    QVERIFY(std::abs(middle - volumeDb(volume)) < 0.01);
    for (double hz : {20.0, 25.0, 31.5, 40.0, 63.0, 100.0, 160.0, 250.0, 400.0, 630.0, 1600.0, 2000.0, 4000.0,
                      8000.0, 10000.0, 12500.0}) {
        if (hz > 0.4 * rate)
            continue;
        const double lift = responseDb(out, hz, rate) - middle;
        const double wanted = loudnessLift(hz, volumeDb(volume));
        const bool squeezed = hz > 1000 && rate < 44100; // no room for the treble's shelf
        QVERIFY2(std::abs(lift - wanted) < (squeezed ? 4 : 0.75),
                 qPrintable(QString("%1 Hz: %2 instead of %3 dB").arg(hz).arg(lift).arg(wanted)));
    }
}

void TestLevels::loudnessDoesNothingAtFullVolume()
{
    Settings s = flat();
    Rig rig(s);
    const Signal in = whiteNoise(0.5, 4096, 2);
    const Speakers without = rig.play(in);
    s.loudness = true;
    rig.set(s);
    QVERIFY(rig.play(in) == without);
}

/// Impulse response of a speaker with loudness on.
static Signal withLoudness(int volume, int frames)
{
    Settings s = flat();
    s.mainDb = volumeDb(volume);
    s.loudness = true;
    Rig rig(s);
    return rig.play(impulse(frames))[FrontLeft];
}

void TestLevels::loudnessGrowsOverTheWholeKnob()
{
    const double hz[] = {25, 40, 63, 125, 250, 12500};
    double before[std::size(hz)] = {};
    for (int volume = 50; volume >= 1; --volume) {
        const Signal out = withLoudness(volume, 32768);
        const double middle = responseDb(out, 1000);
        for (std::size_t i = 0; i < std::size(hz); ++i) {
            const double lift = responseDb(out, hz[i]) - middle;
            QVERIFY2(volume == 50 ? std::abs(lift) < 0.001 : lift > before[i] + 0.002,
                     qPrintable(QString("%1 Hz at volume %2: %3 dB after %4 dB")
                                    .arg(hz[i])
                                    .arg(volume)
                                    .arg(lift)
                                    .arg(before[i])));
            before[i] = lift;
        }
    }
}

void TestLevels::nothingGetsLouderAsTheVolumeFalls()
{
    // Third octaves from 20 Hz to 20 kHz; the lift takes back a part of each step of 1.2 dB, never all of it.
    double before[31];
    for (int volume = 50; volume >= 1; --volume) {
        const Signal out = withLoudness(volume, 32768);
        for (int i = 0; i <= 30; ++i) {
            const double hz = 20 * std::pow(10.0, i / 10.0);
            const double level = responseDb(out, hz);
            QVERIFY2(volume == 50 ? std::abs(level) < 0.001 : level < before[i] - 0.4,
                     qPrintable(QString("%1 Hz at volume %2: %3 dB after %4 dB")
                                    .arg(hz)
                                    .arg(volume)
                                    .arg(level)
                                    .arg(before[i])));
            before[i] = level;
        }
    }
}

void TestLevels::outOfRangeSettingsAreClampedAndNamed()
{
    Settings s = flat();
    s.promptDb[Ring] = silentDb;
    QVERIFY(clampToRange(s).empty());
    s.balance = 1.5;
    s.equalizer[12] = -11;
    s.mainDb = 1000;
    s.cabin[2].delayMs = std::nan("");
    s.subwoofer.delayMs = 1e30;
    s.cabin[3].highPass = {-1, 9};
    s.subwoofer.lowPass.hz = -silentDb;
    s.promptDb[Navi] = std::nan("");
    QCOMPARE(
        QString::fromStdString(clampToRange(s)),
        QString(
            "main level 1000.000000 -> 0.000000, prompt level 3 nan -> -inf, equalizer band 12 -11 -> -10, "
            "balance 1.500000 -> 1.000000, delay of speaker 2 nan -> 0.000000, "
            "high-pass of speaker 3 -1.000000 -> 10.000000, high-pass order of speaker 3 9 -> 4, "
            "subwoofer low-pass inf -> 0.000000, "
            "subwoofer delay 1000000000000000019884624838656.000000 -> 10.000000"));
    QVERIFY(clampToRange(s).empty());
    QCOMPARE(s.balance, 1.0);
    QCOMPARE(s.cabin[2].delayMs, 0.0);
    QCOMPARE(s.cabin[3].highPass.order, 4);
}

void TestLevels::foldKeepsACrossoverFlat_data()
{
    QTest::addColumn<double>("hz");
    QTest::addColumn<int>("order");
    QTest::addColumn<bool>("turned");
    QTest::addColumn<double>("rate");
    for (double rate : {44100.0, 48000.0, 96000.0})
        for (double hz : {30.0, 80.0, 120.0, 250.0})
            for (int order = 1; order <= 4; ++order)
                for (bool turned : {false, true})
                    // Odd orders sum flat either way but for the first, whose all-pass is the turned one.
                    if (order % 2 || turned == (order == 2))
                        QTest::addRow("%g Hz, %d dB/octave%s, %g", hz, 6 * order, turned ? ", turned" : "",
                                      rate)
                            << hz << order << turned << rate;
}

void TestLevels::foldKeepsACrossoverFlat()
{
    QFETCH(double, hz);
    QFETCH(int, order);
    QFETCH(bool, turned);
    QFETCH(double, rate);
    Settings s = flat();
    for (auto& speaker : s.cabin)
        speaker.highPass = {hz, order};
    s.subwoofer.lowPass = {hz, order};
    s.subwoofer.inverted = turned;
    Rig rig(s, rate);
    const int frames = int(rate);
    // Loud enough that what is left at -140 dBFS, where the chain counts as rung out, is nothing beside it.
    Signal in = impulse(frames);
    in[0] *= 100;
    const Speakers out = rig.play(in);
    Signal stereo[2] = {silence(frames), silence(frames)};
    const float* const from[speakerCount] = {&out[0][0], &out[1][0], &out[2][0], &out[3][0], &out[4][0]};
    float* const to[2] = {&stereo[0][0], &stereo[1][0]};
    foldToStereo(from, to, frames);
    for (const Signal& side : stereo)
        for (double at = 20; at <= 20000; at *= 1.12) {
            const double got = responseDb(side, at, rate) - 40;
            QVERIFY2(std::abs(got + 6.0206) < 0.1, qPrintable(QString("%1 Hz: %2 dB").arg(at).arg(got)));
        }
}

void TestLevels::foldWorksInPlaceAndWithMissingSpeakers()
{
    Signal left = {0.4f, -0.8f}, right = {0.2f, 0.1f}, sub = {0.6f, 0.0f};
    const float* const in[speakerCount] = {&left[0], &right[0], nullptr, &right[0], &sub[0]};
    float* const to[2] = {&left[0], &right[0]};
    foldToStereo(in, to, 2);
    QVERIFY(std::abs(left[0] - 0.4f) < 1e-6 && std::abs(left[1] + 0.2f) < 1e-6);
    QVERIFY(std::abs(right[0] - 0.4f) < 1e-6 && std::abs(right[1] - 0.05f) < 1e-6);
}

QTEST_GUILESS_MAIN(TestLevels)
#include "tst_levels.moc"
