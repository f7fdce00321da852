// The diagnostic line that every source file of the plug-in writes: what log collectors take apart.

#include "M5QX/eqpresetwidget.h"
#include "M5QX/m5qx_audiosetting_audio_levels_page.h"
#include "M5QX/m5qx_audiosetting_crossover_setting_page.h"
#include "M5QX/m5qx_audiosetting_settings_page.h"
#include "M5QX/m5qx_audiosetting_tab_widget.h"
#include "M5QX/m5qx_audiosetting_time_alignment_page.h"
#include "M5QX/m5qx_mainwidget.h"
#include "M5QX/m5qxcrosssettingwidget.h"
#include "M5QX/setuppagekeywidget.h"
#include "M5QX/volumesettingwidget.h"
#include "tests/support/platform_double/platform_double.h"

#include <QtTest>

#include <sys/syscall.h>
#include <unistd.h>

using namespace platform_double;

namespace {

struct PageRow
{
    const char* file;
    QWidget* (*make)();
    const char* slot;
};

// clang-format off
const PageRow pages[] = {
    {"M5QX/m5qx_mainwidget.cpp",                         []() -> QWidget* { return new audiosetting::m5qx_mainwidget(nullptr); },                "onShowAudioLevelsPage"},
    {"M5QX/m5qx_audiosetting_tab_widget.cpp",            []() -> QWidget* { return new audiosetting::m5qx_eq_tab_widget(nullptr); },             "onNextEQType"},
    {"M5QX/m5qx_audiosetting_settings_page.cpp",         []() -> QWidget* { return new audiosetting::m5qx_EQ_settings_page(nullptr); },          "onBackClicked"},
    {"M5QX/m5qx_audiosetting_audio_levels_page.cpp",     []() -> QWidget* { return new audiosetting::m5qx_eq_audio_levels_page(nullptr); },      "on_key_back_clicked"},
    {"M5QX/m5qxcrosssettingwidget.cpp",                  []() -> QWidget* { return new M5QXCrossSettingWidget; },                                "on_key_exit_clicked"},
    {"M5QX/m5qx_audiosetting_crossover_setting_page.cpp", []() -> QWidget* { return new audiosetting::m5qx_eq_crossover_setting_page(nullptr); }, "onBackClicked"},
    {"M5QX/m5qx_audiosetting_time_alignment_page.cpp",   []() -> QWidget* { return new audiosetting::m5qx_eq_time_alignment_page(nullptr); },    "onBackClicked"},
    {"M5QX/eqpresetwidget.cpp",                          []() -> QWidget* { return new EQPresetWidget(nullptr); },                               "on_key_exit_clicked"},
    {"M5QX/volumesettingwidget.cpp",                     []() -> QWidget* { return new VolumeSettingWidget(nullptr); },                          "on_key_exit_clicked"},
    {"M5QX/setuppagekeywidget.cpp",                      []() -> QWidget* { return new SetupPageKeyWidget(nullptr); },                           "on_Key_next_page_clicked"},
};
// clang-format on

} // namespace

class TestDiagnostic : public QObject
{
    Q_OBJECT
private slots:
    void init() { reset(); }
    void cleanup() { takeBackRequests(); }
    void aLineNamesTagThreadSignatureAndLineInThisOrder_data() { addPages(); }
    void aLineNamesTagThreadSignatureAndLineInThisOrder();
    void theLogContextNamesTheSourceFile_data() { addPages(); }
    void theLogContextNamesTheSourceFile();

private:
    static void addPages()
    {
        QTest::addColumn<int>("index");
        int index = 0;
        for (const PageRow& row : pages)
            QTest::newRow(row.file) << index++;
    }
};

void TestDiagnostic::aLineNamesTagThreadSignatureAndLineInThisOrder()
{
    QFETCH(int, index);
    const QScopedPointer<QWidget> page(pages[index].make());
    takeLog();
    QVERIFY(QMetaObject::invokeMethod(page.data(), pages[index].slot));
    const QRegularExpression form(
        QStringLiteral("^D \\[DBG\\] %1 void %2::%3\\(\\) \\d+ --")
            .arg(static_cast<long>(::syscall(SYS_gettid)))
            .arg(QLatin1String(page->metaObject()->className()), QLatin1String(pages[index].slot)));
    const QString line = takeLog().value(0);
    QVERIFY2(form.match(line).hasMatch(), qPrintable(line));
}

void TestDiagnostic::theLogContextNamesTheSourceFile()
{
    QFETCH(int, index);
    const QScopedPointer<QWidget> page(pages[index].make());
    takeLog();
    QVERIFY(QMetaObject::invokeMethod(page.data(), pages[index].slot));
    // Relative to the source root, whoever built it wherever.
    QCOMPARE(takeLogFiles().value(0), QLatin1String(pages[index].file));
}

QTEST_MAIN(TestDiagnostic)
#include "tst_diagnostic.moc"
