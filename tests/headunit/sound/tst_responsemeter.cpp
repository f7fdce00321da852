#include "headunit/sound/responsemeter.h"

#include "platform/hvaudio/dsp/engine.h"

#include <QtTest>

#include <random>

using namespace headunit;
using namespace hvaudio::dsp;
using hvaudio::HeardFrame;

static constexpr double rate = 48000;

static double dB(double factor)
{
    return 20 * std::log10(std::max(factor, 1e-12));
}

/// White noise on both sides, independent; the speakers are filled by the tests.
static std::vector<HeardFrame> noise(int frames, unsigned seed = 1)
{
    std::mt19937 random(seed);
    std::normal_distribution<float> normal(0, 0.1f);
    std::vector<HeardFrame> heard(static_cast<std::size_t>(frames));
    for (HeardFrame& frame : heard)
        frame = {{normal(random), normal(random)}, {}};
    return heard;
}

static void addAll(ResponseMeter* meter, const std::vector<HeardFrame>& frames, int piece = 1000)
{
    for (int done = 0; done < int(frames.size()); done += piece)
        meter->add(frames.data() + done, std::min(piece, int(frames.size()) - done));
}

class TestResponseMeter : public QObject
{
    Q_OBJECT
private slots:
    void init() { m_meter.restart(rate, 0); }
    void saysNothingBeforeTwoPieces();
    void gainsOfEachSpeakerAreFound();
    void latencyAndDelayDontMatter();
    void silentProgrammeHasNoResponse();
    void silentSpeakerIsAtTheBottom();
    void frequenciesThatArentPlayedAreLeftOut();
    void toneHasDotsOnlyWhereItIs_data();
    void toneHasDotsOnlyWhereItIs();
    void wideSoundHasDotsEverywhere_data();
    void wideSoundHasDotsEverywhere();
    void frequenciesInOneBinAreOneDot();
    void chimeOverTheProgrammeIsLeftOut();
    void restartForgets();
    void gapDoesntJoinWhatIsApart();
    void newerPiecesReplaceOldOnes();
    void enginesOwnResponseIsFound_data();
    void enginesOwnResponseIsFound();

private:
    ResponseMeter m_meter;
};

void TestResponseMeter::saysNothingBeforeTwoPieces()
{
    QCOMPARE(m_meter.pieces(), 0);
    QVERIFY(m_meter.curve(FrontLeft, {1000}, 0.1).hz.empty());
    addAll(&m_meter, noise(38000));
    QCOMPARE(m_meter.pieces(), 1);
    QVERIFY(m_meter.curve(FrontLeft, {1000}, 0.1).hz.empty());
    addAll(&m_meter, noise(20000));
    QCOMPARE(m_meter.pieces(), 2);
}

void TestResponseMeter::gainsOfEachSpeakerAreFound()
{
    std::vector<HeardFrame> frames = noise(96000);
    for (HeardFrame& frame : frames) {
        const float left = frame.programme[0], right = frame.programme[1];
        frame.speaker[FrontLeft] = left;
        frame.speaker[FrontRight] = 0.5f * right;
        frame.speaker[RearLeft] = -0.25f * left;
        frame.speaker[RearRight] = 2 * right;
        frame.speaker[Subwoofer] = 0.7f * (left + right);
    }
    addAll(&m_meter, frames);
    const double expected[speakerCount] = {1, 0.5, 0.25, 2, 1.4};
    for (int i = 0; i < speakerCount; ++i) {
        const ResponseMeter::Curve curve = m_meter.curve(Speaker(i), {50, 1000, 15000}, 1.0 / 12);
        QCOMPARE(int(curve.hz.size()), 3);
        for (int k = 0; k < 3; ++k)
            QVERIFY(std::abs(curve.hz[k] - (k == 0 ? 50 : k == 1 ? 1000 : 15000)) < 3); // a bin
        for (const double factor : curve.factors)
            QVERIFY2(std::abs(factor - expected[i]) < 1e-4, qPrintable(QString::number(factor)));
    }
}

void TestResponseMeter::latencyAndDelayDontMatter()
{
    constexpr int latency = 4000, delay = 480; // of all speakers; of one, 10 ms
    std::vector<HeardFrame> frames = noise(144000);
    for (std::size_t n = latency + delay; n < frames.size(); ++n)
        frames[n].speaker[FrontLeft] = frames[n - latency - delay].programme[0];
    m_meter.restart(rate, latency);
    addAll(&m_meter, frames);
    const ResponseMeter::Curve curve = m_meter.curve(FrontLeft, {40, 1000, 16000}, 1.0 / 12);
    QCOMPARE(int(curve.hz.size()), 3);
    for (const double factor : curve.factors)
        QVERIFY2(std::abs(dB(factor)) < 0.5, qPrintable(QString::number(dB(factor))));
}

void TestResponseMeter::silentProgrammeHasNoResponse()
{
    addAll(&m_meter, std::vector<HeardFrame>(60000));
    QVERIFY(m_meter.pieces() >= 2);
    QVERIFY(m_meter.curve(FrontLeft, {100, 1000}, 0.1).hz.empty());
}

void TestResponseMeter::silentSpeakerIsAtTheBottom()
{
    addAll(&m_meter, noise(60000));
    const ResponseMeter::Curve curve = m_meter.curve(FrontLeft, {1000}, 0.1);
    QCOMPARE(int(curve.factors.size()), 1);
    QCOMPARE(curve.factors[0], 0.0);
}

void TestResponseMeter::frequenciesThatArentPlayedAreLeftOut()
{
    std::vector<HeardFrame> frames(96000);
    for (std::size_t n = 0; n < frames.size(); ++n) {
        const float x = 0.1f * float(std::sin(2 * M_PI * 1000 / rate * double(n)));
        frames[n] = {{x, x}, {x, x, x, x, x}};
    }
    addAll(&m_meter, frames);
    const ResponseMeter::Curve curve = m_meter.curve(FrontLeft, {100, 1000, 10000}, 1.0 / 12);
    QCOMPARE(int(curve.hz.size()), 1);
    QVERIFY(std::abs(curve.hz[0] - 1000) < 3);
    QVERIFY(std::abs(curve.factors[0] - 1) < 1e-3);
}

/// What the panel draws: 20 Hz to 20 kHz, six an octave, each as wide as their distance.
static std::vector<double> panelFrequencies()
{
    std::vector<double> hz;
    for (int i = 0; i < 61; ++i)
        hz.push_back(20 * std::pow(1000.0, i / 60.0));
    return hz;
}

void TestResponseMeter::toneHasDotsOnlyWhereItIs_data()
{
    QTest::addColumn<double>("hz");
    QTest::addColumn<double>("amplitude");
    QTest::newRow("60 Hz at full scale") << 60.0 << 1.0;
    QTest::newRow("60 Hz, soft") << 60.0 << 0.001;
    QTest::newRow("in the middle of a bin") << 48000.0 / 32768 * 42 << 0.5;
    QTest::newRow("between two bins") << 48000.0 / 32768 * 42.5 << 0.5;
    QTest::newRow("at a dot") << 20 * std::pow(1000.0, 34 / 60.0) << 0.5;
    QTest::newRow("between two dots") << 20 * std::pow(1000.0, 34.5 / 60.0) << 0.5;
    QTest::newRow("10 kHz") << 10000.0 << 0.5;
}

void TestResponseMeter::toneHasDotsOnlyWhereItIs()
{
    QFETCH(double, hz);
    QFETCH(double, amplitude);
    std::vector<HeardFrame> frames(144000);
    for (std::size_t n = 0; n < frames.size(); ++n) {
        const float x = float(amplitude * std::sin(2 * M_PI * hz / rate * double(n)));
        frames[n] = {{x, x}, {x, x, x, x, x}};
    }
    addAll(&m_meter, frames);
    const std::vector<double> asked = panelFrequencies();
    int dots = 0;
    for (int i = 0; i < speakerCount; ++i) {
        const ResponseMeter::Curve curve = m_meter.curve(Speaker(i), asked, 1.0 / 6);
        for (std::size_t k = 0; k < curve.hz.size(); ++k, ++dots) {
            QVERIFY2(std::abs(curve.hz[k] - hz) < 3 * rate / 32768, qPrintable(QString::number(curve.hz[k])));
            QVERIFY2(std::abs(dB(curve.factors[k])) < 0.01, qPrintable(QString::number(curve.factors[k])));
        }
    }
    QVERIFY(dots >= speakerCount);
}

void TestResponseMeter::wideSoundHasDotsEverywhere_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("leastDots");
    // Of 61; the low ones are nearer to one another than bins are. A sweep's start and end have little there.
    QTest::newRow("white noise") << "white" << 58;
    QTest::newRow("white noise, two pieces") << "short" << 56;
    QTest::newRow("pink noise") << "pink" << 58;
    QTest::newRow("logarithmic sweep") << "sweep" << 56;
}

void TestResponseMeter::wideSoundHasDotsEverywhere()
{
    QFETCH(QString, kind);
    QFETCH(int, leastDots);
    std::vector<HeardFrame> frames = noise(kind == "short" ? 56000 : 480000);
    // Pink: sections that each fall by 3 dB around their corner (P. Kellet's filter).
    double pole[3] = {}, phase = 0;
    for (std::size_t n = 0; n < frames.size(); ++n) {
        double x = double(frames[n].programme[0]);
        if (kind == "pink") {
            pole[0] = 0.99765 * pole[0] + x * 0.0990460;
            pole[1] = 0.96300 * pole[1] + x * 0.2965164;
            pole[2] = 0.57000 * pole[2] + x * 1.0526913;
            x = pole[0] + pole[1] + pole[2] + x * 0.1848;
        } else if (kind == "sweep") { // one in 10 s
            phase += 2 * M_PI / rate * 20 * std::pow(1000.0, double(n) / double(frames.size()));
            x = 0.3 * std::sin(phase);
        }
        const float y = float(x);
        frames[n] = {{y, y}, {y, y, y, y, y}};
    }
    const std::vector<double> asked = panelFrequencies();
    std::vector<double> found; // at any time: a sweep is nowhere for long
    for (std::size_t done = 0; done < frames.size(); done += 12000) {
        m_meter.add(frames.data() + done, int(std::min<std::size_t>(12000, frames.size() - done)));
        const ResponseMeter::Curve curve = m_meter.curve(RearRight, asked, 1.0 / 6);
        found.insert(found.end(), curve.hz.begin(), curve.hz.end());
    }
    int dots = 0;
    for (const double hz : asked)
        dots += std::any_of(found.begin(), found.end(), [hz](double at) {
            return std::abs(at - hz) < std::max(0.04 * hz, rate / 32768);
        });
    QVERIFY2(dots >= leastDots, qPrintable(QString::number(dots)));
}

void TestResponseMeter::frequenciesInOneBinAreOneDot()
{
    addAll(&m_meter, noise(96000));
    QCOMPARE(int(m_meter.curve(FrontLeft, {20, 20.1, 20.2, 1000}, 1.0 / 12).hz.size()), 2);
}

void TestResponseMeter::chimeOverTheProgrammeIsLeftOut()
{
    std::vector<HeardFrame> frames = noise(144000);
    for (std::size_t n = 0; n < frames.size(); ++n)
        frames[n].speaker[FrontLeft] =
            frames[n].programme[0] + 0.5f * float(std::sin(2 * M_PI * 1000 / rate * double(n)));
    addAll(&m_meter, frames);
    const ResponseMeter::Curve curve = m_meter.curve(FrontLeft, {100, 1000, 10000}, 1.0 / 12);
    QCOMPARE(int(curve.hz.size()), 2);
    QVERIFY(std::abs(curve.hz[0] - 100) < 3 && std::abs(curve.hz[1] - 10000) < 3);
}

void TestResponseMeter::restartForgets()
{
    std::vector<HeardFrame> frames = noise(96000);
    for (HeardFrame& frame : frames)
        frame.speaker[FrontLeft] = frame.programme[0];
    addAll(&m_meter, frames);
    m_meter.restart(rate, 0);
    QCOMPARE(m_meter.pieces(), 0);
    for (HeardFrame& frame : frames)
        frame.speaker[FrontLeft] = 0.1f * frame.programme[0];
    addAll(&m_meter, frames);
    QVERIFY(std::abs(dB(m_meter.curve(FrontLeft, {1000}, 0.1).factors.at(0)) + 20) < 0.01);
}

void TestResponseMeter::gapDoesntJoinWhatIsApart()
{
    for (int i = 0; i < 10; ++i) {
        addAll(&m_meter, noise(4800)); // far less than a piece each
        m_meter.gap();
    }
    QCOMPARE(m_meter.pieces(), 0);
}

void TestResponseMeter::newerPiecesReplaceOldOnes()
{
    std::vector<HeardFrame> frames = noise(96000);
    for (HeardFrame& frame : frames)
        frame.speaker[FrontLeft] = frame.programme[0];
    addAll(&m_meter, frames);
    for (HeardFrame& frame : frames)
        frame.speaker[FrontLeft] = 0.1f * frame.programme[0];
    for (int i = 0; i < 12; ++i)
        addAll(&m_meter, frames);
    const double found = dB(m_meter.curve(FrontLeft, {1000}, 0.1).factors.at(0));
    QVERIFY2(found < -19.5, qPrintable(QString::number(found)));
}

void TestResponseMeter::enginesOwnResponseIsFound_data()
{
    QTest::addColumn<double>("engineRate");
    QTest::newRow("44.1 kHz") << 44100.0;
    QTest::newRow("48 kHz") << 48000.0;
    QTest::newRow("96 kHz") << 96000.0;
}

void TestResponseMeter::enginesOwnResponseIsFound()
{
    QFETCH(double, engineRate);
    Settings settings;
    settings.power = true;
    settings.mainDb = -12;
    settings.equalizer = {6, 6, 4, 0, -4, -8, -4, 0, 4, 8, 6, 4, 2};
    settings.balance = 4 / 15.0;
    settings.cabin[FrontLeft].highPass = {100, 4};
    settings.cabin[RearRight].delayMs = 8;
    settings.subwoofer.lowPass.hz = 80;
    settings.subwoofer.attenuation = 3;
    Engine engine;
    QVERIFY(engine.prepare(engineRate));
    engine.set(settings);
    engine.settle();

    std::vector<HeardFrame> frames = noise(int(6 * engineRate));
    std::vector<float> in[2], out[speakerCount];
    for (int side = 0; side < 2; ++side)
        for (const HeardFrame& frame : frames)
            in[side].push_back(frame.programme[side]);
    float* outs[speakerCount];
    for (int i = 0; i < speakerCount; ++i) {
        out[i].resize(frames.size());
        outs[i] = out[i].data();
    }
    const float* const ins[2] = {in[0].data(), in[1].data()};
    engine.process(ins, outs, int(frames.size()));
    for (std::size_t n = 0; n < frames.size(); ++n)
        for (int i = 0; i < speakerCount; ++i)
            frames[n].speaker[i] = out[i][n];

    m_meter.restart(engineRate, engine.latencyFrames());
    addAll(&m_meter, frames);
    const std::vector<double> hz = {40, 100, 250, 1000, 4000, 10000, 16000};
    for (int i = 0; i < speakerCount; ++i) {
        const ResponseMeter::Curve curve = m_meter.curve(Speaker(i), hz, 1.0 / 12);
        QVERIFY(curve.hz.size() >= 4);
        for (std::size_t k = 0; k < curve.hz.size(); ++k) {
            const double expected = dB(std::abs(engine.response(Speaker(i), curve.hz[k])));
            if (expected < -60)
                continue; // below what is drawn
            QVERIFY2(std::abs(dB(curve.factors[k]) - expected) < 0.7,
                     qPrintable(QStringLiteral("speaker %1, %2 Hz: %3 dB instead of %4")
                                    .arg(i)
                                    .arg(curve.hz[k])
                                    .arg(dB(curve.factors[k]))
                                    .arg(expected)));
        }
    }
}

QTEST_GUILESS_MAIN(TestResponseMeter)
#include "tst_responsemeter.moc"
