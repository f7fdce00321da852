#include "headunit/inspector/soundpanel.h"

#include "headunit/inspector/levelmeter.h"
#include "headunit/inspector/responseplot.h"
#include "tests/headunit/sound/fakesound.h"
#include "tests/support/messagelog.h"

#include <QAbstractButton>
#include <QFileDialog>
#include <QLabel>
#include <QtTest>

#include <random>

#include <qwt_plot.h>
#include <qwt_plot_curve.h>

using namespace headunit;
using namespace hvaudio::dsp;
using hvaudio::HeardFrame;

class TestSoundPanel : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void listensOnlyWhileItIsSeen();
    void listeningEndsWithThePanel();
    void computedCurvesAreTheRunningCoefficients();
    void computedCurvesFollowASetting();
    void sumIsFlatOverACrossoverAndHasAHoleWhereSpeakersCancel();
    void settledSoundIsntDrawnAgain();
    void measuredDotsLieOnTheLines();
    void dotsOfEqualSpeakersLieBesideOneAnother();
    void changedSettingTakesTheOldDotsAway();
    void metersShowEverySpeaker();
    void limiterShowsItsWork();
    void subwoofersFilterIsSaidInWords();
    void statusNamesTheOutput();
    void pictureIsSaved();
    void pictureGetsAnEnding();
    void pictureThatCantBeWrittenIsSaid();
    void saveKeyAsksWhereTo();

private:
    /// Of the speaker; the measured ones have no line.
    QVector<QPointF> points(Speaker speaker, bool measured) const;
    /// What the panel's ear gets: noise through the engine as it stands.
    void playNoise(double seconds);

    QScopedPointer<FakeSound> m_sound;
    QScopedPointer<SoundPanel> m_panel;
};

void TestSoundPanel::init()
{
    m_sound.reset(new FakeSound);
    m_panel.reset(new SoundPanel(m_sound.data(), ResponsePlot::create(nullptr), nullptr));
    m_panel->resize(560, 660);
}

void TestSoundPanel::cleanup()
{
    m_panel.reset();
    m_sound.reset();
}

QVector<QPointF> TestSoundPanel::points(Speaker speaker, bool measured) const
{
    int found = 0;
    const QwtPlotItemList items =
        static_cast<QwtPlot*>(m_panel->plot()->widget())->itemList(QwtPlotItem::Rtti_PlotCurve);
    for (const QwtPlotItem* item : items) {
        const auto* curve = static_cast<const QwtPlotCurve*>(item);
        if ((curve->style() == QwtPlotCurve::NoCurve) != measured || found++ != speaker)
            continue;
        QVector<QPointF> all;
        for (std::size_t i = 0; i < curve->dataSize(); ++i)
            all.append(curve->sample(int(i)));
        return all;
    }
    return {};
}

void TestSoundPanel::playNoise(double seconds)
{
    const int frames = int(seconds * 48000);
    std::mt19937 random(1);
    std::normal_distribution<float> normal(0, 0.05f);
    std::vector<float> in[2], out[speakerCount];
    for (int n = 0; n < frames; ++n)
        for (std::vector<float>& side : in)
            side.push_back(normal(random));
    float* outs[speakerCount];
    for (int i = 0; i < speakerCount; ++i) {
        out[i].resize(std::size_t(frames));
        outs[i] = out[i].data();
    }
    const float* const ins[2] = {in[0].data(), in[1].data()};
    m_sound->processor.process(ins, outs, frames);
    std::vector<HeardFrame> heard(static_cast<std::size_t>(frames));
    for (std::size_t n = 0; n < heard.size(); ++n) {
        heard[n] = {{in[0][n], in[1][n]}, {}};
        for (int i = 0; i < speakerCount; ++i)
            heard[n].speaker[i] = out[i][n];
    }
    m_sound->toHear = heard;
}

void TestSoundPanel::listensOnlyWhileItIsSeen()
{
    QVERIFY(!m_sound->listening);
    QCOMPARE(m_sound->metersTaken, 0);
    m_panel->show();
    QVERIFY(m_sound->listening);
    const int before = m_sound->metersTaken;
    QTRY_VERIFY(m_sound->metersTaken > before);
    m_panel->hide();
    QVERIFY(!m_sound->listening);
    const auto timers = m_panel->findChildren<QTimer*>();
    for (const QTimer* timer : timers)
        QVERIFY(!timer->isActive());
}

void TestSoundPanel::listeningEndsWithThePanel()
{
    m_panel->show();
    m_panel.reset();
    QVERIFY(!m_sound->listening);
}

void TestSoundPanel::computedCurvesAreTheRunningCoefficients()
{
    m_sound->wanted.equalizer = {8, 4, 0, 0, 0, -6, -6, 0, 0, 4, 4, 0, 0};
    m_sound->wanted.cabin[RearLeft].highPass = {250, 4};
    m_sound->wanted.subwoofer = {false, {60, 4}, 6, false, 0};
    m_sound->apply();
    m_panel->show();
    for (int i = 0; i < speakerCount; ++i) {
        const QVector<QPointF> line = points(Speaker(i), false);
        QVERIFY(line.size() > 100);
        for (const QPointF& point : line) {
            const double expected =
                20 * std::log10(std::abs(m_sound->processor.response(Speaker(i), point.x())) + 1e-12);
            QVERIFY(expected < -60 || std::abs(point.y() - expected) < 0.01);
        }
    }
}

void TestSoundPanel::computedCurvesFollowASetting()
{
    m_panel->show();
    const double before = points(FrontLeft, false).at(100).y();
    m_sound->wanted.mainDb = -6; // five steps of 1.2 dB
    m_sound->apply();
    QTRY_VERIFY(std::abs(points(FrontLeft, false).at(100).y() - (before - 6)) < 0.1);
}

void TestSoundPanel::sumIsFlatOverACrossoverAndHasAHoleWhereSpeakersCancel()
{
    for (auto& speaker : m_sound->wanted.cabin)
        speaker.highPass = {80, 4};
    m_sound->wanted.subwoofer = {false, {80, 4}, 0, false, 0};
    m_sound->apply();
    m_panel->show();
    const int sum = speakerCount; // drawn behind the speakers' lines
    QVERIFY(points(Speaker(sum), false).size() > 100);
    for (const QPointF& point : points(Speaker(sum), false))
        QVERIFY2(std::abs(point.y()) < 0.1, qPrintable(QStringLiteral("%1 Hz").arg(point.x())));
    m_sound->wanted.subwoofer.inverted = true;
    m_sound->apply();
    QTRY_VERIFY(points(Speaker(sum), false).constFirst().y() > -0.2);
    const auto hole = [&] {
        for (const QPointF& point : points(Speaker(sum), false))
            if (point.x() > 78 && point.x() < 82 && point.y() < -20)
                return true;
        return false;
    };
    QTRY_VERIFY(hole());
}

void TestSoundPanel::settledSoundIsntDrawnAgain()
{
    m_panel->show();
    QTRY_VERIFY(m_sound->metersTaken > 1);
    // A mark that the next drawing would wipe out.
    m_panel->plot()->setComputed(FrontLeft, {}, {});
    const int before = m_sound->metersTaken;
    QTRY_VERIFY(m_sound->metersTaken > before + 2);
    QVERIFY(points(FrontLeft, false).isEmpty());
}

void TestSoundPanel::measuredDotsLieOnTheLines()
{
    m_sound->wanted.equalizer = {6, 4, 0, 0, -4, -6, -4, 0, 4, 6, 4, 2, 0};
    m_sound->wanted.cabin[FrontRight].highPass = {160, 3};
    m_sound->apply();
    m_panel->show();
    QVERIFY(points(FrontLeft, true).isEmpty());
    playNoise(5);
    QTRY_VERIFY(m_sound->toHear.empty());
    for (int i = 0; i < cabinSpeakerCount; ++i) {
        const QVector<QPointF> dots = points(Speaker(i), true);
        QVERIFY2(dots.size() > 40, qPrintable(QString::number(dots.size())));
        for (const QPointF& dot : dots) {
            const double expected =
                20 * std::log10(std::abs(m_sound->processor.response(Speaker(i), dot.x())));
            if (dot.x() < 50 || expected < -50)
                continue; // few bins; far down
            QVERIFY2(std::abs(dot.y() - expected) < 1.2,
                     qPrintable(
                         QStringLiteral("%1 Hz: %2 instead of %3").arg(dot.x()).arg(dot.y()).arg(expected)));
        }
    }
}

void TestSoundPanel::dotsOfEqualSpeakersLieBesideOneAnother()
{
    m_panel->show();
    playNoise(5);
    QTRY_VERIFY(m_sound->toHear.empty());
    QVector<double> all;
    for (int i = 0; i < cabinSpeakerCount; ++i) {
        const QVector<QPointF> dots = points(Speaker(i), true);
        for (const QPointF& dot : dots) {
            QVERIFY(dot.x() <= 20010);
            if (dot.x() > 100) // bins are far apart below
                all.append(dot.x());
        }
    }
    QVERIFY(all.size() > 4 * 40);
    std::sort(all.begin(), all.end());
    for (int i = 1; i < all.size(); ++i)
        QVERIFY2(all[i] / all[i - 1] > 1.01, qPrintable(QString::number(all[i])));
}

void TestSoundPanel::changedSettingTakesTheOldDotsAway()
{
    m_panel->show();
    playNoise(2);
    QTRY_VERIFY(!points(FrontLeft, true).isEmpty());
    m_sound->wanted.mainDb = -36;
    m_sound->apply();
    QTRY_VERIFY(points(FrontLeft, true).isEmpty());
}

void TestSoundPanel::metersShowEverySpeaker()
{
    m_panel->show();
    m_sound->meters.peak = {1, 0.5f, 0.25f, 0.125f, 0};
    const double expected[speakerCount] = {0, -6.02, -12.04, -18.06, -60};
    for (int i = 0; i < speakerCount; ++i)
        QTRY_VERIFY(std::abs(m_panel->level(Speaker(i))->shownDb() - expected[i]) < 0.01);
}

void TestSoundPanel::limiterShowsItsWork()
{
    m_panel->show();
    QCOMPARE(m_panel->limiter()->shownDb(), 0.0);
    m_sound->meters.gain = 0.5f;
    QTRY_VERIFY(std::abs(m_panel->limiter()->shownDb() + 6.02) < 0.01);
}

void TestSoundPanel::subwoofersFilterIsSaidInWords()
{
    m_sound->wanted.subwoofer.lowPass = {120, 1};
    m_sound->apply();
    m_panel->show();
    auto* said = m_panel->findChild<QLabel*>("subwoofer_filter");
    QCOMPARE(said->text(), QString("Subwoofer: below 120 Hz, 6 dB/octave (6 as delivered)"));
    m_sound->wanted.subwoofer.lowPass = {80, 4};
    m_sound->wanted.subwoofer.inverted = true;
    m_sound->apply();
    QTRY_COMPARE(said->text(),
                 QString("Subwoofer: below 80 Hz, 24 dB/octave (6 as delivered), turned round"));
    m_sound->wanted.subwoofer.lowPass.hz = 0;
    m_sound->wanted.subwoofer.inverted = false;
    m_sound->apply();
    QTRY_COMPARE(said->text(), QString("Subwoofer: plays everything"));
    m_sound->wanted.subwoofer.silent = true;
    m_sound->apply();
    QTRY_COMPARE(said->text(), QString("Subwoofer: silent"));
}

void TestSoundPanel::statusNamesTheOutput()
{
    m_panel->show();
    auto* status = m_panel->findChild<QLabel*>("sound_status");
    QVERIFY(status->text().startsWith("some output"));
    m_sound->output = "PipeWire is gone";
    QTRY_VERIFY(status->text().startsWith("PipeWire is gone"));
}

/// How many points of a picture have this colour, or nearly so, as at a smoothed edge.
static int painted(const QImage& picture, const QColor& colour)
{
    int count = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const QColor found = picture.pixelColor(x, y);
            count += std::abs(found.red() - colour.red()) + std::abs(found.green() - colour.green()) +
                         std::abs(found.blue() - colour.blue()) <
                     60;
        }
    }
    return count;
}

void TestSoundPanel::pictureIsSaved()
{
    // Every speaker at a level of its own, so that no line covers another.
    m_sound->wanted.balance = 8 / 15.0;
    m_sound->wanted.fader = 4 / 15.0;
    m_sound->wanted.subwoofer.lowPass.hz = 60;
    m_sound->apply();
    m_panel->show();
    QTemporaryDir folder;
    const QString path = folder.filePath("responses.png");
    QVERIFY(m_panel->savePicture(path));
    const QImage picture(path);
    QVERIFY(picture.width() >= 1000);
    for (int i = 0; i < speakerCount; ++i)
        QVERIFY2(painted(picture, QColor(speakerLooks[i].colour)) > 200, speakerLooks[i].name);
    QVERIFY(m_panel->findChild<QLabel*>("picture_saved")->text().contains(path));
}

void TestSoundPanel::pictureGetsAnEnding()
{
    m_panel->show();
    QTemporaryDir folder;
    QVERIFY(m_panel->savePicture(folder.filePath("responses")));
    QVERIFY(!QImage(folder.filePath("responses.png")).isNull());
}

void TestSoundPanel::pictureThatCantBeWrittenIsSaid()
{
    m_panel->show();
    const MessageLog messages;
    QVERIFY(!m_panel->savePicture("/no/such/folder/responses.png"));
    QVERIFY(m_panel->findChild<QLabel*>("picture_saved")->text().contains("can't be written"));
    QCOMPARE(MessageLog::count("/no/such/folder"), 1);
}

void TestSoundPanel::saveKeyAsksWhereTo()
{
    m_panel->show();
    QTest::mouseClick(m_panel->findChild<QAbstractButton*>("save_picture"), Qt::LeftButton);
    auto* dialog = m_panel->findChild<QFileDialog*>();
    QVERIFY(dialog);
    QVERIFY(dialog->testOption(QFileDialog::ReadOnly));
    QVERIFY(dialog->testOption(QFileDialog::DontUseNativeDialog));
    QTemporaryDir folder;
    const QString path = folder.filePath("chosen.png");
    emit dialog->fileSelected(path);
    QVERIFY(QFile::exists(path));
    dialog->reject();
}

QTEST_MAIN(TestSoundPanel)
#include "tst_soundpanel.moc"
