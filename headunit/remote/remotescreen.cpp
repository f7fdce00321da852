#include "headunit/remote/remotescreen.h"

#include "headunit/remote/desk.h"
#include "headunit/remote/deskinput.h"
#include "headunit/remote/remoteserver.h"

#include <QAccessible>
#include <QApplication>
#include <QFile>
#include <QSslCertificate>
#include <QSslKey>
#include <QSysInfo>
#include <QWidget>

namespace headunit {

namespace {

QByteArray read(const QString& path, QString* error)
{
    QFile file(path);
    if (file.open(QIODevice::ReadOnly))
        return file.readAll();
    *error = QStringLiteral("%1 can't be read: %2").arg(path, file.errorString());
    return QByteArray();
}

QSslKey readKey(const QByteArray& pem)
{
    for (const QSsl::KeyAlgorithm algorithm : {QSsl::Rsa, QSsl::Ec, QSsl::Dsa}) {
        const QSslKey key(pem, algorithm);
        if (!key.isNull())
            return key;
    }
    return QSslKey();
}

/// A private key holds the public one, too, which the certificate has.
bool belongTogether(const QSslKey& key, const QSslCertificate& certificate)
{
    const QByteArray open = certificate.publicKey().toDer();
    return key.toDer().contains(open.mid(open.size() / 2 - 16, 32));
}

/// None, with a sentence, when one of the files is of no use.
std::optional<QSslConfiguration> readTls(const RemoteScreen::Settings& settings, QString* error)
{
    const QByteArray chainBytes = read(settings.certificate, error);
    const QByteArray keyBytes = error->isEmpty() ? read(settings.key, error) : QByteArray();
    if (!error->isEmpty())
        return std::nullopt;
    const QList<QSslCertificate> chain = QSslCertificate::fromData(chainBytes, QSsl::Pem);
    const QSslKey key = readKey(keyBytes);
    if (chain.isEmpty())
        *error = QStringLiteral("%1 holds no certificate in PEM").arg(settings.certificate);
    else if (key.isNull())
        *error = QStringLiteral("%1 holds no private key in PEM, or one with a password").arg(settings.key);
    else if (!belongTogether(key, chain.first()))
        *error = QStringLiteral("%1 is not the key of %2").arg(settings.key, settings.certificate);
    if (!error->isEmpty())
        return std::nullopt;
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setLocalCertificateChain(chain);
    tls.setPrivateKey(key);
    tls.setPeerVerifyMode(QSslSocket::VerifyNone); // the token says who comes
    tls.setProtocol(QSsl::TlsV1_2OrLater);
    return tls;
}

QStringList namesIn(const QSslCertificate& certificate)
{
    QStringList names = certificate.subjectAlternativeNames().values(QSsl::DnsEntry);
    return names.isEmpty() ? certificate.subjectInfo(QSslCertificate::CommonName) : names;
}

} // namespace

RemoteScreen::RemoteScreen(UnitWindow* unit)
    : m_desk(new Desk(unit))
    , m_input(new DeskInput(m_desk.data()))
{
    qRegisterMetaType<DeskChange>("headunit::DeskChange");
    qRegisterMetaType<DeskEvent>("headunit::DeskEvent");
    m_thread.setObjectName(QStringLiteral("remote"));
}

RemoteScreen::~RemoteScreen()
{
    if (m_server)
        QMetaObject::invokeMethod(
            m_server.data(), [this] { m_server->shutDown(); }, Qt::BlockingQueuedConnection);
    m_thread.quit();
    m_thread.wait();
}

bool RemoteScreen::start(const Settings& settings, QString* error)
{
    error->clear();
    const bool tls = !settings.certificate.isEmpty();
    if (!tls && !settings.address.isLoopback()) {
        *error = QStringLiteral("%1 is open to other machines and needs a certificate")
                     .arg(textOf(settings.address));
        return false;
    }
    const std::optional<QSslConfiguration> configuration =
        tls ? readTls(settings, error) : std::optional<QSslConfiguration>();
    if (!error->isEmpty())
        return false;

    const Gate gate(tls, tls ? namesIn(configuration->localCertificate()) : QStringList());
    m_server.reset(new RemoteServer(gate, configuration));
    m_server->moveToThread(&m_thread);
    connect(m_desk.data(), &Desk::changed, m_server.data(), &RemoteServer::show);
    connect(m_server.data(), &RemoteServer::watched, m_desk.data(), &Desk::watch);
    connect(m_server.data(), &RemoteServer::frameWanted, m_desk.data(), &Desk::want);
    connect(m_server.data(), &RemoteServer::acted, m_input.data(), &DeskInput::deliver);
    connect(m_server.data(), &RemoteServer::letGo, m_input.data(), &DeskInput::letGo);
    connect(qApp, &QApplication::focusChanged, this, &RemoteScreen::tellFocus);
    m_thread.start();

    ListenAddress address = settings.address;
    QMetaObject::invokeMethod(
        m_server.data(),
        [&] {
            if (!m_server->listen(address.host, address.port))
                *error = QStringLiteral("%1 can't be listened on: %2")
                             .arg(textOf(address), m_server->errorString());
            address.port = m_server->serverPort();
        },
        Qt::BlockingQueuedConnection);
    if (!error->isEmpty())
        return false;
    tellFocus();
    const bool isAny = address.host == QHostAddress::AnyIPv4 || address.host == QHostAddress::AnyIPv6 ||
                       address.host == QHostAddress::Any;
    const QString place =
        isAny ? QStringLiteral("%1:%2").arg(QSysInfo::machineHostName()).arg(address.port) : textOf(address);
    m_url = QStringLiteral("%1://%2/#%3")
                .arg(tls ? QStringLiteral("https") : QStringLiteral("http"), place,
                     QString::fromLatin1(gate.token()));
    return true;
}

void RemoteScreen::tellFocus()
{
    QString words;
    if (QAccessibleInterface* told = QAccessible::queryAccessibleInterface(QApplication::focusWidget()))
        words =
            QStringList{told->text(QAccessible::Name), told->text(QAccessible::Value)}.join(' ').trimmed();
    QMetaObject::invokeMethod(m_server.data(), [this, words] { m_server->tellFocus(words); });
}

} // namespace headunit
