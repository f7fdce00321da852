// Opens each page of the audio settings by its tab, twice round, and moves a finger on the equalizer, with a
// mark behind each: ../instructions.sh counts what lies between two marks.
#include "bench/headunit/mark.h"
#include "headunit/front/screen.h"
#include "headunit/shell/fontconfiguration.h"
#include "headunit/shell/shell.h"
#include "headunit/shell/windowhost.h"
#include "platform/common/settings/settingsstore.h"
#include "platform/common/widgets/unitstyle.h"
#include "platform/hvaudioservice/audioservicehost.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMouseEvent>

#include <cstdio>

namespace {

constexpr int fingerSteps = 18;
constexpr int stepHeight = 18; ///< px, one value of a band
constexpr QPoint fingerStart(534, 160);

// The equalizer is in front from the start and so is the last to be opened.
// clang-format off
constexpr struct { const char* key; const char* page; } tabs[] = {
    {"key_balance_setting",   "audio-levels"},
    {"key_crossover_setting", "crossover"},
    {"key_time_alignment",    "time-alignment"},
    {"key_eq_preset",         "eq-presets"},
    {"key_audio_level",       "volume-levels"},
    {"key_EQ_setting",        "equalizer"},
};
// clang-format on

/// Lets posted events and deferred deletions happen and paints what is dirty now, rather than at the window
/// system's next tick, which would fall behind the mark.
void settle(QWidget* window)
{
    for (int i = 0; i < 3; ++i) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QEvent request(QEvent::UpdateRequest);
    QCoreApplication::sendEvent(window, &request);
}

void finger(QWidget* page, QEvent::Type type, const QPoint& pos)
{
    QMouseEvent event(type, pos, page->mapToGlobal(pos),
                      type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(page, &event);
    settle(page->window());
}

bool openTabs(QWidget* root, const char* round)
{
    for (const auto& tab : tabs) {
        auto* key = root->findChild<QAbstractButton*>(QLatin1String(tab.key));
        if (!key)
            return false;
        key->click();
        settle(root->window());
        instructionsMark(qPrintable(QLatin1String(tab.page) + QLatin1Char('-') + QLatin1String(round)));
    }
    return true;
}

bool moveFinger(QWidget* root)
{
    auto* handle = root->findChild<QWidget*>(QStringLiteral("icon_band_num_7"));
    if (!handle)
        return false;
    QWidget* page = handle;
    while (page && !page->inherits("audiosetting::m5qx_EQ_settings_page"))
        page = page->parentWidget();
    if (!page)
        return false;
    finger(page, QEvent::MouseButtonPress, fingerStart);
    instructionsMark("finger-down");
    for (int i = 1; i <= fingerSteps; ++i)
        finger(page, QEvent::MouseMove, fingerStart + QPoint(0, i * stepHeight));
    instructionsMark(qPrintable(QStringLiteral("finger-steps-%1").arg(fingerSteps)));
    finger(page, QEvent::MouseButtonRelease, fingerStart + QPoint(0, fingerSteps * stepHeight));
    return true;
}

bool walk(const QString& plugins)
{
    headunit::Shell shell(false);
    shell.loadApplications(plugins);
    shell.unit()->show();
    if (!shell.openAudioPage(0))
        return false;
    QWidget* root = shell.front()->root();
    settle(root->window());
    instructionsMark("open");
    return openTabs(root, "first") && openTabs(root, "again") && moveFinger(root);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s <folder of applications> <settings file>\n", argv[0]);
        return 2;
    }
    headunit::readFontConfiguration();
    QApplication application(argc, argv);
    cm::UnitStyle::install(application);
    QString message;
    if (mem::SettingsStore::instance()->open(QString::fromLocal8Bit(argv[2]), &message) ==
        mem::SettingsStore::Opened::Refused) {
        std::fprintf(stderr, "%s\n", qPrintable(message));
        return 1;
    }
    const bool walked = walk(QString::fromLocal8Bit(argv[1]));
    hvaudio::AudioServiceHost::shutdown();
    mem::SettingsStore::instance()->close();
    if (!walked)
        std::fprintf(stderr, "the pages can't be opened\n");
    return walked ? 0 : 1;
}
