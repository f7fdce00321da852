#pragma once

#include "common/appplugin.h"

#include <QObject>

namespace audiosetting {

class MainWindow;

/// What the head unit loads from the library: hands out the one window, "EQ". Thread: GUI.
class Plugin : public QObject, public AppPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID AppPlugin_metadata_prefix "audiosetting" AppPlugin_metadata_suffix FILE
                                                    "plugin.json")
    Q_INTERFACES(AppPlugin)
public:
    /// Nothing is to be done before the window is asked for.
    void create() override;
    /// The one window's id, MainWindow::windowId.
    QList<int> windowInterfaceID() override;
    /// None.
    QList<int> sourceInterfaceID() override;
    /// The same window each time; it stays the plug-in's. Null for any other id.
    WindowInterface* requestWindowInterface(int id) override;
    /// Always null.
    SourceInterface* requestSourceInterface(int id) override;

private:
    MainWindow* m_window = nullptr;
};

} // namespace audiosetting
