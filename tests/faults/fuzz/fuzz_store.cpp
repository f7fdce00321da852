// Bytes that lie where the settings' file is to be, with what lies beside it: the unit starts on them, keeps
// what it is told from then on, and puts aside what it can't use.
//
// The first byte says how many pages of 4096 bytes belong to the file; the second, which one the rest is: its
// write-ahead log, its rollback journal or its last good copy.
#include "tests/faults/fuzz/fuzz.h"

#include "platform/common/settings/settingsdatabase.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace mem;

namespace {

constexpr int pageSize = 4096;
const char* const companions[] = {"-wal", "-journal", ".good"};
const QString key = QStringLiteral("eq10");

void writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    fuzz::require(file.open(QIODevice::WriteOnly) && file.write(content) == content.size(), "can't write");
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// What the file held is there as it was, or in a file that was moved aside.
bool isKept(const QDir& folder, const QByteArray& content)
{
    const QStringList names = folder.entryList({QStringLiteral("settings.db.damaged-*")}, QDir::Files);
    for (const QString& name : names) {
        if (contentOf(folder.filePath(name)) == content)
            return true;
    }
    return false;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    static const QTemporaryDir place;
    QDir folder(place.filePath(QStringLiteral("unit")));
    folder.removeRecursively();
    fuzz::require(QDir().mkpath(folder.path()), "can't make a folder");
    const QString path = folder.filePath(QStringLiteral("settings.db"));
    const QByteArray input(reinterpret_cast<const char*>(data) + 2, int(size) - 2);
    const QByteArray content = input.left(data[0] * pageSize), beside = input.mid(content.size());
    writeFile(path, content);
    if (!beside.isEmpty())
        writeFile(path + QLatin1String(companions[data[1] % 3]), beside);

    SettingsDatabase store;
    QString message;
    const SettingsDatabase::Opened opened = store.open(path, &message);
    QString answer = message;
    fuzz::answered(answer.remove(QRegExp(QStringLiteral("[0-9]|/[^ ]*"))).toStdString());
    fuzz::require(opened == SettingsDatabase::Opened::Yes, "not opened: " + message.toStdString());
    fuzz::require(message.isEmpty() || isKept(folder, content), "the damaged file is gone");
    SettingsMap expected = store.values();
    expected[key] = 5;
    fuzz::require(store.write({{key, 5}}, false), "not written: " + store.problem().toStdString());
    store.close();

    fuzz::require(store.open(path, &message) == SettingsDatabase::Opened::Yes, "not opened again");
    fuzz::require(message.isEmpty(), "damaged again: " + message.toStdString());
    fuzz::require(store.values() == expected, "other values than before");
    fuzz::require(store.keepGoodCopy(&message), "no good copy: " + message.toStdString());
    store.close();
    return 0;
}
