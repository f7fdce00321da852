#pragma once

#include <QByteArray>
#include <QMap>

#include <optional>

namespace headunit {

/// The head of an HTTP/1.1 request, read as strictly as browsers write it: what another reader might
/// understand differently (two headers of one name, folded lines, control characters) is no head at all.
/// Thread: any.
class HttpHead
{
public:
    /// Bytes, with the empty line at its end; a longer one is refused.
    static constexpr int maxSize = 8192;

    /// Length of the head that these bytes begin with; 0 when its end has not come yet.
    static int sizeIn(const QByteArray& bytes);
    /// bytes: the head alone, sizeIn() of them. None when it is malformed.
    static std::optional<HttpHead> read(const QByteArray& bytes);

    const QByteArray& method() const { return m_method; }
    const QByteArray& target() const { return m_target; }
    /// name: in lower case. Empty when there is none.
    QByteArray header(const char* name) const { return m_headers.value(name); }

private:
    QByteArray m_method, m_target;
    QMap<QByteArray, QByteArray> m_headers; ///< by name in lower case
};

} // namespace headunit
