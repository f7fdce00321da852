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
    ~LauncherTile() override;

    int windowId() const { return m_windowId; }
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const int m_windowId;
    const Picture m_picture;
    Q_DISABLE_COPY(LauncherTile)
};

/// The first screen: a tile for each application window. Thread: GUI.
class Launcher : public QWidget
{
    Q_OBJECT
public:
    explicit Launcher(QWidget* parent);
    ~Launcher() override;

    /// Adds a tile; the row stays centred. Beyond two rows of four the tiles lie off the screen, logged.
    void addTile(int windowId, const QString& name,
                 LauncherTile::Picture picture = LauncherTile::Picture::FirstLetter);
    /// Puts another name on a tile; an unknown id does nothing.
    void setTileName(int windowId, const QString& name);

signals:
    void chosen(int windowId);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void layOut();

    QVector<LauncherTile*> m_tiles;
    Q_DISABLE_COPY(Launcher)
};

} // namespace headunit
