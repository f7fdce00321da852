#include "headunit/cli/options.h"

#include "headunit/parts/partlibrary.h"
#include "headunit/remote/remotelibrary.h"
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
    {"remote",        "address:port", "Show the unit in a browser, too, at this address (left out: a free port of 127.0.0.1), and print what to open. Other machines get to it only with a certificate."},
    {"remote-certificate", "file", "PEM file with the certificate for --remote."},
    {"remote-key",    "file",     "PEM file with its private key."},
    {"screen-only",   nullptr,    "Show the 1024 x 600 screen without the unit around it."},
    {"inspector",     nullptr,    "Open the inspector (F12 does so at any time)."},
    {"trace",         nullptr,    "Print every platform call."},
    {"log",           nullptr,    "Print the applications' diagnostic lines, too."},
    {"trace-startup", nullptr,    "Print the time at which each step of the start was reached."},
};
// clang-format on

/// The parser has no word for an option that may stand without its value.
QStringList withRemoteAddress(QStringList arguments)
{
    for (int i = 0; i < arguments.size(); ++i) {
        const bool isAlone = i + 1 == arguments.size() || arguments.at(i + 1).startsWith('-');
        if (arguments.at(i) == QLatin1String("--remote") && isAlone)
            arguments[i] += QLatin1String("=127.0.0.1:0");
    }
    return arguments;
}

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

/// What is wrong with the values of --remote and what belongs to it; empty when nothing is.
QString remoteComplaint(const QCommandLineParser& parser, const Options& options)
{
    if (options.remoteCertificate.isEmpty() != options.remoteKey.isEmpty())
        return QStringLiteral("--remote-certificate and --remote-key belong together.");
    if (options.remote.isEmpty())
        return options.remoteKey.isEmpty() ? QString()
                                           : QStringLiteral("--remote-certificate belongs to --remote.");
    QString error;
    const auto library =
        reinterpret_cast<GetRemoteLibrary>(functionOf("remotescreen", "remoteLibrary", &error));
    if (!library)
        return QStringLiteral("--remote: %1").arg(error);
    bool isLoopback = false;
    if (!library()->isAddress(options.remote, &isLoopback))
        return QStringLiteral("'%1' is not an address and a port, like 127.0.0.1:8080 or [::1]:8080.")
            .arg(options.remote);
    if (!isLoopback && options.remoteKey.isEmpty())
        return QStringLiteral("'%1' is open to other machines and needs --remote-certificate and "
                              "--remote-key.")
            .arg(options.remote);
    for (const char* other : {"tour", "render", "plot"}) {
        if (parser.isSet(QLatin1String(other)))
            return QStringLiteral("--remote and --%1 exclude each other.").arg(QLatin1String(other));
    }
    return QString();
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
    return remoteComplaint(parser, options);
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
    options.remote = parser.value("remote");
    options.remoteCertificate = parser.value("remote-certificate");
    options.remoteKey = parser.value("remote-key");
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
    if (!parser.parse(withRemoteAddress(arguments)))
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
