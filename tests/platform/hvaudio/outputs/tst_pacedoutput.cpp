#include "platform/hvaudio/outputs/pacedoutput.h"

#include "platform/hvaudio/outputs/nulloutput.h"
#include "platform/hvaudio/outputs/wavoutput.h"

#include <QtTest>

#include <atomic>
#include <thread>

using namespace hvaudio;

namespace {

/// Counts what is asked of it.
class CountingFeed final : public Feed
{
public:
    bool prepare(double) override { return true; }
    int latencyFrames() const noexcept override { return 0; }
    void pull(const float* const[2], float* const out[dsp::speakerCount], int frames) noexcept override
    {
        for (int i = 0; i < dsp::speakerCount; ++i)
            std::fill(out[i], out[i] + frames, 0.0f);
        if (news.exchange(false))
            ++newsSeen;
        ++pulls;
    }
    bool silent() const noexcept override { return true; }
    bool unobserved() const noexcept override { return unwatched; }
    void resumed() override { ++resumptions; }

    std::atomic<bool> unwatched{true}, news{false};
    std::atomic<int> pulls{0}, resumptions{0}, newsSeen{0};
};

} // namespace

class TestPacedOutput : public QObject
{
    Q_OBJECT

private slots:
    void outputWithoutADeviceRestsUnlessItIsObserved();
    void noNewsIsLostOnAnOutputThatIsAboutToRest();
    void recordingNeverRests();
    void restingOutputIsStopped();
};

void TestPacedOutput::outputWithoutADeviceRestsUnlessItIsObserved()
{
    CountingFeed feed;
    feed.unwatched = false;
    NullOutput output;
    std::string error;
    QVERIFY(output.start(feed, error));
    QTRY_VERIFY(feed.pulls > 5 && output.pulling());
    feed.unwatched = true;
    QTRY_VERIFY(!output.pulling());
    const int before = feed.pulls, resumed = feed.resumptions;
    output.wake(); // once at least, and not for ever
    QTRY_VERIFY(feed.pulls > before && !output.pulling());
    feed.unwatched = false;
    output.wake();
    QTRY_VERIFY(feed.pulls > before + 5 && output.pulling());
    QVERIFY(feed.resumptions >= resumed + 2);
}

void TestPacedOutput::noNewsIsLostOnAnOutputThatIsAboutToRest()
{
    CountingFeed feed;
    NullOutput output;
    std::string error;
    QVERIFY(output.start(feed, error));
    for (int n = 1; n <= 300; ++n) {
        // At any moment of its falling asleep.
        for (int spin = 0; spin < n * 37 % 400; ++spin)
            std::this_thread::yield();
        feed.news = true;
        output.wake();
        QVERIFY2(QTest::qWaitFor([&] { return feed.newsSeen == n; }), qPrintable(QString::number(n)));
    }
}

void TestPacedOutput::recordingNeverRests()
{
    const QTemporaryDir folder;
    CountingFeed feed;
    WavOutput output(folder.filePath("silence.wav").toStdString());
    std::string error;
    QVERIFY2(output.start(feed, error), error.c_str());
    QTRY_VERIFY(feed.pulls > 20 && output.pulling());
}

void TestPacedOutput::restingOutputIsStopped()
{
    CountingFeed feed;
    NullOutput output;
    std::string error;
    for (int n = 0; n < 3; ++n) {
        QVERIFY(output.start(feed, error));
        QTRY_VERIFY(!output.pulling());
        output.stop();
        QVERIFY(!output.pulling());
    }
}

QTEST_GUILESS_MAIN(TestPacedOutput)
#include "tst_pacedoutput.moc"
