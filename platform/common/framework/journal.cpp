#include "platform/common/framework/journal.h"

#include <cstdio>

namespace cm {

Journal::Journal() = default;
Journal::~Journal() = default;

Journal* Journal::instance()
{
    static Journal theInstance;
    return &theInstance;
}

void Journal::record(const QString& subsystem, const QString& operation)
{
    const Entry entry{QDateTime::currentDateTime(), subsystem, operation};
    // Trimmed by half at a time: taking one off the front at each call would move all the others.
    if (m_entries.size() >= 2 * kept)
        m_entries.remove(0, m_entries.size() - kept + 1);
    m_entries.append(entry);
    if (m_printing) {
        const QByteArray line = (subsystem + QLatin1Char('.') + operation + QLatin1Char('\n')).toUtf8();
        std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stdout);
        // The reader of a trace wants to see the call that the unit died of.
        std::fflush(stdout);
    }
    emit recorded(entry);
}

QVector<Journal::Entry> Journal::entries() const
{
    return m_entries.size() > kept ? m_entries.mid(m_entries.size() - kept) : m_entries;
}

void Journal::setPrinting(bool on)
{
    m_printing = on;
}

} // namespace cm
