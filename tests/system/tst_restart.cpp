// The program under a real pointer: something is set on each page, the program ends (in order, or killed),
// and what was set is in the file, stays there through a restart and a visit to every page, and is what
// sounds then.

#include "tests/system/soundunit.h"

#include "tests/support/askedsound.h"
#include "tests/support/process.h"

#include "hvaudio/eqcurves.h"
#include "platform/common/settings/settingsstore.h"
#include "platform/hvaudioservice/audioservicehost.h"

#include <QMap>
#include <QTemporaryDir>

using hvaudio::AudioServiceHost;

namespace {

struct Step
{
    Touch touch;
    const char* heard; ///< the call that tells that the touch has been dealt with
};

const QPointF corner(1, 0);
const char* const levelsSlider = "m5qx_audiosetting_audio_levels_page:slider";

// clang-format off
const Step steps[] = {
    {{"key_EQ_setting"},                              "setValue(\"AudioSetting_Page\", 1, 0, true)"},
    {{"eq_band_widget6", 0, QPointF(0.5, 4.5 / 21)},  "AudioService.setCustomEq1(6, 5, true)"},
    {{"Key_eqtype_plus"},                             "AudioService.setEQType(7, true)"},
    {{"eq_band_widget1", 0, QPointF(0.5, 14.5 / 21)}, "AudioService.setCustomEq2(-4, 0, true)"},
    {{"key_eq_preset"},                               "setValue(\"AudioSetting_Page\", 1, 4, true)"},
    {{"key_rock"},                                    "AudioService.setEQType(2, true)"},
    {{"key_balance_setting"},                         "setValue(\"AudioSetting_Page\", 1, 1, true)"},
    {{"pad", 0, corner},                              "AudioService.setBalanceFader(15, 15, true)"},
    {{"key_left_level", 5},                           "AudioService.setBalanceFader(10, 15, true)"},
    {{"key_loudness"},                                "AudioService.setCustomLoudness(true, false)"},
    {{levelsSlider, 0, QPointF(1, 0.5)},              "AudioService.setSubFilter(7, 0, 0)"},
    {{"key_crossover_setting"},                       "setValue(\"AudioSetting_Page\", 1, 2, true)"},
    {{"key_rear"},                                    "AudioService.setHPFFilter(128, 0, 8, 0)"},
    {{"key_filter_up", 3},                            "AudioService.setHPFFilter(131, 0, 8, 0)"},
    {{"key_slope_up", 2},                             "AudioService.setHPFFilter(131, 0, 8, 2)"},
    {{"key_level_down"},                              "AudioService.setHPFFilter(131, 1, 8, 2)"},
    {{"key_time_alignment"},                          "setValue(\"AudioSetting_Page\", 1, 3, true)"},
    {{"key_preset2"},                                 "AudioService.setSurroundDelay(32, 0)"},
    {{"Key_front_left_plus", 3},                      "setValue(\"Audio_Time_Alignment_Num20\", 0, 3, true)"},
    {{"key_audio_level"},                             "setValue(\"AudioSetting_Page\", 1, 5, true)"},
    {{"key_main_default_up", 2},                      "setValue(\"Setup_Main_Volume\", 25, 27, true)"},
    {{"widget_default_ring:slider", 0, {1, 0.5}},     "setValue(\"Setup_Volume_Type_BT_Ringer\", 40, 50, true)"},
    // A write is announced when it is asked for; the next call is only made when it has returned.
    {{"key_audio_level"},                             "AudioService.doBeep(0)"},
};

// What the file must hold then.
const struct { const char* key; const char* value; } stored[] = {
    {"AudioSetting_Page",           "5"},
    {"eq15",                        "6"},
    {"eq20",                        "-4"},
    {"AudioService_EQType",                     "2"},
    {"AudioService_Balance",                    "10"},
    {"AudioService_Fader",                      "15"},
    {"customloudnes",               "1"},
    {"subwooferLevel",              "128"},
    {"subwooferOnOff",              "1"},
    {"settings_cross_filter",       "1"},
    {"settings_cross_freq_index",   "0;0;1;3;2;6"},
    {"settings_cross_slope_index",  "0;0;1;2;2;0"},
    {"settings_cross_gain_index",   "0;0;1;1;2;0"},
    {"Audio_Time_Alignment_Preset", "1"},
    {"Audio_Time_Alignment_Num20",  "3"},
    {"Setup_Main_Volume",           "27"},
    {"Setup_Volume_Type_BT_Ringer", "50"},
};
// clang-format on

const QStringList tabs = {"key_EQ_setting",        "key_eq_preset",      "key_balance_setting",
                          "key_crossover_setting", "key_time_alignment", "key_audio_level"};

/// The launcher's tile on the bare screen.
const QPoint tile(512, 328);

/// Pages are drawn at the screen's corner, so a point of theirs is one of the display's.
struct Pointer
{
    QPoint from, to;
    int taps = 1;
};

QStringList moveTo(const QPoint& pos)
{
    return {"mousemove", QString::number(pos.x()), QString::number(pos.y())};
}

} // namespace

class TestRestart : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void whatWasSetOnEachPageSurvives_data();
    void whatWasSetOnEachPageSurvives();

private:
    bool startDisplay();
    bool start(Process* unit);
    bool act(Process* unit, const Pointer& pointer, const QByteArray& heard);
    /// All of the file, key by key.
    QMap<QString, QString> file() const;
    void whatIsStoredIsHeard();

    QVector<Pointer> m_pointers; ///< for each step
    QMap<QString, QPoint> m_tabs;
    QTemporaryDir m_folder;
    QString m_settings;
    QProcessEnvironment m_environment;
    QScopedPointer<Process> m_display;
};

void TestRestart::initTestCase()
{
    SoundUnit::hushLog();
    // Where everything is, from the same pages in this process.
    SoundUnit unit;
    for (const QString& tab : tabs) {
        m_tabs[tab] = unit.place({tab.toLatin1()});
        QVERIFY2(m_tabs[tab].x() > 0, qPrintable(tab));
    }
    for (const Step& step : steps) {
        const Touch& touch = step.touch;
        const Pointer pointer{unit.place(touch), unit.endOf(touch), touch.taps};
        QVERIFY2(pointer.from.x() > 0, touch.control);
        m_pointers << pointer;
        QVERIFY2(unit.touch(touch), qPrintable(unit.error()));
    }
}

bool TestRestart::startDisplay()
{
    m_environment = QProcessEnvironment::systemEnvironment();
    m_environment.insert("LANG", "C");
    // Qt's X platform and D-Bus keep some memory for the life of the process; a build with the leak checker
    // would say so in the exit code. Leaks of the pages are looked for where they are tested without X.
    m_environment.insert("ASAN_OPTIONS", "detect_leaks=0");
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "LC_ALL", "LANGUAGE"})
        m_environment.remove(name);
    m_display.reset(new Process(m_environment));
    // Descriptor 1: the server writes the number it has taken to standard output.
    m_display->start("Xvfb", {"-displayfd", "1", "-screen", "0", "1024x600x24", "-nolisten", "tcp"});
    if (!m_display->says("\n"))
        return false;
    m_environment.insert("DISPLAY", ":" + QString::fromLatin1(m_display->output().trimmed()));
    m_environment.insert("QT_QPA_PLATFORM", "xcb");
    return true;
}

bool TestRestart::start(Process* unit)
{
    unit->start(HEADUNIT, {"--settings", m_settings, "--screen-only", "--trace", "--trace-startup"});
    return unit->says(" launcher-painted") && act(unit, {tile, tile}, " window-painted");
}

bool TestRestart::act(Process* unit, const Pointer& pointer, const QByteArray& heard)
{
    const int from = unit->output().size();
    QStringList arguments = moveTo(pointer.from);
    if (pointer.taps > 0) {
        for (int tap = 0; tap < pointer.taps; ++tap)
            arguments << "click"
                      << "1";
    } else {
        arguments << "mousedown"
                  << "1";
        arguments += moveTo((pointer.from + pointer.to) / 2);
        arguments += moveTo(pointer.to);
        arguments << "mouseup"
                  << "1";
    }
    return !runTool("xdotool", arguments, m_environment).isNull() && unit->says(heard, from);
}

QMap<QString, QString> TestRestart::file() const
{
    QMap<QString, QString> values;
    const QByteArray rows = runTool("sqlite3", {m_settings, "SELECT key, value FROM settings"});
    for (const QByteArray& row : rows.split('\n')) {
        if (const int bar = row.indexOf('|'); bar > 0)
            values[row.left(bar)] = row.mid(bar + 1);
    }
    return values;
}

void TestRestart::whatWasSetOnEachPageSurvives_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("an orderly exit") << SIGTERM;
    QTest::newRow("being killed") << SIGKILL;
}

void TestRestart::whatWasSetOnEachPageSurvives()
{
    QFETCH(int, signal);
    m_settings = m_folder.filePath(QStringLiteral("%1.db").arg(signal));
    QVERIFY(startDisplay());
    {
        Process unit(m_environment);
        QVERIFY2(start(&unit), unit.errors());
        for (int i = 0; i < m_pointers.size(); ++i)
            QVERIFY2(act(&unit, m_pointers[i], steps[i].heard),
                     "no " + QByteArray(steps[i].heard) + " in\n" + unit.output().right(1000));
        unit.raise(signal);
        const int code = unit.exitCode();
        QVERIFY2(code == (signal == SIGKILL ? -1 : 0), unit.errors().right(6000));
    }
    QMap<QString, QString> first = file();
    for (const auto& row : stored)
        QVERIFY2(first.value(row.key) == QLatin1String(row.value),
                 qPrintable(row.key + QStringLiteral(": ") + first.value(row.key)));

    // A restart and a look at every page change nothing but the volume that starts anew.
    {
        Process unit(m_environment);
        QVERIFY2(start(&unit), unit.errors());
        for (const QString& tab : tabs)
            QVERIFY2(act(&unit, {m_tabs[tab], m_tabs[tab]}, "AudioSetting_Page"), qPrintable(tab));
        unit.raise(SIGTERM);
        const int code = unit.exitCode();
        QVERIFY2(code == 0, unit.errors().right(6000));
    }
    QMap<QString, QString> second = file();
    QCOMPARE(second.value("volume0"), QString("27"));
    QCOMPARE(second.value("volume1"), QString("50"));
    for (const char* live : {"volume0", "volume1", "volume2", "volume4", "volume5"}) {
        first.remove(live);
        second.remove(live);
    }
    QCOMPARE(second, first);
    whatIsStoredIsHeard();
}

/// The service of this process takes the file over.
void TestRestart::whatIsStoredIsHeard()
{
    QCOMPARE(mem::SettingsStore::instance()->open(m_settings), mem::SettingsStore::Opened::Durable);
    sound::Settings heard;
    AudioServiceHost::setSink([&heard](const sound::Settings& settings) { heard = settings; });
    AudioServiceHost::powerOn();
    for (int band = 0; band < sound::bandCount; ++band)
        QCOMPARE(heard.equalizer[std::size_t(band)], hvaudio::eqCurveOf(EQ_Type_Rock).value[band]);
    QVERIFY(heard.loudness);
    QCOMPARE(heard.balance, 10 / 15.0);
    QCOMPARE(heard.fader, 1.0);
    QVERIFY(hears(heard, 120));
    QCOMPARE(heard.subwoofer.attenuation, 0);
    for (int speaker : {sound::RearLeft, sound::RearRight}) {
        QCOMPARE(heard.cabin[std::size_t(speaker)].highPass.hz, 60.0);
        QCOMPARE(heard.cabin[std::size_t(speaker)].highPass.order, 3);
        QCOMPARE(heard.cabin[std::size_t(speaker)].attenuation, 1);
    }
    QCOMPARE(heard.cabin[sound::FrontLeft].highPass.hz, 0.0);
    QCOMPARE(heard.cabin[sound::FrontLeft].delayMs, 0.3);
    QCOMPARE(heard.cabin[sound::FrontRight].delayMs, 0.0);
    QCOMPARE(heard.mainDb, dbOf(27));
    QCOMPARE(heard.promptDb[sound::Ring], dbOf(50));
    hvaudio::AudioService::instance()->setEQType(EQ_Type_User1, false);
    QCOMPARE(heard.equalizer[5], 6);
    hvaudio::AudioService::instance()->setEQType(EQ_Type_User2, false);
    QCOMPARE(heard.equalizer[0], -4);
    AudioServiceHost::setSink(nullptr);
    AudioServiceHost::shutdown();
    mem::SettingsStore::instance()->close();
}

QTEST_MAIN(TestRestart)
#include "tst_restart.moc"
