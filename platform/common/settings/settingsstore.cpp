#include "platform/common/settings/settingsstore.h"

#include "platform/common/settings/settingsdatabase.h"

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

bool isSettingType(const QVariant& value)
{
    switch (static_cast<QMetaType::Type>(value.type())) {
    case QMetaType::Int:
    case QMetaType::Bool:
    case QMetaType::QString:
        return true;
    default:
        return false;
    }
}

/// Type and value: QVariant's own comparison finds 1 and true, or 1 and "1", equal.
bool same(const QVariant& a, const QVariant& b)
{
    return a.userType() == b.userType() && a == b;
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
    bool failing = false; ///< the last commit failed and was logged
    QSet<QString> complained;
    QTimer delay;

    bool hasPending() const { return wipePending || !pending.isEmpty(); }

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
    if (!text.isEmpty())
        qWarning().noquote() << text;
    if (message)
        *message = text;
    if (opened == SettingsDatabase::Opened::Busy)
        return Opened::Refused;

    replaceValues(d->database.values());
    return opened == SettingsDatabase::Opened::Yes ? Opened::Durable : Opened::Memory;
}

bool SettingsStore::openReadOnly(const QString& path, QString* reason)
{
    const QString file = path.isEmpty() ? defaultPath() : path;
    const bool factorySettings = path.isEmpty() && !QFileInfo::exists(file);
    SettingsMap values;
    if (!factorySettings && !SettingsDatabase::read(file, &values, reason))
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
        if (!same(before.value(now.key()), now.value()))
            emit valueChanged(now.key(), now.value());
    }
}

void SettingsStore::close()
{
    if (!d->database.isOpen())
        return;
    commit();
    d->delay.stop();
    d->database.close();
    d->pending.clear();
    d->wipePending = false;
    d->failing = false;
}

bool SettingsStore::commit()
{
    d->delay.stop();
    if (!d->database.isOpen() || !d->hasPending())
        return true;
    QString reason;
    if (d->database.write(d->pending, d->wipePending, &reason)) {
        if (d->failing)
            qInfo().noquote() << "Settings are kept again in" << d->path;
        d->pending.clear();
        d->wipePending = false;
        d->failing = false;
        return true;
    }
    if (!d->failing)
        qCritical().noquote() << "Settings couldn't be written to" << d->path << '(' + reason + ");"
                              << "they stay in memory and are tried again";
    d->failing = true;
    d->commitSoon();
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
    return d->database.isOpen();
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
    const bool changed = !same(d->values.value(key), value);
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
