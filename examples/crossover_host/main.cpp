// Shows the stand-alone crossover page on the reference platform, without the head unit: what a vehicle maker
// does who wants the page in a window of his own.
//
// A host of the plug-in's pages owes them four things: the unit's style and texts, an open settings store, an
// audio service that is switched on, and somebody who obeys the back request that a page posts.

#include "M5QX/m5qx_audiosetting_crossover_setting_page.h"

#include "common/events.h"
#include "platform/common/framework/journal.h"
#include "platform/common/settings/settingsstore.h"
#include "platform/common/texts/language.h"
#include "platform/common/widgets/unitstyle.h"
#include "platform/hvaudioservice/audioservicehost.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QEvent>

#include <cstdio>

namespace {

// clang-format off
enum ExitCode {
    ExitOk         = 0,
    ExitNoDisplay  = 1,
    ExitUsage      = 2,
    ExitStoreInUse = 3,
    ExitNotSaved   = 4,
};
// clang-format on

struct Options
{
    QString settings; ///< file of the settings store; empty: the user's own
    QString language; ///< empty: the first one
    QString picture;  ///< save the page there and exit
    bool trace = false;
};

int complain(int code, const QString& text)
{
    std::fprintf(stderr, "crossover_host: %s\n", qPrintable(text));
    return code;
}

/// Exits itself for --help and for an unknown option. Needs no display.
Options readOptions(int argc, char** argv)
{
    const QCoreApplication forArguments(argc, argv);
    const QCommandLineOption settings(QStringLiteral("settings"),
                                      QStringLiteral("Keep the settings in <file>."), QStringLiteral("file"));
    const QCommandLineOption language(QStringLiteral("language"), QStringLiteral("Show the texts in <code>."),
                                      QStringLiteral("code"));
    const QCommandLineOption picture(QStringLiteral("picture"),
                                     QStringLiteral("Save the page to <file> and exit; needs no display."),
                                     QStringLiteral("file"));
    const QCommandLineOption trace(QStringLiteral("trace"), QStringLiteral("Print what the page asks for."));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("The stand-alone crossover page of the audio settings."));
    parser.addHelpOption();
    parser.addOptions({settings, language, picture, trace});
    parser.process(forArguments);
    return {parser.value(settings), parser.value(language), parser.value(picture), parser.isSet(trace)};
}

/// Leaves the program when a page asks to be left.
class BackRequests : public QObject
{
public:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched != qApp || event->type() != static_cast<QEvent::Type>(Qx::EventType_Touch))
            return false;
        if (static_cast<TouchEvent*>(event)->value() == Qx::Touch_Back)
            QCoreApplication::quit();
        return true;
    }
};

int runPage(const Options& options)
{
    // The page counts other frequencies than the speaker groups' page; said before the stored filters are
    // restored.
    hvaudio::AudioServiceHost::setFilterTables(hvaudio::AudioServiceHost::FilterTables::MainAudio);
    hvaudio::AudioServiceHost::powerOn();

    BackRequests backRequests;
    qApp->installEventFilter(&backRequests);
    audiosetting::m5qx_eq_crossover_setting_page page;
    page.setFixedSize(page.size());
    page.show();

    int code = ExitOk;
    if (options.picture.isEmpty())
        code = QCoreApplication::exec();
    else if (!page.grab().save(options.picture))
        code = complain(ExitNotSaved, QStringLiteral("can't write %1").arg(options.picture));
    hvaudio::AudioServiceHost::powerOff();
    return code;
}

} // namespace

int main(int argc, char** argv)
{
    const Options options = readOptions(argc, argv);
    // Qt aborts without a display; an exit with a message is better.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY") &&
        qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        if (options.picture.isEmpty())
            return complain(ExitNoDisplay, QStringLiteral("no display"));
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }

    // The page is 1024 x 510 pixels, whatever the desk's scale.
    QCoreApplication::setAttribute(Qt::AA_DisableHighDpiScaling);
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("crossover_host"));
    cm::UnitStyle::install(application);
    cm::Journal::instance()->setPrinting(options.trace);
    if (!options.language.isEmpty() && !cm::Language::instance()->setCurrent(options.language))
        return complain(ExitUsage, QStringLiteral("no language \"%1\"; there are: %2")
                                       .arg(options.language, cm::Language::codes().join(QLatin1Char(' '))));

    QString message;
    const auto opened = mem::SettingsStore::instance()->open(options.settings, &message);
    if (!message.isEmpty())
        complain(ExitOk, message);
    if (opened == mem::SettingsStore::Opened::Refused)
        return ExitStoreInUse;

    const int code = runPage(options);
    hvaudio::AudioServiceHost::shutdown();
    mem::SettingsStore::instance()->close();
    return code;
}
