#include "platform/common/settings/settingsdatabase.h"

#include "platform/common/settings/settingsreader.h"

#include <algorithm>

namespace mem {

namespace {

// How long a start waits for a unit that is just ending.
constexpr int waitForUnitMs = 1500;

using Access = SettingsConnection::Access;
using State = SettingsConnection::State;

bool sameSettings(const SettingsMap& a, const SettingsMap& b)
{
    return a.keys() == b.keys() && std::equal(a.begin(), a.end(), b.begin(), sameSetting);
}

} // namespace

SettingsDatabase::~SettingsDatabase()
{
    close();
}

SettingsDatabase::Opened SettingsDatabase::open(const QString& path, QString* message)
{
    close();
    message->clear();
    m_values.clear();
    m_wasDamaged = false;
    const auto unwritable = [&](const QString& reason) {
        close();
        m_values.clear();
        QString unsound;
        if (!readSettings(path, &m_values, &unsound))
            m_values = rescueSettings(path).values;
        *message =
            QStringLiteral("Settings can't be kept in %1 (%2); the unit works from memory until power-off.")
                .arg(path, reason);
        return Opened::Unwritable;
    };

    // The second round follows a damaged file that was put aside.
    for (int round = 0; round < 2; ++round) {
        QString reason;
        const SettingsFile::Hold hold = m_file.hold(path, waitForUnitMs, &reason);
        if (hold == SettingsFile::Hold::Unwritable)
            return unwritable(reason);
        const State state = hold == SettingsFile::Hold::Busy ? State::Busy : connectToHeldFile(&reason);
        switch (state) {
        case State::Good:
            m_values = m_connection.values();
            if (!m_file.shortcomings().isEmpty())
                *message += (message->isEmpty() ? QString() : QStringLiteral(" ")) + m_file.shortcomings();
            return Opened::Yes;
        case State::Busy:
            // Where nothing but SQLite's locks is there to tell, it may be another unit.
            if (m_file.isOurs())
                return unwritable(QStringLiteral("another program has locked the file"));
            close();
            *message = QStringLiteral("The settings in %1 are in use by another process.").arg(path);
            return Opened::Busy;
        case State::Failed:
            return unwritable(reason);
        case State::Damaged:
            break;
        }
        if (!repair(reason, message))
            return unwritable(*message);
    }
    return unwritable(QStringLiteral("a new file is damaged too"));
}

void SettingsDatabase::close()
{
    m_connection.close();
    m_file.release();
}

State SettingsDatabase::connectToHeldFile(QString* reason)
{
    if (m_file.wasEmptied()) {
        *reason = QStringLiteral("it is empty");
        return State::Damaged;
    }
    if (!m_file.hasRecordLocks())
        return m_connection.open(m_file.path(), Access::Unlocked, reason);
    const State state = m_connection.open(m_file.path(), Access::Exclusive, reason);
    // No unit can be behind that; a program that looks into the file for long is no reason not to start.
    return state == State::Busy && m_file.isOurs() ? m_connection.open(m_file.path(), Access::Shared, reason)
                                                   : state;
}

/// Replaces the file by what is left of it. message: what happened, or why it couldn't be done.
bool SettingsDatabase::repair(const QString& damage, QString* message)
{
    m_wasDamaged = true;
    const QString path = m_file.path();
    const RescuedSettings rescued = rescueSettings(path);
    QString refused;
    QString aside;
    // Whole before the damaged file goes, so that no power cut leaves less than there was.
    const QString successor = SettingsFile::successorOf(path);
    if (m_file.makeEmpty(successor, &refused)) {
        SettingsConnection fresh;
        if (fresh.open(successor, Access::Unlocked, &refused) == State::Good) {
            if (fresh.write(rescued.values, false)) {
                fresh.close();
                aside = m_file.moveAside(&refused);
            } else {
                refused = fresh.problem();
            }
        }
    }
    if (aside.isEmpty()) {
        *message = QStringLiteral("damaged: %1; not moved aside: %2").arg(damage, refused);
        return false;
    }
    const QString left =
        rescued.values.isEmpty()
            ? QStringLiteral("the unit starts on its defaults")
            : QStringLiteral("%1 of them could be read there, %2 come from the last good copy")
                  .arg(rescued.fromFile)
                  .arg(rescued.fromGoodCopy);
    *message = QStringLiteral("The settings in %1 are damaged (%2). They were moved to %3; %4.")
                   .arg(path, damage, aside, left);
    return true;
}

bool SettingsDatabase::write(const SettingsMap& changes, bool wipe)
{
    // What was to be forgotten must not come back with the next damage.
    if (wipe)
        SettingsFile::removeGoodCopy(m_file.path());
    return m_connection.write(changes, wipe);
}

bool SettingsDatabase::keepGoodCopy(QString* reason)
{
    if (!isOpen() || m_wasDamaged)
        return true;
    const QString copy = SettingsFile::goodCopyOf(m_file.path());
    SettingsMap there;
    if (readSettings(copy, &there, reason) && sameSettings(there, m_values))
        return true;
    const QString unfinished = copy + QStringLiteral(".new");
    return m_file.makeEmpty(unfinished, reason) && m_connection.copyTo(unfinished, reason) &&
           SettingsFile::putInPlace(unfinished, copy, reason);
}

} // namespace mem
