#include "platform/common/settings/settingsstore.h"
#include "tests/faults/disk.h"
#include "tests/faults/powercutsteps.h"
#include "tests/support/longrun.h"
#include "tests/support/randomwalk.h"

#include <QtTest>

using mem::SettingsStore;

/// Cuts the power after each operation that a unit makes on its settings' files, with what wasn't synced
/// lost, torn and reordered, and starts the unit on what is left: each committed value is there, and nothing
/// is half there.
///
/// AUDIOSETTING_POWERCUTS says how many states of chance are made of each cut, 2 without it; the long run is
///     AUDIOSETTING_POWERCUTS=300 build/ci/tests/tst_powercut
class TestPowerCut : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void committedValuesSurviveEveryCut_data() { RandomWalk::addSeedRow(); }
    void committedValuesSurviveEveryCut();
    void aRepairSurvivesEveryCut_data() { RandomWalk::addSeedRow(); }
    void aRepairSurvivesEveryCut();

private:
    /// Runs the writer on the folder from one step to another; what was there counts as synced.
    void record(int firstStep, int lastStep);
    void cutEverywhere(bool mayBeDamaged, quint32 seed);
    void startOn(const Disk::Image& image, bool mayBeDamaged);
    Disk::Image present() const;

    QTemporaryDir m_folder{QFileInfo(QStringLiteral("/dev/shm")).isWritable()
                               ? QStringLiteral("/dev/shm/powercut-XXXXXX")
                               : QString()};
    QString m_work;  ///< where the unit writes
    QString m_after; ///< where it starts after the cut
    QString m_record;
    Disk::Image m_before;
    QVector<FileOperation> m_operations;
    int m_chances = 0; ///< states of chance for each cut
    int m_lastDone = 0;
    int m_lastBegun = 0;
};

void TestPowerCut::initTestCase()
{
    QVERIFY(m_folder.isValid());
    m_chances = longRun("AUDIOSETTING_POWERCUTS", 2);
    // Thousands of starts, each with its syncs: in memory they take no time.
    qputenv("TMPDIR", QFile::encodeName(m_folder.path()));
    m_after = m_folder.filePath(QStringLiteral("after"));
}

Disk::Image TestPowerCut::present() const
{
    Disk::Image image;
    const QDir work(m_work);
    for (const QString& name : work.entryList(QDir::Files)) {
        QFile file(work.filePath(name));
        if (file.open(QIODevice::ReadOnly))
            image[file.fileName()] = file.readAll();
    }
    return image;
}

void TestPowerCut::record(int firstStep, int lastStep)
{
    m_before = present();
    QFile::remove(m_record);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(FILE_RECORDER));
    environment.insert(QString::fromLatin1(recordedFolderVariable), m_work);
    environment.insert(QString::fromLatin1(recordVariable), m_record);
    QProcess writer;
    writer.setProcessEnvironment(environment);
    writer.setProcessChannelMode(QProcess::ForwardedOutputChannel);
    writer.start(QStringLiteral(POWERCUT_WRITER), {m_work + QStringLiteral("/settings.db"),
                                                   QString::number(firstStep), QString::number(lastStep)});
    QVERIFY(writer.waitForFinished(60000));
    QCOMPARE(writer.exitStatus(), QProcess::NormalExit);
    QCOMPARE(writer.exitCode(), 0);
    m_operations.clear();
    QVERIFY(FileOperation::readAll(m_record, &m_operations));
    // The record is whole: what it amounts to is what lies there.
    Disk disk(m_before);
    for (const FileOperation& operation : std::as_const(m_operations))
        disk.apply(operation);
    QCOMPARE(disk.best(), present());
}

void TestPowerCut::startOn(const Disk::Image& image, bool mayBeDamaged)
{
    QDir(m_after).removeRecursively();
    QVERIFY(QDir().mkpath(m_after));
    const QDir after(m_after);
    for (auto file = image.begin(); file != image.end(); ++file) {
        QFile copy(after.filePath(QFileInfo(file.key()).fileName()));
        QVERIFY(copy.open(QIODevice::WriteOnly) && copy.write(*file) == file->size());
    }
    SettingsStore* const store = SettingsStore::instance();
    const QString copy = after.filePath(QStringLiteral("settings.db.good"));
    if (QFileInfo::exists(copy)) {
        QString reason;
        QVERIFY2(store->openReadOnly(copy, &reason), qPrintable(reason));
        int step = 0;
        while (step < m_lastDone && store->values() != powercut::settingsAfter(step))
            ++step;
        QCOMPARE(store->values(), powercut::settingsAfter(step));
    }
    QString message;
    QCOMPARE(store->open(after.filePath(QStringLiteral("settings.db")), &message),
             SettingsStore::Opened::Durable);
    QVERIFY(store->isDurable());
    QVERIFY2(mayBeDamaged || message.isEmpty(), qPrintable(message));
    auto values = store->values();
    const int size = values.size();
    if (mayBeDamaged) // what was removed after the last good copy may come back from it
        values.remove(QStringLiteral("flag3"));
    if (values != powercut::settingsAfter(m_lastBegun))
        QCOMPARE(values, powercut::settingsAfter(m_lastDone));
    // And the unit goes on from there.
    QVERIFY(store->setValue(QStringLiteral("after"), 1, true) && store->isDurable());
    store->close();
    QCOMPARE(store->open(after.filePath(QStringLiteral("settings.db"))), SettingsStore::Opened::Durable);
    QCOMPARE(store->values().size(), size + 1);
    store->close();
}

void TestPowerCut::cutEverywhere(bool mayBeDamaged, quint32 seed)
{
    QRandomGenerator random(seed);
    Disk disk(m_before);
    QSet<QByteArray> seen;
    const auto tryImage = [&](const Disk::Image& image) {
        QCryptographicHash hash(QCryptographicHash::Md5);
        hash.addData(QByteArray::number(m_lastDone) + ' ' + QByteArray::number(m_lastBegun));
        for (auto file = image.begin(); file != image.end(); ++file)
            hash.addData(file.key().toUtf8() + QByteArray::number(file->size()) + *file);
        if (seen.contains(hash.result()))
            return;
        seen.insert(hash.result());
        startOn(image, mayBeDamaged);
    };
    for (int cut = 0; cut < m_operations.size(); ++cut) {
        const FileOperation& operation = m_operations.at(cut);
        if (operation.kind == FileRecord::Mark) {
            m_lastBegun = static_cast<int>(operation.offset) / 2;
            if (operation.offset == powercut::done(m_lastBegun))
                m_lastDone = m_lastBegun;
        }
        disk.apply(operation);
        QVector<Disk::Image> images = {disk.best(),         disk.worst(),          disk.namesOnly(),
                                       disk.contentsOnly(), disk.latestNameOnly(), disk.tornLatest()};
        for (int i = 0; disk.isUnsettled() && i < m_chances; ++i)
            images.append(disk.anyhow(&random));
        for (const Disk::Image& image : std::as_const(images)) {
            tryImage(image);
            if (QTest::currentTestFailed()) {
                qWarning("after operation %d of %d, between the commits %d and %d", cut, m_operations.size(),
                         m_lastDone, m_lastBegun);
                return;
            }
        }
    }
    QVERIFY(seen.size() > m_operations.size() / 2);
    qInfo("%d operations, %d different states", m_operations.size(), seen.size());
}

void TestPowerCut::committedValuesSurviveEveryCut()
{
    QFETCH(quint32, seed);
    m_work = m_folder.filePath(QStringLiteral("work"));
    m_record = m_folder.filePath(QStringLiteral("record"));
    QVERIFY(QDir().mkpath(m_work));
    m_lastDone = m_lastBegun = 0;
    record(1, powercut::steps);
    if (!QTest::currentTestFailed())
        cutEverywhere(false, seed);
}

void TestPowerCut::aRepairSurvivesEveryCut()
{
    QFETCH(quint32, seed);
    // A store with its log and its last good copy, whose header is lost, and with it all that SQLite would
    // read.
    m_work = m_folder.filePath(QStringLiteral("damaged"));
    m_record = m_folder.filePath(QStringLiteral("record of the repair"));
    QVERIFY(QDir().mkpath(m_work));
    SettingsStore* const store = SettingsStore::instance();
    const QString sound = m_folder.filePath(QStringLiteral("sound.db"));
    const QString path = m_work + QStringLiteral("/settings.db");
    QCOMPARE(store->open(sound), SettingsStore::Opened::Durable);
    // The good copy is older, and the pages lie in another order than in a file that is written at once.
    QMap<QString, QVariant> settings;
    for (int step : {4, 5}) {
        settings = powercut::settingsAfter(step);
        const auto former = store->values();
        for (auto value = former.begin(); value != former.end(); ++value) {
            if (!settings.contains(value.key()))
                store->remove(value.key());
        }
        for (auto value = settings.begin(); value != settings.end(); ++value)
            QVERIFY(store->setValue(value.key(), *value, false));
        store->close();
        QCOMPARE(store->open(sound), SettingsStore::Opened::Durable);
        if (step == 4)
            QVERIFY(store->keepGoodCopy());
    }
    // The log holds rows, as they lie in this file and in no other.
    for (const QVariant& value : {QVariant(-1), settings[powercut::keyOf(60)]})
        QVERIFY(store->setValue(powercut::keyOf(60), value, true));
    for (const char* suffix : {"", "-wal", ".good"})
        QVERIFY(QFile::copy(sound + QLatin1String(suffix), path + QLatin1String(suffix)));
    store->close();
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite) && file.write(QByteArray(100, 'x')) == 100);
    file.close();
    m_lastDone = m_lastBegun = 5;
    record(6, 7);
    if (!QTest::currentTestFailed())
        cutEverywhere(true, seed);
}

QTEST_GUILESS_MAIN(TestPowerCut)
#include "tst_powercut.moc"
