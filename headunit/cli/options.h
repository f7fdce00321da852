#pragma once

#include <QString>
#include <QStringList>

namespace headunit {

/// What the command line asks for.
struct Options
{
    QString plugins;  ///< folder; empty: where the build or the installation puts them
    QString settings; ///< file of the settings store; empty: the user's own
    QString language; ///< code of the unit's languages; empty: the stored one, then the system's
    QString tour;     ///< folder for pictures; empty: no tour
    QString render;   ///< sound file to render; empty: none
    QString renderTo; ///< WAV file that it becomes
    QString plot;     ///< PNG file for the speakers' responses; empty: none
    QString output = QStringLiteral("auto"); ///< as hvaudio::Player::start
    QString remote;            ///< ADDRESS:PORT that a browser finds the unit at; empty: none does
    QString remoteCertificate; ///< PEM files for TLS there; empty: no TLS
    QString remoteKey;
    int page = -1; ///< 0..5: open the audio settings at that page; -1: start with the launcher
    bool inspector = false;
    bool log = false;          ///< print the diagnostic lines
    bool trace = false;        ///< print the journal
    bool traceStartup = false; ///< print when which step of the start was reached
    bool stereo = false;       ///< rendering is folded to two channels
    bool screenOnly = false;   ///< the screen without the unit around it
};

/// Outcome of reading the command line.
struct OptionsResult
{
    enum class Action {
        Run,  ///< options are valid
        Tell, ///< print text to standard output and exit with 0 (help, version)
        Fail, ///< print text to standard error and exit with 2
    };
    Action action = Action::Run;
    QString text;
    Options options;
};

/// arguments: as QCoreApplication::arguments(), the program's name first. Needs no application object. Knows
/// nothing of files: whether a folder exists is told when it is used. Thread: GUI.
OptionsResult readOptions(const QStringList& arguments);

} // namespace headunit
