// Ten thousand changes of page by the tab keys, as a unit sees them in its life: nothing may pile up.

#include "soundunit.h"

#include "common/settingsstore.h"
#include "hvaudioservice/audioservicehost.h"

#include <QFile>
#include <QPixmapCache>
#include <QtTest>

#include <unistd.h>

/// Qt's table of calls for debuggers, part of its binary interface since 5.5: entry 3 is called for every
/// QObject that is made, entry 4 for every one that goes.
extern Q_CORE_EXPORT quintptr qtHookData[];

namespace {

constexpr int switches = 10000;
/// What the process may grow by in that time: room for the allocator's habits. A page that stayed would cost
/// a hundred times as much, and even one forgotten picture of a page area two thousand times.
constexpr qint64 growthAllowed = 4 << 20;
/// Allocators fill their arenas first, and Qt its caches.
constexpr int rehearsals = 1200;

std::atomic<int> objects{0};
void objectAdded(QObject*)
{
    ++objects;
}
void objectRemoved(QObject*)
{
    --objects;
}

constexpr const char* tabs[] = {"key_EQ_setting",     "key_balance_setting", "key_crossover_setting",
                                "key_time_alignment", "key_eq_preset",       "key_audio_level"};
constexpr int tabCount = sizeof(tabs) / sizeof(tabs[0]);

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
    void pagesInTurnLeaveNothingBehind();
    void volumePageOpenedAndLeftLeavesNothingBehind();
    void countSeesAnObjectThatStays();

private:
    void switchPages(const std::vector<const char*>& keys);
};

void TestPages10000::initTestCase()
{
    SoundUnit::hushLog();
    // Version of the table, and its length.
    QVERIFY(qtHookData[0] >= 1 && qtHookData[1] >= 6);
    qtHookData[3] = reinterpret_cast<quintptr>(&objectAdded);
    qtHookData[4] = reinterpret_cast<quintptr>(&objectRemoved);
}

void TestPages10000::switchPages(const std::vector<const char*>& keys)
{
    SoundUnit unit;
    Sample before;
    for (int i = 0; i < rehearsals + switches; ++i) {
        if (i == rehearsals)
            before = Sample();
        QVERIFY2(unit.touch({keys[std::size_t(i) % keys.size()]}), qPrintable(unit.error()));
    }
    const Sample after;
    QCOMPARE(after.objects, before.objects);
    QCOMPARE(after.widgets, before.widgets);
    const qint64 growth = after.memory - before.memory;
    qInstallMessageHandler(nullptr);
    qInfo("%d objects, %d widgets, %lld KiB grown to %lld KiB", after.objects, after.widgets,
          static_cast<long long>(before.memory >> 10), static_cast<long long>(after.memory >> 10));
    SoundUnit::hushLog();
#if defined(__SANITIZE_ADDRESS__)
    return; // it keeps freed memory on purpose, and looks for leaks itself
#endif
    QVERIFY2(before.memory > 0 && growth <= growthAllowed, qPrintable(QString::number(growth)));
}

void TestPages10000::pagesInTurnLeaveNothingBehind()
{
    switchPages({tabs, tabs + tabCount});
}

void TestPages10000::volumePageOpenedAndLeftLeavesNothingBehind()
{
    // Each opening counts, so the way back doubles the number.
    switchPages({"key_audio_level", "key_balance_setting"});
    switchPages({"key_audio_level", "key_eq_preset"});
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
