#include "platform/common/settings/settingsfile.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace mem {

namespace {

constexpr mode_t fileMode = S_IRUSR | S_IWUSR;
constexpr mode_t folderMode = S_IRWXU;
constexpr unsigned long pollMs = 20;

// What SQLite keeps beside a database, either way of journaling.
constexpr const char* companions[] = {"-wal", "-shm", "-journal"};

QString systemText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

/// Makes the folder and what is missing above it; each new entry is synced into the folder that holds it.
bool makeFolder(const QString& folder, QString* reason)
{
    const QFileInfo info(folder);
    if (info.isDir())
        return true;
    const QString above = info.path();
    if (above != folder && !makeFolder(above, reason))
        return false;
    if (::mkdir(QFile::encodeName(folder).constData(), folderMode) != 0 && errno != EEXIST) {
        *reason = systemText(errno);
        return false;
    }
    SettingsFile::syncFolder(folder);
    return true;
}

/// The path still leads to the file that the descriptor has open: nobody moved it aside meanwhile.
bool leadsTo(const QByteArray& name, int descriptor)
{
    struct stat byName = {};
    struct stat byDescriptor = {};
    return ::stat(name.constData(), &byName) == 0 && ::fstat(descriptor, &byDescriptor) == 0 &&
           byName.st_dev == byDescriptor.st_dev && byName.st_ino == byDescriptor.st_ino;
}

} // namespace

SettingsFile::~SettingsFile()
{
    release();
}

SettingsFile::Hold SettingsFile::hold(const QString& path, int waitMs, QString* reason)
{
    release();
    const QFileInfo info(path);
    // A link is followed once, here, so that what is moved aside is the file and not the link.
    m_path = info.exists() ? info.canonicalFilePath() : info.absoluteFilePath();
    if (!makeFolder(QFileInfo(m_path).path(), reason))
        return Hold::Unwritable;

    const QByteArray name = QFile::encodeName(m_path);
    QElapsedTimer waiting;
    waiting.start();
    for (;;) {
        const int descriptor = ::open(name.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, fileMode);
        if (descriptor < 0) {
            *reason = systemText(errno);
            return Hold::Unwritable;
        }
        struct stat status = {};
        if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
            *reason = QStringLiteral("not a regular file");
            ::close(descriptor);
            return Hold::Unwritable;
        }
        const bool locked = ::flock(descriptor, LOCK_EX | LOCK_NB) == 0;
        // A file system without flock() leaves it to the locks of SQLite.
        const bool lockless = !locked && errno != EWOULDBLOCK && errno != EINTR;
        if ((locked || lockless) && leadsTo(name, descriptor)) {
            // Whatever the umask or an earlier owner made of it.
            if ((status.st_mode & 07777) != fileMode && ::fchmod(descriptor, fileMode) != 0) {
                *reason = systemText(errno);
                ::close(descriptor);
                return Hold::Unwritable;
            }
            m_descriptor = descriptor;
            return Hold::Held;
        }
        ::close(descriptor);
        if (waiting.hasExpired(waitMs))
            return Hold::Busy;
        QThread::msleep(pollMs);
    }
}

void SettingsFile::release()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    m_descriptor = -1;
}

QString SettingsFile::moveAside(QString* reason)
{
    const QString date = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-ddTHH-mm-ss"));
    const QString stem = m_path + QStringLiteral(".damaged-") + date;
    QString target = stem;
    for (int n = 2; QFileInfo::exists(target); ++n)
        target = QStringLiteral("%1-%2").arg(stem).arg(n);

    // The companions go first: should the power fail in between, the database is found damaged again, while a
    // new database beside an old journal would take that journal for its own.
    for (const char* suffix : companions) {
        const QString companion = m_path + QLatin1String(suffix);
        const QString aside = target + QLatin1String(suffix);
        if (QFileInfo::exists(companion) &&
            ::rename(QFile::encodeName(companion).constData(), QFile::encodeName(aside).constData()) != 0) {
            *reason = systemText(errno);
            return QString();
        }
    }
    if (::rename(QFile::encodeName(m_path).constData(), QFile::encodeName(target).constData()) != 0) {
        *reason = systemText(errno);
        return QString();
    }
    syncFolder(m_path);
    release();
    return target;
}

void SettingsFile::syncFolder(const QString& path)
{
    const QByteArray folder = QFile::encodeName(QFileInfo(path).path());
    const int descriptor = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    // A file system that can't sync a folder has nothing to sync there.
    ::fsync(descriptor);
    ::close(descriptor);
}

bool SettingsFile::copy(const QString& path, const QString& copy, QString* reason)
{
    const QFileInfo info(path);
    // Opening a pipe would wait for somebody who writes.
    if (info.exists() && !info.isFile()) {
        *reason = QStringLiteral("it is no settings file");
        return false;
    }
    // The log goes first: should its owner bring it into the database meanwhile, the copy has those pages
    // twice, and not never.
    constexpr auto ours = QFile::ReadOwner | QFile::WriteOwner;
    for (const char* suffix : companions) {
        const QString companion = copy + QLatin1String(suffix);
        if (QFile::copy(path + QLatin1String(suffix), companion))
            QFile::setPermissions(companion, ours);
    }
    QFile original(path);
    if (!original.open(QIODevice::ReadOnly) || !original.copy(copy)) {
        *reason = original.errorString();
        return false;
    }
    return QFile::setPermissions(copy, ours);
}

} // namespace mem
