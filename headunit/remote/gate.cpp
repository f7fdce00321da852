#include "headunit/remote/gate.h"

#include <QHostAddress>
#include <QRandomGenerator>
#include <QRegularExpression>

#include <algorithm>

namespace headunit {

namespace {

QByteArray makeToken()
{
    QByteArray bytes(16, Qt::Uninitialized);
    QRandomGenerator::system()->generate(reinterpret_cast<quint32*>(bytes.begin()),
                                         reinterpret_cast<quint32*>(bytes.end()));
    return bytes.toHex();
}

bool isNamed(const QString& name, const QString& pattern)
{
    if (!pattern.startsWith(QLatin1String("*.")))
        return name.compare(pattern, Qt::CaseInsensitive) == 0;
    const int label = name.indexOf('.');
    return label > 0 && name.midRef(label).compare(pattern.midRef(1), Qt::CaseInsensitive) == 0;
}

} // namespace

Gate::Gate(bool tls, const QStringList& certificateNames)
    : m_tls(tls)
    , m_names(certificateNames)
    , m_token(makeToken())
{
}

bool Gate::admitsToken(const QByteArray& token) const
{
    if (token.size() != m_token.size())
        return false;
    unsigned difference = 0;
    for (int i = 0; i < m_token.size(); ++i)
        difference |= unsigned(token[i] ^ m_token[i]);
    return difference == 0;
}

bool Gate::admitsHost(const QByteArray& host) const
{
    static const QRegularExpression form(
        QStringLiteral("\\A(?:\\[(?<six>[0-9A-Fa-f:.]+)\\]|(?<name>[0-9A-Za-z.-]+))(?::[0-9]{1,5})?\\z"));
    const QRegularExpressionMatch match = form.match(QString::fromLatin1(host));
    const QString six = match.captured(QStringLiteral("six")), name = match.captured(QStringLiteral("name"));
    if (!six.isEmpty())
        return QHostAddress(six).protocol() == QAbstractSocket::IPv6Protocol;
    if (name.isEmpty())
        return false;
    static const QRegularExpression four(QStringLiteral("\\A[0-9]+(?:\\.[0-9]+){3}\\z"));
    if (four.match(name).hasMatch())
        return !QHostAddress(name).isNull();
    return name.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0 ||
           std::any_of(m_names.begin(), m_names.end(),
                       [&name](const QString& pattern) { return isNamed(name, pattern); });
}

bool Gate::admitsOrigin(const QByteArray& origin, const QByteArray& host) const
{
    return !host.isEmpty() && origin.toLower() == (m_tls ? "https://" : "http://") + host.toLower();
}

} // namespace headunit
