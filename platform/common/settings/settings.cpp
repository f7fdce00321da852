#include "common/settings.h"

#include "platform/common/framework/journal.h"
#include "platform/common/framework/journaltext.h"
#include "platform/common/settings/settingsstore.h"

// Both faces lead to the one store; they differ in the name under which the journal shows them.
namespace mem {

namespace {

const QString func = QStringLiteral("SettingsFunc");
const QString exe = QStringLiteral("SettingsExe");

template <typename T>
T read(const QString& face, const QString& key, const T& defaultValue)
{
    cm::Journal::instance()->record(face, cm::journalCall("getValue", key, defaultValue));
    return SettingsStore::instance()->valueOr(key, QVariant(defaultValue)).template value<T>();
}

void write(const QString& face, const QString& key, const QVariant& defaultValue, const QVariant& value,
           bool commit)
{
    cm::Journal::instance()->record(face, cm::journalCall("setValue", key, defaultValue, value, commit));
    SettingsStore::instance()->setValue(key, value, commit);
}

} // namespace

SettingsFunc::SettingsFunc() = default;
SettingsFunc::~SettingsFunc() = default;

SettingsFunc* SettingsFunc::instance()
{
    static SettingsFunc theInstance;
    return &theInstance;
}

int SettingsFunc::getValue(const QString& key, int defaultValue)
{
    return read(func, key, defaultValue);
}

bool SettingsFunc::getValue(const QString& key, bool defaultValue)
{
    return read(func, key, defaultValue);
}

QString SettingsFunc::getValue(const QString& key, const QString& defaultValue)
{
    return read(func, key, defaultValue);
}

void SettingsFunc::setValue(const QString& key, const QVariant& defaultValue, const QVariant& value,
                            bool commit)
{
    write(func, key, defaultValue, value, commit);
}

SettingsExe::SettingsExe(QObject* parent)
    : QObject(parent)
{
}

SettingsExe::~SettingsExe() = default;

int SettingsExe::getValue(const QString& key, int defaultValue)
{
    return read(exe, key, defaultValue);
}

bool SettingsExe::getValue(const QString& key, bool defaultValue)
{
    return read(exe, key, defaultValue);
}

void SettingsExe::setValue(const QString& key, const QVariant& defaultValue, const QVariant& value,
                           bool commit)
{
    write(exe, key, defaultValue, value, commit);
}

SettingsUtil::SettingsUtil() = default;
SettingsUtil::~SettingsUtil() = default;

SettingsUtil* SettingsUtil::instance()
{
    static SettingsUtil theInstance;
    return &theInstance;
}

} // namespace mem
