#include "common/transferstation.h"

#include "platform/common/framework/journal.h"
#include "platform/common/framework/journaltext.h"

namespace cm {

R9TransferStation::R9TransferStation(QObject* parent)
    : QObject(parent)
{
    // The operations are the signals themselves, so the journal is their first listener.
    const auto report = [](const char* operation) {
        Journal::instance()->record(QStringLiteral("R9TransferStation"), journalCall(operation));
    };
    connect(this, &R9TransferStation::setupNextPage, [report] { report("setupNextPage"); });
    connect(this, &R9TransferStation::setupPrevPage, [report] { report("setupPrevPage"); });
}

R9TransferStation::~R9TransferStation() = default;

TransferFunction::TransferFunction()
    : m_station(new R9TransferStation)
{
}

TransferFunction::~TransferFunction()
{
    delete m_station;
}

TransferFunction* TransferFunction::instance()
{
    static TransferFunction theInstance;
    return &theInstance;
}

R9TransferStation* TransferFunction::getTS()
{
    return m_station;
}

} // namespace cm
