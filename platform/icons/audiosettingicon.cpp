#include "platform/icons/audiosettingicon.h"

const char* audiosettingicon_version()
{
    return AUDIOSETTINGICON_VERSION;
}
