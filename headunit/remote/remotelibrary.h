#pragma once

#include <QString>

class QObject;

namespace headunit {

class UnitWindow;

/// What libremotescreen shows of this folder. Who uses it is spared Qt's network until --remote is given.
/// Thread: GUI.
struct RemoteLibrary
{
    /// Whether readListenAddress() takes the text, and if so, whether only this machine gets to it.
    bool (*isAddress)(const QString& text, bool* isLoopback);
    /// A RemoteScreen over the unit, which outlives it, at an address that isAddress() took; the caller's.
    /// Null, and a sentence in `error`, where RemoteScreen::start() fails. url: as RemoteScreen::url().
    QObject* (*start)(UnitWindow* unit, const QString& address, const QString& certificate,
                      const QString& key, QString* url, QString* error);
};

/// The library's one function, under its own name: remoteLibrary().
using GetRemoteLibrary = const RemoteLibrary* (*)();

} // namespace headunit
