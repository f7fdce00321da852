#include "headunit/sound/unitsound.h"

#include "tests/support/askedsound.h"
#include "tests/support/messagelog.h"

#include "common/mcumanager.h"
#include "headunit/inspector/inspector.h"
#include "headunit/inspector/levelmeter.h"
#include "headunit/inspector/responseplot.h"
#include "headunit/inspector/settingsmodel.h"
#include "headunit/inspector/soundpanel.h"
#include "headunit/inspector/sourcepanel.h"
#include "headunit/shell/shell.h"
#include "headunit/sound/soundnames.h"
#include "platform/common/framework/journal.h"
#include "platform/common/settings/settingsstore.h"
#include "platform/hvaudioservice/audioservicehost.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QtTest>

#include <qwt_plot.h>
#include <qwt_plot_curve.h>

#include <sys/stat.h>

using namespace headunit;
using namespace hvaudio;

/// The unit's own sound under the real service, on an output without a device.
class TestUnitSound : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void settingReachesTheSound();
    void editInTheInspectorReachesTheSound();
    void serviceIsSilentWithoutIt();
    void outputIsToldOnceInTheLog();
    void unusableOutputIsSaidAndTheRestWorks();
    void everySourceStartsWithOtherPrograms();
    void sourceIsSetAndPlayed();
    void unreadableFileIsRefused();
    void chosenSourcesSurviveARestart();
    void fileThatHasGoneIsSilentAfterARestart();
    void factoryResetForgetsTheSources();
    void editedSourceIsSet();
    void pipeAsFileOrOutputDoesNotFreezeTheUnit();
    void callsAreInTheJournal();
    void noiseIsHeardOnlyAsTheSourceThatPlays();
    void keyBeepsAreHeard_data();
    void keyBeepsAreHeard();
    void knobTurnsTheSoundDown();
    void promptStepsTheProgrammeBack();
    void powerOffFallsSilentAndEndsPrompts();
    void powerOnComesBackAtItsStartVolume();
    void panelMeasuresWhatIsPlayed();
    void inspectorShowsItsPanels();
    void inspectorWithoutSoundHasNoPanelsForIt();

private:
    /// Of the next tenth of a second, over all speakers; -1 when nothing is played any more.
    float loudest();
    bool isLoud() { return loudest() > 1e-3f; }
    bool isSilent() { return loudest() == 0; }
    void start();
    void restart();
    /// A tenth of a second of silence as a file.
    QString writeWav();

    QScopedPointer<QTemporaryDir> m_folder;
    QScopedPointer<UnitSound> m_sound;
    QScopedPointer<Shell> m_shell;
};

void TestUnitSound::init()
{
    m_folder.reset(new QTemporaryDir);
    QCOMPARE(int(mem::SettingsStore::instance()->open(m_folder->filePath("settings.db"))),
             int(mem::SettingsStore::Opened::Durable));
}

void TestUnitSound::cleanup()
{
    m_shell.reset();
    m_sound.reset();
    AudioServiceHost::shutdown();
    mem::SettingsStore::instance()->clear();
    mem::SettingsStore::instance()->close();
}

void TestUnitSound::start()
{
    m_sound.reset(new UnitSound);
    QVERIFY(m_sound->start("none"));
    m_shell.reset(new Shell(false, m_sound.data()));
}

QString TestUnitSound::writeWav()
{
    QFile file(m_folder->filePath("song.wav"));
    if (!file.open(QIODevice::WriteOnly))
        return QString();
    // 44 bytes of header: 16 bit, mono, 48 kHz, 9600 bytes of samples.
    file.write(QByteArray::fromHex("52494646a425000057415645666d742010000000010001"
                                   "0080bb000000770100020010006461746180250000"));
    file.write(QByteArray(9600, 0));
    return file.fileName();
}

float TestUnitSound::loudest()
{
    m_sound->listen(true);
    float largest = 0;
    int left = 4800;
    const bool played = QTest::qWaitFor([&] {
        HeardFrame frames[480];
        const int count = m_sound->fetchHeard(frames, 480, nullptr);
        for (int n = 0; n < count; ++n)
            for (const float sample : frames[n].speaker)
                largest = std::max(largest, std::abs(sample));
        left -= count;
        return left <= 0;
    });
    m_sound->listen(false);
    return played ? largest : -1;
}

void TestUnitSound::settingReachesTheSound()
{
    start();
    AudioService::instance()->setBalanceFader(-7, 3, false);
    QCOMPARE(m_sound->engine().settings().balance, -7 / 15.0);
    QCOMPARE(m_sound->engine().settings().fader, 3 / 15.0);
    QVERIFY(m_sound->engine().settings().power);
}

void TestUnitSound::editInTheInspectorReachesTheSound()
{
    start();
    SettingsModel model;
    const auto edit = [&model](const char* key, const QVariant& value) {
        return model.setData(model.index(model.rowOf(key), SettingsModel::Value), value);
    };
    QVERIFY(!m_sound->engine().settings().loudness);
    QVERIFY(edit("customloudnes", true));
    QVERIFY(m_sound->engine().settings().loudness);
    AudioService::instance()->setEQType(EQ_Type_User2, false);
    QVERIFY(edit("eq24", "-6"));
    QCOMPARE(m_sound->engine().settings().equalizer[4], -6);
    model.unset(model.index(model.rowOf("eq24"), SettingsModel::Value));
    QCOMPARE(m_sound->engine().settings().equalizer[4], 0);
    QVERIFY(edit("volume0", 0));
    QCOMPARE(m_sound->engine().settings().mainDb, dbOf(0));
}

void TestUnitSound::serviceIsSilentWithoutIt()
{
    start();
    m_shell.reset();
    m_sound.reset();
    // Neither may reach what is gone.
    AudioService::instance()->setBalanceFader(1, 1, false);
    AudioService::instance()->doBeep(0);
    McuManager::instance()->triggerBeep(0);
}

void TestUnitSound::outputIsToldOnceInTheLog()
{
    const MessageLog messages;
    start();
    QTRY_VERIFY(m_sound->status().contains("no sound output"));
    QCOMPARE(MessageLog::count("no sound output"), 1);
}

void TestUnitSound::unusableOutputIsSaidAndTheRestWorks()
{
    const MessageLog messages;
    m_sound.reset(new UnitSound);
    QVERIFY(!m_sound->start("/no/such/folder/out.wav"));
    QCOMPARE(MessageLog::count("/no/such/folder/out.wav"), 1);
    m_shell.reset(new Shell(false, m_sound.data()));
    QVERIFY(m_sound->setSource(HVAudio_source_Radio, {SourceKind::PinkNoise, {}}));
    QTRY_VERIFY(isLoud());
}

void TestUnitSound::everySourceStartsWithOtherPrograms()
{
    start();
    QCOMPARE(m_sound->playing(), HVAudio_source_Radio);
    for (const UnitSource& source : unitSources)
        QCOMPARE(m_sound->source(source.id).kind, SourceKind::Input);
}

void TestUnitSound::sourceIsSetAndPlayed()
{
    start();
    for (const UnitSource& source : unitSources) {
        QVERIFY(m_sound->setSource(source.id, {SourceKind::Sweep, {}}));
        QCOMPARE(m_sound->source(source.id).kind, SourceKind::Sweep);
        m_sound->play(source.id);
        QCOMPARE(m_sound->playing(), source.id);
        QCOMPARE(m_sound->engine().settings().source, int(source.id));
    }
}

void TestUnitSound::unreadableFileIsRefused()
{
    start();
    const MessageLog messages;
    const QString path = m_folder->filePath(QStringLiteral("L\u00fccke.wav"));
    QString error;
    QVERIFY(!m_sound->setSource(HVAudio_source_Usb, {SourceKind::File, path}, &error));
    QVERIFY2(error.contains(QStringLiteral("L\u00fccke.wav")), qPrintable(error));
    QCOMPARE(m_sound->source(HVAudio_source_Usb).kind, SourceKind::Input);
    QVERIFY(m_sound->source(HVAudio_source_Usb).path.isEmpty());
    QVERIFY(MessageLog::lines().size() >= 1);
}

/// As a user does in the source panel.
static void chooseKind(QWidget* panel, int id, SourceKind kind)
{
    auto* box = panel->findChild<QComboBox*>(QStringLiteral("kind_%1").arg(id));
    box->setCurrentIndex(box->findData(int(kind)));
    emit box->activated(box->currentIndex());
}

static void enterFile(QWidget* panel, int id, const QString& path)
{
    auto* edit = panel->findChild<QLineEdit*>(QStringLiteral("path_%1").arg(id));
    edit->setText(path);
    QTest::keyClick(edit, Qt::Key_Return);
}

void TestUnitSound::restart()
{
    const QString path = mem::SettingsStore::instance()->path();
    m_shell.reset();
    m_sound.reset();
    AudioServiceHost::shutdown();
    mem::SettingsStore::instance()->close();
    QCOMPARE(mem::SettingsStore::instance()->open(path), mem::SettingsStore::Opened::Durable);
    start();
}

void TestUnitSound::chosenSourcesSurviveARestart()
{
    start();
    const QString file = writeWav();
    {
        SourcePanel panel(m_sound.data(), nullptr);
        chooseKind(&panel, HVAudio_source_Usb, SourceKind::PinkNoise);
        chooseKind(&panel, HVAudio_source_Radio, SourceKind::Silence);
        enterFile(&panel, HVAudio_source_Dab, file);
        panel.findChild<QAbstractButton*>(QStringLiteral("source_6"))->click();
    }
    restart();
    QCOMPARE(m_sound->source(HVAudio_source_Usb).kind, SourceKind::PinkNoise);
    QCOMPARE(m_sound->source(HVAudio_source_Radio).kind, SourceKind::Silence);
    QCOMPARE(m_sound->source(HVAudio_source_Dab).kind, SourceKind::File);
    QCOMPARE(m_sound->source(HVAudio_source_Dab).path, file);
    QCOMPARE(m_sound->source(HVAudio_source_AvIn).kind, SourceKind::Input);
    QCOMPARE(m_sound->playing(), HVAudio_source_Usb);
    QTRY_VERIFY(isLoud());
    SourcePanel panel(m_sound.data(), nullptr);
    panel.show();
    QVERIFY(panel.findChild<QLabel*>("source_error")->text().isEmpty());
}

void TestUnitSound::fileThatHasGoneIsSilentAfterARestart()
{
    start();
    const QString file = writeWav();
    {
        SourcePanel panel(m_sound.data(), nullptr);
        enterFile(&panel, HVAudio_source_Radio, file);
    }
    QVERIFY(QFile::rename(file, file + ".away"));
    {
        const MessageLog messages;
        restart();
        QVERIFY(MessageLog::count(file) >= 1);
    }
    QCOMPARE(m_sound->source(HVAudio_source_Radio).kind, SourceKind::Silence);
    {
        SourcePanel panel(m_sound.data(), nullptr);
        panel.show();
        QVERIFY(panel.findChild<QLabel*>("source_error")->text().contains(file));
    }
    // It was only away.
    QVERIFY(QFile::rename(file + ".away", file));
    restart();
    QCOMPARE(m_sound->source(HVAudio_source_Radio).path, file);
}

void TestUnitSound::factoryResetForgetsTheSources()
{
    start();
    SourcePanel panel(m_sound.data(), nullptr);
    chooseKind(&panel, HVAudio_source_Usb, SourceKind::Sweep);
    panel.findChild<QAbstractButton*>(QStringLiteral("source_6"))->click();
    m_shell->resetToFactory();
    QCOMPARE(m_sound->source(HVAudio_source_Usb).kind, SourceKind::Input);
    QCOMPARE(m_sound->playing(), HVAudio_source_Radio);
    restart();
    QCOMPARE(m_sound->source(HVAudio_source_Usb).kind, SourceKind::Input);
    QCOMPARE(m_sound->playing(), HVAudio_source_Radio);
}

void TestUnitSound::editedSourceIsSet()
{
    start();
    mem::SettingsStore::instance()->edit("Headunit_Source_DAB", "sweep");
    QTRY_COMPARE(m_sound->source(HVAudio_source_Dab).kind, SourceKind::Sweep);
    mem::SettingsStore::instance()->edit("Headunit_Playing", "DAB");
    QTRY_COMPARE(m_sound->playing(), HVAudio_source_Dab);
}

void TestUnitSound::pipeAsFileOrOutputDoesNotFreezeTheUnit()
{
    const QString pipe = m_folder->filePath("pipe.wav");
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    m_sound.reset(new UnitSound);
    QVERIFY(!m_sound->start(pipe)); // would wait for a reader
    start();
    QString error;
    QVERIFY(!m_sound->setSource(HVAudio_source_Usb, {SourceKind::File, pipe}, &error)); // for a writer
    QVERIFY2(error.contains("it is a pipe"), qPrintable(error));
    QCOMPARE(m_sound->source(HVAudio_source_Usb).kind, SourceKind::Input);
}

void TestUnitSound::callsAreInTheJournal()
{
    start();
    m_sound->setSource(HVAudio_source_Usb, {SourceKind::PinkNoise, {}});
    m_sound->play(HVAudio_source_Usb);
    m_sound->prompt(dsp::Ring, true);
    m_sound->endPrompt(dsp::Ring);
    QStringList told;
    for (const cm::Journal::Entry& entry : cm::Journal::instance()->entries())
        told.append(entry.subsystem + "." + entry.operation);
    const QStringList expected{"Sound.setSource(6, Pink noise)", "Sound.play(6)", "Sound.prompt(0, repeated)",
                               "Sound.endPrompt(0)"};
    for (const QString& line : expected)
        QVERIFY2(told.contains(line), qPrintable(line));
}

void TestUnitSound::noiseIsHeardOnlyAsTheSourceThatPlays()
{
    start();
    m_sound->setSource(HVAudio_source_Usb, {SourceKind::PinkNoise, {}});
    m_sound->setSource(HVAudio_source_Radio, {SourceKind::Silence, {}});
    m_sound->play(HVAudio_source_Usb);
    QTRY_VERIFY(isLoud());
    m_sound->play(HVAudio_source_Radio);
    QTRY_VERIFY(isSilent());
}

void TestUnitSound::keyBeepsAreHeard_data()
{
    QTest::addColumn<bool>("byService");
    QTest::newRow("AudioService::doBeep") << true;
    QTest::newRow("McuManager::triggerBeep") << false;
}

void TestUnitSound::keyBeepsAreHeard()
{
    QFETCH(bool, byService);
    start();
    QTRY_VERIFY(isSilent());
    const auto beepIsHeard = [&] {
        if (byService)
            AudioService::instance()->doBeep(0);
        else
            McuManager::instance()->triggerBeep(0);
        return isLoud();
    };
    QTRY_VERIFY(beepIsHeard());
}

void TestUnitSound::knobTurnsTheSoundDown()
{
    start();
    QCOMPARE(m_sound->engine().settings().mainDb, dbOf(25)); // the start-up volume
    m_shell->onHardKey(KeyEvent::Key_VolumeDown, KeyEvent::Press);
    QCOMPARE(m_sound->engine().settings().mainDb, dbOf(24));
    m_shell->onHardKey(KeyEvent::Key_Mute, KeyEvent::Press);
    QCOMPARE(m_sound->engine().settings().mainDb, dbOf(0));
    QTRY_VERIFY(isSilent());
}

void TestUnitSound::promptStepsTheProgrammeBack()
{
    start();
    m_sound->setSource(HVAudio_source_Radio, {SourceKind::PinkNoise, {}});
    AudioService::instance()->setVolumeLevel(50, 0);
    AudioService::instance()->setVolumeLevel(20, 1); // so that the programme is what is measured
    QTRY_VERIFY(loudest() > 0.2f);
    m_sound->prompt(dsp::Ring, true);
    QVERIFY(m_sound->promptSounds(dsp::Ring));
    // 20 dB lower.
    const auto quiet = [&] {
        const float level = loudest();
        return level > 0 && level < 0.1f;
    };
    QTRY_VERIFY(quiet());
    m_sound->endPrompt(dsp::Ring);
    QTRY_VERIFY(!m_sound->promptSounds(dsp::Ring));
    QTRY_VERIFY(loudest() > 0.2f);
}

void TestUnitSound::powerOffFallsSilentAndEndsPrompts()
{
    start();
    m_sound->setSource(HVAudio_source_Radio, {SourceKind::PinkNoise, {}});
    m_sound->prompt(dsp::Ring, true);
    QTRY_VERIFY(isLoud());
    m_shell->setPowered(false);
    QVERIFY(!m_sound->engine().settings().power);
    QTRY_VERIFY(isSilent());
    QTRY_VERIFY(!m_sound->promptSounds(dsp::Ring));
    m_sound->prompt(dsp::Ring, true);
    QVERIFY(!m_sound->promptSounds(dsp::Ring));
}

void TestUnitSound::powerOnComesBackAtItsStartVolume()
{
    start();
    m_sound->setSource(HVAudio_source_Usb, {SourceKind::PinkNoise, {}});
    m_sound->play(HVAudio_source_Usb);
    AudioService::instance()->setVolumeLevel(50, 0);
    m_shell->setPowered(false);
    QTRY_VERIFY(isSilent());
    m_shell->setPowered(true);
    QCOMPARE(m_sound->engine().settings().mainDb, dbOf(25));
    QCOMPARE(m_sound->playing(), HVAudio_source_Usb);
    QTRY_VERIFY(isLoud());
}

void TestUnitSound::panelMeasuresWhatIsPlayed()
{
    start();
    m_sound->setSource(HVAudio_source_Radio, {SourceKind::PinkNoise, {}});
    AudioService::instance()->setEQType(EQ_Type_Rock, false);
    SoundPanel panel(m_sound.data(), ResponsePlot::create(nullptr), nullptr);
    panel.show();
    QTRY_VERIFY(panel.level(dsp::FrontLeft)->shownDb() > -59);

    // The dots of the first speaker lie on its line, wherever the noise has anything.
    const auto measured = [&] {
        for (const QwtPlotItem* item :
             static_cast<QwtPlot*>(panel.plot()->widget())->itemList(QwtPlotItem::Rtti_PlotCurve)) {
            const auto* curve = static_cast<const QwtPlotCurve*>(item);
            if (curve->style() == QwtPlotCurve::NoCurve)
                return curve;
        }
        return static_cast<const QwtPlotCurve*>(nullptr);
    };
    QVERIFY(measured());
    QTRY_VERIFY(measured()->dataSize() > 40);
    for (std::size_t i = 0; i < measured()->dataSize(); ++i) {
        const QPointF dot = measured()->sample(int(i));
        const double hz = dot.x();
        const double expected = 20 * std::log10(std::abs(m_sound->engine().response(dsp::FrontLeft, hz)));
        if (hz > 50)
            QVERIFY2(
                std::abs(dot.y() - expected) < 1.5,
                qPrintable(QStringLiteral("%1 Hz: %2 instead of %3").arg(hz).arg(dot.y()).arg(expected)));
    }
}

static QStringList panelsOf(SoundControl* sound)
{
    const Inspector inspector(664, sound);
    QStringList names;
    for (int i = 0; i < inspector.panels()->count(); ++i)
        names.append(inspector.panels()->tabText(i));
    return names;
}

void TestUnitSound::inspectorShowsItsPanels()
{
    start();
    const QStringList names = panelsOf(m_sound.data());
    QVERIFY(names.contains("Sources"));
    QVERIFY(names.contains("Sound"));
}

void TestUnitSound::inspectorWithoutSoundHasNoPanelsForIt()
{
    const QStringList names = panelsOf(nullptr);
    QVERIFY(names.contains("Unit"));
    QVERIFY(!names.contains("Sources") && !names.contains("Sound"));
}

QTEST_MAIN(TestUnitSound)
#include "tst_unitsound.moc"
