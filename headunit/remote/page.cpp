#include "headunit/remote/page.h"

#include <QCryptographicHash>
#include <QFile>

static void initPageResource() // Q_INIT_RESOURCE doesn't work inside a namespace
{
    Q_INIT_RESOURCE(remote);
}

namespace headunit {

namespace {

/// As Content-Security-Policy wants it: of all that stands between the two tags.
QByteArray hashOf(const QByteArray& html, const char* name)
{
    const QByteArray open = QByteArray("<") + name + '>', close = QByteArray("</") + name + '>';
    const int begin = html.indexOf(open) + open.size();
    const QByteArray text = html.mid(begin, html.indexOf(close) - begin);
    return "'sha256-" + QCryptographicHash::hash(text, QCryptographicHash::Sha256).toBase64() + '\'';
}

} // namespace

Page::Page()
{
    initPageResource();
    QFile file(QStringLiteral(":/remote/page.html"));
    file.open(QIODevice::ReadOnly);
    m_html = file.readAll();
    m_scriptHash = hashOf(m_html, "script");
    m_styleHash = hashOf(m_html, "style");
}

QByteArray Page::policy(const QByteArray& socket) const
{
    return "default-src 'none'; script-src " + m_scriptHash + "; style-src " + m_styleHash +
           "; connect-src " + socket +
           "; img-src data:; base-uri 'none'; form-action 'none'; frame-ancestors 'none'; "
           "require-trusted-types-for 'script'";
}

} // namespace headunit
