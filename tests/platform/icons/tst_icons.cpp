// The pictures of libaudiosettingicon: each has the size that its row in icons.txt gives and exists at twice
// that size; held and checked keys differ from keys at rest, and what is written on a picture can be read.

#include "tests/platform/icons/pictures.h"

#include <QDir>
#include <QDirIterator>
#include <QIcon>
#include <QImageReader>
#include <QObject>
#include <QRegularExpression>
#include <QTest>
#include <dlfcn.h>

using namespace pictures;

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
    void iconOfTheSizeShowsThePictureUnscaled_data() { pictureLoadsAtItsSizeAndAtTwiceIt_data(); }
    void iconOfTheSizeShowsThePictureUnscaled();
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
    for (const QString& path : std::as_const(paths)) {
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

void TestIcons::iconOfTheSizeShowsThePictureUnscaled()
{
    QFETCH(QString, path);
    QFETCH(QSize, size);
    // An icon size larger than the picture (the page keys' 96 x 220) leaves the picture as it is.
    const QPixmap shown = QIcon(path).pixmap(QSize(qMax(size.width(), 96), qMax(size.height(), 220)));
    QCOMPARE(shown.toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied),
             QImageReader(path).read().convertToFormat(QImage::Format_ARGB32_Premultiplied));
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
    static const QRegularExpression colour(QStringLiteral("[\":]#[0-9A-Fa-f]{3,8}[\";]|[\":]rgba?\\("));
    QDirIterator drawings(QStringLiteral(SOURCE_ROOT "/platform/icons/svg"), {"*.svg"}, QDir::Files,
                          QDirIterator::Subdirectories);
    int count = 0;
    for (; drawings.hasNext(); ++count) {
        QFile file(drawings.next());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const auto match = colour.match(QString::fromUtf8(file.readAll()));
        QVERIFY2(!match.hasMatch(), qPrintable(file.fileName() + ": " + match.captured()));
    }
    QVERIFY(count > 15);
}

QTEST_MAIN(TestIcons)
#include "tst_icons.moc"
