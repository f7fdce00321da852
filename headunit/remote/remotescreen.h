#pragma once

#include "headunit/remote/listenaddress.h"

#include <QObject>
#include <QScopedPointer>
#include <QThread>

namespace headunit {

class Desk;
class DeskInput;
class RemoteServer;
class UnitWindow;

/// The unit in a browser. Serves one page that shows the program's windows and takes touches and keys for
/// them; who opens it must know the address with its token. Costs nothing while nobody looks. Thread: GUI.
class RemoteScreen : public QObject
{
    Q_OBJECT
public:
    struct Settings
    {
        ListenAddress address;
        QString certificate; ///< PEM file with the certificate and what signed it; empty: no TLS
        QString key;         ///< PEM file with its private key
    };

    /// unit: outlives this object.
    explicit RemoteScreen(UnitWindow* unit);
    /// Pages are told that the unit has ended.
    ~RemoteScreen() override;

    /// Once. False, with a sentence in `error`, when the address can't be had, certificate or key can't be
    /// read, or an address that other machines get to is wanted without TLS.
    bool start(const Settings& settings, QString* error);
    /// What to open in a browser: who knows it controls the unit. For an unspecified address (0.0.0.0) with
    /// the machine's own name.
    const QString& url() const { return m_url; }

private:
    void tellFocus();

    QScopedPointer<Desk> m_desk;
    QScopedPointer<DeskInput> m_input;
    QThread m_thread;
    QScopedPointer<RemoteServer> m_server; ///< lives in m_thread
    QString m_url;
};

} // namespace headunit
