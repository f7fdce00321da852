#include "headunit/shell/audiopages.h"

#include "platform/common/settings/settingsstore.h"

namespace headunit {

QString audioPageKey()
{
    return QLatin1String(audioPageSetting.key);
}

RememberedPage::RememberedPage()
    : m_remembered(mem::SettingsStore::instance()->value(audioPageKey()))
{
}

RememberedPage::~RememberedPage()
{
    mem::SettingsStore* store = mem::SettingsStore::instance();
    if (m_remembered.isValid())
        store->setValue(audioPageKey(), m_remembered, true);
    else
        store->remove(audioPageKey());
}

void RememberedPage::lookAt(int page)
{
    mem::SettingsStore::instance()->setValue(audioPageKey(), page, false);
}

} // namespace headunit
