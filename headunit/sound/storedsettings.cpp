#include "headunit/sound/storedsettings.h"

#include "platform/common/settings/settingsstore.h"
#include "platform/hvaudioservice/audioservicehost.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

namespace headunit {

bool readStoredSettings(const QString& path, hvaudio::dsp::Settings* settings, QString* error)
{
    const QString original = path.isEmpty() ? mem::SettingsStore::defaultPath() : path;
    const QTemporaryDir folder;
    const QString copy = folder.filePath(QStringLiteral("settings.db"));
    if (!folder.isValid()) {
        *error = QStringLiteral("can't make a temporary folder: %1").arg(folder.errorString());
        return false;
    }
    if (!path.isEmpty() || QFile::exists(original)) {
        // Opening a pipe would wait for somebody who writes.
        if (QFile::exists(original) && !QFileInfo(original).isFile()) {
            *error = QStringLiteral("can't read the settings in '%1': it is no settings file").arg(original);
            return false;
        }
        QFile file(original);
        if (!file.open(QIODevice::ReadOnly)) {
            *error = QStringLiteral("can't read the settings in '%1': %2").arg(original, file.errorString());
            return false;
        }
        // Told here, because the store would move the copy aside and say so.
        if (file.size() > 0 && file.peek(15) != "SQLite format 3") {
            *error = QStringLiteral("can't read the settings in '%1': it is no settings file").arg(original);
            return false;
        }
        file.close();
        if (!file.copy(copy)) {
            *error = QStringLiteral("can't copy the settings in '%1': %2").arg(original, file.errorString());
            return false;
        }
        // What the database keeps beside it belongs to it.
        for (const char* const suffix : {"-wal", "-journal"})
            QFile::copy(original + QLatin1String(suffix), copy + QLatin1String(suffix));
    }

    auto* const store = mem::SettingsStore::instance();
    QString message;
    const bool durable = store->open(copy, &message) == mem::SettingsStore::Opened::Durable;
    // A copy that had to be moved aside isn't a settings file.
    if (!durable || !message.isEmpty()) {
        store->close();
        *error = QStringLiteral("can't read the settings in '%1': it is damaged or no settings file")
                     .arg(original);
        return false;
    }
    bool given = false;
    hvaudio::AudioServiceHost::setSink([&](const hvaudio::dsp::Settings& wanted) {
        *settings = wanted;
        given = true;
    });
    hvaudio::AudioServiceHost::powerOn();
    hvaudio::AudioServiceHost::setSink({});
    hvaudio::AudioServiceHost::shutdown();
    store->close();
    if (!given)
        *error = QStringLiteral("the audio service gives no settings");
    return given;
}

} // namespace headunit
