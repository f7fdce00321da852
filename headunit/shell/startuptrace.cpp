#include "headunit/shell/startuptrace.h"

#include <QElapsedTimer>
#include <QEvent>
#include <QPair>
#include <QTimer>
#include <QVector>
#include <QWidget>

#include <chrono>
#include <cstdio>
#include <utility>

namespace headunit {

namespace {

struct Steps
{
    QElapsedTimer clock;
    qint64 wallClockUs = 0;
    QVector<QPair<qint64, const char*>> early; ///< ns since main, step; before it is known whether to print
    bool known = false, printing = false;
};

Steps& steps()
{
    static Steps s;
    return s;
}

void print(const QPair<qint64, const char*>& step)
{
    std::printf("startup %.1f %s\n", double(step.first) / 1e6, step.second);
    std::fflush(stdout);
}

/// Waits for one paint of one widget.
class PaintWatch : public QObject
{
public:
    PaintWatch(QWidget* widget, const char* step)
        : QObject(widget)
        , m_step(step)
    {
        widget->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            // The children paint after this event; the loop's next turn has the whole frame behind it.
            QTimer::singleShot(0, this, [this] {
                StartupTrace::reached(m_step);
                deleteLater();
            });
        }
        return false;
    }

private:
    const char* m_step;
};

} // namespace

void StartupTrace::begin()
{
    using namespace std::chrono;
    steps().clock.start();
    steps().wallClockUs = duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
    reached("main");
}

void StartupTrace::setPrinting(bool on)
{
    steps().known = true;
    steps().printing = on;
    const auto early = std::exchange(steps().early, {});
    if (!on)
        return;
    std::printf("startup-main-at-us %lld\n", static_cast<long long>(steps().wallClockUs));
    for (const auto& step : early)
        print(step);
}

void StartupTrace::reached(const char* step)
{
    if (!steps().clock.isValid() || (steps().known && !steps().printing))
        return;
    const QPair<qint64, const char*> now{steps().clock.nsecsElapsed(), step};
    if (steps().printing)
        print(now);
    else
        steps().early.append(now);
}

void StartupTrace::reachedWhenPainted(QWidget* widget, const char* step)
{
    if (steps().printing)
        new PaintWatch(widget, step);
}

} // namespace headunit
