#include "headunit/shell/pluginloader.h"

#include "common/appplugin.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibrary>
#include <QPluginLoader>

namespace headunit {

namespace {

const QLatin1String identifierPrefix(AppPlugin_metadata_prefix);
const QLatin1String identifierSuffix(AppPlugin_metadata_suffix);

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

void PluginLoader::load(const QString& folder)
{
    const QDir dir(folder);
    if (!dir.exists()) {
        qWarning("plug-in folder %s does not exist", qPrintable(QDir::toNativeSeparators(folder)));
        return;
    }
    QStringList seen; // a library and its version links are one file
    const QFileInfoList files = dir.entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo& file : files) {
        const QString path = file.canonicalFilePath();
        if (!QLibrary::isLibrary(file.fileName()) || seen.contains(path))
            continue;
        seen.append(path);
        const QString reason = loadOne(path);
        if (reason.isEmpty())
            continue;
        m_refused.append({file.fileName(), reason});
        if (reason == refusal({}))
            qInfo("%s passed over: %s", qPrintable(file.fileName()), qPrintable(reason));
        else
            qWarning("%s refused: %s", qPrintable(file.fileName()), qPrintable(reason));
    }
}

QString PluginLoader::loadOne(const QString& path)
{
    auto* library = new QPluginLoader(path, this);
    // A missing symbol shows now, not in the driver's hand. The code stays mapped after unloading: posted
    // events and style data may still point into it while the application goes down.
    library->setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);

    QString reason = refusal(library->metaData());
    if (reason.isEmpty() && !library->load())
        reason = library->errorString();
    AppPlugin* plugin = nullptr;
    if (reason.isEmpty()) {
        plugin = qobject_cast<AppPlugin*>(library->instance());
        if (!plugin)
            reason = QStringLiteral("its object does not implement %1").arg(QLatin1String(AppPlugin_iid));
    }
    if (!plugin) {
        library->unload();
        delete library;
        return reason;
    }
    plugin->create();
    m_loaded.append({QFileInfo(path).fileName(), plugin, library});
    return QString();
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
