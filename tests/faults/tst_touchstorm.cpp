#include "tests/support/longrun.h"
#include "tests/support/randomwalk.h"
#include "tests/support/touch.h"

#include "headunit/front/hardkey.h"
#include "headunit/front/screen.h"
#include "headunit/front/volumeknob.h"
#include "headunit/shell/shell.h"
#include "headunit/shell/windowhost.h"

#include "common/settingstable.h"
#include "platform/common/settings/settingsstore.h"
#include "platform/common/texts/language.h"
#include "platform/hvaudioservice/audioservicehost.h"

#include <QAbstractButton>
#include <QtTest>

using namespace headunit;
using mem::SettingsStore;

/// The whole unit under a finger that wanders over screen and hard keys at random: launcher, every page,
/// back, home, power. It stays alive, keeps nothing but what its settings may be, and loses none of it.
///
/// AUDIOSETTING_TOUCHES says how many steps the finger makes, 20,000 without it; the long run is
///     AUDIOSETTING_TOUCHES=1000000 ./test -R touchstorm
class TestTouchStorm : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanup() { stop(); }
    void unitOutlastsTheStorm_data() { RandomWalk::addSeedRow(); }
    void unitOutlastsTheStorm();

private:
    void start();
    void stop();
    /// A key or slider that is seen, anywhere on the unit.
    QPoint somethingToTouch(RandomWalk& walk) const;
    /// Empty when each setting is one that the unit keeps, with a value that it may have.
    static QString complaint();

    int m_steps = 0;
    // Each committed touch is synced: in memory that takes no time.
    QTemporaryDir m_folder{QFileInfo(QStringLiteral("/dev/shm")).isWritable()
                               ? QStringLiteral("/dev/shm/touchstorm-XXXXXX")
                               : QString()};
    QScopedPointer<Shell> m_shell;
};

static SettingsStore* store()
{
    return SettingsStore::instance();
}

static void settle()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void TestTouchStorm::initTestCase()
{
    QVERIFY(m_folder.isValid());
    m_steps = longRun("AUDIOSETTING_TOUCHES", 20000);
    // What the applications say of each touch.
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false\ndefault.warning=false"));
}

void TestTouchStorm::start()
{
    QString message;
    QCOMPARE(store()->open(m_folder.filePath(QStringLiteral("settings.db")), &message),
             SettingsStore::Opened::Durable);
    QCOMPARE(message, QString());
    m_shell.reset(new Shell(true));
    QCOMPARE(m_shell->loadApplications(QStringLiteral(APPLICATIONS)), 1);
    m_shell->unit()->show();
    settle();
}

void TestTouchStorm::stop()
{
    m_shell.reset();
    hvaudio::AudioServiceHost::shutdown();
    store()->close();
}

QPoint TestTouchStorm::somethingToTouch(RandomWalk& walk) const
{
    UnitWindow* const unit = m_shell->unit();
    QVector<QWidget*> seen;
    const QList<QWidget*> widgets = unit->findChildren<QWidget*>();
    for (QWidget* widget : widgets) {
        // A hard key stands for as many as the screen has, or the unit would be off and at home all the time.
        const bool hard = qobject_cast<HardKey*>(widget) || qobject_cast<VolumeKnob*>(widget);
        if (widget->isVisible() &&
            (hard ? walk.bounded(50) == 0 : qobject_cast<QAbstractButton*>(widget) != nullptr))
            seen.append(widget);
    }
    const QPoint centre = unit->rect().center();
    return seen.isEmpty() ? centre : touch::middle(unit, seen.at(walk.bounded(seen.size())));
}

QString TestTouchStorm::complaint()
{
    static const QMap<QString, const mem::Setting*> known = [] {
        QMap<QString, const mem::Setting*> rows;
        for (const mem::Setting& row : mem::settings) {
            for (int i = 0; i < row.count; ++i) {
                const QString key = QLatin1String(row.key);
                rows[row.count > 1 ? key.arg(i) : key] = &row;
            }
        }
        return rows;
    }();
    const auto values = store()->values();
    for (auto value = values.begin(); value != values.end(); ++value) {
        const mem::Setting* const row = known.value(value.key());
        if (!row)
            return "no setting has the key " + value.key();
        const QVariant::Type type = row->type == mem::SettingType::Bool  ? QVariant::Bool
                                    : row->type == mem::SettingType::Int ? QVariant::Int
                                                                         : QVariant::String;
        const bool inRange = type == QVariant::String
                                 ? value->toString().size() < 100
                                 : value->toInt() >= row->smallest && value->toInt() <= row->largest;
        if (value->type() != type || !inRange)
            return QStringLiteral("%1 is %2").arg(value.key(), value->toString());
    }
    return QString();
}

void TestTouchStorm::unitOutlastsTheStorm()
{
    QFETCH(quint32, seed);
    start();
    RandomWalk walk(m_shell->unit(), seed);
    walk.setAim([&] { return somethingToTouch(walk); });
    const QStringList languages = cm::Language::codes();
    QSet<int> pages;
    int opened = 0, off = 0;
    for (int step = 0; step < m_steps; ++step) {
        const bool wasInFront = m_shell->front(), wasPowered = m_shell->isPowered();
        walk.step();
        if (step % 10 == 0)
            settle();
        opened += !wasInFront && m_shell->front();
        off += wasPowered && !m_shell->isPowered();
        if (step % 500 == 0) {
            pages.insert(store()->value(QStringLiteral("AudioSetting_Page")).toInt());
            QVERIFY(m_shell->setLanguage(languages.at(walk.bounded(languages.size()))));
            const QString fault = complaint();
            QVERIFY2(fault.isEmpty(), qPrintable(fault));
            QVERIFY(store()->isDurable());
        }
    }
    walk.end();
    settle();
    qInfo("%d steps: opened %d times, switched off %d times, on %d pages", m_steps, opened, off,
          pages.size());
    QVERIFY(opened > 5 && off > 5 && pages.size() > 3 && store()->values().size() > 30);

    // Nothing of it is lost. Power brings the start-up volumes, so it comes before as well.
    m_shell->setPowered(false);
    m_shell->setPowered(true);
    const auto kept = store()->values();
    stop();
    start();
    QCOMPARE(store()->values(), kept);
    QVERIFY(m_shell->openAudioPage(0));
}

QTEST_MAIN(TestTouchStorm)
#include "tst_touchstorm.moc"
