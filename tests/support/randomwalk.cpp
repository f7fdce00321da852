#include "tests/support/randomwalk.h"

#include "tests/support/touch.h"

#include <QtTest>

namespace {
/// How far off the page a finger strays, in pixels.
constexpr int astray = 60;
constexpr int stepsBetweenPaints = 1000;
constexpr const char* variable = "AUDIOSETTING_SEED";
} // namespace

quint32 RandomWalk::seed()
{
    static const quint32 theSeed = [] {
        if (!qEnvironmentVariableIsSet(variable))
            return QRandomGenerator::global()->generate();
        bool isNumber = false;
        const quint32 given = qEnvironmentVariable(variable).toUInt(&isNumber);
        if (!isNumber)
            qFatal("%s is no number from 0 to 4294967295", variable);
        return given;
    }();
    return theSeed;
}

QByteArray RandomWalk::seedName()
{
    return QByteArray(variable) + '=' + QByteArray::number(seed());
}

void RandomWalk::addSeedColumn()
{
    QTest::addColumn<quint32>("seed");
}

void RandomWalk::addSeedRow()
{
    addSeedColumn();
    QTest::newRow(seedName()) << seed();
}

RandomWalk::RandomWalk(QWidget* page, quint32 seed)
    : m_page(page)
    , m_random(seed)
    , m_ground(page->rect())
{
    const QList<QPushButton*> keys = page->findChildren<QPushButton*>();
    m_keys = QVector<QPointer<QPushButton>>(keys.begin(), keys.end());
    m_page->setUpdatesEnabled(false);
}

RandomWalk::Step RandomWalk::step()
{
    if (m_steps++ % stepsBetweenPaints == 0) {
        m_page->setUpdatesEnabled(true);
        m_page->repaint();
        m_page->setUpdatesEnabled(false);
    }
    if (!m_down) {
        do {
            m_at = place();
        } while (!m_ground.contains(m_at));
        m_holder = touch::press(m_page, m_at);
        m_down = true;
        return Press;
    }
    const int chance = m_random.bounded(8);
    if (chance < 4) {
        if (chance < 2)
            m_at = place();
        else if (chance == 2) // trembles
            m_at += QPoint(m_random.bounded(-9, 10), m_random.bounded(-9, 10));
        touch::move(m_page, m_at);
        return Move;
    }
    if (chance == 4)
        m_at = anywhere();
    else if (chance < 7 && m_holder) // back on what it pressed, or no key would ever be clicked after a move
        m_at = touch::middle(m_page, m_holder);
    touch::release(m_page, m_at);
    m_down = false;
    return Release;
}

void RandomWalk::end()
{
    if (m_down)
        touch::release(m_page, QPoint(-astray, -astray));
    m_down = false;
    m_page->setUpdatesEnabled(true);
}

QPoint RandomWalk::anywhere()
{
    return {m_random.bounded(-astray, m_page->width() + astray),
            m_random.bounded(-astray, m_page->height() + astray)};
}

QPoint RandomWalk::aKey()
{
    for (int tries = 0; tries < 10 && !m_keys.isEmpty(); ++tries) {
        const QPushButton* key = m_keys.at(m_random.bounded(m_keys.size()));
        if (!key || !key->isVisibleTo(m_page))
            continue;
        const QPoint middle = touch::middle(m_page, key);
        if (m_ground.contains(middle))
            return middle;
    }
    return anywhere();
}
