#include "headunit/sound/storedsettings.h"

#include "platform/common/settings/settingsstore.h"
#include "platform/hvaudioservice/audioservicehost.h"

namespace headunit {

bool readStoredSettings(const QString& path, hvaudio::dsp::Settings* settings, QString* error)
{
    QString reason;
    if (!mem::SettingsStore::instance()->openReadOnly(path, &reason)) {
        *error = QStringLiteral("can't read the settings in '%1': %2")
                     .arg(path.isEmpty() ? mem::SettingsStore::defaultPath() : path, reason);
        return false;
    }
    hvaudio::AudioServiceHost::setSink(
        [settings](const hvaudio::dsp::Settings& wanted) { *settings = wanted; });
    hvaudio::AudioServiceHost::powerOn();
    hvaudio::AudioServiceHost::setSink({});
    hvaudio::AudioServiceHost::shutdown();
    return true;
}

} // namespace headunit
