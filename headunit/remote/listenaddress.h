#pragma once

#include <QHostAddress>
#include <QString>

#include <optional>

namespace headunit {

/// Where a browser finds the unit.
struct ListenAddress
{
    QHostAddress host{QHostAddress::LocalHost};
    quint16 port = 0; ///< 0: one that is free

    /// True where only this machine gets to.
    bool isLoopback() const { return host.isLoopback(); }
};

/// "ADDRESS:PORT" with an IPv4 address, an IPv6 address in brackets or "localhost", and a port from 0 to
/// 65535; none for anything else, other names included. Thread: any.
std::optional<ListenAddress> readListenAddress(const QString& text);

/// As readListenAddress() reads it. Thread: any.
QString textOf(const ListenAddress& address);

} // namespace headunit
