#include "platform/hvaudio/outputs/pipewire/speakerfeed.h"

#include <QtTest>

#include <array>
#include <cmath>
#include <memory>
#include <vector>

using namespace hvaudio;
using Layout = SpeakerFeed::Layout;

namespace {

constexpr double rate = 48000;
constexpr int fade = 480;

/// Each speaker has a level of its own; front left also what comes in on the left.
class Levels final : public Feed
{
public:
    static constexpr std::array<float, dsp::speakerCount> level = {0.1f, 0.2f, 0.3f, 0.4f, 0.8f};
    bool prepare(double) override { return true; }
    int latencyFrames() const noexcept override { return 0; }
    void pull(const float* const in[2], float* const out[dsp::speakerCount], int frames) noexcept override
    {
        for (int i = 0; i < dsp::speakerCount; ++i)
            std::fill(out[i], out[i] + frames, level[std::size_t(i)]);
        for (int n = 0; in[0] && n < frames; ++n)
            out[dsp::FrontLeft][n] += in[0][n];
    }
    bool silent() const noexcept override { return false; }
    bool unobserved() const noexcept override { return true; }
    void resumed() override {}
};

struct Rig
{
    Rig() { speakers->reset(feed, rate); }
    /// Appends a block to what has come out.
    void block(int frames, Layout layout)
    {
        speakers->setLayout(layout);
        float* channels[SpeakerFeed::ChannelCount];
        for (int i = 0; i < SpeakerFeed::ChannelCount; ++i) {
            auto& channel = out[std::size_t(i)];
            channel.resize(channel.size() + std::size_t(frames), 9);
            channels[i] = channel.data() + channel.size() - frames;
        }
        speakers->fill(++cycle, channels, frames);
    }
    float last(SpeakerFeed::Channel channel) const { return out[channel].back(); }

    Levels feed;
    std::unique_ptr<SpeakerFeed> speakers = std::make_unique<SpeakerFeed>();
    std::uint64_t cycle = 0;
    std::array<std::vector<float>, SpeakerFeed::ChannelCount> out;
};

constexpr float foldLeft = 0.25f * (0.1f + 0.3f) + 0.5f * 0.8f,
                foldRight = 0.25f * (0.2f + 0.4f) + 0.5f * 0.8f;

} // namespace

class TestSpeakerFeed : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void layoutSaysWhatEachChannelCarries_data();
    void layoutSaysWhatEachChannelCarries();
    void beginsWithTheFoldAndWithoutAFade();
    void changeIsFadedInTenMilliseconds();
    void interruptedChangesHaveNoStep();
    void blocksOfAnySizeGiveTheSameSound();
    void entranceRisesInTenMillisecondsBehindASilentBlock();
    void channelsThatNobodyWantsAreLeftOut();
    void whatComesInReachesTheFeedOneBlockLater();
};

void TestSpeakerFeed::initTestCase()
{
    static_assert(dsp::FrontLeft == 0 && dsp::FrontRight == 1 && dsp::RearLeft == 2 && dsp::RearRight == 3 &&
                  dsp::Subwoofer == 4);
}

void TestSpeakerFeed::layoutSaysWhatEachChannelCarries_data()
{
    QTest::addColumn<int>("layout");
    QTest::addColumn<QVector<float>>("expected"); // FL FR FC LFE RL RR
    constexpr float mean = (foldLeft + foldRight) / 2;
    QTest::newRow("surround") << int(Layout::Surround) << QVector<float>{0.1f, 0.2f, 0, 0.8f, 0.3f, 0.4f};
    QTest::newRow("stereo") << int(Layout::Stereo) << QVector<float>{foldLeft, foldRight, 0, 0, 0, 0};
    QTest::newRow("mono") << int(Layout::Mono) << QVector<float>{mean, mean, 0, 0, 0, 0};
}

void TestSpeakerFeed::layoutSaysWhatEachChannelCarries()
{
    QFETCH(int, layout);
    QFETCH(QVector<float>, expected);
    // From each of the other layouts.
    for (Layout before : {Layout::Surround, Layout::Stereo, Layout::Mono}) {
        Rig rig;
        rig.block(2 * fade, before);
        rig.block(fade, Layout(layout));
        rig.block(8, Layout(layout));
        for (int i = 0; i < SpeakerFeed::ChannelCount; ++i)
            QVERIFY2(std::abs(rig.out[std::size_t(i)].back() - expected[i]) < 1e-6f,
                     qPrintable(QString("channel %1: %2").arg(i).arg(rig.out[std::size_t(i)].back())));
    }
}

void TestSpeakerFeed::beginsWithTheFoldAndWithoutAFade()
{
    Rig rig;
    rig.block(1, Layout::Stereo);
    QVERIFY(std::abs(rig.last(SpeakerFeed::FL) - foldLeft) < 1e-6f);
    QVERIFY(std::abs(rig.last(SpeakerFeed::FR) - foldRight) < 1e-6f);
    QCOMPARE(rig.last(SpeakerFeed::RL), 0.0f);
}

void TestSpeakerFeed::changeIsFadedInTenMilliseconds()
{
    Rig rig;
    rig.block(64, Layout::Stereo);
    rig.block(fade / 2, Layout::Surround);
    rig.block(1, Layout::Surround);
    // Half way, half of each.
    QVERIFY(std::abs(rig.last(SpeakerFeed::RL) - 0.15f) < 1e-3f);
    QVERIFY(std::abs(rig.last(SpeakerFeed::FL) - (0.1f + foldLeft) / 2) < 1e-3f);
    rig.block(fade / 2, Layout::Surround);
    QVERIFY(std::abs(rig.last(SpeakerFeed::RL) - 0.3f) < 1e-6f);
}

void TestSpeakerFeed::interruptedChangesHaveNoStep()
{
    Rig rig;
    rig.block(100, Layout::Stereo);
    const Layout all[] = {Layout::Surround, Layout::Mono,     Layout::Stereo,
                          Layout::Mono,     Layout::Surround, Layout::Stereo};
    for (int round = 0; round < 60; ++round)
        rig.block(37 + 53 * round % 600, all[std::size_t(round) % std::size(all)]);
    // A fade's steepest place: 1.5 times its whole way in its length, two fades at a time.
    constexpr float most = 2 * 1.5f / fade * 0.8f;
    for (const auto& channel : rig.out)
        for (std::size_t n = 1; n < channel.size(); ++n)
            QVERIFY2(std::abs(channel[n] - channel[n - 1]) < most, qPrintable(QString::number(n)));
}

void TestSpeakerFeed::blocksOfAnySizeGiveTheSameSound()
{
    Rig whole, pieces;
    whole.block(100, Layout::Stereo);
    whole.block(5000, Layout::Surround);
    pieces.block(100, Layout::Stereo);
    for (int left = 5000, size = 1; left > 0; left -= std::min(left, size), size = 2 * size + 1)
        pieces.block(std::min(size, left), Layout::Surround);
    for (std::size_t i = 0; i < whole.out.size(); ++i) {
        QCOMPARE(pieces.out[i].size(), whole.out[i].size());
        for (std::size_t n = 0; n < whole.out[i].size(); ++n)
            QVERIFY(std::abs(pieces.out[i][n] - whole.out[i][n]) < 1e-5f);
    }
}

void TestSpeakerFeed::entranceRisesInTenMillisecondsBehindASilentBlock()
{
    Rig rig;
    rig.block(2 * fade, Layout::Surround);
    for (int time = 0; time < 2; ++time) {
        const std::size_t entered = rig.out[0].size(), start = entered + 1100;
        rig.speakers->enter();
        rig.block(1100, Layout::Surround);
        for (int n = 0; n < 2 * fade; n += 32)
            rig.block(32, Layout::Surround);
        for (const auto& [channel, level] : {std::pair(SpeakerFeed::FL, 0.1f), {SpeakerFeed::LFE, 0.8f}}) {
            const auto& out = rig.out[channel];
            for (std::size_t n = entered; n <= start; ++n)
                QCOMPARE(out[n], 0.0f);
            QCOMPARE(out[start + std::size_t(fade)], level);
            for (std::size_t n = start + 1; n < out.size(); ++n)
                QVERIFY(out[n] >= out[n - 1] && out[n] - out[n - 1] < level * 1.6f / float(fade));
        }
    }
}

void TestSpeakerFeed::channelsThatNobodyWantsAreLeftOut()
{
    Rig rig;
    std::vector<float> right(3000, 9);
    float* channels[SpeakerFeed::ChannelCount] = {};
    channels[SpeakerFeed::FR] = right.data();
    rig.speakers->fill(1, channels, int(right.size()));
    for (float x : right)
        QVERIFY(std::abs(x - foldRight) < 1e-6f);
}

void TestSpeakerFeed::whatComesInReachesTheFeedOneBlockLater()
{
    constexpr int frames = 1500;
    Rig rig;
    const std::vector<float> in(frames, 0.5f);
    for (std::uint64_t cycle = 1; cycle <= 3; ++cycle) {
        rig.speakers->push(cycle, in.data(), in.data(), frames);
        rig.block(frames, Layout::Surround);
        const float expected = cycle == 1 ? 0.1f : 0.6f;
        QVERIFY2(std::abs(rig.last(SpeakerFeed::FL) - expected) < 1e-6f,
                 qPrintable(QString("cycle %1: %2").arg(cycle).arg(rig.last(SpeakerFeed::FL))));
    }
}

QTEST_GUILESS_MAIN(TestSpeakerFeed)
#include "tst_speakerfeed.moc"
