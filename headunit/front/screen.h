#pragma once

#include <QWidget>

namespace headunit {

class Launcher;
class MasterVolume;
class StatusBar;

/// The unit's screen, 1024 x 600, in four layers: launcher, application, status bar, darkness. Shows what it
/// is told; the shell decides. Thread: GUI.
class Screen : public QWidget
{
    Q_OBJECT
public:
    static constexpr int screenWidth = 1024, screenHeight = 600;

    /// volume: outlives the screen.
    explicit Screen(const MasterVolume* volume, QWidget* parent = nullptr);

    Launcher* launcher() const { return m_launcher; }
    /// Where root widgets go; covers the launcher while shown.
    QWidget* applicationArea() const { return m_area; }
    bool isStatusBarShown() const;
    bool isLit() const;

    void showLauncher();
    void showApplication();
    void setStatusBarShown(bool shown);
    /// Dark: nothing is seen and nothing takes touches.
    void setLit(bool lit);

private:
    void updateLauncher();

    Launcher* m_launcher;
    QWidget* m_area;
    StatusBar* m_statusBar;
    QWidget* m_darkness;
};

} // namespace headunit
