#include "M5QX/m5qx_mainwidget.h"
#include "tests/M5QX/formcheck.h"
#include "tests/M5QX/hub/hubtouches_curves.h"
#include "tests/M5QX/hub/hubtouches_levels.h"
#include "tests/support/platform_double/platform_double.h"
#include "tests/support/randomwalk.h"
#include "tests/support/touch.h"

#include <QtTest>

#include <algorithm>

using namespace platform_double;
using hubtouches::Row;

Q_DECLARE_METATYPE(hubtouches::Row)

namespace {

struct Tab
{
    const char* name;
    int x; ///< of the key on the screen; y is 520..591, and each is 150 wide
};

// clang-format off
const Tab tabs[] = {
    {"EQ settings",    188},
    {"audio levels",    22},
    {"crossover",      520},
    {"time alignment", 852},
    {"EQ preset",      354},
    {"volumes",        686},
};
// clang-format on
static_assert(std::size(tabs) == hubtouches::PageCount, "a tab a page");

constexpr int tabTop = 520;
constexpr int tabBottom = 591;
constexpr int tabWidth = 150;
constexpr int pageHeight = 510;
constexpr int screenWidth = 1024;

const QString pageKey = QStringLiteral("AudioSetting_Page");

/// Everything that a touch can cause but texts.
constexpr int compared = Actions | Read | Widget;

/// What each operation may be told, whoever touches what: one group a number.
struct Limits
{
    const char* operation;
    QVector<QPair<int, int>> ranges;
};

// clang-format off
const Limits limits[] = {
    {"doBeep",              {{0, 0}}},
    {"setEQType",           {{0, 8}}},
    {"setCustomEq1",        {{-10, 10}, {0, 12}}},
    {"setCustomEq2",        {{-10, 10}, {0, 12}}},
    {"setCustomLoudness",   {}},
    {"setBalanceFader",     {{-15, 15}, {-15, 15}}},
    {"setHPFFilter",        {{0, 8 | 128}, {0, 12}, {1, 8}, {0, 3}}},
    {"setSubFilter",        {{0, 9}, {0, 12}, {0, 3}}},
    {"setSurroundDelay",    {{1, 32}, {0, 10}}},
    {"setSourceOffsetGain", {{0, 19}, {0, 15}}},
};

/// The values that may be stored, by the beginning of the key.
struct StoredLimits { const char* key; int least; int most; };
const StoredLimits storedLimits[] = {
    {"subwooferLevel",               0, 12 | 128},
    {"subwooferFreq",                1, 9},
    {"subwooferslope",               0, 3},
    {"settings_cross_filter",        0, 2},
    {"Audio_Time_Alignment_Num",     0, 100},
    {"Audio_Time_Alignment_Preset",  0, 2},
    {"Setup_Main_Volume",            0, 50},
    {"Setup_Volume_Type_",           0, 50},
    {"Setup_Input_Gain_Type_",       0, 15},
};
// clang-format on

/// Empty when the call is one that a page may make, with every value in its range.
QString complaint(const QString& call)
{
    static const QRegularExpression service(QStringLiteral("^AudioService\\.(\\w+)\\((.*)\\)$"));
    static const QRegularExpression write(QStringLiteral(
        "^Settings(?:Func|Exe)\\.setValue\\(\"([^\"]+)\", [^,]+, ([^,]+), (?:true|false)\\)$"));
    if (const auto match = service.match(call); match.hasMatch()) {
        for (const Limits& row : limits) {
            if (match.captured(1) != QLatin1String(row.operation))
                continue;
            const QStringList arguments = match.captured(2).split(QStringLiteral(", "));
            for (int i = 0; i < row.ranges.size(); ++i) {
                bool isNumber = false;
                const double value = arguments.value(i).toDouble(&isNumber);
                if (!isNumber || value < row.ranges[i].first || value > row.ranges[i].second)
                    return "out of range: " + call;
            }
            return QString();
        }
        return "no such operation: " + call;
    }
    if (const auto match = write.match(call); match.hasMatch()) {
        for (const StoredLimits& row : storedLimits) {
            if (!match.captured(1).startsWith(QLatin1String(row.key)))
                continue;
            const int value = match.captured(2).toInt();
            return value >= row.least && value <= row.most ? QString() : "out of range: " + call;
        }
        return QString(); // a switch or a map
    }
    return QString();
}

bool isBeep(const QString& call)
{
    return call == keyBeep || call == mcuBeep;
}

} // namespace

/// The whole screen under a finger: what the pages ask of the platform, touched where the driver touches.
class TestTouchesThroughHub : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init() { reset(); }
    void cleanup();
    void tabKeyOpensItsPageFromEveryPage_data();
    void tabKeyOpensItsPageFromEveryPage();
    void besideTheTabKeysNothingHappens_data() { formcheck::addRows(tabs, &Tab::name, "page"); }
    void besideTheTabKeysNothingHappens();
    void touchMakesTheseCallsAndNoOther_data();
    void touchMakesTheseCallsAndNoOther();
    void randomTouchesKeepEveryInvariant_data();
    void randomTouchesKeepEveryInvariant();

private:
    void checkServices(int page, const QStringList& calls, bool band);
    void show(int page);
    void touchTab(int page) { play(hubtouches::touchAt(tabs[page].x + 75, 556)); }
    void play(const QString& finger);
    QScopedPointer<audiosetting::m5qx_mainwidget> m_hub;
};

void TestTouchesThroughHub::initTestCase()
{
    // The hub's requests for connections that cannot be made are told by its own test; a hub a row would only
    // drown the report in them.
    QLoggingCategory::setFilterRules(QStringLiteral("default.warning=false"));
}

void TestTouchesThroughHub::cleanup()
{
    m_hub.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    // Only this shortens Qt's list of posted events, which every widget that goes is looked for in.
    QCoreApplication::sendPostedEvents();
    takeBackRequests();
    takeLog();
}

/// The hub stands with another page, then the driver touches this one's tab key.
void TestTouchesThroughHub::show(int page)
{
    setStored(pageKey, (page + 1) % hubtouches::PageCount);
    m_hub.reset(new audiosetting::m5qx_mainwidget(nullptr));
    m_hub->show();
    QCOMPARE(m_hub->size(), QSize(screenWidth, 600));
    touchTab(page);
    QCOMPARE(stored(pageKey), QVariant(page));
    // A page that was left is gone before the next touch, as it is in a running unit.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    takeCalls(All);
    takeBackRequests();
}

void TestTouchesThroughHub::play(const QString& finger)
{
    static const QRegularExpression step(QStringLiteral("^([TPMR])(-?\\d+),(-?\\d+)$"));
    const QStringList steps = finger.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString& text : steps) {
        const auto match = step.match(text);
        QVERIFY2(match.hasMatch(), qPrintable(text));
        const QPoint at(match.captured(2).toInt(), match.captured(3).toInt());
        switch (match.captured(1).at(0).toLatin1()) {
        case 'T':
            touch::click(m_hub.data(), at);
            break;
        case 'P':
            touch::press(m_hub.data(), at);
            break;
        case 'M':
            touch::move(m_hub.data(), at);
            break;
        case 'R':
            touch::release(m_hub.data(), at);
            break;
        }
    }
}

void TestTouchesThroughHub::tabKeyOpensItsPageFromEveryPage_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    for (int from = 0; from < hubtouches::PageCount; ++from) {
        for (int to = 0; to < hubtouches::PageCount; ++to)
            QTest::addRow("%s to %s", tabs[from].name, tabs[to].name) << from << to;
    }
}

void TestTouchesThroughHub::tabKeyOpensItsPageFromEveryPage()
{
    QFETCH(int, from);
    QFETCH(int, to);
    const QStringList opened{keyBeep, hubtouches::writeOf("Exe", pageKey, 1, to)};
    for (const QPoint& corner : {QPoint(tabs[to].x, tabTop), QPoint(tabs[to].x + tabWidth - 1, tabBottom)}) {
        show(from);
        touch::click(m_hub.data(), corner);
        QCOMPARE(takeCalls(), opened);
        QCOMPARE(takeBackRequests(), 0);
    }
    // Its own key again and a finger that slides off another key: one showing, and none.
    touchTab(to);
    QCOMPARE(takeCalls(), opened);
    const int other = tabs[(to + 1) % hubtouches::PageCount].x;
    play(QStringLiteral("P%1,556 M%1,300 R%1,300").arg(other + 75));
    QCOMPARE(takeCalls(), QStringList());
}

void TestTouchesThroughHub::besideTheTabKeysNothingHappens()
{
    QFETCH(int, page);
    show(page);
    for (const Tab& tab : tabs) {
        for (const QPoint& at :
             {QPoint(tab.x - 1, 556), QPoint(tab.x + tabWidth, 556), QPoint(tab.x + 75, tabTop - 1),
              QPoint(tab.x + 75, tabBottom + 1), QPoint(tab.x + 75, pageHeight)}) {
            touch::click(m_hub.data(), at);
            const QStringList calls = takeCalls(compared);
            QVERIFY2(calls.isEmpty(),
                     qPrintable(QStringLiteral("%1,%2: ").arg(at.x()).arg(at.y()) + calls.join('\n')));
        }
    }
}

void TestTouchesThroughHub::touchMakesTheseCallsAndNoOther_data()
{
    using namespace hubtouches;
    QTest::addColumn<Row>("row");
    for (const auto& rows :
         {equalizerRows(), levelsRows(), crossoverRows(), alignmentRows(), presetRows(), volumesRows()}) {
        for (const Row& row : rows)
            QTest::addRow("%s: %s", tabs[row.page].name, qPrintable(row.name)) << row;
    }
}

void TestTouchesThroughHub::touchMakesTheseCallsAndNoOther()
{
    QFETCH(Row, row);
    for (const auto& given : std::as_const(row.given)) {
        if (given.name == hubtouches::currentType)
            audio().eqType = given.value.toInt();
        else if (given.name == hubtouches::currentBalance)
            audio().balance = given.value.toInt();
        else if (given.name == hubtouches::currentFader)
            audio().fader = given.value.toInt();
        else
            setStored(given.name, given.value);
    }
    show(row.page);
    play(row.before);
    takeCalls(All);

    play(row.finger);
    QStringList calls = takeCalls(compared);
    if (!row.freeReads.isEmpty()) {
        const QRegularExpression free(row.freeReads);
        calls.erase(std::remove_if(calls.begin(), calls.end(),
                                   [&free](const QString& call) { return free.match(call).hasMatch(); }),
                    calls.end());
    }
    for (int requests = takeBackRequests(); requests > 0; --requests)
        calls << hubtouches::back;
    QVERIFY2(calls == row.calls, qPrintable(QStringLiteral("calls:\n  %1\nexpected:\n  %2")
                                                .arg(calls.join(QStringLiteral("\n  ")),
                                                     row.calls.join(QStringLiteral("\n  ")))));
    QCOMPARE(stored(pageKey), QVariant(row.page));
}

void TestTouchesThroughHub::randomTouchesKeepEveryInvariant_data()
{
    QTest::addColumn<int>("page");
    RandomWalk::addSeedColumn();
    for (int page = 0; page < hubtouches::PageCount; ++page)
        QTest::newRow(tabs[page].name + (' ' + RandomWalk::seedName())) << page << RandomWalk::seed();
}

/// How many of these calls of a lifted finger reach the audio service. band: it was pressed on a band.
void TestTouchesThroughHub::checkServices(int page, const QStringList& calls, bool band)
{
    const int beeps = int(std::count_if(calls.cbegin(), calls.cend(), isBeep));
    const int services = calls.filter(QStringLiteral("AudioService.set")).size();
    switch (page) {
    case hubtouches::Equalizer:
        QCOMPARE(calls.filter(QStringLiteral("AudioService.setCustomEq")).size(), band ? 1 : 0);
        QCOMPARE(services, band || beeps ? 1 : 0);
        break;
    case hubtouches::Presets:
        QCOMPARE(calls.size(), services);
        Q_FALLTHROUGH();
    case hubtouches::Levels:
    case hubtouches::Volumes:
        QVERIFY2(services <= 1, qPrintable(calls.join('\n')));
        break;
    case hubtouches::Crossover: // a pair of channels, or the subwoofer
        QCOMPARE(services, beeps == 0 ? 0 : calls.filter(QStringLiteral("setHPFFilter")).isEmpty() ? 1 : 2);
        break;
    case hubtouches::Alignment: // one channel, or the five of a preset
        QVERIFY2(services == 0 || services == 1 || services == 5, qPrintable(calls.join('\n')));
        break;
    }
}

void TestTouchesThroughHub::randomTouchesKeepEveryInvariant()
{
    QFETCH(int, page);
    QFETCH(quint32, seed);
    show(page);
    const QRegularExpression change(QStringLiteral("\\.set(?!upPrevPage|upNextPage)"));

    RandomWalk walk(m_hub.data(), seed);
    walk.setGround(QRect(0, 0, screenWidth, pageHeight)); // the tab keys would open another page
    int effective = 0;
    for (int touches = 0; touches < 20000; ++touches) {
        if (page == hubtouches::Equalizer && walk.bounded(50) == 0) {
            audio().eqType = walk.bounded(9);
            emitEQType(audio().eqType);
        }
        walk.step();
        // A press beeps or prepares the type that is to be edited; values come with the lifting.
        const QStringList pressed = takeCalls();
        const int chosen = pressed.filter(QStringLiteral("AudioService.setEQType(")).size();
        QVERIFY2(pressed.size() <= 2 && pressed.filter(change).size() == chosen,
                 qPrintable(pressed.join('\n')));
        const bool band = chosen > 0;
        while (walk.step() == RandomWalk::Move) {
            const QStringList dragged = takeCalls();
            QVERIFY2(dragged.isEmpty(), qPrintable(dragged.join('\n')));
        }
        const QStringList calls = takeCalls();
        for (const QString& call : pressed + calls) {
            const QString reason = complaint(call);
            QVERIFY2(reason.isEmpty(), qPrintable(reason));
        }
        const int beeps = int(std::count_if(calls.cbegin(), calls.cend(), isBeep));
        QVERIFY2(beeps <= 1 && (beeps == 0 || isBeep(calls.first())), qPrintable(calls.join('\n')));
        QCOMPARE(calls.filter(pageKey), QStringList());
        checkServices(page, calls, band);
        if (QTest::currentTestFailed())
            return;
        effective += !calls.filter(change).isEmpty();
        if (touches % 500 == 0) {
            QCoreApplication::processEvents();
            takeBackRequests();
            takeLog();
        }
    }
    qInfo("%d of them changed something", effective);
    QVERIFY(effective > 100);
    QCOMPARE(stored(pageKey), QVariant(page));
}

QTEST_MAIN(TestTouchesThroughHub)
#include "tst_touchesthroughhub.moc"
