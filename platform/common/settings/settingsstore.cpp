#include "platform/common/settings/settingsstore.h"

#include "platform/common/settings/settingsdatabase.h"
#include "platform/common/settings/settingsreader.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFileInfo>
#include <QSet>
#include <QStandardPaths>
#include <QTimer>

namespace mem {

namespace {

// A write without the commit flag is promised to be durable within 2 s; the rest is for a busy event loop.
constexpr int delayMs = 1000;

// Late enough to be in nobody's way while the unit starts.
constexpr int goodCopyAfterMs = 5000;

QString closedProblem()
{
    return QStringLiteral("No settings file is open; the unit works from memory until power-off.");
}

} // namespace

class SettingsStorePrivate
{
public:
    QString path;
    SettingsMap values;
    SettingsDatabase database;
    SettingsMap pending; ///< differs from what the file holds; invalid: to be deleted
    bool wipePending = false;
    /// Why nothing is kept, as it was last told; empty while all is.
    QString problem = closedProblem();
    bool failing = false; ///< the last write failed, and that was said
    QSet<QString> complained;
    QTimer delay;
    QTimer goodCopy;

    /// Something waits for the next commit, be it that a write that failed is tried again.
    bool hasPending() const { return wipePending || !pending.isEmpty() || failing; }

    QString lastWriteProblem() const
    {
        const QString reason = database.problem();
        return reason.isEmpty()
                   ? QString()
                   : QStringLiteral(
                         "Settings couldn't be written to %1 (%2); they stay in memory and are tried again.")
                         .arg(path, reason);
    }

    void note(const QString& key, const QVariant& value)
    {
        complained.remove(key);
        if (database.isOpen())
            pending.insert(key, value);
    }

    void commitSoon()
    {
        if (hasPending() && !delay.isActive() && QCoreApplication::instance())
            delay.start();
    }
};

SettingsStore::SettingsStore()
    : d(new SettingsStorePrivate)
{
    d->delay.setSingleShot(true);
    d->delay.setInterval(delayMs);
    connect(&d->delay, &QTimer::timeout, this, [this] { commit(); });
    d->goodCopy.setSingleShot(true);
    d->goodCopy.setInterval(goodCopyAfterMs);
    connect(&d->goodCopy, &QTimer::timeout, this, [this] { keepGoodCopy(); });
}

SettingsStore::~SettingsStore()
{
    close();
    delete d;
}

SettingsStore* SettingsStore::instance()
{
    static SettingsStore theInstance;
    return &theInstance;
}

QString SettingsStore::defaultPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/audiosetting/settings.db");
}

SettingsStore::Opened SettingsStore::open(const QString& path, QString* message)
{
    close();
    d->path = path.isEmpty() ? defaultPath() : path;
    QString text;
    const SettingsDatabase::Opened opened = d->database.open(d->path, &text);
    QString problem = text;
    if (opened == SettingsDatabase::Opened::Yes) {
        problem = d->lastWriteProblem();
        d->failing = !problem.isEmpty();
        if (d->failing)
            text = text.isEmpty() ? problem : text + QLatin1Char(' ') + problem;
    }
    if (message)
        *message = text;
    else if (!text.isEmpty())
        qWarning().noquote() << text;
    if (opened != SettingsDatabase::Opened::Busy)
        replaceValues(d->database.values());
    setProblem(problem);
    if (opened != SettingsDatabase::Opened::Yes)
        return opened == SettingsDatabase::Opened::Busy ? Opened::Refused : Opened::Memory;
    if (d->failing)
        d->commitSoon();
    if (QCoreApplication::instance())
        d->goodCopy.start();
    return Opened::Durable;
}

bool SettingsStore::openReadOnly(const QString& path, QString* reason)
{
    const QString file = path.isEmpty() ? defaultPath() : path;
    const bool factorySettings = path.isEmpty() && !QFileInfo::exists(file);
    SettingsMap values;
    if (!factorySettings && !readSettings(file, &values, reason))
        return false;
    close();
    d->path = file;
    replaceValues(values);
    return true;
}

void SettingsStore::replaceValues(const QMap<QString, QVariant>& after)
{
    const SettingsMap before = d->values;
    d->values = after;
    d->complained.clear();
    for (auto old = before.begin(); old != before.end(); ++old) {
        if (!after.contains(old.key()))
            emit valueChanged(old.key(), QVariant());
    }
    for (auto now = after.begin(); now != after.end(); ++now) {
        if (!sameSetting(before.value(now.key()), now.value()))
            emit valueChanged(now.key(), now.value());
    }
}

void SettingsStore::close()
{
    if (!d->database.isOpen())
        return;
    commit();
    d->delay.stop();
    d->goodCopy.stop();
    d->database.close();
    d->pending.clear();
    d->wipePending = false;
    d->failing = false;
    setProblem(closedProblem());
}

bool SettingsStore::commit()
{
    d->delay.stop();
    if (!d->database.isOpen())
        return false;
    if (!d->hasPending())
        return true;
    const bool written = d->database.write(d->pending, d->wipePending);
    if (written) {
        d->pending.clear();
        d->wipePending = false;
    }
    const QString problem = d->lastWriteProblem();
    if (written && d->failing)
        qInfo().noquote() << "Settings are kept again in" << d->path;
    else if (!written && !d->failing)
        qCritical().noquote() << problem;
    d->failing = !written;
    setProblem(problem);
    d->commitSoon();
    return written;
}

void SettingsStore::setProblem(const QString& problem)
{
    const bool wasDurable = isDurable();
    d->problem = problem;
    if (isDurable() != wasDurable)
        emit durableChanged(isDurable());
}

bool SettingsStore::keepGoodCopy()
{
    d->goodCopy.stop();
    QString reason;
    if (!d->database.isOpen() || !commit())
        return false;
    if (d->database.keepGoodCopy(&reason))
        return true;
    qWarning().noquote() << "The last good copy of" << d->path << "couldn't be written:" << reason;
    return false;
}

void SettingsStore::clear()
{
    const SettingsMap before = d->values;
    d->values.clear();
    d->complained.clear();
    d->pending.clear();
    d->wipePending = d->database.isOpen();
    commit();
    for (auto old = before.begin(); old != before.end(); ++old)
        emit valueChanged(old.key(), QVariant());
}

QString SettingsStore::path() const
{
    return d->path;
}

bool SettingsStore::isDurable() const
{
    return d->problem.isEmpty();
}

QString SettingsStore::problem() const
{
    return d->problem;
}

QMap<QString, QVariant> SettingsStore::values() const
{
    return d->values;
}

QVariant SettingsStore::value(const QString& key) const
{
    return d->values.value(key);
}

QVariant SettingsStore::valueOr(const QString& key, const QVariant& defaultValue) const
{
    const auto found = d->values.constFind(key);
    if (found == d->values.constEnd())
        return defaultValue;
    if (found->userType() == defaultValue.userType())
        return *found;
    if (!d->complained.contains(key)) {
        d->complained.insert(key);
        qWarning() << "Setting" << key << "holds" << found->typeName() << found->toString().left(40)
                   << "where" << defaultValue.typeName() << "is expected; its default is used";
    }
    return defaultValue;
}

bool SettingsStore::setValue(const QString& key, const QVariant& value, bool commitNow)
{
    if (key.isEmpty() || !isSettingType(value)) {
        qWarning() << "Setting" << key << "refused: it can't hold" << value.typeName();
        return false;
    }
    const bool changed = !sameSetting(d->values.value(key), value);
    if (changed) {
        d->values.insert(key, value);
        d->note(key, value);
    }
    if (commitNow)
        commit();
    else
        d->commitSoon();
    if (changed)
        emit valueChanged(key, value);
    emit written(key);
    return true;
}

void SettingsStore::remove(const QString& key)
{
    if (d->values.remove(key) == 0)
        return;
    d->note(key, QVariant());
    d->commitSoon();
    emit valueChanged(key, QVariant());
}

bool SettingsStore::edit(const QString& key, const QVariant& value)
{
    if (value.isValid()) {
        if (!setValue(key, value, true))
            return false;
    } else {
        remove(key);
        commit();
    }
    emit edited(key);
    return true;
}

} // namespace mem
