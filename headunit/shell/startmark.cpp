#include "headunit/shell/startmark.h"

#include "common/settingstable.h"
#include "platform/common/settings/settingsstore.h"

#include <utility>

namespace headunit {

namespace {

constexpr mem::Setting markSetting = mem::settingOf("Headunit_Starting");

QString markKey()
{
    return QLatin1String(markSetting.key);
}

} // namespace

StartMark::StartMark()
    : m_left(mem::SettingsStore::instance()->value(markKey()).toString())
{
    mem::SettingsStore::instance()->remove(markKey());
}

bool StartMark::begin(const QString& what)
{
    if (what == m_left) {
        m_left.clear();
        return false;
    }
    mem::SettingsStore::instance()->setValue(markKey(), what, true);
    return true;
}

void StartMark::end()
{
    mem::SettingsStore::instance()->remove(markKey());
    mem::SettingsStore::instance()->commit();
}

} // namespace headunit
