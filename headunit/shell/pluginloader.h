#pragma once

#include <QJsonObject>
#include <QObject>
#include <QString>
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

    /// Looks at every library in the folder, in the order of their names, and calls create() of each plug-in.
    /// A library without plug-in metadata is passed over with an information line, since platform libraries
    /// may lie beside the applications; every other refusal is a warning. Call once.
    void load(const QString& folder);

    const QVector<Loaded>& loaded() const { return m_loaded; }
    const QVector<Refused>& refused() const { return m_refused; }

    /// Deletes the plug-in objects, newest first. Their windows must not be used any more and their root
    /// widgets be gone.
    void unload();

    /// Why a library with this metadata must not be loaded; empty when it may. metaData: as from
    /// QPluginLoader::metaData(); an empty one means that the file isn't a Qt plug-in.
    static QString refusal(const QJsonObject& metaData);

private:
    /// Empty when the plug-in was loaded and taken over.
    QString loadOne(const QString& path);

    QVector<Loaded> m_loaded;
    QVector<Refused> m_refused;
    Q_DISABLE_COPY(PluginLoader)
};

} // namespace headunit
