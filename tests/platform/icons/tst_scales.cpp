// Scales, frames and lines in the pictures agree with the numbers by which the pages place knees, handles and
// the locator over them, and the curves on the preset tiles with those that sound.

#include "hvaudio/eqcurves.h"
#include "tests/platform/icons/pictures.h"

#include <QImageReader>
#include <QObject>
#include <QRegularExpression>
#include <QTest>

using namespace pictures;

class TestScales : public QObject
{
    Q_OBJECT

private slots:
    void crossoverLinesLieAtFrequencies_data();
    void crossoverLinesLieAtFrequencies();
    void crossoverLinesLieAtGains_data();
    void crossoverLinesLieAtGains();
    void crossoverHasNoOtherLines();
    void crossoverGroundCarriesEachCurve_data();
    void crossoverGroundCarriesEachCurve();
    void crossoverNumbersAreLegibleAndWhole();
    void filterKneeLiesOnItsGridLines_data();
    void filterKneeLiesOnItsGridLines();
    void filterFlankHasTheAngleOfItsName_data();
    void filterFlankHasTheAngleOfItsName();
    void equalizerZeroLineLiesBehindTheHandlesMiddle_data();
    void equalizerZeroLineLiesBehindTheHandlesMiddle();
    void equalizerTickLiesAtEachStep_data();
    void equalizerTickLiesAtEachStep();
    void padFrameIsTheLocatorsTravel();
    void speakerLinesEndAtTheirBoxes();
    void presetTileShowsTheCurveThatSounds_data();
    void presetTileShowsTheCurveThatSounds();
};

void TestScales::crossoverLinesLieAtFrequencies_data()
{
    QTest::addColumn<int>("x");
    // clang-format off
    QTest::newRow("30 Hz")  << 82;
    QTest::newRow("40 Hz")  << 126;
    QTest::newRow("60 Hz")  << 168;
    QTest::newRow("80 Hz")  << 210;
    QTest::newRow("100 Hz") << 256;
    QTest::newRow("120 Hz") << 302;
    QTest::newRow("160 Hz") << 437;
    QTest::newRow("250 Hz") << 635;
    // clang-format on
}

void TestScales::crossoverLinesLieAtFrequencies()
{
    QFETCH(int, x);
    const QImage grid = picture(":/vexa_m5qx_settingicon_ext/bg_cross.png");
    for (int k = 0; k < 12; ++k) {
        const int y = 2 + 23 * k + 11;
        QVERIFY2(isLineX(grid, x, y), qPrintable(QString::number(y)));
    }
    // Its number stands below: something light near the line, under the plot.
    int brightest = 0;
    for (int dx = -8; dx <= 8; ++dx) {
        for (int y = 283; y < 298; ++y) {
            brightest = qMax(brightest, light(grid, x + dx, y));
        }
    }
    QVERIFY(brightest > 120);
}

void TestScales::crossoverLinesLieAtGains_data()
{
    QTest::addColumn<int>("y");
    for (int gain = 0; gain >= -12; --gain) {
        QTest::newRow(qPrintable(QString("%1 dB").arg(gain))) << 2 + 23 * -gain;
    }
}

void TestScales::crossoverLinesLieAtGains()
{
    QFETCH(int, y);
    const QImage grid = picture(":/vexa_m5qx_settingicon_ext/bg_cross.png");
    for (int x : {50, 104, 147, 189, 233, 279, 370, 536, 680}) {
        if (y + 4 < 282) {
            QVERIFY2(isLineY(grid, x, y), qPrintable(QString::number(x)));
        } else {
            QVERIFY(light(grid, x, y) > light(grid, x, y - 4) + 5);
        }
    }
}

void TestScales::crossoverHasNoOtherLines()
{
    const QImage grid = picture(":/vexa_m5qx_settingicon_ext/bg_cross.png");
    int lines = 0;
    for (int x = 30; x < 720; ++x) {
        lines += isLineX(grid, x, 13);
    }
    QCOMPARE(lines, 8);
    lines = 0;
    for (int y = 4; y < 278; ++y) {
        lines += isLineY(grid, 50, y);
    }
    QCOMPARE(lines, 11); // the outer two lie at the edges
}

void TestScales::crossoverGroundCarriesEachCurve_data()
{
    QTest::addColumn<QColor>("curve");
    QTest::newRow("front") << QColor(255, 108, 0);
    QTest::newRow("rear") << QColor(255, 204, 0);
    QTest::newRow("subwoofer") << QColor(100, 100, 100);
}

void TestScales::crossoverGroundCarriesEachCurve()
{
    QFETCH(QColor, curve);
    const QImage grid = picture(":/vexa_m5qx_settingicon_ext/bg_cross.png");
    const QColor ground(grid.pixel(500, 13));
    QVERIFY(qAlpha(grid.pixel(500, 13)) == 255);
    QVERIFY2(contrast(curve, ground) >= 3.0, qPrintable(QString::number(contrast(curve, ground))));
}

void TestScales::crossoverNumbersAreLegibleAndWhole()
{
    const QImage grid = picture(":/vexa_m5qx_settingicon_ext/bg_cross.png");
    int brightest = 0;
    for (int y = 0; y < 298; ++y) {
        for (int x = 0; x < 26; ++x) {
            brightest = qMax(brightest, light(grid, x, y));
        }
        // Nothing is cut at the picture's left edge.
        QVERIFY2(light(grid, 0, y) < 60, qPrintable(QString::number(y)));
    }
    QVERIFY(contrast(QColor(brightest, brightest, brightest), QColor(0x10, 0x13, 0x1A)) >= 4.5);
    for (int x = 0; x < 729; ++x) {
        QVERIFY(light(grid, x, 297) < 60);
    }
}

void TestScales::filterKneeLiesOnItsGridLines_data()
{
    QTest::addColumn<QString>("thumb");
    for (const char* name :
         {"left", "left65", "left75", "left85", "right", "right65", "right75", "right85"}) {
        QTest::newRow(name) << QString(":/vexa_m5qx_audiosettingicon/filter_thumb_%1.png").arg(name);
    }
}

void TestScales::filterKneeLiesOnItsGridLines()
{
    QFETCH(QString, thumb);
    const QImage image = QImageReader(thumb).read();
    // The knee is the one white dot.
    int left = image.width();
    int right = 0;
    int top = image.height();
    int bottom = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb p = image.pixel(x, y);
            if (qAlpha(p) > 250 && qRed(p) > 230) {
                left = qMin(left, x);
                right = qMax(right, x);
                top = qMin(top, y);
                bottom = qMax(bottom, y);
            }
        }
    }
    const int kneeX = (left + right + 1) / 2;
    const int kneeY = (top + bottom + 1) / 2;
    const QImage ground = picture(":/vexa_m5qx_audiosettingicon/bg1.png");
    for (int entry = 1; entry <= 5; ++entry) {
        QVERIFY(isLineX(ground, 44 * (entry - 1) + kneeX, 50));
    }
    QVERIFY(isLineY(ground, 90, kneeY - 1)); // the ground lies one pixel lower than the thumbs
}

void TestScales::filterFlankHasTheAngleOfItsName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("angle");
    for (const char* side : {"left", "right"}) {
        for (int angle : {65, 75, 85}) {
            const QString name = side + QString::number(angle);
            QTest::newRow(qPrintable(name)) << name << angle;
        }
    }
}

void TestScales::filterFlankHasTheAngleOfItsName()
{
    QFETCH(QString, name);
    QFETCH(int, angle);
    const QImage image =
        QImageReader(QString(":/vexa_m5qx_audiosettingicon/filter_thumb_%1.png").arg(name)).read();
    // Middle of the opaque pixels of a row, away from knee and foot.
    const auto middle = [&image](int y) {
        double sum = 0;
        int count = 0;
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) > 250) {
                sum += x;
                ++count;
            }
        }
        return count ? sum / count : -1.0;
    };
    const double run = std::abs(middle(150) - middle(60));
    const double measured = std::atan2(90.0, run) * 180.0 / M_PI;
    QVERIFY2(std::abs(measured - angle) < 1.0, qPrintable(QString::number(measured)));
    // A high-pass rises to the right, a low-pass falls to it.
    QCOMPARE(middle(150) < middle(60), name.startsWith("left"));
}

void TestScales::equalizerZeroLineLiesBehindTheHandlesMiddle_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("first bar") << ":/vexa_m5qx_settingicon_ext/eq_bar_60.png";
    QTest::newRow("other bars") << ":/vexa_m5qx_settingicon_ext/eq_bar_61.png";
}

void TestScales::equalizerZeroLineLiesBehindTheHandlesMiddle()
{
    QFETCH(QString, path);
    const QImage bar = QImageReader(path).read();
    const QImage handle = picture(":/vexa_m5qx_settingicon_ext/eq_handle.png");
    const int handleTop = static_cast<int>((10 - 0) * 15.45f);
    // The bar's picture begins 21 px below the panel's edge, from which the handle's place counts.
    const int y = handleTop + handle.height() / 2 - 21;
    for (int x : {1, 10, 45, bar.width() - 2}) {
        QVERIFY(light(bar, x, y) > 120);
        QVERIFY(light(bar, x, y - 2) < 60);
        QVERIFY(light(bar, x, y + 2) < 60);
    }
    // The handle's mark is its lightest row, in the middle, and its middle column is the groove's.
    QVERIFY(light(handle, 27, 17) > 120);
    QVERIFY(light(bar, 27, 100) < light(bar, 23, 100));
    QCOMPARE(bar.pixel(26, 100), bar.pixel(27, 100));
    QCOMPARE(bar.pixel(23, 100), bar.pixel(30, 100));
}

void TestScales::equalizerTickLiesAtEachStep_data()
{
    QTest::addColumn<int>("step");
    for (int step = 9; step >= -10; --step) {
        QTest::newRow(qPrintable(QString::number(step))) << step;
    }
}

void TestScales::equalizerTickLiesAtEachStep()
{
    QFETCH(int, step);
    for (const char* path :
         {":/vexa_m5qx_settingicon_ext/eq_bar_60.png", ":/vexa_m5qx_settingicon_ext/eq_bar_61.png"}) {
        const QImage bar = picture(path);
        const int y = static_cast<int>((10 - step) * 15.45f) + 17 - 21;
        QVERIFY(light(bar, 15, y) > 10);
        QCOMPARE(light(bar, 15, y - 3), 0);
        QCOMPARE(light(bar, 15, y + 3), 0);
    }
}

void TestScales::padFrameIsTheLocatorsTravel()
{
    const QImage pad = picture(":/vexa_m5qx_settingicon_ext/bal_bg.png");
    const int centre = 126;
    for (int value : {-15, -10, -5, 5, 10, 15}) {
        const int at = centre + 112 * value / 15;
        QVERIFY(light(pad, at, 18) > light(pad, at - 3, 18) + 5);
        QVERIFY(light(pad, at, 18) > light(pad, at + 3, 18) + 5);
        QVERIFY(light(pad, 18, at) > light(pad, 18, at - 3) + 5);
        QVERIFY(light(pad, 18, at) > light(pad, 18, at + 3) + 5);
    }
    QVERIFY(light(pad, centre, 30) > light(pad, centre - 3, 30) + 5);
    QVERIFY(light(pad, 30, centre) > light(pad, 30, centre - 3) + 5);
}

void TestScales::speakerLinesEndAtTheirBoxes()
{
    // The picture stands at 296,126 of the page; the boxes' keys have their middle at y = 167 (front) and 309
    // (rear).
    const QImage car = picture(":/vexa_m5qx_settingicon_ext/time_alignment_car.png");
    for (int x : {2, car.width() - 3}) {
        for (int y = 0; y < car.height(); ++y) {
            const bool line = qAlpha(car.pixel(x, y)) > 128;
            QCOMPARE(line, y == 167 - 126 || y == 167 - 127 || y == 309 - 126 || y == 309 - 127);
        }
    }
    // The subwoofer's title begins at y = 368 of the page.
    QVERIFY(qAlpha(car.pixel(122, 368 - 126 - 2)) > 128);
    for (int x = 0; x < car.width(); ++x) {
        QCOMPARE(qAlpha(car.pixel(x, 368 - 126)), 0);
    }
}

void TestScales::presetTileShowsTheCurveThatSounds_data()
{
    QTest::addColumn<int>("type");
    // clang-format off
    QTest::newRow("Flat")    << int(EQ_Type_Flat);
    QTest::newRow("R&B")     << int(EQ_Type_RB);
    QTest::newRow("Rock")    << int(EQ_Type_Rock);
    QTest::newRow("Pop")     << int(EQ_Type_Pop);
    QTest::newRow("Hip-Hop") << int(EQ_Type_HipHop);
    QTest::newRow("Jazz")    << int(EQ_Type_Jazz);
    // clang-format on
}

void TestScales::presetTileShowsTheCurveThatSounds()
{
    QFETCH(int, type);
    QFile table(QStringLiteral(SOURCE_ROOT "/platform/icons/icons.txt"));
    QVERIFY(table.open(QIODevice::ReadOnly));
    const QRegularExpression tile(
        QStringLiteral("/%1_%\\.png .*keys/tile .*bands=(\\S+)").arg(QLatin1String(QTest::currentDataTag())));
    QStringList bands;
    for (const int value : hvaudio::eqCurveOf(type).value)
        bands << QString::number(value);
    QCOMPARE(tile.match(QString::fromUtf8(table.readAll())).captured(1), bands.join(QLatin1Char(',')));
}

QTEST_GUILESS_MAIN(TestScales)
#include "tst_scales.moc"
