#pragma once

#include <QJsonObject>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVector>

class AppPlugin;
class QPluginLoader;

namespace headunit {

/// Finds the applications in a folder and loads them. A file is judged by its metadata before any of its code
/// runs; one that is refused is named with the reason, and the others go on. Thread: GUI.
class PluginLoader : public QObject
{
    Q_OBJECT
public:
    struct Loaded
    {
        QString file; ///< name without folder
        AppPlugin* plugin;
        QPluginLoader* library; ///< a child of this loader
    };
    struct Refused
    {
        QString file;
        QString reason; ///< one sentence part, e.g. "built for another Qt version (4.8)"
    };

    explicit PluginLoader(QObject* parent = nullptr);
    /// Unloads what is still loaded.
    ~PluginLoader() override;

    /// The libraries in a folder that may be loaded, with their paths, in the order of their names. A library
    /// without plug-in metadata is passed over with an information line, since platform libraries may lie
    /// beside the applications; every other refusal is a warning. Refused are libraries that others may
    /// write, that lie elsewhere behind a symbolic link, and all of a folder that others may write: whoever
    /// can write there would be the unit.
    QStringList find(const QString& folder);
    /// Loads one of these and calls the plug-in's create(). Null, with a warning and a line in refused(),
    /// when it can't be loaded or throws; it may be tried again.
    AppPlugin* load(const QString& path);

    const QVector<Loaded>& loaded() const { return m_loaded; }
    const QVector<Refused>& refused() const { return m_refused; }

    /// Deletes the plug-in objects, newest first. Their windows must not be used any more and their root
    /// widgets be gone.
    void unload();

    /// Why a library with this metadata must not be loaded; empty when it may. metaData: as from
    /// QPluginLoader::metaData(); an empty one means that the file isn't a Qt plug-in.
    static QString refusal(const QJsonObject& metaData);

private:
    void refuse(const QString& path, const QString& reason);

    QVector<Loaded> m_loaded;
    QVector<Refused> m_refused;
};

} // namespace headunit
