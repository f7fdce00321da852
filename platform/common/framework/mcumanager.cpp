#include "common/mcumanager.h"

#include "platform/common/framework/journal.h"
#include "platform/common/framework/journaltext.h"

#include <QDebug>

namespace {
constexpr int onlyTone = 0;
} // namespace

McuManager::McuManager() = default;
McuManager::~McuManager() = default;

McuManager* McuManager::instance()
{
    static McuManager theInstance;
    return &theInstance;
}

void McuManager::triggerBeep(int tone)
{
    cm::Journal::instance()->record(QStringLiteral("McuManager"), cm::journalCall("triggerBeep", tone));
    if (tone != onlyTone)
        qWarning() << "McuManager: no beep tone" << tone << "- sounding" << onlyTone;
    emit beepTriggered(onlyTone);
}
