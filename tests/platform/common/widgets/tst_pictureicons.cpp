// Icons of PNG files: what Qt's own engine would show, each picture decoded when it is first shown and once.

#include "platform/common/widgets/unitstyle.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QImage>
#include <QObject>
#include <QPixmap>
#include <QPluginLoader>
#include <QTemporaryDir>
#include <QTest>

#include <dlfcn.h>

class TestPictureIcons : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void everyModeAndStateShowsWhatQtsOwnEngineShows_data();
    void everyModeAndStateShowsWhatQtsOwnEngineShows();
    void pictureIsDecodedWhenItIsFirstShown();
    void iconsOfOneFileShareOnePicture();
    void missingFileIsNoPicture();
    void copyGoesItsOwnWay();
    void libraryBesideThePlugInIsNone();

private:
    QString path(const char* name) const { return m_folder.filePath(QLatin1String(name) + ".png"); }
    void write(const char* name, Qt::GlobalColor color) const
    {
        QImage image(40, 20, QImage::Format_ARGB32);
        image.fill(color);
        QVERIFY(image.save(path(name)));
    }

    QTemporaryDir m_folder;
};

namespace {

struct Part
{
    const char* name;
    QIcon::Mode mode;
    QIcon::State state;
};

// clang-format off
const Part parts[] = {
    {"red",   QIcon::Normal,   QIcon::Off},
    {"green", QIcon::Normal,   QIcon::On},
    {"blue",  QIcon::Selected, QIcon::Off},
    {"cyan",  QIcon::Selected, QIcon::On},
    {"gray",  QIcon::Disabled, QIcon::Off},
};
// clang-format on

const QIcon::Mode modes[] = {QIcon::Normal, QIcon::Active, QIcon::Selected, QIcon::Disabled};
const QIcon::State states[] = {QIcon::Off, QIcon::On};

} // namespace

void TestPictureIcons::initTestCase()
{
    cm::UnitStyle::install(*qApp); // the icons come with it
    write("red", Qt::red);
    write("green", Qt::green);
    write("blue", Qt::blue);
    write("cyan", Qt::cyan);
    write("gray", Qt::gray);
}

void TestPictureIcons::everyModeAndStateShowsWhatQtsOwnEngineShows_data()
{
    QTest::addColumn<int>("chosen");
    for (int chosen = 1; chosen < 1 << std::size(parts); ++chosen)
        QTest::addRow("parts %d", chosen) << chosen;
}

void TestPictureIcons::everyModeAndStateShowsWhatQtsOwnEngineShows()
{
    QFETCH(int, chosen);
    for (const QSize& size : {QSize(40, 20), QSize(20, 20), QSize(80, 80)}) {
        for (const QIcon::Mode mode : modes) {
            for (const QIcon::State state : states) {
                // Anew each time: what one question decodes must not help the next.
                QIcon ours, qts;
                for (std::size_t i = 0; i < std::size(parts); ++i) {
                    if (!(chosen & 1 << i))
                        continue;
                    const QString file = path(parts[i].name);
                    ours.addFile(file, QSize(), parts[i].mode, parts[i].state);
                    qts.addPixmap(QPixmap(file), parts[i].mode, parts[i].state);
                }
                QCOMPARE(ours.isNull(), false);
                QCOMPARE(ours.availableSizes(mode, state), qts.availableSizes(mode, state));
                QCOMPARE(ours.actualSize(size, mode, state), qts.actualSize(size, mode, state));
                QCOMPARE(ours.pixmap(size, mode, state).toImage(), qts.pixmap(size, mode, state).toImage());
            }
        }
    }
}

void TestPictureIcons::pictureIsDecodedWhenItIsFirstShown()
{
    write("early", Qt::red);
    write("late", Qt::red);
    QIcon icon;
    icon.addFile(path("early"), QSize(), QIcon::Normal, QIcon::Off);
    icon.addFile(path("late"), QSize(), QIcon::Selected, QIcon::Off);
    QCOMPARE(icon.pixmap(40, 20).toImage().pixelColor(5, 5), QColor(Qt::red));
    write("early", Qt::blue);
    write("late", Qt::blue);
    QCOMPARE(icon.pixmap(40, 20).toImage().pixelColor(5, 5), QColor(Qt::red));
    QCOMPARE(icon.pixmap(QSize(40, 20), QIcon::Selected).toImage().pixelColor(5, 5), QColor(Qt::blue));
}

void TestPictureIcons::iconsOfOneFileShareOnePicture()
{
    QIcon first, second;
    first.addFile(path("red"));
    second.addFile(path("red"), QSize(), QIcon::Selected, QIcon::On);
    QCOMPARE(first.pixmap(40, 20).cacheKey(),
             second.pixmap(QSize(40, 20), QIcon::Selected, QIcon::On).cacheKey());
}

void TestPictureIcons::missingFileIsNoPicture()
{
    const QIcon icon(path("missing"));
    QVERIFY(icon.isNull());
    QVERIFY(icon.pixmap(40, 20).isNull());
    QVERIFY(icon.availableSizes().isEmpty());
}

void TestPictureIcons::copyGoesItsOwnWay()
{
    QIcon icon(path("red"));
    QIcon copy = icon;
    copy.addFile(path("green"), QSize(), QIcon::Normal, QIcon::On);
    const auto on = [](const QIcon& shown) {
        return shown.pixmap(QSize(40, 20), QIcon::Normal, QIcon::On).toImage().pixelColor(5, 5);
    };
    QCOMPARE(on(copy), QColor(Qt::green));
    QCOMPARE(on(icon), QColor(Qt::red));
}

void TestPictureIcons::libraryBesideThePlugInIsNone()
{
    Dl_info library;
    QVERIFY(dladdr(&cm::UnitStyle::staticMetaObject, &library));
    const QDir folder = QFileInfo(QFile::decodeName(library.dli_fname)).dir();
    const auto isPlugIn = [&folder](const char* file) {
        return !QPluginLoader(folder.filePath(QLatin1String(file))).metaData().isEmpty();
    };
    QVERIFY(isPlugIn("iconengines/libpictureicons.so"));
    QVERIFY(!isPlugIn("libcommon.so")); // else a shell would take it for an application that is refused
}

QTEST_MAIN(TestPictureIcons)
#include "tst_pictureicons.moc"
