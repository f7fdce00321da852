#pragma once

#include <QByteArray>
#include <QStringList>

namespace headunit {

/// Who may see and touch the unit: whoever knows its token, from a page of its own, under a name of its own.
/// Thread: any, once it is made.
class Gate
{
public:
    /// certificateNames: host names beside addresses and "localhost", "*.x" for any one label before x; those
    /// that the certificate holds. None without TLS.
    explicit Gate(bool tls, const QStringList& certificateNames = {});

    /// 128 bits by chance, 32 hexadecimal digits, anew in each gate.
    const QByteArray& token() const { return m_token; }

    /// In a time that doesn't tell how much of a wrong token is right.
    bool admitsToken(const QByteArray& token) const;
    /// host: as the header of that name, with its port or without. An address can't be made to stand for
    /// another machine; a name can, by who serves it, which is how a foreign page would get past
    /// admitsOrigin().
    bool admitsHost(const QByteArray& host) const;
    /// True for pages that came from this server. origin: as the header of that name; host: that of the same
    /// request.
    bool admitsOrigin(const QByteArray& origin, const QByteArray& host) const;

private:
    const bool m_tls;
    const QStringList m_names;
    const QByteArray m_token;
};

} // namespace headunit
