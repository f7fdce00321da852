#include "headunit/shell/pluginloader.h"

#include "headunit/shell/seam.h"

#include "common/appplugin.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibrary>
#include <QPluginLoader>

#include <sys/stat.h>
#include <unistd.h>

namespace headunit {

namespace {

const QLatin1String identifierPrefix(AppPlugin_metadata_prefix);
const QLatin1String identifierSuffix(AppPlugin_metadata_suffix);

/// By owner and mode: somebody who is neither this user nor the administrator, or a group that isn't this
/// user's own.
bool othersMayWrite(const QString& path)
{
    struct stat about = {};
    if (stat(QFile::encodeName(path).constData(), &about) != 0)
        return true;
    const bool foreignOwner = about.st_uid != 0 && about.st_uid != geteuid();
    const bool foreignGroup = about.st_gid != 0 && about.st_gid != getegid();
    return foreignOwner || (about.st_mode & S_IWOTH) || ((about.st_mode & S_IWGRP) && foreignGroup);
}

} // namespace

PluginLoader::PluginLoader(QObject* parent)
    : QObject(parent)
{
}

PluginLoader::~PluginLoader()
{
    unload();
}

QString PluginLoader::refusal(const QJsonObject& metaData)
{
    if (metaData.isEmpty())
        return QStringLiteral("not a plug-in");

    const QString identifier = metaData.value(QStringLiteral("IID")).toString();
    const bool framed = identifier.startsWith(identifierPrefix) && identifier.endsWith(identifierSuffix);
    if (!framed || identifier.size() <= identifierPrefix.size() + identifierSuffix.size())
        return QStringLiteral("identifier \"%1\" is not of the form \"%2<name>%3\"")
            .arg(identifier, identifierPrefix, identifierSuffix);

    // Qt itself refuses another major version and a newer minor one, but only while it loads.
    const int version = metaData.value(QStringLiteral("version")).toInt();
    const int major = version >> 16, minor = (version >> 8) & 0xff;
    if (major != QT_VERSION_MAJOR || minor > QT_VERSION_MINOR)
        return QStringLiteral("built for another Qt version (%1.%2, here %3.%4)")
            .arg(major)
            .arg(minor)
            .arg(QT_VERSION_MAJOR)
            .arg(QT_VERSION_MINOR);

    const QString className = metaData.value(QStringLiteral("className")).toString();
    if (className != QLatin1String("Plugin"))
        return QStringLiteral("plug-in class is \"%1\", not \"Plugin\"").arg(className);
    return QString();
}

QStringList PluginLoader::find(const QString& folder)
{
    const QDir dir(folder);
    if (!dir.exists()) {
        qWarning("plug-in folder %s does not exist", qPrintable(QDir::toNativeSeparators(folder)));
        return {};
    }
    const QString place = dir.canonicalPath();
    if (othersMayWrite(place)) {
        refuse(place, QStringLiteral("others than the unit may write in this folder"));
        return {};
    }
    QStringList found, seen; // a library and its version links are one file
    const QFileInfoList files = dir.entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo& file : files) {
        const QString path = file.canonicalFilePath();
        if (!QLibrary::isLibrary(file.fileName()) || seen.contains(path))
            continue;
        seen.append(path);
        QString reason = refusal(QPluginLoader(path).metaData());
        if (reason.isEmpty() && QFileInfo(path).path() != place)
            reason = QStringLiteral("it lies outside the folder, at %1").arg(path);
        if (reason.isEmpty() && othersMayWrite(path))
            reason = QStringLiteral("others than the unit may write it");
        if (reason.isEmpty())
            found.append(path);
        else
            refuse(file.filePath(), reason);
    }
    return found;
}

void PluginLoader::refuse(const QString& path, const QString& reason)
{
    const QString file = QFileInfo(path).fileName();
    m_refused.append({file, reason});
    if (reason == refusal({}))
        qInfo("%s passed over: %s", qPrintable(file), qPrintable(reason));
    else
        qWarning("%s refused: %s", qPrintable(file), qPrintable(reason));
}

AppPlugin* PluginLoader::load(const QString& path)
{
    const QString file = QFileInfo(path).fileName();
    auto* library = new QPluginLoader(path, this);
    // A missing symbol shows now, not in the driver's hand. The code stays mapped after unloading: posted
    // events and style data may still point into it while the application goes down.
    library->setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);

    AppPlugin* plugin = nullptr;
    QString reason;
    const auto start = [&] {
        if (!library->load()) {
            reason = library->errorString();
            return;
        }
        auto* made = qobject_cast<AppPlugin*>(library->instance());
        if (!made) {
            reason = QStringLiteral("its object does not implement %1").arg(QLatin1String(AppPlugin_iid));
            return;
        }
        made->create();
        plugin = made;
    };
    if (!callAcrossSeam(file, start, &reason))
        reason.prepend(QLatin1String("it threw: "));
    if (!plugin) {
        library->unload();
        delete library;
        refuse(path, reason);
        return nullptr;
    }
    m_loaded.append({file, plugin, library});
    return plugin;
}

void PluginLoader::unload()
{
    // Pages that asked to be deleted later are code of the plug-in, too.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    while (!m_loaded.isEmpty()) {
        QPluginLoader* library = m_loaded.takeLast().library;
        library->unload();
        delete library;
    }
}

} // namespace headunit
