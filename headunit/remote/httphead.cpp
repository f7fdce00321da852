#include "headunit/remote/httphead.h"

#include <QRegularExpression>

namespace headunit {

int HttpHead::sizeIn(const QByteArray& bytes)
{
    const int end = bytes.indexOf("\r\n\r\n");
    return end < 0 ? 0 : end + 4;
}

std::optional<HttpHead> HttpHead::read(const QByteArray& bytes)
{
    static const QRegularExpression request(QStringLiteral("\\A([A-Z]+) (/[!-~]*) HTTP/1\\.1\\z"));
    static const QRegularExpression field(
        QStringLiteral("\\A([!#$%&'*+.^_`|~0-9A-Za-z-]+):[ \\t]*([\\t -~\\x80-\\xff]*?)[ \\t]*\\z"));
    if (bytes.size() > maxSize || sizeIn(bytes) != bytes.size())
        return std::nullopt;

    HttpHead head;
    int from = 0;
    for (int end = bytes.indexOf("\r\n"); end > from; end = bytes.indexOf("\r\n", from)) {
        const QString line = QString::fromLatin1(bytes.constData() + from, end - from);
        const QRegularExpressionMatch match = (from == 0 ? request : field).match(line);
        if (!match.hasMatch())
            return std::nullopt;
        if (from == 0) {
            head.m_method = match.captured(1).toLatin1();
            head.m_target = match.captured(2).toLatin1();
        } else {
            const QByteArray name = match.captured(1).toLatin1().toLower();
            if (head.m_headers.contains(name))
                return std::nullopt;
            head.m_headers.insert(name, match.captured(2).toLatin1());
        }
        from = end + 2;
    }
    if (head.m_method.isEmpty())
        return std::nullopt;
    return head;
}

} // namespace headunit
