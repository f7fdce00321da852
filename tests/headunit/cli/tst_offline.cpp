#include "tests/support/askedsound.h"
#include "tests/support/process.h"

#include "headunit/cli/offline.h"
#include "headunit/inspector/responseplot.h"
#include "headunit/sound/storedsettings.h"

#include "platform/common/settings/settingsstore.h"

#include <QImage>
#include <QtTest>

#include <cmath>
#include <cstring>

#include <sys/stat.h>

using namespace headunit;
using hvaudio::dsp::Settings;

/// --render and --plot.
class TestOffline : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void storedSettingsAreThoseOfTheFile();
    void fileOfTheSettingsIsNeverChanged();
    void settingsThatCantBeReadAreRefused_data();
    void settingsThatCantBeReadAreRefused();
    void renderingFollowsTheStoredSettings();
    void programTellsSuccessAndFailureByItsExitCode();
    void remarkIsToldWithTheResult();
    void pipeAsInputIsRefusedAtOnce();
    void signalEndsARenderingAndLeavesNothing_data();
    void signalEndsARenderingAndLeavesNothing();
    void hangupThatIsIgnoredStaysIgnored();
    void renderingWithoutItsLibraryIsRefused();
    void plotReplacesNothingButAFile();
    void plotWithoutItsLibraryIsRefused();
    void plotShowsALineForEachSpeakerAndDotsOverIt();

private:
    /// A settings file with these values.
    QString store(const QMap<QString, QVariant>& values);
    /// A 16 bit mono WAV: 0.1 s of a tone, and silence up to this many seconds.
    QString sound(quint32 rate = 48000, quint32 seconds = 0) const;
    QStringList entries() const
    {
        return QDir(m_folder->path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    }
    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestOffline::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_folder->path()));
}

QString TestOffline::store(const QMap<QString, QVariant>& values)
{
    const QString path = m_folder->filePath("settings.db");
    auto* const settings = mem::SettingsStore::instance();
    settings->open(path);
    for (auto i = values.begin(); i != values.end(); ++i)
        settings->setValue(i.key(), i.value(), true);
    settings->close();
    return path;
}

QString TestOffline::sound(quint32 rate, quint32 seconds) const
{
    const QString path = m_folder->filePath("in.wav");
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return {};
    QDataStream out(&file);
    out.setByteOrder(QDataStream::LittleEndian);
    const quint32 bytes = qMax(2 * 4800u, 2 * rate * seconds);
    out.writeRawData("RIFF", 4);
    out << quint32(36 + bytes);
    out.writeRawData("WAVEfmt ", 8);
    out << quint32(16) << quint16(1) << quint16(1) << rate << 2 * rate << quint16(2) << quint16(16);
    out.writeRawData("data", 4);
    out << bytes;
    for (int n = 0; n < 4800; ++n)
        out << qint16(n % 48 < 24 ? 3000 : -3000);
    if (!file.resize(44 + bytes))
        return {};
    return path;
}

void TestOffline::storedSettingsAreThoseOfTheFile()
{
    const QString path = store({{"Setup_Main_Volume", 37}, {"customloudnes", true}});
    Settings settings;
    QString error;
    QVERIFY2(readStoredSettings(path, &settings, &error), qPrintable(error));
    QCOMPARE(settings.mainDb, dbOf(37));
    QVERIFY(settings.loudness);
    QVERIFY(settings.power);
    // Without a file they are the factory's.
    Settings factory;
    QVERIFY(QFile::remove(path));
    QVERIFY2(readStoredSettings(QString(), &factory, &error), qPrintable(error));
    QVERIFY(!factory.loudness);
}

void TestOffline::fileOfTheSettingsIsNeverChanged()
{
    const QString path = store({{"Setup_Main_Volume", 37}});
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray before = file.readAll();
    const QStringList entries = QDir(m_folder->path()).entryList(QDir::Files);
    Settings settings;
    QString error;
    QVERIFY2(readStoredSettings(path, &settings, &error), qPrintable(error));
    QVERIFY(file.seek(0));
    QCOMPARE(file.readAll(), before);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), entries);
}

void TestOffline::settingsThatCantBeReadAreRefused_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("says");
    QTest::newRow("not there") << "missing.db"
                               << "can't read the settings";
    QTest::newRow("a sound") << "in.wav"
                             << "no settings file";
    QTest::newRow("a folder") << "."
                              << "can't read the settings";
    QTest::newRow("a pipe") << "pipe"
                            << "no settings file";
}

void TestOffline::settingsThatCantBeReadAreRefused()
{
    QFETCH(QString, name);
    QFETCH(QString, says);
    QVERIFY(!sound().isEmpty());
    QCOMPARE(mkfifo(QFile::encodeName(m_folder->filePath("pipe")).constData(), 0600), 0);
    Settings settings;
    QString error;
    QVERIFY(!readStoredSettings(m_folder->filePath(name), &settings, &error));
    QVERIFY2(error.contains(says) && error.contains(name), qPrintable(error));
}

void TestOffline::renderingFollowsTheStoredSettings()
{
    const auto loudest = [this](int volume) {
        Options options;
        options.settings = store({{"Setup_Main_Volume", volume}});
        options.render = sound();
        options.renderTo = m_folder->filePath("out.wav");
        QString message;
        if (!renderFile(options, &message))
            return -1.0f;
        QFile file(options.renderTo);
        if (!file.open(QIODevice::ReadOnly))
            return -1.0f;
        const QByteArray all = file.readAll();
        const int start = all.indexOf("data") + 8;
        float largest = 0;
        for (int at = start; at + 4 <= all.size(); at += 4) {
            float x = 0;
            std::memcpy(&x, all.constData() + at, 4);
            largest = qMax(largest, qAbs(x));
        }
        return largest;
    };
    const float loud = loudest(40), soft = loudest(20);
    QVERIFY(soft > 0);
    QVERIFY2(qAbs(20 * std::log10(double(loud / soft)) - 24) < 1,
             qPrintable(QString("%1 %2").arg(loud).arg(soft)));
}

void TestOffline::programTellsSuccessAndFailureByItsExitCode()
{
    const auto run = [](const QStringList& arguments, QByteArray* out, QByteArray* err) {
        QProcess process;
        process.start(QStringLiteral(HEADUNIT), arguments);
        if (!process.waitForFinished(30000))
            return -1;
        *out = process.readAllStandardOutput();
        *err = process.readAllStandardError();
        return process.exitCode();
    };
    QByteArray out, err;
    const QString to = m_folder->filePath("out.wav");
    QVERIFY2(run({"--render", sound(), to}, &out, &err) == 0, err);
    QVERIFY2(out.contains("FL FR LFE BL BR"), out);
    QVERIFY(QFile::exists(to));
    QCOMPARE(run({"--render", m_folder->filePath("missing.flac"), to}, &out, &err), 5);
    QVERIFY2(err.contains("missing.flac"), err);
    QCOMPARE(run({"--render", sound(), to, "--settings", m_folder->filePath("missing.db")}, &out, &err), 5);
    QCOMPARE(run({"--render", sound()}, &out, &err), 2);
    QVERIFY2(run({"--plot", m_folder->filePath("p.png")}, &out, &err) == 0, err);
    QCOMPARE(QImage(m_folder->filePath("p.png")).size(), QSize(1280, 720));
    QCOMPARE(run({"--plot", "/no/such/folder/p.png"}, &out, &err), 5);
}

void TestOffline::remarkIsToldWithTheResult()
{
    // Full scale is more than a speaker may get.
    QFile file(sound());
    QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(44));
    for (int n = 0; n < 4800; ++n)
        QCOMPARE(file.write(n % 48 < 24 ? "\xff\x7f" : "\x01\x80", 2), qint64(2));
    file.close();
    Options options;
    options.settings = store({{"Setup_Main_Volume", 50}});
    options.render = file.fileName();
    options.renderTo = m_folder->filePath("out.wav");
    QString message;
    QVERIFY2(renderFile(options, &message), qPrintable(message));
    QVERIFY2(message.contains("out.wav: 0.2 s") && message.contains("; the limiter took up to"),
             qPrintable(message));
}

void TestOffline::pipeAsInputIsRefusedAtOnce()
{
    QCOMPARE(mkfifo(QFile::encodeName(m_folder->filePath("pipe")).constData(), 0600), 0);
    Process unit(QProcessEnvironment::systemEnvironment());
    unit.start(HEADUNIT, {"--render", m_folder->filePath("pipe"), m_folder->filePath("out.wav")});
    QCOMPARE(unit.exitCode(), 5);
    QVERIFY2(unit.errors().contains("pipe': it is a pipe"), unit.errors());
    QCOMPARE(entries(), QStringList{"pipe"});
}

void TestOffline::signalEndsARenderingAndLeavesNothing_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<bool>("replaces");
    QTest::newRow("SIGINT") << SIGINT << false;
    QTest::newRow("SIGTERM") << SIGTERM << false;
    QTest::newRow("SIGHUP") << SIGHUP << false;
    QTest::newRow("SIGINT, an old file stands there") << SIGINT << true;
}

void TestOffline::signalEndsARenderingAndLeavesNothing()
{
    QFETCH(int, signal);
    QFETCH(bool, replaces);
    // Half an hour, at a rate that has to be converted: more than is rendered before the signal comes.
    QVERIFY(!sound(47999, 1800).isEmpty());
    QFile old(m_folder->filePath("out.wav"));
    if (replaces)
        QVERIFY(old.open(QIODevice::WriteOnly) && old.write("precious") == 8 && old.flush());
    const QStringList before = entries();
    QProcess unit;
    unit.start(QStringLiteral(HEADUNIT), {"--render", m_folder->filePath("in.wav"), old.fileName()});
    const auto underWay = [this] {
        const auto unfinished = QDir(m_folder->path()).entryInfoList({"unfinished-*"}, QDir::Files);
        return !unfinished.isEmpty() && unfinished.first().size() > 100000;
    };
    QTRY_VERIFY_WITH_TIMEOUT(underWay(), 20000);
    QVERIFY(sendSignal(unit, signal));
    QVERIFY(unit.waitForFinished(20000));
    QCOMPARE(unit.exitStatus(), QProcess::CrashExit); // by the signal, not by an exit code
    QCOMPARE(unit.exitCode(), signal);
    QVERIFY2(unit.readAllStandardError().contains("stopped"), "nothing was said");
    QCOMPARE(entries(), before);
    QCOMPARE(old.size(), qint64(replaces ? 8 : 0));
}

void TestOffline::hangupThatIsIgnoredStaysIgnored()
{
    QVERIFY(!sound(47999, 30).isEmpty()); // more than is rendered before the signal comes
    // As nohup does.
    QProcess unit;
    unit.start("sh", {"-c", "trap '' HUP; exec \"$@\"", "sh", HEADUNIT, "--render",
                      m_folder->filePath("in.wav"), m_folder->filePath("out.wav")});
    QTRY_VERIFY_WITH_TIMEOUT(!entries().filter("unfinished-").isEmpty(), 20000);
    QVERIFY(sendSignal(unit, SIGHUP));
    QVERIFY(unit.waitForFinished(60000));
    QCOMPARE(unit.exitStatus(), QProcess::NormalExit);
    QCOMPARE(unit.exitCode(), 0);
    QCOMPARE(entries(), (QStringList{"in.wav", "out.wav"}));
}

void TestOffline::renderingWithoutItsLibraryIsRefused()
{
    // What reads sound files lies beside the sound processor.
    const QString processor = QFileInfo(HEADUNIT).dir().filePath("../lib/libhvaudio.so");
    QVERIFY(QFile::copy(processor, m_folder->filePath("libhvaudio.so")));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LD_LIBRARY_PATH", m_folder->path());
    QProcess unit;
    unit.setProcessEnvironment(environment);
    unit.start(HEADUNIT, {"--render", sound(), m_folder->filePath("out.wav")});
    QVERIFY(unit.waitForFinished(30000));
    QCOMPARE(unit.exitCode(), 5);
    const QByteArray errors = unit.readAllStandardError();
    QVERIFY2(errors.contains("libhvaudiofiles.so can't be loaded"), errors);
    QVERIFY(!QFile::exists(m_folder->filePath("out.wav")));
}

void TestOffline::plotReplacesNothingButAFile()
{
    QCOMPARE(mkfifo(QFile::encodeName(m_folder->filePath("pipe")).constData(), 0600), 0);
    QVERIFY(QFile::link("pipe", m_folder->filePath("link")));
    Options options;
    options.settings = store({});
    const QStringList before = entries();
    for (const char* name : {"pipe", "link", "."}) {
        options.plot = m_folder->filePath(name);
        QString message;
        QVERIFY(!plotResponses(options, &message));
        QVERIFY2(message.contains("can't write '" + options.plot + "'"), qPrintable(message));
        QCOMPARE(entries(), before);
        QVERIFY(!QFileInfo(m_folder->filePath("pipe")).isFile());
    }
}

void TestOffline::plotWithoutItsLibraryIsRefused()
{
    // The library is looked for from where the program lies.
    QVERIFY(QDir(m_folder->path()).mkdir("bin"));
    const QString elsewhere = m_folder->filePath("bin/headunit");
    QVERIFY(QFile::copy(HEADUNIT, elsewhere));
    QProcess unit;
    unit.start(elsewhere, {"--plot", m_folder->filePath("p.png")});
    QVERIFY(unit.waitForFinished(30000));
    QCOMPARE(unit.exitCode(), 5);
    const QByteArray errors = unit.readAllStandardError();
    QVERIFY2(errors.contains("libresponseplot"), errors);
    QVERIFY(!QFile::exists(m_folder->filePath("p.png")));
}

void TestOffline::plotShowsALineForEachSpeakerAndDotsOverIt()
{
    const auto pictureOf = [&](bool line, bool dots, int speaker) {
        const std::unique_ptr<ResponsePlot> plot(ResponsePlot::create(nullptr));
        const auto lineHz = ResponsePlot::frequencies(200), dotHz = ResponsePlot::frequencies(40);
        if (line)
            plot->setComputed(hvaudio::dsp::Speaker(speaker), lineHz, std::vector<double>(200, 0.1));
        if (dots)
            plot->setMeasured(hvaudio::dsp::Speaker(speaker), dotHz, std::vector<double>(40, 0.5));
        const QString path = m_folder->filePath("plot.png");
        return plot->savePng(path) ? QImage(path) : QImage();
    };
    // Height of the middle of what one picture has and the other hasn't; -1 where they are equal.
    const auto heightOf = [](const QImage& a, const QImage& b) {
        qint64 sum = 0, count = 0;
        for (int y = 0; y < a.height(); ++y)
            for (int x = 0; x < a.width(); ++x)
                if (a.pixel(x, y) != b.pixel(x, y)) {
                    sum += y;
                    ++count;
                }
        return count > 100 ? int(sum / count) : -1;
    };
    for (int speaker = 0; speaker < hvaudio::dsp::speakerCount; ++speaker) {
        const QImage nothing = pictureOf(false, false, speaker);
        QVERIFY(!nothing.isNull());
        const int line = heightOf(pictureOf(true, false, speaker), nothing);
        const int dots = heightOf(pictureOf(false, true, speaker), nothing);
        // -20 dB lies 14 dB below -6 dB in a field of 80 dB.
        QVERIFY2(line > 0 && dots > 0 && line > dots + 720 * 14 / 80 / 2,
                 qPrintable(QString("%1 %2").arg(line).arg(dots)));
    }
}

QTEST_MAIN(TestOffline)
#include "tst_offline.moc"
