// The unit in a real browser: how long a touch takes to be seen, how many pictures a second come while a band
// of the equalizer is dragged, and what a client that looks costs while nothing changes.
//
//     remote_steps <headunit> [touches]      default: 200
//
// Times run in the page, from the browser's own event, the pointer that goes down, to the first changed
// pixels and to the last; "from outside" has both ways through the browser's control protocol in it, too.
#include "tests/support/browser.h"
#include "tests/support/process.h"

#include <QRegularExpression>

#include <algorithm>
#include <cstdio>

namespace {

constexpr QPoint screen(104, 32); ///< of the unit's window
constexpr QPoint tile = screen + QPoint(512, 328);
constexpr QPoint loudness =
    screen + QPoint(950, 195); ///< a switch of the audio levels, the first page to open
constexpr QPoint equalizerTab = screen + QPoint(263, 556), levelsTab = screen + QPoint(97, 556);
constexpr QPoint band = screen + QPoint(534, 160);
constexpr int bandHeight = 320, stepHeight = 20; ///< of one value and a little more
constexpr int dragMs = 5000, idleMs = 10000;

/// Notes when the pointer goes down and when pixels of the unit's picture have changed.
const char* const notes = R"(
    window.pressed = 0; window.drawn = []; window.waiting = null;
    addEventListener('pointerdown', () => { pressed = performance.now(); drawn = []; }, true);
    for (const name of ['putImageData', 'drawImage']) {
        const plain = CanvasRenderingContext2D.prototype[name];
        CanvasRenderingContext2D.prototype[name] = function (...values) {
            plain.apply(this, values);
            if (this.canvas.id !== 'picture')
                return;
            drawn.push(performance.now());
            if (waiting) waiting();
        };
    })";

/// Fulfilled with the time between the last press and the first pixels that changed after it.
const char* const pressToPicture = "new Promise(done => { const tell = () => done(drawn[0] - pressed);"
                                   " waiting = tell; if (drawn.length && pressed) tell(); })";

struct Times
{
    QVector<double> first, whole, fromOutside;
    void print(const char* name)
    {
        const auto median = [](QVector<double> values) {
            std::sort(values.begin(), values.end());
            return values.at((values.size() - 1) / 2);
        };
        std::printf("  %-20s first %5.1f ms, whole %5.1f ms; from outside, first %5.1f ms\n", name,
                    median(first), median(whole), median(fromOutside));
    }
};

bool touch(Browser::Page* page, const QPoint& pos, Times* times)
{
    QElapsedTimer clock;
    clock.start();
    page->evaluate("pressed = 0; drawn = []");
    clock.restart();
    if (!page->click(pos))
        return false;
    const QJsonValue inPage = page->evaluate(pressToPicture);
    times->fromOutside.append(double(clock.nsecsElapsed()) / 1e6);
    times->first.append(inPage.toDouble());
    QTest::qWait(150); // all that the touch changes is seen by then
    times->whole.append(page->evaluate("drawn[drawn.length - 1] - pressed").toDouble());
    return inPage.isDouble();
}

/// While the pointer moves as fast as the browser passes it on.
void printDrag(Browser::Page* page)
{
    page->mouse("mousePressed", band);
    QTest::qWait(200);
    page->evaluate("drawn = []");
    QElapsedTimer clock;
    clock.start();
    int moves = 0;
    for (; clock.elapsed() < dragMs; ++moves) {
        const int along = (moves * stepHeight) % (2 * bandHeight);
        page->mouse("mouseMoved", band + QPoint(0, qMin(along, 2 * bandHeight - along)));
    }
    const double seconds = double(clock.elapsed()) / 1000;
    // What changes in one paint may come as several pieces, drawn at one time.
    const double pictures =
        page->evaluate("drawn.filter((time, i) => i === 0 || time - drawn[i - 1] > 2).length").toDouble();
    page->mouse("mouseReleased", band);
    std::printf("  %.1f, of %.1f moves\n", pictures / seconds, moves / seconds);
}

struct Cost
{
    long ticks = 0;  ///< of the processor, of 10 ms
    long sleeps = 0; ///< how often a thread went to sleep, so was awake
};

Cost costOf(qint64 process)
{
    Cost cost;
    QFile stat(QString("/proc/%1/stat").arg(process));
    if (stat.open(QIODevice::ReadOnly)) {
        const QList<QByteArray> fields = stat.readAll().split(')').last().simplified().split(' ');
        cost.ticks = fields.at(11).toLong() + fields.at(12).toLong();
    }
    const QDir tasks(QString("/proc/%1/task").arg(process));
    for (const QString& task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile status(tasks.filePath(task + "/status"));
        if (!status.open(QIODevice::ReadOnly))
            continue;
        const QByteArray all = status.readAll();
        cost.sleeps +=
            all.mid(all.indexOf("\nvoluntary_ctxt_switches:") + 25).simplified().split(' ').first().toLong();
    }
    return cost;
}

void printIdle(const char* name, qint64 process)
{
    const Cost before = costOf(process);
    QTest::qWait(idleMs);
    const Cost after = costOf(process);
    std::printf("  %-32s %ld ms of processor, %ld times awake\n", name, (after.ticks - before.ticks) * 10,
                after.sleeps - before.sleeps);
}

bool measure(Browser* browser, Process* unit, const QString& url, int touches)
{
    std::printf("the unit while nothing changes, in %d s:\n", idleMs / 1000);
    printIdle("nobody looks", unit->id());
    Browser::Page* page = browser->open("data:text/html,wait");
    if (!page)
        return false;
    page->call("Page.addScriptToEvaluateOnNewDocument", {{"source", notes}});
    if (!page->go(url) || !page->becomes("document.getElementById('unit').classList.contains('shown')"))
        return false;
    QTest::qWait(500);
    printIdle("one client looks", unit->id());

    if (!page->click(tile) || !unit->says("BaseWindow.onEnter()"))
        return false;
    QTest::qWait(500);
    Times key, tab;
    for (int i = 0; i < touches; ++i) {
        if (!touch(page, loudness, &key))
            return false;
    }
    for (int i = 0; i < touches; ++i) {
        if (!touch(page, i % 2 ? levelsTab : equalizerTab, &tab))
            return false;
    }
    std::printf("a touch, until it is seen, median of %d:\n", touches);
    key.print("a switch");
    tab.print("a page, by its tab");
    page->click(equalizerTab);
    QTest::qWait(500);
    std::printf("pictures a second while a band is dragged:\n");
    printDrag(page);
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s <headunit> [touches]\n", argv[0]);
        return 2;
    }
    QTemporaryDir folder;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(name);
    Process unit(environment);
    unit.start(QString::fromLocal8Bit(argv[1]),
               {"--remote", "--settings", folder.filePath("settings.db"), "--output", "none", "--language",
                "en", "--trace", "--trace-startup"});
    Browser browser;
    if (!unit.says("launcher-painted") || !browser.start()) {
        std::fprintf(stderr, "%s %s\n", unit.errors().constData(), qPrintable(browser.what()));
        return 1;
    }
    const QRegularExpression address("http://\\S+");
    const bool isDone = measure(&browser, &unit, address.match(QString::fromUtf8(unit.output())).captured(),
                                argc > 2 ? QByteArray(argv[2]).toInt() : 200);
    if (!isDone)
        std::fprintf(stderr, "the unit can't be driven: %s\n", qPrintable(browser.what()));
    unit.raise(SIGTERM);
    unit.exitCode();
    return isDone ? 0 : 1;
}
