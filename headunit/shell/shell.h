#pragma once

#include "headunit/front/unitwindow.h"
#include "headunit/shell/frameworkevents.h"
#include "headunit/shell/pluginloader.h"
#include "headunit/shell/startmark.h"
#include "headunit/sound/mastervolume.h"

#include <QScopedPointer>
#include <QVector>

#include <functional>

class AppPlugin;
class WindowInterface;

namespace headunit {

class Inspector;
class SoundControl;
class WindowHost;

/// The framework's side of the unit: which window is in front, what a hard key does, power, language. Stands
/// on an open settings store. Thread: GUI.
///
///     launcher tile -> openWindow() -> WindowHost::open()
///     hard key      -> window's keyEvent() -> when that returns 0, the shell's own action
///     back key      -> window's backEvent() -> the window posts a back request -> leaveApplication()
class Shell : public QObject
{
    Q_OBJECT
public:
    /// withFront: false shows the bare screen. sound: outlives the shell; without one the inspector lacks
    /// what shows it. Switches the audio service on.
    explicit Shell(bool withFront, SoundControl* sound = nullptr);
    /// shutDown(), when that has not been called.
    ~Shell() override;

    /// Loads the applications in a folder and gives each of their windows a tile. One that throws, or that
    /// took the unit down at the last start, is named on the launcher instead, where it can be tried again.
    /// Returns how many windows there are now.
    int loadApplications(const QString& folder);
    /// Adds one window under a tile; it outlives the shell. An id that is taken already is refused and
    /// logged.
    void addWindow(int id, WindowInterface* window);

    UnitWindow* unit() const { return m_unit.data(); }
    const PluginLoader& plugins() const { return m_plugins; }
    /// Null at the launcher and while the unit is off.
    WindowHost* front() const { return m_front; }
    WindowHost* host(int windowId) const;
    bool isPowered() const { return m_powered; }
    /// The order of this end: windows destroyed, plug-ins unloaded, audio service off. Nothing may be called
    /// afterwards.
    void shutDown();

public slots:
    /// False, logged, for an unknown id or a window that doesn't come up; the launcher is in front then.
    bool openWindow(int id);
    /// Opens the audio settings at a page, anew when they are in front, and leaves the remembered page as it
    /// is. page: 0 .. audioPageCount - 1. False as openWindow().
    bool openAudioPage(int page);
    /// Back to the launcher; nothing happens there.
    void leaveApplication();
    void onHardKey(KeyEvent::Key key, KeyEvent::Action action);
    /// Off: every window is destroyed, the store committed, the screen dark. On: the unit comes back with the
    /// window that was in front.
    void setPowered(bool on);
    /// Forgets every setting and starts the unit anew at the launcher.
    void resetToFactory();
    /// Switches the unit's language and keeps the choice. False for an unknown code.
    bool setLanguage(const QString& code);
    /// Shows or hides the inspector.
    void toggleInspector();

signals:
    void powered(bool on);

private:
    void onStatusBarHideRequested(bool hide);
    void onLanguageChanged();
    void restoreSources(const QString& key = QString());
    void startApplication(const QString& path);
    void addWindowsOf(const QString& file, AppPlugin* plugin);
    /// Names on the launcher what could not be started. what: as StartMark's; name: in the unit's language.
    void offerRetry(const QString& what, const std::function<QString()>& name,
                    const std::function<void()>& again);
    void tryAgain(const QString& what);
    /// Makes the windows anew, so that they show what was edited.
    void onSettingEdited(const QString& key);
    void buildInspector();
    void endPrompts();

    SoundControl* const m_sound;
    MasterVolume m_volume;
    StartMark m_mark;
    PluginLoader m_plugins;
    struct Retry
    {
        QString what;
        std::function<QString()> name;
        std::function<void()> again;
    };
    QVector<Retry> m_retries; ///< what could not be started
    FrameworkEvents m_events;
    QScopedPointer<UnitWindow> m_unit;
    QScopedPointer<Inspector> m_inspector; ///< made when it is first wanted
    QVector<WindowHost*> m_hosts;
    WindowHost* m_front = nullptr;
    /// The page that openAudioPage() shows, until the audio settings note another one; -1: they show the one
    /// that they remember.
    int m_lookedAt = -1;
    int m_frontBeforePowerOff = 0; ///< window id, 0: the launcher
    bool m_powered = true;
    bool m_shutDown = false;
};

} // namespace headunit
