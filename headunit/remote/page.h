#pragma once

#include <QByteArray>

namespace headunit {

/// The page that shows the unit: one file without anything from elsewhere. Thread: any.
class Page
{
public:
    Page();

    const QByteArray& html() const { return m_html; }
    /// What the page may do, as the header Content-Security-Policy says it: run the script and the style that
    /// stand in it, and open a socket to where it came from. socket: that address, "ws://..." or "wss://...".
    QByteArray policy(const QByteArray& socket) const;

private:
    QByteArray m_html, m_scriptHash, m_styleHash;
};

} // namespace headunit
