#pragma once

#include "common/export.h"

#include <QObject>
#include <QString>
#include <QVariant>

/// The persisted settings store. Values are int, bool or string and keep their type. Reads come from memory.
/// Thread: GUI.
///
/// A key that is absent, or holds another type than the one asked for, reads as the default. A write is
/// visible at once. With the flag true it is durable when the call returns, with false at the next commit,
/// within 2 s at most. Where the store can't be written, writes stay in memory: that is logged and the host
/// is told, while the caller goes on as ever.
namespace mem {

/// The process-wide store object.
class COMMON_EXPORT SettingsFunc
{
public:
    /// Never null; stays the library's.
    static SettingsFunc* instance();

    int getValue(const QString& key, int defaultValue);
    bool getValue(const QString& key, bool defaultValue);
    QString getValue(const QString& key, const QString& defaultValue);
    /// A bare literal would silently pick the bool overload.
    QString getValue(const QString& key, const char* defaultValue) = delete;

    /// value: int, bool or QString; any other type, and an empty key, is refused with a log line.
    /// defaultValue tells what absence means; it isn't stored.
    void setValue(const QString& key, const QVariant& defaultValue, const QVariant& value, bool commit);

private:
    SettingsFunc();
    ~SettingsFunc();
    Q_DISABLE_COPY(SettingsFunc)
};

/// An accessor to the same store.
class COMMON_EXPORT SettingsExe : public QObject
{
    Q_OBJECT
public:
    /// The parent, a page, owns the accessor; without one (null) the caller does.
    explicit SettingsExe(QObject* parent);
    ~SettingsExe() override;

    int getValue(const QString& key, int defaultValue);
    bool getValue(const QString& key, bool defaultValue);
    /// A bare literal would silently pick the bool overload.
    int getValue(const QString& key, const char* defaultValue) = delete;

    /// As SettingsFunc::setValue().
    void setValue(const QString& key, const QVariant& defaultValue, const QVariant& value, bool commit);

private:
    Q_DISABLE_COPY(SettingsExe)
};

/// News of settings that change outside a page.
class COMMON_EXPORT SettingsUtil : public QObject
{
    Q_OBJECT
public:
    /// Never null; stays the library's.
    static SettingsUtil* instance();

signals:
    /// The current EQ type has changed, wherever the change came from; type 0..8. Not emitted when it is set
    /// to what it is.
    void EQType(int type);

private:
    SettingsUtil();
    ~SettingsUtil() override;
    Q_DISABLE_COPY(SettingsUtil)
};

} // namespace mem
