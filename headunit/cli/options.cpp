#include "headunit/cli/options.h"

#include "headunit/shell/audiopages.h"

#include "platform/common/texts/language.h"

#include <QCommandLineParser>

namespace headunit {

namespace {

struct Row
{
    const char* name;
    const char* value; ///< what the help calls it; null: an option without one
    const char* help;
};

// clang-format off
constexpr Row rows[] = {
    {"plugins",       "dir",      "Load applications from this folder."},
    {"settings",      "path",     "Keep settings in this file (default: $XDG_DATA_HOME/audiosetting/settings.db)."},
    {"language",      "xx",       "Language of the unit: %1."}, // the unit's languages
    {"page",          "n",        "Open the audio settings at this page, 0 to %1. The remembered page stays as it is."},
    {"tour",          "dir",      "Visit launcher and pages, save a picture of each in this folder, and exit."},
    {"render",        "in> <out", "Play this sound file with the stored settings into the WAV file out (FL FR LFE BL BR, 32 bit float), and exit."},
    {"stereo",        nullptr,    "With --render: fold the five speakers to two channels."},
    {"plot",          "file",     "Draw the response of each speaker with the stored settings into this PNG file, and exit."},
    {"output",        "output",   "Where the sound goes: pipewire, none or the WAV file that it is written to (default: pipewire where it runs, else none)."},
    {"screen-only",   nullptr,    "Show the 1024 x 600 screen without the unit around it."},
    {"inspector",     nullptr,    "Open the inspector (F12 does so at any time)."},
    {"trace",         nullptr,    "Print every platform call."},
    {"log",           nullptr,    "Print the applications' diagnostic lines, too."},
    {"trace-startup", nullptr,    "Print the time at which each step of the start was reached."},
};
// clang-format on

QString languages()
{
    return cm::Language::codes().join(QLatin1String(", "));
}

void addOptions(QCommandLineParser* parser)
{
    for (const Row& row : rows) {
        QString help = QString::fromLatin1(row.help);
        if (qstrcmp(row.name, "language") == 0)
            help = help.arg(languages());
        else if (qstrcmp(row.name, "page") == 0)
            help = help.arg(audioPageCount - 1);
        parser->addOption({QString::fromLatin1(row.name), help, QString::fromLatin1(row.value)});
    }
    parser->addOption({{"h", "help"}, QStringLiteral("Show this help.")});
    parser->addOption({{"v", "version"}, QStringLiteral("Show the version.")});
}

/// What is wrong with the values that were given; empty when nothing is.
QString complaint(const QCommandLineParser& parser, const Options& options)
{
    if (parser.isSet("render") && options.renderTo.isEmpty())
        return QStringLiteral("Option 'render' needs two values: the file to read and the one to write.");
    if (options.stereo && !parser.isSet("render"))
        return QStringLiteral("--stereo belongs to --render.");
    for (const Row& row : rows) {
        const QString name = QString::fromLatin1(row.name);
        if (row.value && parser.isSet(name) && parser.value(name).isEmpty())
            return QStringLiteral("Option '%1' needs a value.").arg(name);
    }
    if (parser.isSet("language") && !cm::Language::codes().contains(options.language))
        return QStringLiteral("Language '%1' is not one of %2.").arg(options.language, languages());
    if (parser.isSet("page") && (options.page < 0 || options.page >= audioPageCount))
        return QStringLiteral("Page '%1' is not a number from 0 to %2.")
            .arg(parser.value("page"))
            .arg(audioPageCount - 1);
    static const QStringList outputs{QStringLiteral("auto"), QStringLiteral("pipewire"),
                                     QStringLiteral("none")};
    if (!outputs.contains(options.output) && !options.output.endsWith(QLatin1String(".wav")))
        return QStringLiteral("Output '%1' is not pipewire, none or the name of a file that ends with .wav.")
            .arg(options.output);
    if (parser.isSet("page") && parser.isSet("tour"))
        return QStringLiteral("--page and --tour exclude each other.");
    if (int(parser.isSet("tour")) + int(parser.isSet("render")) + int(parser.isSet("plot")) > 1)
        return QStringLiteral("--tour, --render and --plot exclude each other.");
    return QString();
}

/// The values as they were given; a page that is no number is -1.
Options optionsOf(const QCommandLineParser& parser)
{
    Options options;
    options.plugins = parser.value("plugins");
    options.settings = parser.value("settings");
    options.language = parser.value("language");
    options.tour = parser.value("tour");
    options.render = parser.value("render");
    options.plot = parser.value("plot");
    options.stereo = parser.isSet("stereo");
    // The tour's pictures are wanted, not its beeps.
    if (parser.isSet("output"))
        options.output = parser.value("output");
    else if (parser.isSet("tour"))
        options.output = QStringLiteral("none");
    bool isNumber = false;
    const int page = parser.value("page").toInt(&isNumber);
    options.page = isNumber ? page : -1;
    options.inspector = parser.isSet("inspector");
    options.trace = parser.isSet("trace");
    options.log = parser.isSet("log");
    options.traceStartup = parser.isSet("trace-startup");
    options.screenOnly = parser.isSet("screen-only");
    return options;
}

OptionsResult failure(const QString& text)
{
    return {OptionsResult::Action::Fail, text + QLatin1String(" (--help lists the options)"), {}};
}

} // namespace

OptionsResult readOptions(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Reference head unit."));
    addOptions(&parser);
    if (!parser.parse(arguments))
        return failure(parser.errorText());
    if (parser.isSet("help"))
        return {OptionsResult::Action::Tell, parser.helpText(), {}};
    if (parser.isSet("version"))
        return {OptionsResult::Action::Tell,
                QStringLiteral("headunit %1\n").arg(QLatin1String(HEADUNIT_VERSION)),
                {}};
    Options options = optionsOf(parser);
    // Only --render takes an argument of its own: where to.
    QStringList rest = parser.positionalArguments();
    if (parser.isSet("render") && !rest.isEmpty())
        options.renderTo = rest.takeFirst();
    if (!rest.isEmpty())
        return failure(QStringLiteral("Unexpected argument '%1'.").arg(rest.first()));
    const QString wrong = complaint(parser, options);
    return wrong.isEmpty() ? OptionsResult{OptionsResult::Action::Run, QString(), options} : failure(wrong);
}

} // namespace headunit
