#include "headunit/remote/listenaddress.h"

#include <QRegularExpression>

namespace headunit {

std::optional<ListenAddress> readListenAddress(const QString& text)
{
    static const QRegularExpression form(
        QStringLiteral("\\A(?:\\[(?<six>[0-9A-Fa-f:.]+)\\]|(?<four>[0-9]+(?:\\.[0-9]+){3})|localhost)"
                       ":(?<port>[0-9]{1,5})\\z"));
    const QRegularExpressionMatch match = form.match(text);
    bool isPort = false;
    ListenAddress address;
    address.port = match.captured(QStringLiteral("port")).toUShort(&isPort);
    const QString literal = match.captured(QStringLiteral("six")) + match.captured(QStringLiteral("four"));
    if (!literal.isEmpty())
        address.host.setAddress(literal);
    if (!match.hasMatch() || !isPort || address.host.isNull())
        return std::nullopt;
    return address;
}

QString textOf(const ListenAddress& address)
{
    const QString host = address.host.toString();
    return (host.contains(':') ? QStringLiteral("[%1]:%2") : QStringLiteral("%1:%2"))
        .arg(host)
        .arg(address.port);
}

} // namespace headunit
