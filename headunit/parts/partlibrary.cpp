#include "headunit/parts/partlibrary.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibrary>

namespace headunit {

QFunctionPointer functionOf(const char* library, const char* name, QString* error)
{
    const QDir here(QCoreApplication::applicationDirPath());
    QLibrary file;
    // Where it is installed, and where it is built.
    for (const char* folder : {"../" HEADUNIT_LIBRARY_FOLDER "/lib", "../lib/lib"}) {
        file.setFileName(here.filePath(QLatin1String(folder) + QLatin1String(library)));
        if (const QFunctionPointer found = file.resolve(name))
            return found;
    }
    *error = file.errorString();
    return nullptr;
}

} // namespace headunit
