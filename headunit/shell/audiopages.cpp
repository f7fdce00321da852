#include "headunit/shell/audiopages.h"

#include "platform/common/settings/settingsstore.h"

namespace headunit {

RememberedPage::RememberedPage()
    : m_remembered(mem::SettingsStore::instance()->value(mem::keyOf(audioPageSetting)))
{
}

RememberedPage::~RememberedPage()
{
    mem::SettingsStore* store = mem::SettingsStore::instance();
    if (m_remembered.isValid())
        store->setValue(mem::keyOf(audioPageSetting), m_remembered, true);
    else
        store->remove(mem::keyOf(audioPageSetting));
}

void RememberedPage::lookAt(int page)
{
    mem::SettingsStore::instance()->setValue(mem::keyOf(audioPageSetting), page, false);
}

} // namespace headunit
