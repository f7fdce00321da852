#include "headunit/cli/offline.h"
#include "headunit/cli/options.h"
#include "headunit/cli/stopsignals.h"
#include "headunit/cli/tour.h"
#include "headunit/cli/unitlog.h"
#include "headunit/parts/partlibrary.h"
#include "headunit/remote/remotelibrary.h"
#include "headunit/shell/fontconfiguration.h"
#include "headunit/shell/shell.h"
#include "headunit/shell/startuptrace.h"
#include "headunit/shell/unitapplication.h"
#include "headunit/shell/unitlanguage.h"
#include "headunit/sound/unitsound.h"

#include "platform/common/framework/journal.h"
#include "platform/common/settings/settingsstore.h"
#include "platform/common/widgets/unitstyle.h"
#include "platform/hvaudioservice/audioservicehost.h"

#include <QDir>
#include <QScopedPointer>
#include <QTimer>

#include <cstdio>

using namespace headunit;

namespace {

// clang-format off
enum ExitCode {
    ExitOk          = 0,
    ExitNoDisplay   = 1,
    ExitUsage       = 2,
    ExitStoreInUse  = 3,
    ExitNotShown    = 4, ///< --tour, --page: something couldn't be shown
    ExitNotRendered = 5, ///< --render, --plot: a file can't be read or written
    ExitNotRemote   = 6, ///< --remote: the address can't be had, the certificate can't be used
};
// clang-format on

int complain(int code, const QString& text)
{
    std::fprintf(stderr, "headunit: %s\n", qPrintable(text.trimmed()));
    return code;
}

/// Options are read before there is an application object that would need a display.
OptionsResult optionsOf(int argc, char** argv)
{
    const QCoreApplication forArguments(argc, argv);
    return readOptions(QCoreApplication::arguments());
}

/// --render and --plot; the unit isn't started, and there is no event loop.
int workOffline(const Options& options)
{
    QString message;
    const bool done =
        options.plot.isEmpty() ? renderFile(options, &message) : plotResponses(options, &message);
    if (!done && StopSignals::received()) {
        complain(ExitNotRendered, message);
        StopSignals::dieBy(StopSignals::received());
    }
    if (!done)
        return complain(ExitNotRendered, message);
    std::printf("%s\n", qPrintable(message));
    return ExitOk;
}

/// False when there is none to be looked for.
bool findDisplay(const Options& options)
{
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        return true;
    if (!options.tour.isEmpty() || !options.render.isEmpty() || !options.plot.isEmpty()) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        return true;
    }
    if (!qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return true;
    if (!options.remote.isEmpty()) // the browser's
        qputenv("QT_QPA_PLATFORM", "offscreen");
    return !options.remote.isEmpty();
}

QString pluginFolder(const Options& options)
{
    if (!options.plugins.isEmpty())
        return options.plugins;
    const QDir here(QCoreApplication::applicationDirPath());
    const QString installed = here.filePath(QStringLiteral("../" HEADUNIT_PLUGIN_FOLDER));
    return QDir(installed).exists() ? installed : here.filePath(QStringLiteral("../lib/headunit"));
}

/// False, with the reason told, when the browser's screen is wanted and can't be had.
bool startRemote(QScopedPointer<QObject>* remote, UnitWindow* unit, const Options& options)
{
    if (options.remote.isEmpty())
        return true;
    QString url, error;
    if (const auto library =
            reinterpret_cast<GetRemoteLibrary>(functionOf("remotescreen", "remoteLibrary", &error)))
        remote->reset(library()->start(unit, options.remote, options.remoteCertificate, options.remoteKey,
                                       &url, &error));
    if (!*remote) {
        complain(ExitNotRemote, QStringLiteral("--remote: ") + error);
        return false;
    }
    std::printf("The unit's screen: %s\n", qPrintable(url));
    std::fflush(stdout);
    return true;
}

int runUnit(const Options& options)
{
    UnitSound sound;
    sound.start(options.output);
    StartupTrace::reached("sound-started");
    Shell shell(!options.screenOnly, &sound);
    StartupTrace::reached("shell-built");
    shell.loadApplications(pluginFolder(options));
    StartupTrace::reached("applications-ready");

    StartupTrace::reachedWhenPainted(shell.unit(), "launcher-painted");
    shell.unit()->show();
    if (options.inspector)
        shell.toggleInspector();

    QObject::connect(shell.unit(), &UnitWindow::closed, qApp, &QCoreApplication::quit);

    if (!options.tour.isEmpty()) {
        Tour tour(&shell, options.tour);
        return tour.run() ? int(ExitOk) : complain(ExitNotShown, QStringLiteral("tour: ") + tour.error());
    }
    QScopedPointer<QObject> remote;
    if (!startRemote(&remote, shell.unit(), options))
        return ExitNotRemote;
    if (options.page >= 0 && !shell.openAudioPage(options.page))
        return complain(ExitNotShown, QStringLiteral("page %1 can't be shown").arg(options.page));
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char** argv)
{
    StartupTrace::begin();
    const OptionsResult result = optionsOf(argc, argv);
    if (result.action == OptionsResult::Action::Fail)
        return complain(ExitUsage, result.text);
    if (result.action == OptionsResult::Action::Tell) {
        std::fputs(qPrintable(result.text), stdout);
        return ExitOk;
    }
    const Options& options = result.options;
    StartupTrace::setPrinting(options.traceStartup);
    setUpLog(options.log);
    if (!findDisplay(options))
        return complain(ExitNoDisplay, QStringLiteral("no display; --remote shows the unit in a browser"));

    // The screen is 1024 x 600 pixels, whatever the desk's scale.
    QCoreApplication::setAttribute(Qt::AA_DisableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    readFontConfiguration();
    QScopedPointer<DisplayGuard> guard(new DisplayGuard(ExitNoDisplay));
    UnitApplication application(argc, argv);
    guard.reset();
    QApplication::setApplicationName(QStringLiteral("headunit"));
    QApplication::setApplicationVersion(QStringLiteral(HEADUNIT_VERSION));
    // The inspector is a window, too; the unit's own decides.
    QApplication::setQuitOnLastWindowClosed(false);
    cm::UnitStyle::install(application);
    cm::Journal::instance()->setPrinting(options.trace);
    StartupTrace::reached("application");

    // Outlives the unit and its store: a signal that comes twice must not cut the orderly exit short.
    const StopSignals stopSignals;
    if (!options.render.isEmpty() || !options.plot.isEmpty())
        return workOffline(options);
    QObject::connect(&stopSignals, &StopSignals::stopRequested, &application, &QCoreApplication::quit);
    QString message;
    const auto opened = mem::SettingsStore::instance()->open(options.settings, &message);
    if (opened == mem::SettingsStore::Opened::Refused)
        return complain(ExitStoreInUse, message);
    if (!message.isEmpty())
        complain(ExitOk, message);
    chooseLanguage(options.language);
    StartupTrace::reached("settings-open");

    const int code = runUnit(options);
    hvaudio::AudioServiceHost::shutdown();
    mem::SettingsStore::instance()->close();
    return code;
}
