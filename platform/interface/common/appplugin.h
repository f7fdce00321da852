#pragma once

#include <QList>
#include <QtPlugin>

class SourceInterface;
class WindowInterface;

/// What the shell loads from an application's library. Thread: GUI; calls come in the order of declaration,
/// the last two for the ids that were named.
class AppPlugin
{
public:
    virtual ~AppPlugin() = default;

    /// Called once, right after loading.
    virtual void create() = 0;
    /// Ids of the windows that the plug-in offers; empty when it has none.
    virtual QList<int> windowInterfaceID() = 0;
    /// Ids of the sources that the plug-in offers; empty when it has none.
    virtual QList<int> sourceInterfaceID() = 0;
    /// The window of that id, always the same object; null for an unknown id. Stays the plug-in's.
    virtual WindowInterface* requestWindowInterface(int id) = 0;
    /// The source of that id, always the same object; null for an unknown id. Stays the plug-in's.
    virtual SourceInterface* requestSourceInterface(int id) = 0;
};

/// Identifier of the C++ interface above; a change of its virtual table changes the number.
#define AppPlugin_iid "org.headunit.AppPlugin/1.0"
Q_DECLARE_INTERFACE(AppPlugin, AppPlugin_iid)

/// A library's metadata carries "<prefix><application><suffix>", e.g. "org.headunit.Qt.audiosettingPlugin".
/// The shell reads it before it loads the library and refuses every other one.
#define AppPlugin_metadata_prefix "org.headunit.Qt."
#define AppPlugin_metadata_suffix "Plugin"
