#pragma once

#include <QPointer>
#include <QPushButton>
#include <QRandomGenerator>
#include <QRect>
#include <QVector>

#include <functional>

/// A finger that wanders over a page at random: it goes down, moves and comes up, often where there is
/// something to press.
///
/// Nine tenths of the time of a touch would go into painting what it changed; the page is painted now and
/// then.
///
/// The numbers of a process begin at the seed that the environment variable AUDIOSETTING_SEED names, or at
/// another one in each run. A test function takes its seed from its data rows, whose names hold it; so every
/// failure says how it is repeated: FAIL!  : TestPage::randomTouches(AUDIOSETTING_SEED=4711) ...
class RandomWalk
{
public:
    enum Step { Press, Move, Release };

    /// For a test's _data() function: a column "seed", and a row when it is the only column.
    static void addSeedColumn();
    static void addSeedRow();
    static quint32 seed();
    /// The name of a row, or its end: "AUDIOSETTING_SEED=4711".
    static QByteArray seedName();

    /// On a page that is shown and lives longer.
    RandomWalk(QWidget* page, quint32 seed);

    /// The finger goes down in this part of the page only; at first the whole page.
    void setGround(const QRect& ground) { m_ground = ground; }
    /// Where it goes when it aims; at first the middle of one of the push buttons that are seen on the
    /// ground.
    void setAim(std::function<QPoint()> aim) { m_aim = std::move(aim); }

    /// Does the next step and says what it was.
    Step step();
    /// Where it was, in the page's coordinates; off the page now and then.
    QPoint at() const { return m_at; }
    /// The widget that took the last press, while it lives.
    QWidget* holder() const { return m_holder; }
    /// For what else a test leaves to chance.
    int bounded(int end) { return m_random.bounded(end); }
    /// Lifts the finger off the page if it is down; the page paints itself again.
    void end();

private:
    QPoint anywhere();
    QPoint aKey();
    QPoint place() { return m_random.bounded(2) ? anywhere() : m_aim(); }

    QWidget* const m_page;
    QVector<QPointer<QPushButton>> m_keys; ///< all that the page had at first
    QRandomGenerator m_random;
    QRect m_ground;
    std::function<QPoint()> m_aim = [this] { return aKey(); };
    QPointer<QWidget> m_holder;
    QPoint m_at;
    bool m_down = false;
    int m_steps = 0;
};
