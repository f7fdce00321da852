#include "common/mcumanager.h"
#include "platform/common/framework/journal.h"
#include "platform/common/framework/journaltext.h"

#include <QtTest>

#include <cstdio>
#include <unistd.h>

using cm::Journal;

/// What a function prints to standard output.
template <typename Function>
QByteArray printedBy(Function function)
{
    QTemporaryFile file;
    if (!file.open())
        return QByteArray("no temporary file");
    std::fflush(stdout);
    const int original = ::dup(STDOUT_FILENO);
    ::dup2(file.handle(), STDOUT_FILENO);
    function();
    std::fflush(stdout);
    ::dup2(original, STDOUT_FILENO);
    ::close(original);
    file.seek(0);
    return file.readAll();
}

class TestJournal : public QObject
{
    Q_OBJECT
private slots:
    void keepsEntriesInOrderWithTheirTime();
    void keepsTheLatest2000();
    void tellsListenersOfEachEntry();
    void aListenerMayCallThePlatform();
    void printsOneLineAnEntryWhileAsked();
    void writesArgumentsAsText();
    void beepIsReportedAndAlwaysSoundsTheOneTone();
};

void TestJournal::keepsEntriesInOrderWithTheirTime()
{
    const QDateTime before = QDateTime::currentDateTime();
    Journal::instance()->record(QStringLiteral("A"), QStringLiteral("first()"));
    Journal::instance()->record(QStringLiteral("B"), QStringLiteral("second()"));
    const QVector<Journal::Entry> entries = Journal::instance()->entries();
    QVERIFY(entries.size() >= 2);
    const Journal::Entry& first = entries.at(entries.size() - 2);
    const Journal::Entry& second = entries.last();
    QCOMPARE(first.subsystem, QStringLiteral("A"));
    QCOMPARE(first.operation, QStringLiteral("first()"));
    QCOMPARE(second.subsystem, QStringLiteral("B"));
    QVERIFY(before <= first.time && first.time <= second.time && second.time <= QDateTime::currentDateTime());
}

void TestJournal::keepsTheLatest2000()
{
    for (int i = 0; i < 9001; ++i) {
        Journal::instance()->record(QStringLiteral("Count"), QString::number(i));
        if (i > 2000) {
            const QVector<Journal::Entry> entries =
                i % 500 == 0 ? Journal::instance()->entries() : QVector<Journal::Entry>();
            if (!entries.isEmpty()) {
                QCOMPARE(entries.size(), 2000);
                QCOMPARE(entries.last().operation, QString::number(i));
                QCOMPARE(entries.first().operation, QString::number(i - 1999));
            }
        }
    }
    QCOMPARE(Journal::instance()->entries().size(), 2000);
}

void TestJournal::tellsListenersOfEachEntry()
{
    QStringList heard;
    const QMetaObject::Connection connection =
        connect(Journal::instance(), &Journal::recorded, this, [&heard](const Journal::Entry& entry) {
            heard.append(entry.subsystem + QLatin1Char('.') + entry.operation);
        });
    Journal::instance()->record(QStringLiteral("A"), QStringLiteral("x(1)"));
    Journal::instance()->record(QStringLiteral("A"), QStringLiteral("y()"));
    disconnect(connection);
    QCOMPARE(heard, QStringList({QStringLiteral("A.x(1)"), QStringLiteral("A.y()")}));
}

void TestJournal::aListenerMayCallThePlatform()
{
    const QMetaObject::Connection connection =
        connect(Journal::instance(), &Journal::recorded, this, [](const Journal::Entry& entry) {
            if (entry.subsystem == QLatin1String("Outer"))
                Journal::instance()->record(QStringLiteral("Inner"), QStringLiteral("reaction()"));
        });
    Journal::instance()->record(QStringLiteral("Outer"), QStringLiteral("call()"));
    disconnect(connection);
    const QVector<Journal::Entry> entries = Journal::instance()->entries();
    QCOMPARE(entries.at(entries.size() - 2).subsystem, QStringLiteral("Outer"));
    QCOMPARE(entries.last().subsystem, QStringLiteral("Inner"));
}

void TestJournal::printsOneLineAnEntryWhileAsked()
{
    const QByteArray printed = printedBy([] {
        Journal::instance()->record(QStringLiteral("A"), QStringLiteral("silent()"));
        Journal::instance()->setPrinting(true);
        Journal::instance()->record(QStringLiteral("SettingsFunc"),
                                    cm::journalCall("setValue", QStringLiteral("two\nlines"), 1));
        Journal::instance()->setPrinting(false);
        Journal::instance()->record(QStringLiteral("A"), QStringLiteral("silent again()"));
    });
    QCOMPARE(printed, QByteArray("SettingsFunc.setValue(\"two\\nlines\", 1)\n"));
}

void TestJournal::writesArgumentsAsText()
{
    QCOMPARE(cm::journalCall("f"), QStringLiteral("f()"));
    QCOMPARE(cm::journalCall("setSurroundDelay", 32, 0.1F), QStringLiteral("setSurroundDelay(32, 0.1)"));
    QCOMPARE(cm::journalCall("setValue", QStringLiteral("k"), QVariant(11), QVariant(true), false),
             QStringLiteral("setValue(\"k\", 11, true, false)"));
    QCOMPARE(cm::journalText(QVariant(QStringLiteral("0;0"))), QStringLiteral("\"0;0\""));
    QCOMPARE(cm::journalText(QVariant(2.5)), QStringLiteral("double(2.5)"));
    const QString megabyte(1 << 20, QLatin1Char('x'));
    QVERIFY(cm::journalText(megabyte).size() < 300);
    QVERIFY(cm::journalText(megabyte).endsWith(QLatin1String("...\"")));
}

void TestJournal::beepIsReportedAndAlwaysSoundsTheOneTone()
{
    QSignalSpy beeps(McuManager::instance(), &McuManager::beepTriggered);
    McuManager::instance()->triggerBeep(0);
    QCOMPARE(Journal::instance()->entries().last().subsystem, QStringLiteral("McuManager"));
    QCOMPARE(Journal::instance()->entries().last().operation, QStringLiteral("triggerBeep(0)"));
    QTest::ignoreMessage(QtWarningMsg, "McuManager: no beep tone 7 - sounding 0");
    McuManager::instance()->triggerBeep(7);
    QCOMPARE(Journal::instance()->entries().last().operation, QStringLiteral("triggerBeep(7)"));
    QCOMPARE(beeps.size(), 2);
    QCOMPARE(beeps.at(1).at(0).toInt(), 0);
}

QTEST_GUILESS_MAIN(TestJournal)
#include "tst_journal.moc"
