#include "headunit/inspector/sourcepanel.h"

#include "tests/headunit/sound/fakesound.h"

#include "headunit/sound/soundnames.h"
#include "platform/common/settings/settingsstore.h"
#include "platform/common/texts/language.h"

#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QFileDialog>
#include <QFileSystemModel>
#include <QLabel>
#include <QLineEdit>
#include <QtTest>

using namespace headunit;
using namespace hvaudio;

class TestSourcePanel : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void namesAreTheUnitsOwn();
    void touchingASourcePlaysIt_data();
    void touchingASourcePlaysIt();
    void playingSourceIsMarked();
    void kindIsSetForItsSource_data();
    void kindIsSetForItsSource();
    void fileIsAskedForAndSet();
    void fileDialogLeftAloneChangesNothing();
    void enteredPathIsSet();
    void refusedFileIsSaidAndNothingElseIsShownAsChanged();
    void refusedPathStaysToBeCorrected();
    void refusedFileOfTheDialogStaysToBeCorrected();
    void dialogChangesNoFile();
    void emptiedPathIsBackToWhatPlays();
    void successTakesTheMessageAway();
    void choicesAreKept_data();
    void choicesAreKept();
    void refusedChoiceIsNotKept();
    void relativePathIsKeptWhole();
    void playingSourceIsKept();
    void storedFileThatDoesNotPlayIsSaid();
    void promptKeysCallTheirPrompt_data();
    void promptKeysCallTheirPrompt();
    void promptKeyRisesWhenTheChimeEnds();
    void looksOnlyWhileItIsSeen();

private:
    template <typename T>
    T* child(const QString& name)
    {
        T* found = m_panel->findChild<T*>(name);
        if (!found)
            qFatal("no \"%s\"", qPrintable(name));
        return found;
    }
    void choose(int id, SourceKind kind);
    QFileDialog* dialog() { return m_panel->findChild<QFileDialog*>(); }

    QScopedPointer<FakeSound> m_sound;
    QScopedPointer<SourcePanel> m_panel;
};

static mem::SettingsStore* store()
{
    return mem::SettingsStore::instance();
}

void TestSourcePanel::init()
{
    cm::Language::instance()->setCurrent("en");
    store()->clear(); // never opened: it works from memory
    m_sound.reset(new FakeSound);
    m_panel.reset(new SourcePanel(m_sound.data(), nullptr));
    m_panel->show();
}

void TestSourcePanel::cleanup()
{
    m_panel.reset();
    m_sound.reset();
}

/// As a user does: the item becomes the current one, and says so.
void TestSourcePanel::choose(int id, SourceKind kind)
{
    auto* box = child<QComboBox>(QStringLiteral("kind_%1").arg(id));
    const int item = box->findData(int(kind));
    QVERIFY(item >= 0);
    box->setCurrentIndex(item);
    emit box->activated(item);
}

void TestSourcePanel::namesAreTheUnitsOwn()
{
    QStringList english, german;
    for (const UnitSource& source : unitSources)
        english.append(child<QAbstractButton>(QStringLiteral("source_%1").arg(int(source.id)))->text());
    cm::Language::instance()->setCurrent("de");
    for (const UnitSource& source : unitSources)
        german.append(child<QAbstractButton>(QStringLiteral("source_%1").arg(int(source.id)))->text());
    QCOMPARE(english.size(), 7);
    QCOMPARE(QSet<QString>(english.begin(), english.end()).size(), 7);
    QVERIFY(english != german);
    QCOMPARE(english.last(), QStringLiteral("DAB"));
    QCOMPARE(german.last(), QStringLiteral("DAB"));
    for (const QString& name : english + german)
        QVERIFY2(!name.isEmpty() && !name[0].isDigit(), qPrintable(name)); // a number is a missing text
}

void TestSourcePanel::touchingASourcePlaysIt_data()
{
    QTest::addColumn<int>("id");
    for (const int id : {18, 6, 5, 7, 0, 1, 19})
        QTest::newRow(qPrintable(QStringLiteral("source %1").arg(id))) << id;
}

void TestSourcePanel::touchingASourcePlaysIt()
{
    QFETCH(int, id);
    m_sound->wanted.source = id == 18 ? 6 : 18;
    auto* button = child<QAbstractButton>(QStringLiteral("source_%1").arg(id));
    QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
    QCOMPARE(m_sound->takeCalls(), QStringList{QStringLiteral("play %1").arg(id)});
    QVERIFY(button->isChecked());
}

void TestSourcePanel::playingSourceIsMarked()
{
    m_panel->hide();
    m_sound->wanted.source = 7;
    m_sound->apply();
    m_panel->show();
    for (const UnitSource& source : unitSources)
        QCOMPARE(child<QAbstractButton>(QStringLiteral("source_%1").arg(int(source.id)))->isChecked(),
                 source.id == 7);
    QVERIFY(m_sound->takeCalls().isEmpty());
}

void TestSourcePanel::kindIsSetForItsSource_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<int>("kind");
    for (const UnitSource& source : unitSources) {
        for (const SourceKindName& kind : sourceKinds) {
            if (kind.kind != SourceKind::File)
                QTest::newRow(qPrintable(QStringLiteral("%1 as %2").arg(kind.text).arg(int(source.id))))
                    << int(source.id) << int(kind.kind);
        }
    }
}

void TestSourcePanel::kindIsSetForItsSource()
{
    QFETCH(int, id);
    QFETCH(int, kind);
    choose(id, SourceKind(kind));
    QCOMPARE(m_sound->takeCalls(), QStringList{QStringLiteral("setSource %1 %2 \"\"").arg(id).arg(kind)});
}

void TestSourcePanel::fileIsAskedForAndSet()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("song.wav");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    choose(6, SourceKind::File);
    QVERIFY(dialog());
    QVERIFY(m_sound->takeCalls().isEmpty());
    dialog()->selectFile(path);
    emit dialog()->fileSelected(path);
    QCOMPARE(m_sound->takeCalls(),
             QStringList{QStringLiteral("setSource 6 %1 \"%2\"").arg(int(SourceKind::File)).arg(path)});
    QCOMPARE(child<QLineEdit>("path_6")->text(), path);
}

void TestSourcePanel::fileDialogLeftAloneChangesNothing()
{
    choose(6, SourceKind::File);
    QVERIFY(dialog());
    dialog()->reject();
    QVERIFY(m_sound->takeCalls().isEmpty());
    QCOMPARE(child<QComboBox>("kind_6")->currentData().toInt(), int(SourceKind::Input));
}

void TestSourcePanel::enteredPathIsSet()
{
    auto* path = child<QLineEdit>("path_5");
    path->setFocus();
    QTest::keyClicks(path, "/music/one.flac");
    QTest::keyClick(path, Qt::Key_Return);
    QCOMPARE(m_sound->takeCalls(),
             QStringList{QStringLiteral("setSource 5 %1 \"/music/one.flac\"").arg(int(SourceKind::File))});
    QCOMPARE(child<QComboBox>("kind_5")->currentData().toInt(), int(SourceKind::File));
}

void TestSourcePanel::refusedFileIsSaidAndNothingElseIsShownAsChanged()
{
    m_sound->refusal = "bad.wav is no sound file";
    auto* path = child<QLineEdit>("path_5");
    path->setText("bad.wav");
    QTest::keyClick(path, Qt::Key_Return);
    QCOMPARE(child<QLabel>("source_error")->text(), QStringLiteral("bad.wav is no sound file"));
    QCOMPARE(child<QComboBox>("kind_5")->currentData().toInt(), int(SourceKind::Input));
    QCOMPARE(path->text(), QStringLiteral("bad.wav"));
}

void TestSourcePanel::refusedPathStaysToBeCorrected()
{
    m_sound->refusal = "/music/onne.flac can't be opened";
    auto* path = child<QLineEdit>("path_5");
    path->setFocus();
    QTest::keyClicks(path, "/music/onne.flac");
    QTest::keyClick(path, Qt::Key_Return);
    // Neither another choice nor a look at another panel takes it away.
    m_sound->refusal.clear();
    choose(7, SourceKind::Sweep);
    QCOMPARE(path->text(), QStringLiteral("/music/onne.flac"));
    m_sound->refusal = "/music/onne.flac can't be opened";
    QTest::keyClick(path, Qt::Key_Return);
    m_panel->hide();
    m_panel->show();
    QCOMPARE(path->text(), QStringLiteral("/music/onne.flac"));
    QCOMPARE(child<QLabel>("source_error")->text(), m_sound->refusal);
    m_sound->refusal.clear();
    path->setFocus();
    path->setCursorPosition(int(qstrlen("/music/on")));
    QTest::keyClick(path, Qt::Key_Backspace);
    QTest::keyClick(path, Qt::Key_Return);
    QCOMPARE(m_sound->source(HVAudio_source_id_e(5)).path, QStringLiteral("/music/one.flac"));
    QVERIFY(child<QLabel>("source_error")->text().isEmpty());
    // Taken: from now on the field says what plays.
    choose(5, SourceKind::Sweep);
    QCOMPARE(path->text(), QString());
}

void TestSourcePanel::refusedFileOfTheDialogStaysToBeCorrected()
{
    m_sound->refusal = "no sound file";
    choose(6, SourceKind::File);
    emit dialog()->fileSelected("/music/letter.txt");
    QCOMPARE(child<QLineEdit>("path_6")->text(), QStringLiteral("/music/letter.txt"));
    QCOMPARE(child<QComboBox>("kind_6")->currentData().toInt(), int(SourceKind::Input));
}

void TestSourcePanel::dialogChangesNoFile()
{
    choose(6, SourceKind::File);
    QVERIFY(dialog()->testOption(QFileDialog::DontUseNativeDialog));
    auto* files = dialog()->findChild<QFileSystemModel*>();
    QVERIFY(files);
    QVERIFY(files->isReadOnly());
    // What the keys and menus of the dialog would do.
    const QTemporaryDir folder;
    QFile song(folder.filePath("song.wav"));
    QVERIFY(song.open(QIODevice::WriteOnly));
    song.close();
    dialog()->setDirectory(folder.path());
    dialog()->selectFile(song.fileName());
    auto* remove = dialog()->findChild<QAction*>("qt_delete_action");
    QVERIFY(remove);
    remove->trigger();
    QVERIFY(song.exists());
}

void TestSourcePanel::emptiedPathIsBackToWhatPlays()
{
    auto* path = child<QLineEdit>("path_5");
    path->setFocus();
    QTest::keyClicks(path, "/music/one.flac");
    QTest::keyClick(path, Qt::Key_Return);
    m_sound->takeCalls();
    path->selectAll();
    QTest::keyClick(path, Qt::Key_Delete);
    QTest::keyClick(path, Qt::Key_Return);
    QVERIFY(m_sound->takeCalls().isEmpty());
    QCOMPARE(path->text(), QStringLiteral("/music/one.flac"));
}

void TestSourcePanel::successTakesTheMessageAway()
{
    m_sound->refusal = "no";
    choose(5, SourceKind::Sweep);
    QVERIFY(!child<QLabel>("source_error")->text().isEmpty());
    m_sound->refusal.clear();
    choose(5, SourceKind::Sweep);
    QVERIFY(child<QLabel>("source_error")->text().isEmpty());
}

void TestSourcePanel::choicesAreKept_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("text");
    QTest::newRow("silence as the radio") << 18 << int(SourceKind::Silence) << "Headunit_Source_Radio"
                                          << "silence";
    QTest::newRow("pink noise as USB") << 6 << int(SourceKind::PinkNoise) << "Headunit_Source_USB"
                                       << "pink";
    QTest::newRow("a sweep as DAB") << 19 << int(SourceKind::Sweep) << "Headunit_Source_DAB"
                                    << "sweep";
    QTest::newRow("other programs as AUX") << 7 << int(SourceKind::Input) << "Headunit_Source_AUX"
                                           << "input";
}

void TestSourcePanel::choicesAreKept()
{
    QFETCH(int, id);
    QFETCH(int, kind);
    QFETCH(QString, key);
    QFETCH(QString, text);
    choose(id, SourceKind(kind));
    QCOMPARE(store()->values(), (QMap<QString, QVariant>{{key, text}}));
}

void TestSourcePanel::refusedChoiceIsNotKept()
{
    m_sound->refusal = "no sound file";
    auto* path = child<QLineEdit>("path_5");
    path->setText("/music/one.flac");
    QTest::keyClick(path, Qt::Key_Return);
    QCOMPARE(store()->values(), (QMap<QString, QVariant>()));
}

void TestSourcePanel::relativePathIsKeptWhole()
{
    auto* path = child<QLineEdit>("path_5");
    path->setText("some: song.wav");
    QTest::keyClick(path, Qt::Key_Return);
    const QString whole = QDir::current().absoluteFilePath("some: song.wav");
    QCOMPARE(store()->value("Headunit_Source_BT_Audio"), QVariant("file:" + whole));
    QCOMPARE(path->text(), whole);
}

void TestSourcePanel::playingSourceIsKept()
{
    auto* button = child<QAbstractButton>("source_1");
    QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
    QCOMPARE(store()->values(), (QMap<QString, QVariant>{{"Headunit_Playing", "Android_Auto"}}));
}

void TestSourcePanel::storedFileThatDoesNotPlayIsSaid()
{
    store()->setValue("Headunit_Source_USB", "file:/stick/gone.wav", true);
    m_sound->sources[HVAudio_source_Usb] = {SourceKind::Silence, {}};
    m_panel.reset(new SourcePanel(m_sound.data(), nullptr));
    m_panel->show();
    auto* error = child<QLabel>("source_error");
    QVERIFY2(error->text().contains("/stick/gone.wav"), qPrintable(error->text()));
    QCOMPARE(child<QComboBox>("kind_6")->currentData().toInt(), int(SourceKind::Silence));
    choose(7, SourceKind::Sweep); // the other one still doesn't play
    QVERIFY(error->text().contains("/stick/gone.wav"));
    choose(6, SourceKind::Sweep);
    QVERIFY(error->text().isEmpty());
}

void TestSourcePanel::promptKeysCallTheirPrompt_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("prompt");
    QTest::addColumn<QString>("how");
    QTest::newRow("navigation hint sounds once") << "prompt_navi" << int(dsp::Navi) << "once";
    QTest::newRow("ring tone goes on") << "prompt_ring" << int(dsp::Ring) << "repeated";
    QTest::newRow("call goes on") << "prompt_call" << int(dsp::Call) << "repeated";
    QTest::newRow("voice sounds once") << "prompt_voice" << int(dsp::Voice) << "once";
}

void TestSourcePanel::promptKeysCallTheirPrompt()
{
    QFETCH(QString, key);
    QFETCH(int, prompt);
    QFETCH(QString, how);
    auto* button = child<QAbstractButton>(key);
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(m_sound->takeCalls(), QStringList{QStringLiteral("prompt %1 %2").arg(prompt).arg(how)});
    QVERIFY(button->isChecked());
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(m_sound->takeCalls(), QStringList{QStringLiteral("endPrompt %1").arg(prompt)});
    QVERIFY(!button->isChecked());
}

void TestSourcePanel::promptKeyRisesWhenTheChimeEnds()
{
    auto* button = child<QAbstractButton>("prompt_navi");
    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(button->isChecked());
    m_sound->sounding[dsp::Navi] = false;
    QTRY_VERIFY(!button->isChecked());
}

void TestSourcePanel::looksOnlyWhileItIsSeen()
{
    auto* status = child<QLabel>("output_status");
    m_sound->output = "another output";
    QTRY_VERIFY(status->text().contains("another output"));
    m_panel->hide();
    m_sound->output = "a third output";
    const auto timers = m_panel->findChildren<QTimer*>();
    for (const QTimer* timer : timers)
        QVERIFY(!timer->isActive());
    QVERIFY(!status->text().contains("third"));
    m_panel->show();
    QVERIFY(status->text().contains("third"));
}

QTEST_MAIN(TestSourcePanel)
#include "tst_sourcepanel.moc"
