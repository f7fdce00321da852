#include "tests/platform/hvaudio/dsp/sound.h"

#include <QtTest>

using namespace sound;

static void addPrompts()
{
    QTest::addColumn<int>("prompt");
    QTest::addColumn<double>("duckDb");
    QTest::newRow("ring") << int(Ring) << -20.0;
    QTest::newRow("call") << int(Call) << -200.0;
    QTest::newRow("voice") << int(Voice) << -20.0;
    QTest::newRow("navi") << int(Navi) << -12.0;
}

/// What happens around the filters: sources that change, prompts and the key beep.
class TestMixing : public QObject
{
    Q_OBJECT

private slots:
    void sourceChangesOnlyInSilence();
    void sourceChangeWhileOffIsNotHeardFromTheOldOne();
    void promptsAreHeardOverMuteAndFollowTheirVolume_data() { addPrompts(); }
    void promptsAreHeardOverMuteAndFollowTheirVolume();
    void programmeDucksWhileAPromptSounds_data() { addPrompts(); }
    void programmeDucksWhileAPromptSounds();
    void promptPassesTheEqualizerBy();
    void beepSoundsOnEverySpeakerAndEnds();
    void beepsInARowAreSmooth();
    void alternatingPromptsAndSettingsNeverLeaveTheCeiling();
};

static Signal playPrompt(Rig& rig, const Signal& programme, const Signal& prompt, int which, bool mono = true)
{
    Signal out = silence(int(programme.size()));
    Block block;
    block.programme[0] = block.programme[1] = programme.data();
    if (!prompt.empty()) {
        block.prompt[which][0] = prompt.data();
        block.prompt[which][1] = mono ? nullptr : prompt.data();
    }
    block.out[FrontRight] = out.data();
    block.frames = int(programme.size());
    rig.engine.process(block);
    return out;
}

void TestMixing::sourceChangesOnlyInSilence()
{
    Settings s = flat();
    s.source = 6;
    Rig rig(s);
    QCOMPARE(rig.engine.audibleSource(), 6);
    const Signal usb(480, 0.5f), radio(480, -0.5f);
    rig.play(usb);
    s.source = 18;
    s.sourceDb = 6;
    rig.engine.set(s);
    Signal all;
    int switchedAt = -1;
    for (int block = 0; block < 100; ++block) {
        const bool radioNow = rig.engine.audibleSource() == 18;
        if (radioNow && switchedAt < 0)
            switchedAt = block;
        const Signal out = rig.play(radioNow ? radio : usb)[FrontLeft];
        all.insert(all.end(), out.begin(), out.end());
    }
    QVERIFY(switchedAt > 1 && switchedAt < 40);
    for (size_t n = 1; n < all.size(); ++n)
        QVERIFY(std::abs(all[n] - all[n - 1]) < 0.004f);
    QVERIFY(all.front() > 0.4f);
    QVERIFY2(std::abs(all.back() + 0.988f) < 0.02f, qPrintable(QString::number(all.back()))); // 6 dB more
}

void TestMixing::sourceChangeWhileOffIsNotHeardFromTheOldOne()
{
    Settings s = flat();
    s.source = 6;
    Rig rig(s);
    const Signal in(48000, 0.5f);
    s.power = false;
    rig.engine.set(s);
    rig.play(in, 48000);
    s.power = true;
    s.source = 18;
    rig.engine.set(s);
    // The block in which it changes is still filled by the old one, to its end.
    QCOMPARE(peak(rig.play(in, 48000)[FrontLeft], size_t(rig.latency())), 0.0f);
    QCOMPARE(rig.engine.audibleSource(), 18);
    QVERIFY(peak(rig.play(in, 48000)[FrontLeft]) > 0.49f);
}

void TestMixing::promptsAreHeardOverMuteAndFollowTheirVolume()
{
    QFETCH(int, prompt);
    Settings s = flat();
    s.mute = true;
    s.mainDb = -51.6;
    for (int volume : {0, 20, 50}) {
        s.promptDb.fill(volumeDb(33));
        s.promptDb[size_t(prompt)] = volumeDb(volume);
        Rig rig(s);
        const float wanted = volume ? float(0.2 * std::pow(10.0, 1.2 * (volume - 50) / 20)) : 0;
        for (bool mono : {true, false}) {
            const Signal out = playPrompt(rig, sine(300, 0.5, 9600), sine(1000, 0.2, 9600), prompt, mono);
            QVERIFY2(std::abs(peak(out, 2400) - wanted) < 0.01f * wanted + 1e-7f,
                     qPrintable(QString("%1 %2").arg(volume).arg(peak(out, 2400))));
        }
    }
}

void TestMixing::programmeDucksWhileAPromptSounds()
{
    QFETCH(int, prompt);
    QFETCH(double, duckDb);
    Settings s = flat();
    s.promptDb[size_t(prompt)] = 0;
    Rig rig(s);
    const Signal programme = sine(300, 0.5, 48000);
    const auto level = [](const Signal& out) {
        const Signal tail(out.end() - 9600, out.end());
        return std::abs(spectrum(tail, 300)) / 4800;
    };
    QVERIFY(std::abs(level(playPrompt(rig, programme, {}, prompt)) - 0.5) < 1e-3);
    const double ducked = level(playPrompt(rig, programme, sine(2000, 0.2, 48000), prompt));
    QVERIFY2(std::abs(ducked - 0.5 * std::pow(10.0, duckDb / 20)) < 2e-3,
             qPrintable(QString::number(db(ducked / 0.5))));
    // A prompt that is turned down to nothing leaves the programme alone.
    s.promptDb[size_t(prompt)] = silentDb;
    rig.set(s);
    QVERIFY(std::abs(level(playPrompt(rig, programme, sine(2000, 0.2, 48000), prompt)) - 0.5) < 1e-3);
    s.promptDb[size_t(prompt)] = 0;
    rig.set(s);
    // A silent prompt is none, and the programme comes back after a while.
    QVERIFY(std::abs(level(playPrompt(rig, programme, silence(48000), prompt)) - 0.5) < 1e-3);
}

void TestMixing::promptPassesTheEqualizerBy()
{
    Settings s = flat();
    s.equalizer.fill(-10);
    s.promptDb[Navi] = 0;
    Rig rig(s);
    const Signal out = playPrompt(rig, silence(48000), sine(1000, 0.2, 48000), Navi);
    QVERIFY(std::abs(peak(out, 24000) - 0.2f) < 1e-3f);
}

void TestMixing::beepSoundsOnEverySpeakerAndEnds()
{
    Settings s = flat();
    s.mainDb = silentDb;
    Rig rig(s);
    rig.engine.beep();
    const Speakers out = rig.play(silence(24000));
    for (const Signal& speaker : out) {
        QVERIFY(std::abs(peak(speaker) - 0.1f) < 0.01f);
        QCOMPARE(peak(speaker, 12000), 0.0f);
        QVERIFY(std::abs(spectrum(speaker, 2000)) > 50);
    }
    s.power = false;
    rig.engine.set(s);
    rig.play(silence(24000));
    rig.engine.beep();
    QCOMPARE(peak(rig.play(silence(24000))[0]), 0.0f);
}

void TestMixing::beepsInARowAreSmooth()
{
    Rig rig;
    Signal all;
    for (int i = 0; i < 60; ++i) {
        if (i % 7 == 0)
            rig.engine.beep();
        const Signal out = rig.play(silence(333))[0];
        all.insert(all.end(), out.begin(), out.end());
    }
    // The tone itself moves by 0.026 a frame at most.
    for (size_t n = 1; n < all.size(); ++n)
        QVERIFY(std::abs(all[n] - all[n - 1]) < 0.03f);
    QVERIFY(peak(all) <= 0.101f);
}

void TestMixing::alternatingPromptsAndSettingsNeverLeaveTheCeiling()
{
    Settings loud = flat();
    loud.equalizer.fill(10);
    Rig rig(loud);
    std::mt19937 random(8);
    const Signal programme = pinkNoise(2, 960, 9), prompt = sine(700, 3, 960);
    for (int step = 0; step < 300; ++step) {
        Settings s = loud;
        s.power = random() % 10 != 0;
        s.mute = random() % 5 == 0;
        s.source = int(random() % 20);
        s.mainDb = volumeDb(int(random() % 51));
        rig.engine.set(s);
        const Signal out =
            playPrompt(rig, programme, random() & 1 ? prompt : Signal(), int(random() % promptCount));
        QVERIFY(peak(out) <= 0.98855309f);
    }
}

QTEST_GUILESS_MAIN(TestMixing)
#include "tst_mixing.moc"
