#include "tests/support/process.h"

#include "headunit/shell/audiopages.h"

#include <QImage>

using namespace headunit;

/// The program as a driver and a script meet it: a process, its exit code, its files, a pointer on a screen.
class TestShellRun : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup() { m_display.reset(); }
    void exitCodeOfTheCommandLine_data();
    void exitCodeOfTheCommandLine();
    void withoutADisplayItSaysSo();
    void browserStandsInForADisplay();
    void remoteThatCantBeHadEndsTheStart();
    void displayThatCantBeReachedIsSaid_data();
    void displayThatCantBeReachedIsSaid();
    void whatQtSaysOfFormsIsForTheLog();
    void tourSavesAPictureOfEveryPage();
    void tourLeavesTheRememberedPageAlone();
    void tourWithoutTheApplicationFails();
    void tourIntoAFileFails();
    void signalEndsInAnOrderlyExit_data();
    void signalEndsInAnOrderlyExit();
    void signalsEndAUnitThatHangs_data();
    void signalsEndAUnitThatHangs();
    void applicationThatTookTheUnitDownIsLeftOutOnce_data();
    void applicationThatTookTheUnitDownIsLeftOutOnce();
    void secondProcessOnTheSameStoreIsRefused();
    void storeThatCantBeWrittenStillStarts();
    void realPointerDrivesTheWholeUnit();
    void pageSurvivesKill9();
    void hardKeysWorkByPointer();
    void soundGoesIntoAFile();

private:
    QStringList withStore(const QStringList& arguments) const
    {
        return QStringList{"--settings", m_settings} + arguments;
    }
    /// Arguments for a unit with an application that does this, see tests/plugins/troublesome.cpp.
    QStringList withTrouble(const char* trouble);
    /// Starts an X server and points m_environment at it.
    bool startDisplay();
    /// A real click at a place of the unit's window, which stands at 0, 0 of the display.
    bool click(const QPoint& pos);
    bool clickAndHear(Process* unit, const QPoint& pos, const QByteArray& words);
    /// What the file holds for the page, "" for none, null when it can't be read.
    QByteArray pageInFile() const;

    QScopedPointer<QTemporaryDir> m_folder;
    QScopedPointer<Process> m_display;
    QProcessEnvironment m_environment;
    QString m_settings;
};

// Where things are, by the unit's drawing: the bare screen for the pointer tests, the tab bar's keys by page.
static const QPoint tile(512, 328);
static const QPoint tabKeys[audioPageCount] = {{263, 556}, {97, 556},  {595, 556},
                                               {927, 556}, {429, 556}, {761, 556}};

static QByteArray pageWrite(int page)
{
    return QStringLiteral("setValue(\"AudioSetting_Page\", 1, %1, true)").arg(page).toLatin1();
}

void TestShellRun::init()
{
    m_folder.reset(new QTemporaryDir);
    m_settings = m_folder->filePath("settings.db");
    m_environment = QProcessEnvironment::systemEnvironment();
    m_environment.insert("QT_QPA_PLATFORM", "offscreen");
    m_environment.insert("XDG_DATA_HOME", m_folder->path());
    m_environment.insert("LANG", "C");
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "LC_ALL", "LANGUAGE"})
        m_environment.remove(name);
}

bool TestShellRun::startDisplay()
{
    m_display.reset(new Process(m_environment));
    // Descriptor 1: the server writes the number it has taken to standard output.
    m_display->start("Xvfb", {"-displayfd", "1", "-screen", "0", "1280x720x24", "-nolisten", "tcp"});
    if (!m_display->says("\n"))
        return false;
    m_environment.insert("DISPLAY", ":" + QString::fromLatin1(m_display->output().trimmed()));
    m_environment.insert("QT_QPA_PLATFORM", "xcb");
    // The X and D-Bus client libraries keep memory for good, partly in modules that are unloaded by the end
    // and can't be named. The same program is searched for leaks where it runs offscreen.
    m_environment.insert("ASAN_OPTIONS", "detect_leaks=0");
    return true;
}

bool TestShellRun::click(const QPoint& pos)
{
    return !runTool("xdotool",
                    {"mousemove", QString::number(pos.x()), QString::number(pos.y()), "click", "1"},
                    m_environment)
                .isNull();
}

bool TestShellRun::clickAndHear(Process* unit, const QPoint& pos, const QByteArray& words)
{
    const int heard = unit->output().size();
    return click(pos) && unit->says(words, heard);
}

QByteArray TestShellRun::pageInFile() const
{
    return runTool("sqlite3", {m_settings, "SELECT value FROM settings WHERE key = 'AudioSetting_Page'"})
        .trimmed();
}

void TestShellRun::exitCodeOfTheCommandLine_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("out");
    QTest::addColumn<QByteArray>("err");
    QTest::newRow("help") << QStringList{"--help"} << 0 << QByteArray("--tour") << QByteArray();
    QTest::newRow("version") << QStringList{"--version"} << 0 << QByteArray("headunit " HEADUNIT_VERSION)
                             << QByteArray();
    QTest::newRow("unknown option") << QStringList{"--radio"} << 2 << QByteArray() << QByteArray("radio");
    QTest::newRow("unknown page") << QStringList{"--page", "6"} << 2 << QByteArray() << QByteArray("'6'");
    QTest::newRow("unknown language")
        << QStringList{"--language", "tlh"} << 2 << QByteArray() << QByteArray("'tlh'");
}

void TestShellRun::exitCodeOfTheCommandLine()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, out);
    QFETCH(QByteArray, err);
    m_environment.remove("QT_QPA_PLATFORM"); // none of these needs a display
    Process unit(m_environment);
    unit.start(HEADUNIT, withStore(arguments));
    QTEST(unit.exitCode(), "code");
    QVERIFY2(unit.output().contains(out), unit.output());
    QVERIFY2(unit.errors().contains(err), unit.errors());
    QVERIFY(!QFile::exists(m_settings));
}

void TestShellRun::withoutADisplayItSaysSo()
{
    m_environment.remove("QT_QPA_PLATFORM");
    Process unit(m_environment);
    unit.start(HEADUNIT, withStore({}));
    QCOMPARE(unit.exitCode(), 1);
    QVERIFY2(unit.errors().contains("no display"), unit.errors());
}

void TestShellRun::browserStandsInForADisplay()
{
    m_environment.remove("QT_QPA_PLATFORM");
    Process unit(m_environment);
    unit.start(HEADUNIT, withStore({"--remote", "--trace-startup"}));
    QVERIFY2(unit.says(" launcher-painted"), unit.errors());
    const QRegularExpression line("^The unit's screen: http://127\\.0\\.0\\.1:[0-9]+/#[0-9a-f]{32}$",
                                  QRegularExpression::MultilineOption);
    QVERIFY2(line.match(QString::fromUtf8(unit.output())).hasMatch(), unit.output());
    unit.raise(SIGTERM);
    QCOMPARE(unit.exitCode(), 0);
}

void TestShellRun::remoteThatCantBeHadEndsTheStart()
{
    Process unit(m_environment);
    unit.start(HEADUNIT,
               withStore({"--remote", "--remote-certificate", "none.pem", "--remote-key", "none.pem"}));
    QCOMPARE(unit.exitCode(), 6);
    QVERIFY2(unit.errors().contains("--remote: none.pem can't be read"), unit.errors());
    QVERIFY(!unit.output().contains("http"));
}

void TestShellRun::displayThatCantBeReachedIsSaid_data()
{
    QTest::addColumn<QString>("variable");
    QTest::addColumn<QString>("value");
    QTest::newRow("no such X server") << "DISPLAY"
                                      << ":59000"; // no program takes one so high
    QTest::newRow("no such platform") << "QT_QPA_PLATFORM"
                                      << "nonsense";
}

void TestShellRun::displayThatCantBeReachedIsSaid()
{
    QFETCH(QString, variable);
    QFETCH(QString, value);
    m_environment.remove("QT_QPA_PLATFORM");
    m_environment.insert(variable, value);
    Process unit(m_environment);
    unit.start(HEADUNIT, withStore({}));
    QCOMPARE(unit.exitCode(), 1);
    QCOMPARE(QString::fromLocal8Bit(unit.errors()),
             QStringLiteral("headunit: no display: %1=%2 can't be reached\n").arg(variable, value));
    QVERIFY(!QFile::exists(m_settings));
}

void TestShellRun::whatQtSaysOfFormsIsForTheLog()
{
    for (const bool log : {false, true}) {
        Process unit(m_environment);
        unit.start(HEADUNIT, withStore(QStringList{"--tour", m_folder->filePath("tour")} +
                                       (log ? QStringList{"--log"} : QStringList())));
        QCOMPARE(unit.exitCode(), 0);
        for (const char* words : {"No such slot", "No such signal", "QCssParser"})
            QVERIFY2(unit.errors().contains(words) == log, unit.errors());
        QVERIFY2(unit.errors().contains("no sound output"), unit.errors()); // what a driver may want to know
    }
}

void TestShellRun::tourSavesAPictureOfEveryPage()
{
    const QString folder = m_folder->filePath("new/tour");
    m_environment.remove("QT_QPA_PLATFORM"); // a tour finds its platform itself
    Process unit(m_environment);
    unit.start(HEADUNIT, withStore({"--tour", folder}));
    const int code = unit.exitCode();
    QVERIFY2(code == 0, unit.errors());

    QVector<QImage> pictures{QImage(QDir(folder).filePath("launcher.png"))};
    for (const char* name : {"page-0-equalizer", "page-1-audio-levels", "page-2-crossover",
                             "page-3-time-alignment", "page-4-eq-presets", "page-5-volume-levels"})
        pictures.append(QImage(QDir(folder).filePath(QLatin1String(name) + ".png")));
    QCOMPARE(pictures.size(), 1 + audioPageCount);
    for (int i = 0; i < pictures.size(); ++i) {
        QCOMPARE(pictures[i].size(), QSize(1024, 600));
        for (int other = 0; other < i; ++other)
            QVERIFY2(pictures[i] != pictures[other], qPrintable(QStringLiteral("%1 = %2").arg(i).arg(other)));
    }
}

void TestShellRun::tourLeavesTheRememberedPageAlone()
{
    Process unit(m_environment);
    unit.start(HEADUNIT, withStore({"--tour", m_folder->filePath("tour")}));
    const int code = unit.exitCode();
    QVERIFY2(code == 0, unit.errors());
    QCOMPARE(pageInFile(), QByteArray(""));
}

void TestShellRun::tourWithoutTheApplicationFails()
{
    QVERIFY(QDir(m_folder->path()).mkdir("empty"));
    Process unit(m_environment);
    unit.start(HEADUNIT,
               withStore({"--plugins", m_folder->filePath("empty"), "--tour", m_folder->filePath("t")}));
    QCOMPARE(unit.exitCode(), 4);
    QVERIFY2(unit.errors().contains("no tile"), unit.errors());
}

void TestShellRun::tourIntoAFileFails()
{
    QFile file(m_folder->filePath("file"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    Process unit(m_environment);
    unit.start(HEADUNIT, withStore({"--tour", file.fileName()}));
    QCOMPARE(unit.exitCode(), 4);
    QVERIFY2(unit.errors().contains("can't be made"), unit.errors());
}

void TestShellRun::signalEndsInAnOrderlyExit_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGHUP") << SIGHUP;
}

void TestShellRun::signalEndsInAnOrderlyExit()
{
    QFETCH(int, signal);
    Process unit(m_environment);
    unit.start(HEADUNIT, withStore({"--page", "1", "--trace", "--trace-startup"}));
    QVERIFY2(unit.says(" window-painted"), unit.errors());
    // More than once, as from a terminal and from the script that started the unit.
    unit.raise(signal);
    QVERIFY(unit.says("onExit()"));
    unit.raise(signal);
    unit.raise(SIGTERM);
    QCOMPARE(unit.exitCode(), 0);
    // Through the whole life cycle, and the store let go in order.
    const QByteArray output = unit.output();
    const int exit = output.indexOf("onExit()"), hide = output.indexOf("onHide()"),
              destroy = output.indexOf("onDestroy()");
    QVERIFY(exit > 0 && exit < hide && hide < destroy);
    QVERIFY(!QFile::exists(m_settings + "-journal"));
    QVERIFY(!QFile::exists(m_settings + "-wal"));
}

QStringList TestShellRun::withTrouble(const char* trouble)
{
    const QString folder = m_folder->filePath("applications");
    if (QDir().mkpath(folder) && !QFile::exists(folder + "/troublesome.so"))
        QFile::copy(TEST_PLUGINS "/troublesome.so", folder + "/troublesome.so");
    m_environment.insert("HEADUNIT_TEST_TROUBLE", trouble);
    // A crash is to end the unit as it would without a sanitizer.
    for (const char* options : {"ASAN_OPTIONS", "TSAN_OPTIONS"})
        m_environment.insert(options, m_environment.value(options) + ":handle_segv=0");
    return withStore({"--plugins", folder, "--output", "none", "--trace-startup"});
}

void TestShellRun::signalsEndAUnitThatHangs_data()
{
    QTest::addColumn<int>("count");
    QTest::newRow("some time after the first") << 1;
    QTest::newRow("sooner after a second") << 2;
}

void TestShellRun::signalsEndAUnitThatHangs()
{
    QFETCH(int, count);
    const QStringList arguments = withTrouble("loops in create");
    Process hanging(m_environment);
    hanging.start(HEADUNIT, arguments);
    QVERIFY2(hanging.says(" shell-built"), hanging.errors());
    QElapsedTimer waited;
    waited.start();
    hanging.raise(SIGTERM);
    if (count == 2)
        hanging.raise(SIGINT);        // two of a kind, one upon the other, are one
    QCOMPARE(hanging.exitCode(), -1); // by the signal
    QVERIFY2(hanging.errors().contains("takes too long"), hanging.errors());
    QCOMPARE(waited.elapsed() >= 4500, count == 1);
    // It is known what hung.
    Process next(m_environment);
    next.start(HEADUNIT, arguments);
    QVERIFY2(next.says(" launcher-painted"), next.errors());
    QVERIFY2(next.errors().contains("troublesome.so is left out this time"), next.errors());
    next.raise(SIGTERM);
    QCOMPARE(next.exitCode(), 0);
}

void TestShellRun::applicationThatTookTheUnitDownIsLeftOutOnce_data()
{
    QTest::addColumn<QByteArray>("trouble");
    QTest::addColumn<int>("code");
    QTest::newRow("crashes in its constructor") << QByteArray("crashes in its constructor") << -1;
    QTest::newRow("crashes in create()") << QByteArray("crashes in create") << -1;
    QTest::newRow("exits in create()") << QByteArray("exits in create") << 0;
}

void TestShellRun::applicationThatTookTheUnitDownIsLeftOutOnce()
{
    QFETCH(QByteArray, trouble);
    QFETCH(int, code);
    const QStringList arguments = withTrouble(trouble);
    for (const bool isUp : {false, true, false}) {
        Process unit(m_environment);
        unit.start(HEADUNIT, arguments);
        QVERIFY2(unit.says(" launcher-painted") == isUp, unit.errors());
        QCOMPARE(unit.errors().contains("troublesome.so is left out this time"), isUp);
        if (isUp)
            unit.raise(SIGTERM);
        QCOMPARE(unit.exitCode(), isUp ? 0 : code);
    }
}

void TestShellRun::secondProcessOnTheSameStoreIsRefused()
{
    Process first(m_environment);
    first.start(HEADUNIT, withStore({"--trace-startup"}));
    QVERIFY2(first.says(" launcher-painted"), first.errors());
    Process second(m_environment);
    second.start(HEADUNIT, withStore({}));
    QCOMPARE(second.exitCode(), 3);
    QVERIFY2(second.errors().contains("headunit: "), second.errors());
    QVERIFY(first.isRunning());
    first.raise(SIGTERM);
    QCOMPARE(first.exitCode(), 0);
}

void TestShellRun::storeThatCantBeWrittenStillStarts()
{
    QFile file(m_folder->filePath("file"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    m_settings = m_folder->filePath("file/settings.db"); // below a file, where nobody can write
    Process unit(m_environment);
    unit.start(HEADUNIT, withStore({"--trace-startup"}));
    QVERIFY2(unit.says(" launcher-painted"), unit.errors());
    unit.raise(SIGTERM);
    QCOMPARE(unit.exitCode(), 0);
    QVERIFY2(unit.errors().contains("settings"), unit.errors());
}

void TestShellRun::realPointerDrivesTheWholeUnit()
{
    QVERIFY(startDisplay());
    Process unit(m_environment);
    unit.start(HEADUNIT, withStore({"--screen-only", "--trace", "--trace-startup"}));
    QVERIFY2(unit.says(" launcher-painted"), unit.errors());

    QVERIFY2(clickAndHear(&unit, tile, " window-painted"), unit.errors());
    QVERIFY(unit.output().contains("BaseWindow.onEnter()"));
    for (int page = 0; page < audioPageCount; ++page) {
        QVERIFY2(clickAndHear(&unit, tabKeys[page], pageWrite(page)), unit.errors());
        QCOMPARE(unit.output().count("AudioService.doBeep(0)"), page + 1);
    }

    const int heard = unit.output().size();
    QVERIFY(!runTool("xdotool", {"key", "Escape"}, m_environment).isNull());
    QVERIFY2(unit.says("BaseWindow.onHide()", heard), unit.errors());
    QVERIFY(unit.output().mid(heard).contains("BaseWindow.onExit()"));

    // Reopened on the page that was left.
    QVERIFY2(clickAndHear(&unit, tile, "BaseWindow.onEnter()"), unit.errors());
    QVERIFY(unit.output().contains(pageWrite(audioPageCount - 1)));
    unit.raise(SIGTERM);
    QCOMPARE(unit.exitCode(), 0);
    QCOMPARE(pageInFile(), QByteArray::number(audioPageCount - 1));
}

void TestShellRun::pageSurvivesKill9()
{
    QVERIFY(startDisplay());
    const int page = 4;
    {
        Process unit(m_environment);
        unit.start(HEADUNIT, withStore({"--screen-only", "--trace", "--trace-startup"}));
        QVERIFY2(unit.says(" launcher-painted"), unit.errors());
        QVERIFY2(clickAndHear(&unit, tile, " window-painted"), unit.errors());
        QVERIFY2(clickAndHear(&unit, tabKeys[page], pageWrite(page)), unit.errors());
        // The write is announced when it is asked for; the next call is only made when it has returned.
        QVERIFY2(clickAndHear(&unit, tabKeys[page], "AudioService.doBeep(0)"), unit.errors());
        unit.raise(SIGKILL);
        QCOMPARE(unit.exitCode(), -1);
    }
    QCOMPARE(pageInFile(), QByteArray::number(page));

    Process unit(m_environment);
    unit.start(HEADUNIT, withStore({"--screen-only", "--trace", "--trace-startup"}));
    QVERIFY2(unit.says(" launcher-painted"), unit.errors());
    QVERIFY2(clickAndHear(&unit, tile, pageWrite(page)), unit.errors());
    QVERIFY2(unit.says(" window-painted"), unit.errors());
    unit.raise(SIGTERM);
    QCOMPARE(unit.exitCode(), 0);
    QCOMPARE(pageInFile(), QByteArray::number(page));
}

void TestShellRun::hardKeysWorkByPointer()
{
    QVERIFY(startDisplay());
    Process unit(m_environment);
    unit.start(HEADUNIT, withStore({"--page", "1", "--trace", "--trace-startup"}));
    QVERIFY2(unit.says(" window-painted"), unit.errors());
    const QPoint power(52, 104), home(1180, 104), back(1180, 192), knob(52, 464);

    QVERIFY(clickAndHear(&unit, back, "BaseWindow.onHide()"));
    QVERIFY(clickAndHear(&unit, tile + QPoint(104, 32), "BaseWindow.onEnter()"));
    QVERIFY(clickAndHear(&unit, home, "BaseWindow.onHide()"));
    const int heard = unit.output().size();
    QVERIFY(!runTool("xdotool",
                     {"mousemove", QString::number(knob.x()), QString::number(knob.y()), "click", "4"},
                     m_environment)
                 .isNull());
    QVERIFY2(unit.says("AudioService.setVolumeLevel(26, 0)", heard), unit.output().mid(heard));
    QVERIFY(clickAndHear(&unit, knob, "AudioService.setVolumeLevel(0, 0)"));
    QVERIFY(clickAndHear(&unit, knob, "AudioService.setVolumeLevel(26, 0)"));
    QVERIFY(clickAndHear(&unit, tile + QPoint(104, 32), "BaseWindow.onEnter()"));
    QVERIFY(clickAndHear(&unit, power, "BaseWindow.onDestroy()"));
    QVERIFY(clickAndHear(&unit, power, "BaseWindow.onEnter()"));
    unit.raise(SIGTERM);
    QCOMPARE(unit.exitCode(), 0);
}

void TestShellRun::soundGoesIntoAFile()
{
    const QString path = m_folder->filePath("out.wav");
    Process unit(m_environment);
    unit.start(HEADUNIT, withStore({"--output", path, "--trace-startup"}));
    QVERIFY2(unit.says(" launcher-painted"), unit.errors());
    QTRY_VERIFY(QFileInfo(path).size() > 0);
    unit.raise(SIGTERM);
    QCOMPARE(unit.exitCode(), 0);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray header = file.read(200);
    QVERIFY(header.startsWith("R")); // RIFF, or RF64 for what may become long
    const int format = header.indexOf("fmt ");
    QVERIFY(format > 0);
    QCOMPARE(int(header[format + 10]), 5); // channels
    QVERIFY(file.size() > 1000);
}

QTEST_GUILESS_MAIN(TestShellRun)
#include "tst_shell_run.moc"
