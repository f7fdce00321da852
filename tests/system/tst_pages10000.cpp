// The volume page opened and left ten thousand times, and as many changes to other pages, by the tab keys:
// nothing may pile up.

#include "platform/common/widgets/unitstyle.h"
#include "tests/system/soundunit.h"

#include <QPixmapCache>
#include <QtTest>

#include <thread>
#include <unistd.h>

/// Qt's table of calls for debuggers, part of its binary interface since 5.5: entry 3 is called for every
/// QObject that is made, entry 4 for every one that goes.
extern Q_CORE_EXPORT quintptr qtHookData[];

namespace {

#if defined(__SANITIZE_ADDRESS__)
// The sanitizer looks for leaks itself, keeps freed memory on purpose and takes several times as long.
constexpr int rounds = 200;
constexpr bool memoryTells = false;
#else
constexpr int rounds = 2000;
constexpr bool memoryTells = true;
#endif
/// One round in so many is painted; the others make, lay out, show and leave the same pages.
constexpr int paintedEvery = 20;
/// First the allocator fills its arenas and Qt its caches.
constexpr int rehearsals = rounds / 10;
/// What the process may grow by in all rounds: 400 bytes for each change of page. The caches go on filling
/// for a while, to about half of it; a volume page that stayed would cost a hundred times as much.
constexpr qint64 growthAllowed = 8 << 20;

/// Objects of the pages' thread. Qt has worker threads of its own, which come and go with the clock.
int objects = 0;
const std::thread::id pagesThread = std::this_thread::get_id();
void objectAdded(QObject*)
{
    if (std::this_thread::get_id() == pagesThread)
        ++objects;
}
void objectRemoved(QObject*)
{
    if (std::this_thread::get_id() == pagesThread)
        --objects;
}

/// A round: the volume page, the one with the most in it, is opened from each other page and left for each.
constexpr const char* tabs[] = {"key_audio_level",   "key_EQ_setting",        "key_audio_level",
                                "key_eq_preset",     "key_audio_level",       "key_balance_setting",
                                "key_audio_level",   "key_crossover_setting", "key_audio_level",
                                "key_time_alignment"};

/// Resident memory in bytes.
qint64 residentMemory()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    return file.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE);
}

struct Sample
{
    int objects = ::objects;
    int widgets = QApplication::allWidgets().size();
    qint64 memory = residentMemory();
};

} // namespace

class TestPages10000 : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void changesOfPageLeaveNothingBehind();
    void countSeesAnObjectThatStays();
};

void TestPages10000::initTestCase()
{
    SoundUnit::hushLog();
    cm::UnitStyle::install(*qApp); // as in the unit: each picture is unpacked once for all pages
    // All pictures fit in, or each page would unpack its own again.
    QPixmapCache::setCacheLimit(100 * 1024);
    // Version of the table, and its length.
    QVERIFY(qtHookData[0] >= 1 && qtHookData[1] >= 6);
    qtHookData[3] = reinterpret_cast<quintptr>(&objectAdded);
    qtHookData[4] = reinterpret_cast<quintptr>(&objectRemoved);
}

void TestPages10000::changesOfPageLeaveNothingBehind()
{
    SoundUnit unit;
    Sample before;
    for (int round = 0; round < rehearsals + rounds; ++round) {
        if (round == rehearsals)
            before = Sample();
        for (QWidget* window : QApplication::topLevelWidgets())
            window->setUpdatesEnabled(round % paintedEvery == 0);
        for (const char* tab : tabs)
            QVERIFY2(unit.touch({tab}), qPrintable(unit.error()));
    }
    const Sample after;
    QCOMPARE(after.objects, before.objects);
    QCOMPARE(after.widgets, before.widgets);
    if (!memoryTells)
        return;
    QVERIFY(before.memory > 0);
    QVERIFY2(after.memory - before.memory <= growthAllowed,
             qPrintable(QStringLiteral("%1 -> %2 bytes").arg(before.memory).arg(after.memory)));
}

void TestPages10000::countSeesAnObjectThatStays()
{
    const Sample before;
    {
        const QWidget stays;
        QCOMPARE(Sample().objects, before.objects + 1);
    }
    QCOMPARE(Sample().objects, before.objects);
}

QTEST_MAIN(TestPages10000)
#include "tst_pages10000.moc"
