#include "platform/hvaudio/sources/backgroundfile.h"

#include "tests/platform/hvaudio/files/files.h"
#include "tests/support/slowmedium.h"

#include <QtTest>

using namespace hvaudio;
using namespace std::chrono_literals;

class TestBackgroundFile : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { slowmedium::answer(); }
    void fileIsPlayedFromItsStartAndRepeated();
    void whatCantBeReadIsSaidToTheOneWhoWaits();
    void whatCantBeReadIsReportedWhenNobodyWaits();
    void mediumThatDoesNotAnswerFailsAfterTheLimit();
    void mediumThatAnswersLateIsHeardFromThenOn();
    void endDoesNotWaitForAMediumThatDoesNotAnswer();

private:
    std::string path(const char* name) const { return m_folder.filePath(name).toStdString(); }
    /// The next frames of the left side; empty for silence.
    std::vector<float> play(BackgroundFile& source, int frames)
    {
        std::vector<float> left(std::size_t(frames), 0.0f), right(left);
        const float* const in[2] = {};
        return source.render(in, left.data(), right.data(), frames) ? left : std::vector<float>();
    }
    std::function<void(const std::string&)> reporter()
    {
        return [this](const std::string& why) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_reports << QString::fromStdString(why);
        };
    }
    QStringList reports()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_reports;
    }

    QTemporaryDir m_folder;
    std::string m_file;
    std::string m_error;
    std::mutex m_mutex;
    QStringList m_reports;
};

void TestBackgroundFile::init()
{
    std::vector<float> samples;
    for (int n = 0; n < 100003; ++n)
        samples.push_back(float(n + 1) / 100003);
    m_file = files::write(path("slow.wav"), SF_FORMAT_WAV | SF_FORMAT_FLOAT, 48000, 1, samples);
    m_reports.clear();
}

void TestBackgroundFile::fileIsPlayedFromItsStartAndRepeated()
{
    BackgroundFile source(m_file, 48000, reporter());
    QCOMPARE(source.opened(10s, m_error), BackgroundFile::Opening::Done);
    // What the disk is late with is silent, and nothing is left out.
    int next = 0, heard = 0;
    QVERIFY(QTest::qWaitFor([&] {
        for (const float x : play(source, 1000)) {
            if (x == 0)
                continue;
            if (x != float(next + 1) / 100003)
                return true;
            next = (next + 1) % 100003;
            ++heard;
        }
        return heard > 250000;
    }));
    QVERIFY(heard > 250000);
    QVERIFY(reports().isEmpty() && !source.hasFailed());
}

void TestBackgroundFile::whatCantBeReadIsSaidToTheOneWhoWaits()
{
    BackgroundFile source("/nowhere/at-all.flac", 48000, reporter());
    QCOMPARE(source.opened(10s, m_error), BackgroundFile::Opening::Failed);
    QVERIFY2(m_error.find("/nowhere/at-all.flac") != std::string::npos, m_error.c_str());
    QVERIFY(source.hasFailed());
    QVERIFY(play(source, 64).empty());
}

void TestBackgroundFile::whatCantBeReadIsReportedWhenNobodyWaits()
{
    slowmedium::hang("at-all.flac");
    BackgroundFile source("/nowhere/at-all.flac", 48000, reporter());
    QCOMPARE(source.opened(1ms, m_error), BackgroundFile::Opening::UnderWay);
    slowmedium::answer();
    QTRY_COMPARE(reports().size(), 1);
    QVERIFY2(reports().first().contains("/nowhere/at-all.flac") && reports().first().contains("silent"),
             qPrintable(reports().first()));
}

void TestBackgroundFile::mediumThatDoesNotAnswerFailsAfterTheLimit()
{
    slowmedium::hang("slow.wav");
    BackgroundFile source(m_file, 48000, reporter(), 300ms);
    QCOMPARE(source.opened(1ms, m_error), BackgroundFile::Opening::UnderWay);
    QCOMPARE(play(source, 64), std::vector<float>(64)); // for the time being
    QTRY_COMPARE(reports().size(), 1);
    QVERIFY2(reports().first().contains("slow.wav") && reports().first().contains("doesn't answer"),
             qPrintable(reports().first()));
    QVERIFY(source.hasFailed() && play(source, 64).empty());
    // Too late: a source that has been given up doesn't come back by itself.
    slowmedium::answer();
    QVERIFY(QTest::qWaitFor([] { return slowmedium::waiting() == 0; }));
    QVERIFY(source.hasFailed() && play(source, 64).empty());
}

void TestBackgroundFile::mediumThatAnswersLateIsHeardFromThenOn()
{
    slowmedium::hang("slow.wav");
    BackgroundFile source(m_file, 48000, reporter());
    QCOMPARE(source.opened(1ms, m_error), BackgroundFile::Opening::UnderWay);
    QVERIFY(QTest::qWaitFor([] { return slowmedium::waiting() == 1; }));
    slowmedium::answer();
    QVERIFY(QTest::qWaitFor([&] { return play(source, 1)[0] == 1.0f / 100003; }));
    QVERIFY(reports().isEmpty());
}

void TestBackgroundFile::endDoesNotWaitForAMediumThatDoesNotAnswer()
{
    slowmedium::hang("slow.wav");
    {
        BackgroundFile source(m_file, 48000, reporter());
        QVERIFY(QTest::qWaitFor([] { return slowmedium::waiting() == 1; }));
    }
    QCOMPARE(slowmedium::waiting(), 1); // it still doesn't answer, and the source has gone
    QVERIFY(reports().isEmpty());
}

QTEST_GUILESS_MAIN(TestBackgroundFile)
#include "tst_backgroundfile.moc"
