#include "headunit/cli/options.h"

#include <QtTest>

using namespace headunit;
using Action = OptionsResult::Action;

class TestOptions : public QObject
{
    Q_OBJECT
private slots:
    void nothingAskedForIsTheLauncherOnDefaults();
    void everyOptionIsRead();
    void valuesAfterAnEqualsSignAreRead();
    void outputIsRead_data();
    void outputIsRead();
    void remoteAddressMayBeLeftOut_data();
    void remoteAddressMayBeLeftOut();
    void helpListsEveryOption();
    void theReadmeListsTheOptionsAsTheHelpDoes();
    void versionIsTold();
    void mistakesAreRefusedWithAMessage_data();
    void mistakesAreRefusedWithAMessage();
};

static OptionsResult read(const QStringList& arguments)
{
    return readOptions(QStringList("headunit") + arguments);
}

void TestOptions::nothingAskedForIsTheLauncherOnDefaults()
{
    const OptionsResult result = read({});
    QCOMPARE(result.action, Action::Run);
    QVERIFY(result.options.plugins.isEmpty());
    QVERIFY(result.options.settings.isEmpty());
    QVERIFY(result.options.language.isEmpty());
    QVERIFY(result.options.tour.isEmpty());
    QCOMPARE(result.options.page, -1);
    QVERIFY(!result.options.inspector && !result.options.trace && !result.options.log &&
            !result.options.traceStartup && !result.options.screenOnly);
}

void TestOptions::everyOptionIsRead()
{
    const OptionsResult result =
        read({"--plugins", "p", "--settings", "s", "--language", "zh_CN", "--page", "0", "--inspector",
              "--trace", "--log", "--trace-startup", "--screen-only"});
    QCOMPARE(result.action, Action::Run);
    QCOMPARE(result.options.plugins, QStringLiteral("p"));
    QCOMPARE(result.options.settings, QStringLiteral("s"));
    QCOMPARE(result.options.language, QStringLiteral("zh_CN"));
    QCOMPARE(result.options.page, 0);
    QVERIFY(result.options.inspector && result.options.trace && result.options.log &&
            result.options.traceStartup && result.options.screenOnly);
    QCOMPARE(read({"--tour", "t"}).options.tour, QStringLiteral("t"));
    const OptionsResult render = read({"--render", "in.ogg", "out.wav", "--stereo", "--settings", "s"});
    QCOMPARE(render.action, Action::Run);
    QCOMPARE(render.options.render, QStringLiteral("in.ogg"));
    QCOMPARE(render.options.renderTo, QStringLiteral("out.wav"));
    QVERIFY(render.options.stereo);
    QCOMPARE(read({"--plot", "p.png"}).options.plot, QStringLiteral("p.png"));
}

void TestOptions::valuesAfterAnEqualsSignAreRead()
{
    QCOMPARE(read({"--page=5"}).options.page, 5);
}

void TestOptions::outputIsRead_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("output");
    QTest::newRow("PipeWire where it runs") << QStringList{} << "auto";
    QTest::newRow("PipeWire") << QStringList{"--output", "pipewire"} << "pipewire";
    QTest::newRow("none") << QStringList{"--output", "none"} << "none";
    QTest::newRow("file") << QStringList{"--output", "drive/out.wav"} << "drive/out.wav";
    QTest::newRow("tour is silent") << QStringList{"--tour", "t"} << "none";
    QTest::newRow("tour with sound") << QStringList{"--tour", "t", "--output", "pipewire"} << "pipewire";
}

void TestOptions::outputIsRead()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, output);
    const OptionsResult result = read(arguments);
    QCOMPARE(result.action, Action::Run);
    QCOMPARE(result.options.output, output);
    QVERIFY(read({"--help"}).text.contains("--output"));
}

void TestOptions::remoteAddressMayBeLeftOut_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("remote");
    QTest::newRow("off") << QStringList{} << "";
    QTest::newRow("alone") << QStringList{"--remote"} << "127.0.0.1:0";
    QTest::newRow("before another option") << QStringList{"--remote", "--page", "1"} << "127.0.0.1:0";
    QTest::newRow("address") << QStringList{"--remote", "127.0.0.1:8080"} << "127.0.0.1:8080";
    QTest::newRow("after an equals sign") << QStringList{"--remote=[::1]:0"} << "[::1]:0";
    QTest::newRow("name of this machine") << QStringList{"--remote", "localhost:1"} << "localhost:1";
    QTest::newRow("other machines") << QStringList{"--remote", "0.0.0.0:1",    "--remote-certificate",
                                                   "c",        "--remote-key", "k"}
                                    << "0.0.0.0:1";
}

void TestOptions::remoteAddressMayBeLeftOut()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, remote);
    const OptionsResult result = read(arguments);
    QVERIFY2(result.action == Action::Run, qPrintable(result.text));
    QCOMPARE(result.options.remote, remote);
    QCOMPARE(result.options.remoteCertificate, QLatin1String(arguments.contains("c") ? "c" : ""));
    QCOMPARE(result.options.remoteKey, QLatin1String(arguments.contains("k") ? "k" : ""));
}

void TestOptions::helpListsEveryOption()
{
    const OptionsResult result = read({"--help"});
    QCOMPARE(result.action, Action::Tell);
    for (const char* option :
         {"--plugins", "--settings", "--language", "--page", "--tour", "--remote", "--screen-only",
          "--inspector", "--trace", "--log", "--trace-startup", "--help", "--version"})
        QVERIFY2(result.text.contains(QLatin1String(option)), option);
}

void TestOptions::theReadmeListsTheOptionsAsTheHelpDoes()
{
    QString options = read({"--help"}).text.section(QStringLiteral("Options:\n"), 1);
    options.replace(QRegularExpression(QStringLiteral("^  "), QRegularExpression::MultilineOption),
                    QStringLiteral("    ")); // a code block
    QVERIFY(options.contains(QLatin1String("--plugins")));
    QFile readme(QStringLiteral(README));
    QVERIFY2(readme.open(QIODevice::ReadOnly), README);
    QVERIFY2(QString::fromUtf8(readme.readAll()).contains(options), qPrintable(options));
}

void TestOptions::versionIsTold()
{
    const OptionsResult result = read({"--version"});
    QCOMPARE(result.action, Action::Tell);
    QCOMPARE(result.text, QStringLiteral("headunit " HEADUNIT_VERSION "\n"));
}

void TestOptions::mistakesAreRefusedWithAMessage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("named"); // what the message must name
    QTest::newRow("unknown option") << QStringList{"--radio"} << "radio";
    QTest::newRow("stray argument") << QStringList{"file.wav"} << "file.wav";
    QTest::newRow("page above the last") << QStringList{"--page", "6"} << "'6'";
    QTest::newRow("page below the first") << QStringList{"--page", "-1"} << "'-1'";
    QTest::newRow("page in words") << QStringList{"--page", "eq"} << "'eq'";
    QTest::newRow("page with a fraction") << QStringList{"--page", "1.5"} << "'1.5'";
    QTest::newRow("page missing") << QStringList{"--page"} << "page";
    QTest::newRow("language unknown") << QStringList{"--language", "tlh"} << "'tlh'";
    QTest::newRow("empty settings path") << QStringList{"--settings", ""} << "settings";
    QTest::newRow("empty tour folder") << QStringList{"--tour", ""} << "tour";
    QTest::newRow("value for a switch") << QStringList{"--trace=1"} << "trace";
    QTest::newRow("rendering to nowhere") << QStringList{"--render", "in"} << "two values";
    QTest::newRow("rendering to two files") << QStringList{"--render", "in", "a", "b"} << "'b'";
    QTest::newRow("folding nothing") << QStringList{"--stereo"} << "--render";
    QTest::newRow("rendering and plotting") << QStringList{"--render", "i", "o", "--plot", "p"} << "--plot";
    QTest::newRow("output that is none") << QStringList{"--output", "alsa"} << "'alsa'";
    QTest::newRow("output that is no WAV file") << QStringList{"--output", "out.mp3"} << "'out.mp3'";
    QTest::newRow("empty output") << QStringList{"--output", ""} << "output";
    QTest::newRow("remote without a port") << QStringList{"--remote", "127.0.0.1"} << "'127.0.0.1'";
    QTest::newRow("remote at a name") << QStringList{"--remote", "unit.example:1"} << "'unit.example:1'";
    QTest::newRow("remote port too high") << QStringList{"--remote", "127.0.0.1:65536"} << "65536";
    QTest::newRow("empty remote address") << QStringList{"--remote", ""} << "remote";
    QTest::newRow("open to others in the clear") << QStringList{"--remote", "0.0.0.0:1"} << "certificate";
    QTest::newRow("certificate without a key")
        << QStringList{"--remote", "--remote-certificate", "c"} << "--remote-key";
    QTest::newRow("certificate for nothing")
        << QStringList{"--remote-certificate", "c", "--remote-key", "k"} << "--remote";
    QTest::newRow("remote tour") << QStringList{"--remote", "--tour", "t"} << "--tour";
    QTest::newRow("page during a tour") << QStringList{"--tour", "t", "--page", "1"} << "--tour";
}

void TestOptions::mistakesAreRefusedWithAMessage()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, named);
    const OptionsResult result = read(arguments);
    QCOMPARE(result.action, Action::Fail);
    QVERIFY2(result.text.contains(named), qPrintable(result.text));
    QVERIFY(result.text.contains("--help"));
}

QTEST_GUILESS_MAIN(TestOptions)
#include "tst_options.moc"
