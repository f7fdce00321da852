#include "platform/hvaudio/sources/chimes.h"

#include <QtTest>

#include <cmath>

using namespace hvaudio;

namespace {

constexpr double rate = 48000;

/// Begins the chime once its table is there.
bool start(Chimes& chimes, dsp::Prompt which, bool repeated)
{
    chimes.start(which, repeated);
    return QTest::qWaitFor([&] { return chimes.isMade(which); });
}

} // namespace

class TestChimes : public QObject
{
    Q_OBJECT

private slots:
    void chimeIsPlayedOnceAndEnds_data();
    void chimeIsPlayedOnceAndEnds();
    void chimeIsRepeatedUntilItIsEnded();
    void chimeHasNoSoundAboveItsBand();
    void onlyWhatIsWantedIsMade();
};

void TestChimes::chimeIsPlayedOnceAndEnds_data()
{
    QTest::addColumn<int>("prompt");
    QTest::newRow("ring") << int(dsp::Ring);
    QTest::newRow("call") << int(dsp::Call);
    QTest::newRow("voice") << int(dsp::Voice);
    QTest::newRow("navigation") << int(dsp::Navi);
}

void TestChimes::chimeIsPlayedOnceAndEnds()
{
    QFETCH(int, prompt);
    const auto which = dsp::Prompt(prompt);
    Chimes chimes;
    chimes.prepare(rate);
    std::vector<float> out(1000);
    QVERIFY(!chimes.render(which, out.data(), 1000));
    QVERIFY(!chimes.sounds(which));
    QVERIFY(start(chimes, which, false));
    QVERIFY(chimes.sounds(which));
    float largest = 0, before = 0, step = 0;
    int frames = 0;
    while (chimes.render(which, out.data(), 1000)) {
        for (float x : out) {
            largest = std::max(largest, std::abs(x));
            step = std::max(step, std::abs(x - before));
            before = x;
        }
        frames += 1000;
        QVERIFY(frames < 5 * rate);
    }
    QVERIFY(!chimes.sounds(which));
    QVERIFY(std::abs(frames - chimes.seconds(which) * rate) <= 1000);
    QVERIFY2(std::abs(largest - 0.25f) < 0.01f, qPrintable(QString::number(largest)));
    QVERIFY2(step < 0.15f, qPrintable(QString::number(step)));
    QCOMPARE(before, 0.0f);
}

void TestChimes::chimeIsRepeatedUntilItIsEnded()
{
    Chimes chimes;
    chimes.prepare(rate);
    std::vector<float> out(480);
    QVERIFY(start(chimes, dsp::Ring, true));
    for (int n = 0; n < 1000; ++n)
        QVERIFY(chimes.render(dsp::Ring, out.data(), 480));
    chimes.end(dsp::Ring);
    int rest = 0;
    while (chimes.render(dsp::Ring, out.data(), 480))
        rest += 480;
    QVERIFY2(rest > 480 && rest <= 1440, qPrintable(QString::number(rest))); // the fade of 20 ms
    QVERIFY(!chimes.sounds(dsp::Ring));
    chimes.end(dsp::Ring);
    QVERIFY(!chimes.sounds(dsp::Ring));
}

void TestChimes::chimeHasNoSoundAboveItsBand()
{
    Chimes chimes;
    chimes.prepare(rate);
    for (int prompt = 0; prompt < dsp::promptCount; ++prompt) {
        std::vector<float> out(48000);
        QVERIFY(start(chimes, dsp::Prompt(prompt), false));
        chimes.render(dsp::Prompt(prompt), out.data(), 48000);
        // Twice differentiated by a difference of high order, only what lies high is left.
        for (int times = 0; times < 8; ++times)
            for (std::size_t n = out.size() - 1; n > 0; --n)
                out[n] = (out[n] - out[n - 1]) / 2;
        double sum = 0;
        for (std::size_t n = 10; n < out.size(); ++n)
            sum += double(out[n]) * double(out[n]);
        // (sin(pi f / rate))^8 is -47 dB at 8 kHz and 0 dB at 24 kHz.
        QVERIFY2(10 * std::log10(sum / double(out.size())) < -65,
                 qPrintable(QString::number(10 * std::log10(sum / double(out.size())))));
    }
}

void TestChimes::onlyWhatIsWantedIsMade()
{
    Chimes chimes;
    chimes.prepare(rate);
    std::vector<float> out(480);
    for (int prompt = 0; prompt < dsp::promptCount; ++prompt)
        QVERIFY(!chimes.isMade(dsp::Prompt(prompt)));
    QVERIFY(start(chimes, dsp::Voice, false));
    for (const dsp::Prompt other : {dsp::Ring, dsp::Call, dsp::Navi})
        QVERIFY(!chimes.isMade(other) && !chimes.sounds(other));
    // Another rate needs another table.
    chimes.prepare(2 * rate);
    QVERIFY(!chimes.isMade(dsp::Voice) && !chimes.sounds(dsp::Voice));
    QVERIFY(start(chimes, dsp::Voice, false));
    QVERIFY(chimes.render(dsp::Voice, out.data(), 480));
    QVERIFY(!chimes.isMade(dsp::Ring));
}

QTEST_GUILESS_MAIN(TestChimes)
#include "tst_chimes.moc"
