#include "platform/hvaudio/measure/calibration.h"

#include <QtTest>

#include <cmath>

using namespace hvaudio::measure;

namespace {

/// "20 -1.5 0, 1000 0 12" for the points that were read, or what was wrong.
QString pointsOf(const QByteArray& text)
{
    std::string error;
    const auto points = readCalibration({text.constData(), std::size_t(text.size())}, error);
    if (points.empty())
        return "error: " + QString::fromStdString(error);
    QStringList shown;
    for (const CalibrationPoint& point : points)
        shown << QStringLiteral("%1 %2 %3").arg(point.hz).arg(point.db).arg(point.degrees);
    return error.empty() ? shown.join(", ") : "points and an error";
}

} // namespace

class TestCalibration : public QObject
{
    Q_OBJECT

private slots:
    void textIsRead_data();
    void textIsRead();
    void faultIsToldWithItsLine_data();
    void faultIsToldWithItsLine();
    void sentenceIsOneLineWhateverTheFileHolds();
    void localeChangesNothing();
    void levelIsLinearOverTheLogarithmOfTheFrequency();
};

void TestCalibration::textIsRead_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("points");
    // clang-format off
    QTest::newRow("two columns")        << QByteArray("20 -1.5\n1000 0.25\n")              << "20 -1.5 0, 1000 0.25 0";
    QTest::newRow("three columns")      << QByteArray("20 -1.5 12\n1000 0 -170.5\n")       << "20 -1.5 12, 1000 0 -170.5";
    QTest::newRow("one point")          << QByteArray("1000 0")                            << "1000 0 0";
    QTest::newRow("any order")          << QByteArray("1000 1\n20 2\n10000 3\n500 4\n")    << "20 2 0, 500 4 0, 1000 1 0, 10000 3 0";
    QTest::newRow("tabs")               << QByteArray("20.00\t-1.50\t3\n")                 << "20 -1.5 3";
    QTest::newRow("many blanks")        << QByteArray("   20   -1.5   \n\n \t \n")         << "20 -1.5 0";
    QTest::newRow("commas alone")       << QByteArray("20,-1.5,3\n30,2\n")                 << "20 -1.5 3, 30 2 0";
    QTest::newRow("commas and blanks")  << QByteArray("20, -1.5, 3\n30,\t2.5\n")           << "20 -1.5 3, 30 2.5 0";
    QTest::newRow("semicolons")         << QByteArray("20;-1.5;3\n30; 2.5\n")              << "20 -1.5 3, 30 2.5 0";
    QTest::newRow("CR LF")              << QByteArray("20 1\r\n30 2\r\n")                  << "20 1 0, 30 2 0";
    QTest::newRow("CR")                 << QByteArray("20 1\r30 2\r")                      << "20 1 0, 30 2 0";
    QTest::newRow("no last line end")   << QByteArray("20 1\n30 2")                        << "20 1 0, 30 2 0";
    QTest::newRow("comments")           << QByteArray("* a\n# b\n\"c\"\n  * d\n20 1\n")    << "20 1 0";
    QTest::newRow("head of a maker")    << QByteArray("\"Sens Factor =-1.234dB, SERNO: 7000001\"\n10.054\t-4.2\n") << "10.054 -4.2 0";
    QTest::newRow("comment behind")     << QByteArray("20 1 # here\n30 2 3* there\n")      << "20 1 0, 30 2 3";
    QTest::newRow("signs, exponents")   << QByteArray("+2e1 +1.5E0\n1.0E+3 -.5 +0\n")      << "20 1.5 0, 1000 -0.5 0";
    QTest::newRow("byte order mark")    << QByteArray("\xef\xbb\xbf* a\n20 1\n")           << "20 1 0";
    QTest::newRow("ends of the ranges") << QByteArray("1e-3 -200\n1000000 200\n")          << "0.001 -200 0, 1e+06 200 0";
    // clang-format on
}

void TestCalibration::textIsRead()
{
    QFETCH(QByteArray, text);
    QTEST(pointsOf(text), "points");
}

void TestCalibration::faultIsToldWithItsLine_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("says");
    // clang-format off
    QTest::newRow("nothing")              << QByteArray()                            << "there is no line with a frequency and a level";
    QTest::newRow("comments only")        << QByteArray("* a\n\n# b\n")              << "there is no line with a frequency and a level";
    QTest::newRow("a word")               << QByteArray("Freq dB\n20 1\n")           << "line 1: 'Freq' is no number";
    QTest::newRow("behind comments")      << QByteArray("* a\n\n20 1\n30 x\n")       << "line 4: 'x' is no number";
    QTest::newRow("behind CR LF")         << QByteArray("20 1\r\n\r\n30 2\r\nx 1")   << "line 4: 'x' is no number";
    QTest::newRow("behind CR")            << QByteArray("20 1\r\r30 2\rx 1")         << "line 4: 'x' is no number";
    QTest::newRow("unit behind")          << QByteArray("20Hz 1\n")                  << "line 1: '20Hz' is no number";
    QTest::newRow("one number")           << QByteArray("20 1\n30\n")                << "line 2: it has 1 number, not 2 or 3";
    QTest::newRow("four numbers")         << QByteArray("20 1 2 3\n")                << "line 1: it has 4 numbers, not 2 or 3";
    QTest::newRow("comma by itself")      << QByteArray("20,1\n40 , 1\n")            << "line 2: there is a comma where a number is due; numbers have a point";
    QTest::newRow("decimal comma")        << QByteArray("20,5\t1,25\n")              << "line 1: there is a comma where a number is due; numbers have a point";
    QTest::newRow("one decimal comma")    << QByteArray("20 1,25\n")                 << "line 1: there is a comma where a number is due; numbers have a point";
    QTest::newRow("nothing but commas")   << QByteArray(",,,\n")                     << "line 1: there is a comma where a number is due; numbers have a point";
    QTest::newRow("not a number")         << QByteArray("20 nan\n")                  << "line 1: 'nan' is no number";
    QTest::newRow("infinite")             << QByteArray("inf 1\n")                   << "line 1: 'inf' is no number";
    QTest::newRow("too large to hold")    << QByteArray("20 1e999\n")                << "line 1: '1e999' is no number";
    QTest::newRow("two signs")            << QByteArray("20 +-1\n")                  << "line 1: '+-1' is no number";
    QTest::newRow("hexadecimal")          << QByteArray("0x20 1\n")                  << "line 1: '0x20' is no number";
    QTest::newRow("frequency 0")          << QByteArray("0 1\n")                     << "line 1: '0' is no frequency of 0.001 to 1000000 Hz";
    QTest::newRow("negative frequency")   << QByteArray("-20 1\n")                   << "line 1: '-20' is no frequency of 0.001 to 1000000 Hz";
    QTest::newRow("frequency too high")   << QByteArray("1000001 1\n")               << "line 1: '1000001' is no frequency of 0.001 to 1000000 Hz";
    QTest::newRow("level too far")        << QByteArray("20 -200.1\n")               << "line 1: '-200.1' is no level of -200 to 200 dB";
    QTest::newRow("phase is no number")   << QByteArray("20 1 deg\n")                << "line 1: 'deg' is no number";
    QTest::newRow("frequency twice")      << QByteArray("50 0\n20 1\n30 2\n20.0 1")  << "line 4: its frequency is that of line 2";
    QTest::newRow("NUL")                  << QByteArray("20 1\n3\0 2\n", 9)          << "line 2: '3?' is no number";
    QTest::newRow("two bytes a letter")   << QByteArray("\xff\xfe" "2\0" "0\0", 6)   << "line 1: it has 1 number, not 2 or 3";
    // clang-format on
}

void TestCalibration::faultIsToldWithItsLine()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, says);
    QCOMPARE(pointsOf(text), "error: " + says);
}

void TestCalibration::sentenceIsOneLineWhateverTheFileHolds()
{
    QByteArray all;
    for (int byte = 0; byte < 256; ++byte)
        all += char(byte);
    for (int byte = 0; byte < 256; ++byte) {
        const QString said = pointsOf("20 x" + QByteArray(1, char(byte)) + all + '\n');
        QVERIFY2(said.size() < 100 && !said.contains('\n') && !said.contains('\r'), qPrintable(said));
    }
}

void TestCalibration::localeChangesNothing()
{
    const QByteArray before = setlocale(LC_NUMERIC, nullptr);
    for (const char* locale : {"de_DE.UTF-8", "fr_FR.UTF-8", "C"}) {
        setlocale(LC_NUMERIC, locale); // where it isn't installed all stays as it is
        QCOMPARE(pointsOf("20.5 -1.25\n"), QStringLiteral("20.5 -1.25 0"));
    }
    setlocale(LC_NUMERIC, before);
}

void TestCalibration::levelIsLinearOverTheLogarithmOfTheFrequency()
{
    const std::vector<CalibrationPoint> points = {{100, 0, 0}, {1000, 10, 0}, {2000, -2, 0}};
    QCOMPARE(levelAt(points, 1), 0.0);
    QCOMPARE(levelAt(points, 100), 0.0);
    QCOMPARE(levelAt(points, 100 * std::sqrt(10.0)), 5.0);
    QCOMPARE(levelAt(points, 1000), 10.0);
    QCOMPARE(levelAt(points, 1000 * std::sqrt(2.0)), 4.0);
    QCOMPARE(levelAt(points, 2000), -2.0);
    QCOMPARE(levelAt(points, 1e6), -2.0);
    QCOMPARE(levelAt({{1000, 3, 0}}, 20), 3.0);
}

QTEST_APPLESS_MAIN(TestCalibration)
#include "tst_calibration.moc"
