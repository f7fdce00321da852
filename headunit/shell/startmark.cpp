#include "headunit/shell/startmark.h"

#include "common/settingstable.h"
#include "platform/common/settings/settingsstore.h"

#include <utility>

namespace headunit {

namespace {

constexpr mem::Setting markSetting = mem::settingOf("Headunit_Starting");

} // namespace

StartMark::StartMark()
    : m_left(mem::SettingsStore::instance()->value(mem::keyOf(markSetting)).toString())
{
    mem::SettingsStore::instance()->remove(mem::keyOf(markSetting));
}

bool StartMark::begin(const QString& what)
{
    if (what == m_left) {
        m_left.clear();
        return false;
    }
    mem::SettingsStore::instance()->setValue(mem::keyOf(markSetting), what, true);
    return true;
}

void StartMark::end()
{
    mem::SettingsStore::instance()->remove(mem::keyOf(markSetting));
    mem::SettingsStore::instance()->commit();
}

} // namespace headunit
