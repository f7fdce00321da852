#include "headunit/cli/options.h"

#include "headunit/shell/audiopages.h"

#include "platform/common/texts/language.h"

#include <QCommandLineParser>

namespace headunit {

namespace {

OptionsResult failure(const QString& text)
{
    return {OptionsResult::Action::Fail, text + QLatin1String(" (--help lists the options)"), {}};
}

} // namespace

OptionsResult readOptions(const QStringList& arguments)
{
    // clang-format off
    const QCommandLineOption plugins(QStringLiteral("plugins"), QStringLiteral("Load applications from this folder."), QStringLiteral("dir"));
    const QCommandLineOption settings(QStringLiteral("settings"), QStringLiteral("Keep settings in this file (default: $XDG_DATA_HOME/audiosetting/settings.db)."), QStringLiteral("path"));
    const QCommandLineOption language(QStringLiteral("language"), QStringLiteral("Language of the unit: %1.").arg(cm::Language::codes().join(QLatin1String(", "))), QStringLiteral("xx"));
    const QCommandLineOption page(QStringLiteral("page"), QStringLiteral("Open the audio settings at this page, 0 to %1. The remembered page stays as it is.").arg(audioPageCount - 1), QStringLiteral("n"));
    const QCommandLineOption tour(QStringLiteral("tour"), QStringLiteral("Touch through launcher and pages, save a picture of each in this folder, and exit."), QStringLiteral("dir"));
    const QCommandLineOption screenOnly(QStringLiteral("screen-only"), QStringLiteral("Show the 1024 x 600 screen without the unit around it."));
    const QCommandLineOption render(QStringLiteral("render"), QStringLiteral("Play this sound file with the stored settings into the WAV file out (FL FR RL RR SUB, 32 bit float), and exit."), QStringLiteral("in> <out"));
    const QCommandLineOption stereo(QStringLiteral("stereo"), QStringLiteral("With --render: fold the five speakers to two channels."));
    const QCommandLineOption plot(QStringLiteral("plot"), QStringLiteral("Draw the response of each speaker with the stored settings into this PNG file, and exit."), QStringLiteral("file"));
    const QCommandLineOption output(QStringLiteral("output"), QStringLiteral("Where the sound goes: pipewire, none or the WAV file that it is written to (default: pipewire where it runs, else none)."), QStringLiteral("output"));
    const QCommandLineOption inspector(QStringLiteral("inspector"), QStringLiteral("Open the inspector (F12 does so at any time)."));
    const QCommandLineOption trace(QStringLiteral("trace"), QStringLiteral("Print every platform call."));
    const QCommandLineOption log(QStringLiteral("log"), QStringLiteral("Print the applications' diagnostic lines, too."));
    const QCommandLineOption traceStartup(QStringLiteral("trace-startup"), QStringLiteral("Print the time at which each step of the start was reached."));
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help."));
    const QCommandLineOption version({QStringLiteral("v"), QStringLiteral("version")}, QStringLiteral("Show the version."));
    // clang-format on

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Reference head unit."));
    parser.addOptions({plugins, settings, language, page, tour, render, stereo, plot, output, screenOnly,
                       inspector, trace, log, traceStartup, help, version});
    if (!parser.parse(arguments))
        return failure(parser.errorText());
    if (parser.isSet(help))
        return {OptionsResult::Action::Tell, parser.helpText(), {}};
    if (parser.isSet(version))
        return {OptionsResult::Action::Tell,
                QStringLiteral("headunit %1\n").arg(QLatin1String(HEADUNIT_VERSION)),
                {}};
    // Only --render takes an argument of its own: where to.
    QStringList rest = parser.positionalArguments();
    const QString renderTo = parser.isSet(render) && !rest.isEmpty() ? rest.takeFirst() : QString();
    if (!rest.isEmpty())
        return failure(QStringLiteral("Unexpected argument '%1'.").arg(rest.first()));
    if (parser.isSet(render) && renderTo.isEmpty())
        return failure(
            QStringLiteral("Option 'render' needs two values: the file to read and the one to write."));
    if (parser.isSet(stereo) && !parser.isSet(render))
        return failure(QStringLiteral("--stereo belongs to --render."));

    for (const QCommandLineOption* option :
         {&plugins, &settings, &language, &page, &tour, &render, &plot, &output}) {
        if (parser.isSet(*option) && parser.value(*option).isEmpty())
            return failure(QStringLiteral("Option '%1' needs a value.").arg(option->names().last()));
    }

    OptionsResult result;
    Options& options = result.options;
    options.plugins = parser.value(plugins);
    options.settings = parser.value(settings);
    options.language = parser.value(language);
    options.tour = parser.value(tour);
    options.render = parser.value(render);
    options.renderTo = renderTo;
    options.plot = parser.value(plot);
    options.stereo = parser.isSet(stereo);
    // The tour's pictures are wanted, not its beeps.
    if (parser.isSet(output))
        options.output = parser.value(output);
    else if (parser.isSet(tour))
        options.output = QStringLiteral("none");
    options.inspector = parser.isSet(inspector);
    options.trace = parser.isSet(trace);
    options.log = parser.isSet(log);
    options.traceStartup = parser.isSet(traceStartup);
    options.screenOnly = parser.isSet(screenOnly);

    if (parser.isSet(language) && !cm::Language::codes().contains(options.language))
        return failure(QStringLiteral("Language '%1' is not one of %2.")
                           .arg(options.language, cm::Language::codes().join(QLatin1String(", "))));
    if (parser.isSet(page)) {
        bool isNumber = false;
        options.page = parser.value(page).toInt(&isNumber);
        if (!isNumber || options.page < 0 || options.page >= audioPageCount)
            return failure(QStringLiteral("Page '%1' is not a number from 0 to %2.")
                               .arg(parser.value(page))
                               .arg(audioPageCount - 1));
    }
    static const QStringList outputs{QStringLiteral("auto"), QStringLiteral("pipewire"),
                                     QStringLiteral("none")};
    if (!outputs.contains(options.output) && !options.output.endsWith(QLatin1String(".wav")))
        return failure(
            QStringLiteral("Output '%1' is not pipewire, none or the name of a file that ends with .wav.")
                .arg(options.output));
    if (parser.isSet(page) && parser.isSet(tour))
        return failure(QStringLiteral("--page and --tour exclude each other."));
    if (int(parser.isSet(tour)) + int(parser.isSet(render)) + int(parser.isSet(plot)) > 1)
        return failure(QStringLiteral("--tour, --render and --plot exclude each other."));
    return result;
}

} // namespace headunit
