#pragma once

#include <QAbstractButton>
#include <QVector>
#include <QWidget>

namespace headunit {

/// One application on the launcher. Its object name is "tile_<window id>". Thread: GUI.
class LauncherTile : public QAbstractButton
{
    Q_OBJECT
public:
    enum class Picture {
        FirstLetter, ///< of the name
        Equalizer,
    };
    /// name: what stands on it.
    LauncherTile(int windowId, const QString& name, Picture picture, QWidget* parent);

    /// Object name of the tile of that window.
    static QString nameOf(int windowId);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Picture m_picture;
};

/// What could not be started, on the launcher; a touch asks for another try. Its object name is
/// "retry_<what>". Thread: GUI.
class RetryTile : public QAbstractButton
{
    Q_OBJECT
public:
    /// what: the name of its own that the launcher was given. name: what stands on it.
    RetryTile(const QString& what, const QString& name, QWidget* parent);

    /// Object name of the tile of that.
    static QString nameOf(const QString& what);

protected:
    void paintEvent(QPaintEvent* event) override;
};

/// The first screen: a tile for each application window, and for what could not be started. Thread: GUI.
class Launcher : public QWidget
{
    Q_OBJECT
public:
    explicit Launcher(QWidget* parent);

    /// Adds a tile; the row stays centred. Beyond two rows of four the tiles lie off the screen, logged.
    void addTile(int windowId, const QString& name,
                 LauncherTile::Picture picture = LauncherTile::Picture::FirstLetter);
    /// Puts another name on a tile; an unknown id does nothing.
    void setTileName(int windowId, const QString& name);

    /// Adds a tile that says that `name` could not be started. It goes when it is touched. what: a name of
    /// its own, not shown.
    void addRetryTile(const QString& what, const QString& name);
    /// As setTileName(), and in the unit's language of now.
    void setRetryName(const QString& what, const QString& name);

signals:
    void chosen(int windowId);
    void tryAgainChosen(const QString& what);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void add(QAbstractButton* tile);
    void setName(const QString& objectName, const QString& name);
    void layOut();

    QVector<QAbstractButton*> m_tiles;
};

} // namespace headunit
