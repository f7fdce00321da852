// The pictures of libaudiosettingicon: each has the size that its row in icons.txt gives, exists at twice
// that size, and the scales in them agree with the numbers by which pages place knees, handles and the
// locator.

#include <QColor>
#include <QDir>
#include <QFile>
#include <QIcon>
#include <QImage>
#include <QImageReader>
#include <QObject>
#include <QRegularExpression>
#include <QTest>
#include <QTextStream>
#include <cmath>
#include <dlfcn.h>

namespace {

struct Row
{
    QString path;
    QSize size;
};

QList<Row> rows()
{
    QFile file(QStringLiteral(ICON_LIST));
    QList<Row> list;
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return list;
    }
    QTextStream in(&file);
    for (QString line = in.readLine(); !line.isNull(); line = in.readLine()) {
        const QStringList parts = line.split(' ');
        const QStringList size = parts.value(1).split('x');
        list.append({":" + parts.value(0), QSize(size.value(0).toInt(), size.value(1).toInt())});
    }
    return list;
}

QImage picture(const char* path)
{
    return QImage(QLatin1String(path)).convertToFormat(QImage::Format_ARGB32);
}

double luminance(const QColor& colour)
{
    const auto linear = [](double c) {
        return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

/// Contrast ratio of WCAG 2.1, 1 ... 21.
double contrast(const QColor& a, const QColor& b)
{
    const double la = luminance(a) + 0.05;
    const double lb = luminance(b) + 0.05;
    return la > lb ? la / lb : lb / la;
}

int light(const QImage& image, int x, int y)
{
    return qGray(image.pixel(x, y)) * qAlpha(image.pixel(x, y)) / 255;
}

bool isLineX(const QImage& image, int x, int y)
{
    return light(image, x - 1, y) > light(image, x - 4, y) + 5 &&
           light(image, x, y) > light(image, x + 3, y) + 5 && light(image, x - 1, y) == light(image, x, y);
}

bool isLineY(const QImage& image, int x, int y)
{
    return light(image, x, y - 1) > light(image, x, y + 4) + 5 &&
           light(image, x, y) > light(image, x, y + 3) + 5 && light(image, x, y - 1) == light(image, x, y);
}

} // namespace

class TestIcons : public QObject
{
    Q_OBJECT

private slots:
    void libraryStaysLinkedAndNamesItsVersion();
    void pictureLoadsAtItsSizeAndAtTwiceIt_data();
    void pictureLoadsAtItsSizeAndAtTwiceIt();
    void noPictureBesidesTheList();
    void pressedPictureDiffersClearly_data();
    void pressedPictureDiffersClearly();
    void iconOfTheSizeShowsThePictureUnscaled_data();
    void iconOfTheSizeShowsThePictureUnscaled();
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
    void switchOnIsBrightAndItsKnobRight();
    void titleBarCarriesBothTitleColours();
    void presetTilesLeaveTheirNamesFree_data();
    void presetTilesLeaveTheirNamesFree();
    void captionReadsOnItsKey_data();
    void captionReadsOnItsKey();
    void drawingsTakeTheirColoursFromThePalette();
};

void TestIcons::libraryStaysLinkedAndNamesItsVersion()
{
    // Linked with --as-needed, and no code of this test refers to a symbol of the library: only the target's
    // own link option can have kept it.
    using Version = const char* (*)();
    const auto version = reinterpret_cast<Version>(dlsym(RTLD_DEFAULT, "audiosettingicon_version"));
    QVERIFY(version);
    QVERIFY2(QRegularExpression("^[0-9]+[.][0-9]+[.][0-9]+$").match(version()).hasMatch(), version());
}

void TestIcons::pictureLoadsAtItsSizeAndAtTwiceIt_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QSize>("size");
    const QList<Row> list = rows();
    QVERIFY2(list.size() > 80, "the table of pictures was not read");
    for (const Row& row : list) {
        QTest::newRow(qPrintable(row.path)) << row.path << row.size;
    }
}

void TestIcons::pictureLoadsAtItsSizeAndAtTwiceIt()
{
    QFETCH(QString, path);
    QFETCH(QSize, size);
    QVERIFY(size.isValid());
    // QImageReader, since QImage would take the @2x file on a screen of that density.
    const QImage once = QImageReader(path).read();
    QCOMPARE(once.size(), size);
    QString twicePath = path;
    twicePath.insert(path.size() - 4, QStringLiteral("@2x"));
    const QImage twice = QImageReader(twicePath).read();
    QCOMPARE(twice.size(), 2 * size);
    // Rendered, not merely present: something opaque is in it.
    bool drawn = false;
    for (int y = 0; y < once.height() && !drawn; ++y) {
        for (int x = 0; x < once.width() && !drawn; ++x) {
            drawn = qAlpha(once.pixel(x, y)) > 200;
        }
    }
    QVERIFY(drawn);
}

void TestIcons::noPictureBesidesTheList()
{
    QStringList listed;
    const QList<Row> list = rows();
    for (const Row& row : list) {
        listed << row.path;
        QString twice = row.path;
        listed << twice.insert(twice.size() - 4, QStringLiteral("@2x"));
    }
    QStringList found;
    for (const char* folder :
         {":/vexa_m5qx_audiosettingicon", ":/vexa_m5qx_settingicon_ext", ":/dual_icon", ":/icon/eq_icon"}) {
        const QStringList names = QDir(QLatin1String(folder)).entryList(QDir::Files);
        for (const QString& name : names) {
            found << QLatin1String(folder) + '/' + name;
        }
    }
    listed.sort();
    found.sort();
    QCOMPARE(found, listed);
}

void TestIcons::pressedPictureDiffersClearly_data()
{
    QTest::addColumn<QString>("normal");
    QTest::addColumn<QString>("pressed");
    const QList<Row> list = rows();
    QStringList paths;
    for (const Row& row : list) {
        paths << row.path;
    }
    int pairs = 0;
    for (const QString& path : qAsConst(paths)) {
        if (!path.endsWith(QLatin1String("_n.png"))) {
            continue;
        }
        const QString pressed = path.left(path.size() - 6) + "_p.png";
        if (paths.contains(pressed)) {
            QTest::newRow(qPrintable(path)) << path << pressed;
            ++pairs;
        }
    }
    QVERIFY(pairs > 25);
    QTest::newRow("reset of the time alignment") << ":/vexa_m5qx_settingicon_ext/time_alignment_reset_n.png"
                                                 << ":/vexa_m5qx_settingicon_ext/time_alignment_preset_p.png";
    QTest::newRow("next key of the frequency rows") << ":/vexa_m5qx_audiosettingicon/eq_icon_next_n.png"
                                                    << ":/icon/eq_icon/eq_icon_next_p.png";
    QTest::newRow("phase key") << ":/dual_icon/setup_btn_off_n.png"
                               << ":/dual_icon/setup_btn_on_p.png";
}

void TestIcons::pressedPictureDiffersClearly()
{
    QFETCH(QString, normal);
    QFETCH(QString, pressed);
    const QImage n = QImageReader(normal).read();
    const QImage p = QImageReader(pressed).read();
    QCOMPARE(n.size(), p.size());
    int changed = 0;
    for (int y = 0; y < n.height(); ++y) {
        for (int x = 0; x < n.width(); ++x) {
            const QColor a(n.pixel(x, y));
            const QColor b(p.pixel(x, y));
            changed += qAbs(a.red() - b.red()) + qAbs(a.green() - b.green()) + qAbs(a.blue() - b.blue()) > 30;
        }
    }
    QVERIFY2(changed > n.width() * n.height() / 4, qPrintable(QString::number(changed)));
}

void TestIcons::iconOfTheSizeShowsThePictureUnscaled_data()
{
    pictureLoadsAtItsSizeAndAtTwiceIt_data();
}

void TestIcons::iconOfTheSizeShowsThePictureUnscaled()
{
    QFETCH(QString, path);
    QFETCH(QSize, size);
    // An icon size larger than the picture (the page keys' 96 x 220) leaves the picture as it is.
    const QPixmap shown = QIcon(path).pixmap(QSize(qMax(size.width(), 96), qMax(size.height(), 220)));
    QCOMPARE(shown.toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied),
             QImageReader(path).read().convertToFormat(QImage::Format_ARGB32_Premultiplied));
}

void TestIcons::crossoverLinesLieAtFrequencies_data()
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

void TestIcons::crossoverLinesLieAtFrequencies()
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

void TestIcons::crossoverLinesLieAtGains_data()
{
    QTest::addColumn<int>("y");
    for (int gain = 0; gain >= -12; --gain) {
        QTest::newRow(qPrintable(QString("%1 dB").arg(gain))) << 2 + 23 * -gain;
    }
}

void TestIcons::crossoverLinesLieAtGains()
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

void TestIcons::crossoverHasNoOtherLines()
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

void TestIcons::crossoverGroundCarriesEachCurve_data()
{
    QTest::addColumn<QColor>("curve");
    QTest::newRow("front") << QColor(255, 108, 0);
    QTest::newRow("rear") << QColor(255, 204, 0);
    QTest::newRow("subwoofer") << QColor(100, 100, 100);
}

void TestIcons::crossoverGroundCarriesEachCurve()
{
    QFETCH(QColor, curve);
    const QImage grid = picture(":/vexa_m5qx_settingicon_ext/bg_cross.png");
    const QColor ground(grid.pixel(500, 13));
    QVERIFY(qAlpha(grid.pixel(500, 13)) == 255);
    QVERIFY2(contrast(curve, ground) >= 3.0, qPrintable(QString::number(contrast(curve, ground))));
}

void TestIcons::crossoverNumbersAreLegibleAndWhole()
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

void TestIcons::filterKneeLiesOnItsGridLines_data()
{
    QTest::addColumn<QString>("thumb");
    for (const char* name :
         {"left", "left65", "left75", "left85", "right", "right65", "right75", "right85"}) {
        QTest::newRow(name) << QString(":/vexa_m5qx_audiosettingicon/filter_thumb_%1.png").arg(name);
    }
}

void TestIcons::filterKneeLiesOnItsGridLines()
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

void TestIcons::filterFlankHasTheAngleOfItsName_data()
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

void TestIcons::filterFlankHasTheAngleOfItsName()
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

void TestIcons::equalizerZeroLineLiesBehindTheHandlesMiddle_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("first bar") << ":/vexa_m5qx_settingicon_ext/eq_bar_60.png";
    QTest::newRow("other bars") << ":/vexa_m5qx_settingicon_ext/eq_bar_61.png";
}

void TestIcons::equalizerZeroLineLiesBehindTheHandlesMiddle()
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

void TestIcons::equalizerTickLiesAtEachStep_data()
{
    QTest::addColumn<int>("step");
    for (int step = 9; step >= -10; --step) {
        QTest::newRow(qPrintable(QString::number(step))) << step;
    }
}

void TestIcons::equalizerTickLiesAtEachStep()
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

void TestIcons::padFrameIsTheLocatorsTravel()
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

void TestIcons::speakerLinesEndAtTheirBoxes()
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

void TestIcons::switchOnIsBrightAndItsKnobRight()
{
    const QImage off = picture(":/vexa_m5qx_settingicon_ext/switch_n.png");
    const QImage on = picture(":/vexa_m5qx_settingicon_ext/switch_p.png");
    QVERIFY(light(off, 15, 15) > light(off, 45, 15) + 80);
    QVERIFY(light(on, 45, 15) > light(on, 15, 15) + 80);
    QVERIFY(contrast(on.pixel(45, 15), on.pixel(15, 15)) >= 3.0);
    QVERIFY(contrast(off.pixel(15, 15), off.pixel(45, 15)) >= 3.0);
}

void TestIcons::titleBarCarriesBothTitleColours()
{
    const QColor ground(picture(":/vexa_m5qx_audiosettingicon/eq_presets_bg.png").pixel(150, 20));
    QVERIFY(contrast(QColor("#009140"), ground) >= 4.5);
    QVERIFY(contrast(QColor("#0094DD"), ground) >= 4.5);
}

void TestIcons::presetTilesLeaveTheirNamesFree_data()
{
    QTest::addColumn<QString>("path");
    for (const char* name : {"Flat", "R&B", "Rock", "Pop", "Hip-Hop", "Jazz", "User_1", "User_2"}) {
        for (const char* state : {"n", "p"}) {
            const QString path = QString(":/vexa_m5qx_settingicon_ext/%1_%2.png").arg(name, state);
            QTest::newRow(qPrintable(path)) << path;
        }
    }
}

void TestIcons::presetTilesLeaveTheirNamesFree()
{
    QFETCH(QString, path);
    const QImage tile = QImageReader(path).read();
    // The lower of the two places of a name ends at y = 79. White must read on all of it.
    for (int y = 8; y < 79; ++y) {
        for (int x = 10; x < 217; ++x) {
            QVERIFY2(contrast(Qt::white, QColor(tile.pixel(x, y))) >= 7.0,
                     qPrintable(QString("%1,%2").arg(x).arg(y)));
        }
    }
}

void TestIcons::captionReadsOnItsKey_data()
{
    QTest::addColumn<QString>("path");
    for (const char* name :
         {"vexa_m5qx_audiosettingicon/eq_btn_n", "vexa_m5qx_audiosettingicon/eq_btn_p",
          "vexa_m5qx_settingicon_ext/bal_btn_reset_n", "vexa_m5qx_settingicon_ext/bal_btn_reset_p",
          "vexa_m5qx_settingicon_ext/time_alignment_reset_n",
          "vexa_m5qx_settingicon_ext/time_alignment_preset_n",
          "vexa_m5qx_settingicon_ext/time_alignment_preset_p", "vexa_m5qx_settingicon_ext/setup_key_btn2_n",
          "vexa_m5qx_settingicon_ext/setup_key_btn2_p", "vexa_m5qx_audiosettingicon/eq_icon_bg"}) {
        QTest::newRow(name) << QString(":/%1.png").arg(name);
    }
}

void TestIcons::captionReadsOnItsKey()
{
    QFETCH(QString, path);
    const QImage key = QImageReader(path).read();
    // The dimmest colour that the pages give a caption, where a caption can lie.
    const QColor caption(238, 238, 236);
    for (int y = 6; y < key.height() - 9; ++y) {
        for (int x = 12; x < key.width() - 12; ++x) {
            QCOMPARE(qAlpha(key.pixel(x, y)), 255);
            QVERIFY2(contrast(caption, QColor(key.pixel(x, y))) >= 7.0,
                     qPrintable(QString("%1,%2").arg(x).arg(y)));
        }
    }
}

void TestIcons::drawingsTakeTheirColoursFromThePalette()
{
    const QDir folder(QStringLiteral(SOURCE_ROOT "/platform/icons/svg"));
    const QStringList names = folder.entryList({"*.svg"}, QDir::Files);
    QVERIFY(names.size() > 15);
    static const QRegularExpression colour(QStringLiteral("[\":]#[0-9A-Fa-f]{3,8}[\";]|[\":]rgba?\\("));
    for (const QString& name : names) {
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const auto match = colour.match(QString::fromUtf8(file.readAll()));
        QVERIFY2(!match.hasMatch(), qPrintable(name + ": " + match.captured()));
    }
}

QTEST_MAIN(TestIcons)
#include "tst_icons.moc"
