// What one step of a finger on an equalizer bar costs: handler, repaint and flush of the 1024 x 600 raster
// window, as a ratio to repainting an empty widget of that size on the same machine ("ratio"; below 1 is
// cheaper). The ratio tells the page from the machine; the times alone don't.
#include "M5QX/m5qx_audiosetting_settings_page.h"
#include "tests/support/platform_double/platform_double.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QMouseEvent>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace {

constexpr QSize windowSize(1024, 600);
constexpr int barTop = 141;

/// Paints what is dirty and flushes it, now rather than at the window system's next tick.
void sync(QWidget& window)
{
    QEvent request(QEvent::UpdateRequest);
    QApplication::sendEvent(&window, &request);
}

void show(QWidget& window)
{
    window.resize(windowSize);
    window.show();
    QApplication::processEvents();
}

void repaintAll(QWidget& window)
{
    window.update();
    sync(window);
}

/// Medians on both sides, since a machine that does other things too only ever adds.
class Samples
{
public:
    template <typename Work>
    void measure(const Work& work)
    {
        QElapsedTimer timer;
        timer.start();
        work();
        m_nanoseconds.push_back(timer.nsecsElapsed());
    }

    double median()
    {
        const auto middle = m_nanoseconds.begin() + static_cast<std::ptrdiff_t>(m_nanoseconds.size() / 2);
        std::nth_element(m_nanoseconds.begin(), middle, m_nanoseconds.end());
        return static_cast<double>(*middle);
    }

private:
    std::vector<qint64> m_nanoseconds;
};

double emptyWidgetMedian()
{
    QWidget window;
    show(window);
    Samples samples;
    for (int i = 0; i < 1001; ++i)
        samples.measure([&window] { repaintAll(window); });
    return samples.median();
}

/// Sees to it that a step really paints: a cost of nothing would look like a success.
class PaintCounter : public QObject
{
public:
    qint64 paints = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        paints += event->type() == QEvent::Paint;
        return false;
    }
};

class Page
{
public:
    Page()
    {
        platform_double::reset();
        platform_double::audio().eqType = 6;
        m_page = new audiosetting::m5qx_EQ_settings_page(&m_window);
        show(m_window);
    }

    QWidget& window() { return m_window; }
    QWidget* handle() { return m_page->findChild<QWidget*>(QStringLiteral("icon_band_num_7")); }

    void send(QEvent::Type type, int y)
    {
        const QPoint pos(534, barTop + y);
        const bool move = type == QEvent::MouseMove;
        QMouseEvent event(type, pos, pos, move ? Qt::NoButton : Qt::LeftButton, Qt::LeftButton,
                          Qt::NoModifier);
        QApplication::sendEvent(m_page, &event);
    }

private:
    QWidget m_window;
    audiosetting::m5qx_EQ_settings_page* m_page = nullptr;
};

void emptyWidget(benchmark::State& state)
{
    const double reference = emptyWidgetMedian();
    QWidget window;
    show(window);
    Samples samples;
    for (auto _ : state)
        samples.measure([&window] { repaintAll(window); });
    state.counters["ratio"] = samples.median() / reference;
}

/// The finger moves on by state.range(0) pixels at each event, up and down the bar.
void moveEvent(benchmark::State& state)
{
    const double reference = emptyWidgetMedian();
    Page page;
    PaintCounter counter;
    page.handle()->installEventFilter(&counter);
    page.send(QEvent::MouseButtonPress, 180);
    sync(page.window());
    counter.paints = 0;
    const int step = static_cast<int>(state.range(0));
    int y = 180;
    int direction = step;
    Samples samples;
    for (auto _ : state) {
        if (y + direction < 0 || y + direction > 363)
            direction = -direction;
        y += direction;
        samples.measure([&page, y] {
            page.send(QEvent::MouseMove, y);
            sync(page.window());
        });
        platform_double::takeCalls(platform_double::All);
    }
    state.counters["ratio"] = samples.median() / reference;
    // From 18 pixels on each event is a new value and so a paint.
    if (step >= 18 && counter.paints < static_cast<qint64>(state.iterations()))
        state.SkipWithError("a step did not repaint the handle");
}

/// What it would cost if each step painted the page anew.
void wholePage(benchmark::State& state)
{
    const double reference = emptyWidgetMedian();
    Page page;
    Samples samples;
    for (auto _ : state)
        samples.measure([&page] { repaintAll(page.window()); });
    state.counters["ratio"] = samples.median() / reference;
}

} // namespace

BENCHMARK(emptyWidget)->Unit(benchmark::kMicrosecond);
BENCHMARK(moveEvent)->ArgName("pixels")->Arg(1)->Arg(18)->Arg(90)->Unit(benchmark::kMicrosecond);
BENCHMARK(wholePage)->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
