#include "headunit/shell/seam.h"

#include <exception>

namespace headunit {

bool callAcrossSeam(const QString& what, const std::function<void()>& call, QString* why)
{
    try {
        call();
        return true;
    } catch (...) {
        const QString text = logThrown(what);
        if (why)
            *why = text;
        return false;
    }
}

QString logThrown(const QString& what)
{
    QString text = QStringLiteral("something that is no std::exception");
    try {
        throw;
    } catch (const std::exception& exception) {
        text = QString::fromLocal8Bit(exception.what());
    } catch (...) { // says nothing of itself
    }
    qCritical("%s threw: %s", qPrintable(what), qPrintable(text));
    return text;
}

} // namespace headunit
