#include "tests/support/process.h"

/// Which libraries the unit has loaded: those of its rarer parts come with the part.
class TestShellLibraries : public QObject
{
    Q_OBJECT
private slots:
    void libraryComesWithWhatWantsIt_data();
    void libraryComesWithWhatWantsIt();
};

void TestShellLibraries::libraryComesWithWhatWantsIt_data()
{
    QTest::addColumn<QByteArray>("library");
    QTest::addColumn<QStringList>("wanted"); // arguments
    // clang-format off
    const struct { const char* library; QStringList wanted; } rows[] = {
        {"/libresponseplot", {"--inspector"}},
        {"/libqwt",          {"--inspector"}},
        {"/libQt5OpenGL",    {"--inspector"}},
        {"/libremotescreen", {"--remote"}},
        {"/libQt5Network",   {"--remote"}},
        {"/libhvaudiofiles", {"--output", "@/sound.wav"}},
        {"/libsndfile",      {"--output", "@/sound.wav"}},
    };
    // clang-format on
    for (const auto& row : rows)
        QTest::newRow(row.library) << QByteArray(row.library) << row.wanted;
}

void TestShellLibraries::libraryComesWithWhatWantsIt()
{
    QFETCH(QByteArray, library);
    QFETCH(QStringList, wanted);
    QTemporaryDir folder;
    wanted.replaceInStrings("@", folder.path());
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    for (const bool isWanted : {false, true}) {
        Process unit(environment);
        unit.start(HEADUNIT, QStringList{"--settings", folder.filePath("settings.db"), "--output", "none",
                                         "--page", "0", "--trace-startup"} +
                                 (isWanted ? wanted : QStringList()));
        QVERIFY2(unit.says("window-painted"), unit.errors());
        for (const char* always : {"/libaudiosetting.so", "/libpictureicons.so"})
            QVERIFY2(unit.mappedFiles().contains(always), always);
        QCOMPARE(unit.mappedFiles().contains(library), isWanted);
        unit.raise(SIGTERM);
        QCOMPARE(unit.exitCode(), 0);
    }
}

QTEST_GUILESS_MAIN(TestShellLibraries)
#include "tst_shell_libraries.moc"
