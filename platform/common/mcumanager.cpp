#include "common/mcumanager.h"

#include "common/journal.h"
#include "common/journaltext.h"

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
