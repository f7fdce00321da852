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

/// Tried on a byte that SQLite has no use for.
bool hasRecordLocksOn(int descriptor)
{
    struct flock byte = {};
    byte.l_type = F_WRLCK;
    byte.l_whence = SEEK_SET;
    byte.l_start = 0x3fffffff;
    byte.l_len = 1;
    if (::fcntl(descriptor, F_SETLK, &byte) != 0)
        return errno == EAGAIN || errno == EACCES;
    byte.l_type = F_UNLCK;
    ::fcntl(descriptor, F_SETLK, &byte);
    return true;
}

bool rename(const QString& from, const QString& to, QString* reason)
{
    if (::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0)
        return true;
    *reason = systemText(errno);
    return false;
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
    // The power failed between a damaged file's leaving and its successor's coming.
    if (!info.exists() && QFileInfo::exists(successorOf(m_path)) &&
        !putInPlace(successorOf(m_path), m_path, reason))
        return Hold::Unwritable;
    m_emptied =
        QFileInfo(m_path).isFile() && QFileInfo(m_path).size() == 0 && QFileInfo::exists(goodCopyOf(m_path));

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
        m_locked = ::flock(descriptor, LOCK_EX | LOCK_NB) == 0;
        // A file system without flock() leaves it to the locks of SQLite.
        const bool lockless = !m_locked && errno != EWOULDBLOCK && errno != EINTR;
        if ((m_locked || lockless) && leadsTo(name, descriptor)) {
            m_descriptor = descriptor;
            noteWhatIsMissing(static_cast<int>(status.st_mode & 07777));
            return Hold::Held;
        }
        ::close(descriptor);
        if (waiting.hasExpired(waitMs))
            return Hold::Busy;
        QThread::msleep(pollMs);
    }
}

void SettingsFile::noteWhatIsMissing(int mode)
{
    m_shortcomings.clear();
    m_recordLocks = hasRecordLocksOn(m_descriptor);
    if (!m_locked && !m_recordLocks)
        m_shortcomings =
            QStringLiteral("The file system of %1 has no locks; nothing keeps a second unit away.")
                .arg(m_path);
    // Whatever the umask or an earlier owner made of it.
    if (mode != fileMode && ::fchmod(m_descriptor, fileMode) != 0) {
        m_shortcomings += m_shortcomings.isEmpty() ? QString() : QStringLiteral(" ");
        m_shortcomings +=
            QStringLiteral("Others may get at the settings in %1, its mode 0%2 can't be changed (%3).")
                .arg(m_path, QString::number(mode, 8), systemText(errno));
    }
}

void SettingsFile::release()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    m_descriptor = -1;
    m_locked = false;
}

QString SettingsFile::moveAside(QString* reason)
{
    const QString date = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-ddTHH-mm-ss"));
    const QString stem = m_path + QStringLiteral(".damaged-") + date;
    QString target = stem;
    for (int n = 2; QFileInfo::exists(target); ++n)
        target = QStringLiteral("%1-%2").arg(stem).arg(n);

    // The companions go first, and for good: a new database beside an old log would take that log for its
    // own, while a database that has lost its log is found damaged again or is an older state.
    for (const char* suffix : companions) {
        const QString companion = m_path + QLatin1String(suffix);
        if (QFileInfo::exists(companion) && !rename(companion, target + QLatin1String(suffix), reason))
            return QString();
    }
    syncFolder(m_path);
    if (!rename(m_path, target, reason))
        return QString();
    syncFolder(m_path);
    if (!putInPlace(successorOf(m_path), m_path, reason))
        return QString();
    release();
    return target;
}

QString SettingsFile::successorOf(const QString& path)
{
    return path + QStringLiteral(".new");
}

QString SettingsFile::goodCopyOf(const QString& path)
{
    return path + QStringLiteral(".good");
}

void SettingsFile::removeGoodCopy(const QString& path)
{
    if (::unlink(QFile::encodeName(goodCopyOf(path)).constData()) == 0)
        syncFolder(path);
}

bool SettingsFile::makeEmpty(const QString& path, QString* reason)
{
    for (const char* suffix : companions)
        ::unlink(QFile::encodeName(path + QLatin1String(suffix)).constData());
    const QByteArray name = QFile::encodeName(path);
    ::unlink(name.constData());
    const int descriptor = ::open(name.constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, fileMode);
    if (descriptor < 0) {
        *reason = systemText(errno);
        return false;
    }
    ::close(descriptor);
    return true;
}

bool SettingsFile::putInPlace(const QString& finished, const QString& path, QString* reason)
{
    const int descriptor = ::open(QFile::encodeName(finished).constData(), O_RDWR | O_CLOEXEC);
    const bool synced = descriptor >= 0 && ::fsync(descriptor) == 0;
    if (!synced)
        *reason = systemText(errno);
    if (descriptor >= 0)
        ::close(descriptor);
    if (!synced || !rename(finished, path, reason))
        return false;
    syncFolder(path);
    return true;
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

} // namespace mem
