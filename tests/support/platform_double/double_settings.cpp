#include "common/settings.h"
#include "tests/support/platform_double/platform_double.h"

#include <QHash>

namespace platform_double {

namespace {

QHash<QString, QVariant> store;
QStringList touched;

void note(const QString& line)
{
    if (!touched.contains(line))
        touched.append(line);
}

template <typename T>
T read(const char* face, const QString& key, const T& defaultValue)
{
    const QVariant asDefault(defaultValue);
    record(Read, readOf(face, key, asDefault));
    note(QStringLiteral("%1 %2 %3 R").arg(QLatin1String(face), key, written(asDefault)));
    const QVariant value = store.value(key);
    return value.type() == asDefault.type() ? value.value<T>() : defaultValue;
}

void write(const char* face, const QString& key, const QVariant& defaultValue, const QVariant& value,
           bool commit)
{
    const auto type = static_cast<QMetaType::Type>(value.type());
    if (key.isEmpty() || (type != QMetaType::Int && type != QMetaType::Bool && type != QMetaType::QString)) {
        qWarning("SettingsStore: \"%s\" can't keep a value of the type %s", qPrintable(key),
                 value.typeName());
        return;
    }
    record(Write, writeOf(face, key, defaultValue, value, commit));
    note(QStringLiteral("%1 %2 %3 W %4")
             .arg(QLatin1String(face), key, written(defaultValue), written(commit)));
    store.insert(key, value);
}

} // namespace

void resetSettings()
{
    store.clear();
    touched.clear();
}

void setStored(const QString& key, const QVariant& value)
{
    store.insert(key, value);
}

QVariant stored(const QString& key)
{
    return store.value(key);
}

QStringList accesses()
{
    return touched;
}

void emitEQType(int type)
{
    emit mem::SettingsUtil::instance()->EQType(type);
}

} // namespace platform_double

namespace mem {

using namespace platform_double;

SettingsFunc::SettingsFunc() = default;
SettingsFunc::~SettingsFunc() = default;

SettingsFunc* SettingsFunc::instance()
{
    static SettingsFunc theInstance;
    return &theInstance;
}

int SettingsFunc::getValue(const QString& key, int defaultValue)
{
    return read("Func", key, defaultValue);
}

bool SettingsFunc::getValue(const QString& key, bool defaultValue)
{
    return read("Func", key, defaultValue);
}

QString SettingsFunc::getValue(const QString& key, const QString& defaultValue)
{
    return read("Func", key, defaultValue);
}

void SettingsFunc::setValue(const QString& key, const QVariant& defaultValue, const QVariant& value,
                            bool commit)
{
    write("Func", key, defaultValue, value, commit);
}

SettingsExe::SettingsExe(QObject* parent)
    : QObject(parent)
{
}

SettingsExe::~SettingsExe() = default;

int SettingsExe::getValue(const QString& key, int defaultValue)
{
    return read("Exe", key, defaultValue);
}

bool SettingsExe::getValue(const QString& key, bool defaultValue)
{
    return read("Exe", key, defaultValue);
}

void SettingsExe::setValue(const QString& key, const QVariant& defaultValue, const QVariant& value,
                           bool commit)
{
    write("Exe", key, defaultValue, value, commit);
}

SettingsUtil::SettingsUtil() = default;
SettingsUtil::~SettingsUtil() = default;

SettingsUtil* SettingsUtil::instance()
{
    static SettingsUtil theInstance;
    return &theInstance;
}

} // namespace mem
