// A unit of its own for the tests of the store: settings_child PATH COMMAND...
//   set KEY NUMBER COMMIT   writes an int, says "written" and runs on until it is killed
//   leave KEY NUMBER        writes without commit and ends in order
//   hold                    opens, says "held" and runs on
//   hold-until-line         opens, says "held", ends when a line comes in
//   sql STATEMENTS          is a foreign tool: runs them on the file, says "held" and runs on
// The first line of a unit is how opening went: durable, memory or refused.

#include "common/settings.h"
#include "platform/common/settings/settingsstore.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdio>
#include <iostream>
#include <sqlite3.h>
#include <string>

namespace {

void say(const char* word)
{
    std::puts(word);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.at(2) == QLatin1String("sql")) {
        sqlite3* connection = nullptr;
        if (sqlite3_open(QFile::encodeName(arguments.at(1)).constData(), &connection) != SQLITE_OK ||
            sqlite3_exec(connection, arguments.at(3).toUtf8().constData(), nullptr, nullptr, nullptr) !=
                SQLITE_OK)
            return 1;
        say("held");
        return application.exec();
    }
    mem::SettingsStore* const store = mem::SettingsStore::instance();
    switch (store->open(arguments.at(1))) {
    case mem::SettingsStore::Opened::Durable:
        say("durable");
        break;
    case mem::SettingsStore::Opened::Memory:
        say("memory");
        return 1;
    case mem::SettingsStore::Opened::Refused:
        say("refused");
        return 2;
    }
    const QString command = arguments.at(2);
    if (command == QLatin1String("set")) {
        mem::SettingsFunc::instance()->setValue(arguments.at(3), 0, arguments.at(4).toInt(),
                                                arguments.at(5) == QLatin1String("true"));
        say("written");
        return application.exec();
    }
    if (command == QLatin1String("leave")) {
        mem::SettingsFunc::instance()->setValue(arguments.at(3), 0, arguments.at(4).toInt(), false);
        return 0;
    }
    say("held");
    if (command == QLatin1String("hold-until-line")) {
        std::string line;
        std::getline(std::cin, line);
        return 0;
    }
    return application.exec();
}
